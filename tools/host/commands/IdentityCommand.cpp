// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/IdentityCommand.h"

#include <iostream>

#include <CLI/CLI.hpp>

#include "host/ModuleIdentity.h"

IdentityCommand::IdentityCommand (CLI::App& program)
    : Command (program, "identity", "Show what the module's factory says of itself")
{
    module.addPlugin (options);
    options.add_flag ("--json", json, "For programs");
}

void IdentityCommand::run()
{
    const auto identity = ModuleIdentity::read (module.file());
    std::cout << (json ? identity.toJson() : identity.toText());
}
