// SPDX-License-Identifier: AGPL-3.0-or-later
#include <iostream>

#include "host/commands/CommandLine.h"
#include "host/HostError.h"
#include "host/Interrupt.h"

namespace
{
int say (const char* message, int code)
{
    std::cerr << "kestrin-host: " << message << std::endl;
    return code;
}
} // namespace

int main (int argc, char** argv)
{
    interrupt::watch();

    try
    {
        return runCommandLine (argc, argv);
    }
    catch (const HostError& error)
    {
        return say (error.what(), exitCode::refused);
    }
    catch (const Interrupted& interruption)
    {
        return say (interruption.what(), exitCode::interrupted);
    }
    catch (const std::exception& error)
    {
        return say (error.what(), exitCode::internalError);
    }
}
