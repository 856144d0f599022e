// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/ProgressBar.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string>

#include <unistd.h>

namespace
{
constexpr int barWidth = 40;
constexpr std::chrono::milliseconds quietTime { 100 };
} // namespace

ProgressBar::ProgressBar() : terminal (isatty (STDERR_FILENO) != 0) {}

ProgressBar::~ProgressBar()
{
    // The line is cleared, so that a message or the prompt starts in the first column.
    if (shown)
        std::fprintf (stderr, "\r\033[K");
}

void ProgressBar::show (double done)
{
    const auto now = Clock::now();

    if (! terminal || now - lastShown < quietTime)
        return;

    const auto elapsed = std::chrono::duration<double> (now - start).count();
    const auto remaining = done > 0.0 ? (int) std::ceil (elapsed * (1.0 - done) / done) : 0;
    const auto filled = (std::size_t) std::lround (done * barWidth);
    const auto bar = std::string (filled, '#') + std::string ((std::size_t) barWidth - filled, '.');

    std::fprintf (stderr, "\r[%s] %3d %%  %d:%02d left\033[K", bar.c_str(), (int) (done * 100.0), remaining / 60,
                  remaining % 60);
    std::fflush (stderr);
    lastShown = now;
    shown = true;
}
