// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <chrono>
#include <string>

/** What plays, on standard output: in a terminal one line that is written over, elsewhere a line now and then. */
class StatusLine
{
public:
    StatusLine();
    ~StatusLine();

    StatusLine (const StatusLine&) = delete;
    StatusLine& operator= (const StatusLine&) = delete;

    /** Shows a line of at most the terminal's width. Elsewhere only if enough time has passed since the last one. */
    void show (const std::string& text);

    /** Prints a line that stays. */
    void say (const std::string& text);

private:
    using Clock = std::chrono::steady_clock;

    void clear();

    const bool isTerminal;
    bool isShown = false;
    Clock::time_point nextLine {};
};
