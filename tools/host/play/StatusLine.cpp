// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/play/StatusLine.h"

#include <iostream>

#include <sys/ioctl.h>
#include <unistd.h>

namespace
{
/** Of a terminal that does not tell. */
constexpr std::size_t usualWidth = 80;

[[nodiscard]] std::size_t widthOfTerminal() noexcept
{
    winsize size {};
    return ioctl (STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usualWidth;
}
} // namespace

StatusLine::StatusLine() : isTerminal (isatty (STDOUT_FILENO) != 0) {}

StatusLine::~StatusLine() { clear(); }

void StatusLine::clear()
{
    if (isShown)
        std::cout << "\r\033[K" << std::flush;

    isShown = false;
}

void StatusLine::show (const std::string& text)
{
    constexpr std::chrono::seconds nowAndThen { 10 };

    if (isTerminal)
    {
        // A line as wide as the terminal would wrap in some.
        std::cout << "\r" << text.substr (0, widthOfTerminal() - 1) << "\033[K" << std::flush;
        isShown = true;
    }
    else if (Clock::now() >= nextLine)
    {
        std::cout << text << std::endl;
        nextLine = Clock::now() + nowAndThen;
    }
}

void StatusLine::say (const std::string& text)
{
    clear();
    std::cout << text << std::endl;
}
