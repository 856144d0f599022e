// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <stdexcept>
#include <string>

/** Thrown where work stops because the user (Ctrl-C) or the system asked for it. */
class Interrupted : public std::runtime_error
{
public:
    /** @param message  what is there and what is not, as one line */
    explicit Interrupted (const std::string& message = "interrupted, nothing was written")
        : std::runtime_error (message)
    {
    }
};

/** Turns SIGINT, SIGTERM and SIGHUP into an exception that is thrown only where everything can be cleaned up. */
namespace interrupt
{
/** From now on these signals only raise a flag. */
void watch();

/** True once one of the signals has arrived. */
[[nodiscard]] bool isRequested() noexcept;

/** @throws Interrupted if one of the signals has arrived */
void throwIfRequested();
} // namespace interrupt
