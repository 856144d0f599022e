// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <chrono>

/** One line on stderr with the progress and the remaining time. Silent if stderr is no terminal. */
class ProgressBar
{
public:
    ProgressBar();
    ~ProgressBar();

    /** @param done  0 to 1 */
    void show (double done);

private:
    using Clock = std::chrono::steady_clock;

    bool terminal;
    bool shown = false;
    Clock::time_point start = Clock::now();
    Clock::time_point lastShown = start;
};
