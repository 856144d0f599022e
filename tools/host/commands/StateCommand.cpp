// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/StateCommand.h"

#include <iostream>

#include <CLI/CLI.hpp>

#include "host/commands/FileArgument.h"
#include "host/HostError.h"
#include "host/PluginState.h"
#include "host/StagedFile.h"

StateCommand::StateCommand (CLI::App& program)
    : Command (program, "state", "Show settings as text, or write them to files of any kind")
{
    module.addPlugin (options);
    module.addSettings (options);
    options.add_option ("--show", shown, "Print the settings text in this file as the module reads and saves it");
    options.add_option ("--write", written, "Write the settings (of --state and --set) to this file");
}

void StateCommand::run()
{
    if (! shown.empty() && ! module.state.empty())
        throw HostError ("--show and --state both name the settings to start from: give one of them");

    if (! shown.empty())
        module.state = shown;

    const auto loaded = module.load();
    loaded->deliverParameters();

    if (! written.empty())
    {
        StagedFile file (fileNamed (written));
        const auto content = pluginState::contentForFile (loaded->instance(), file.target());
        file.write (content.getData(), content.getSize());
        file.commit();
    }

    if (written.empty() || ! shown.empty())
        std::cout << pluginState::settingsText (pluginState::read (loaded->instance())) << "\n";
}
