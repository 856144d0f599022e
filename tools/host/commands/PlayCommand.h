// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

#include "host/commands/Command.h"
#include "host/commands/ModuleOptions.h"
#include "host/commands/TransportOptions.h"
#include "host/play/PlaySession.h"

/** play: sends a loop through the module to the sound device, with the module's window open. */
class PlayCommand : public Command
{
public:
    explicit PlayCommand (CLI::App& program);

    void run() override;

private:
    void addSound();
    void addDevice();
    void usePreset (playSession::Job& job);
    [[nodiscard]] PlayedSound sound() const;
    [[nodiscard]] SoundDevices::Wanted wantedDevice() const;

    ModuleOptions module;
    TransportOptions transport;
    std::string input, stem, preset, device, recording, savedState;
    double seconds = 0.0;
    int sampleRate = 0;
    int blockSize = 0;
    bool noWindow = false;
    bool listDevices = false;
};
