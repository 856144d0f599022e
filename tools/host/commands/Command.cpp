// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/Command.h"

#include <CLI/CLI.hpp>

Command::Command (CLI::App& program, const std::string& name, const std::string& description)
    : options (*program.add_subcommand (name, description))
{
}

bool Command::isChosen() const { return options.parsed(); }
