// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "host/commands/Command.h"
#include "host/commands/ModuleOptions.h"

/** parameters: lists the module's parameters. */
class ParametersCommand : public Command
{
public:
    explicit ParametersCommand (CLI::App& program);

    void run() override;

private:
    ModuleOptions module;
    bool markdown = false;
    bool json = false;
};
