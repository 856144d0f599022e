// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

/** What the program gives back to the shell. */
namespace exitCode
{
inline constexpr int success = 0;

/** A fault of the program itself. */
inline constexpr int internalError = 1;

/** What was asked for cannot be done: a wrong option, a file that is missing, damaged or cannot be written, an unknown
    parameter or text, a module that cannot be loaded. */
inline constexpr int refused = 2;

/** Stopped by Ctrl-C or by the system. */
inline constexpr int interrupted = 130;
} // namespace exitCode

/** Reads the command line and runs what it asks for.
    @throws HostError, Interrupted
    @returns an exit code */
[[nodiscard]] int runCommandLine (int argc, char** argv);
