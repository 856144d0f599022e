// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/commands/Command.h"
#include "host/commands/ModuleOptions.h"
#include "host/Transport.h"

/** render: sends a sound file through the module. */
class RenderCommand : public Command
{
public:
    explicit RenderCommand (CLI::App& program);

    void run() override;

private:
    void addTransport();

    [[nodiscard]] std::optional<Transport::Settings> transportSettings() const;
    [[nodiscard]] int channels() const;

    ModuleOptions module;
    std::string input, output, savedState, numChannels;
    std::string blockSize = "512";
    std::string timeSignature = "4/4";
    std::vector<std::string> automation;
    double tempo = 120.0;
    double startBeat = 1.0;
    bool stopped = false;
    bool noTransport = false;
};
