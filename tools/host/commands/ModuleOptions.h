// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/HostedModule.h"

namespace CLI
{
class App;
}

/** What several commands have in common: which module, and how it is set. */
struct ModuleOptions
{
    std::string plugin;
    std::string state;
    std::vector<std::string> assignments;

    void addPlugin (CLI::App& command);
    void addSettings (CLI::App& command);

    /** The module that is named, or else the one that is found.
        @throws HostError if there is none */
    [[nodiscard]] juce::File file() const;

    /** An instance of the module with these settings. Message thread only.
        @throws HostError */
    [[nodiscard]] std::unique_ptr<HostedModule> load() const;
};
