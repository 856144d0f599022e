// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

namespace CLI
{
class App;
}

/** A command of kestrin-host with its options. All commands are made before the command line is read, and then one is run. */
class Command
{
public:
    virtual ~Command() = default;

    Command (const Command&) = delete;
    Command& operator= (const Command&) = delete;

    /** True once the command line has named this command. */
    [[nodiscard]] bool isChosen() const;

    /** True if the command needs a private display where there is none. */
    [[nodiscard]] virtual bool wantsPrivateDisplay() const { return false; }

    /** Message thread only.
        @throws HostError, Interrupted */
    virtual void run() = 0;

protected:
    /** Adds the command to the program. */
    Command (CLI::App& program, const std::string& name, const std::string& description);

    /** Takes the options. Owned by the program. */
    CLI::App& options;
};
