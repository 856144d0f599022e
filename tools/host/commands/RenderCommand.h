// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/commands/Command.h"
#include "host/commands/ModuleOptions.h"
#include "host/commands/TransportOptions.h"
#include "host/Render.h"

/** render: sends sound files through the module. */
class RenderCommand : public Command
{
public:
    explicit RenderCommand (CLI::App& program);

    void run() override;

private:
    void addOutput();
    void addTransport();

    [[nodiscard]] render::Job settings() const;
    void setFiles (render::Job& job) const;
    void requireNew (const juce::File& file) const;
    [[nodiscard]] bool replaces() const;
    void renderOne (HostedModule& loaded, const render::Job& job) const;
    [[nodiscard]] std::vector<std::string> sharedWords() const;

    [[nodiscard]] Encoding encoding() const;
    [[nodiscard]] std::optional<Transport::Settings> transportSettings() const;
    [[nodiscard]] int channels() const;

    ModuleOptions module;
    std::vector<std::string> inputs;
    std::string output, outputFolder, savedState, numChannels, bits;
    std::string format = "wav";
    std::string blockSize = "512";
    std::vector<std::string> automation;
    TransportOptions transport;
    double tail = 0.0;
    std::size_t numAtATime = 1;
    bool force = false;
    bool noForce = false;
    bool reportProgress = false;
    bool stopped = false;
    bool noTransport = false;
};
