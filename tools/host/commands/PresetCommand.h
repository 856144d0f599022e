// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "host/commands/Command.h"
#include "host/commands/ModuleOptions.h"

/** preset: makes .vstpreset files from written presets. */
class PresetCommand : public Command
{
public:
    explicit PresetCommand (CLI::App& program);

    /** All files are understood before the first one is written. */
    void run() override;

private:
    ModuleOptions module;
    std::vector<std::string> files;
    std::string folder;
};
