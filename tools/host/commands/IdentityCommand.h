// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "host/commands/Command.h"
#include "host/commands/ModuleOptions.h"

/** identity: shows what the module's factory says of itself. */
class IdentityCommand : public Command
{
public:
    explicit IdentityCommand (CLI::App& program);

    void run() override;

private:
    ModuleOptions module;
    bool json = false;
};
