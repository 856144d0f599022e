// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/ModuleOptions.h"

#include <CLI/CLI.hpp>

#include "host/commands/FileArgument.h"
#include "host/ModuleLoader.h"
#include "host/PluginState.h"
#include "host/ValueResolver.h"

void ModuleOptions::addPlugin (CLI::App& command)
{
    command.add_option ("--plugin", plugin,
                        "The .vst3 module; without it $KESTRIN_PLUGIN, the module built beside this program, or the "
                        "one in ~/.vst3 or /usr/lib/vst3");
}

void ModuleOptions::addSettings (CLI::App& command)
{
    command.add_option ("--state", state, "Start from the settings in this file (see: Settings files)");
    command
        .add_option ("--set", assignments,
                     "id=position or id=\"text\"; may be given several times, after --state (see: Values)")
        ->allow_extra_args (false);
}

juce::File ModuleOptions::file() const { return plugin.empty() ? moduleLoader::findModule() : fileNamed (plugin); }

std::unique_ptr<HostedModule> ModuleOptions::load() const
{
    auto loaded = std::make_unique<HostedModule> (file());

    if (! state.empty())
        pluginState::loadFile (loaded->instance(), fileNamed (state));

    for (const auto& text : assignments)
    {
        const auto assignment = valueResolver::splitAssignment (juce::String::fromUTF8 (text.c_str()));
        const auto& parameter = loaded->parameters().find (assignment.id);
        parameter.parameter->setValue (valueResolver::resolve (parameter, assignment.value));
    }

    return loaded;
}
