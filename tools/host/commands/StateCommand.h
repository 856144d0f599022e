// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

#include "host/commands/Command.h"
#include "host/commands/ModuleOptions.h"

/** state: shows settings as text, or writes them to files of any kind. */
class StateCommand : public Command
{
public:
    explicit StateCommand (CLI::App& program);

    void run() override;

private:
    ModuleOptions module;
    std::string shown, written;
};
