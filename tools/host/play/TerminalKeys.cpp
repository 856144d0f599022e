// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/play/TerminalKeys.h"

#include <array>
#include <csignal>
#include <string_view>

#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace
{
/** The terminal as it was; a signal's handler can reach nothing else. */
termios before {};
bool isChanged = false;

constexpr std::array fatalSignals { SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL };

void restore() noexcept
{
    if (isChanged)
        tcsetattr (STDIN_FILENO, TCSANOW, &before);
}

extern "C" void restoreAndDie (int number)
{
    restore();
    std::signal (number, SIG_DFL);
    std::raise (number);
}

struct Meaning
{
    std::string_view typed;
    TerminalKeys::Key key;
};

using Key = TerminalKeys::Key;

/** A terminal sends one of two sequences for an arrow, as its keypad is set. */
constexpr std::array meanings {
    Meaning { " ", Key::halt },      Meaning { "b", Key::bypass },       Meaning { "\033[D", Key::back },
    Meaning { "\033OD", Key::back }, Meaning { "\033[C", Key::onwards }, Meaning { "\033OC", Key::onwards },
    Meaning { "l", Key::loopBar },   Meaning { "p", Key::nextPreset },   Meaning { "P", Key::previousPreset },
    Meaning { "q", Key::quit },
};
} // namespace

TerminalKeys::TerminalKeys()
{
    if (tcgetattr (STDIN_FILENO, &before) != 0)
        return;

    for (const auto number : fatalSignals)
        std::signal (number, restoreAndDie);

    auto raw = before;
    raw.c_lflag &= (tcflag_t) ~(ICANON | ECHO);

    // Ctrl-C ends the program in good order. To stop it in the middle, or to kill it, would leave the terminal as it is now.
    raw.c_cc[VSUSP] = raw.c_cc[VQUIT] = _POSIX_VDISABLE;
    isChanged = tcsetattr (STDIN_FILENO, TCSANOW, &raw) == 0;
}

TerminalKeys::~TerminalKeys()
{
    restore();
    isChanged = false;
}

void TerminalKeys::readMore()
{
    std::array<char, 64> bytes {};
    pollfd input { STDIN_FILENO, POLLIN, 0 };

    if (! isOpen || poll (&input, 1, 0) != 1)
        return;

    const auto numBytes = read (STDIN_FILENO, bytes.data(), bytes.size());
    isOpen = numBytes > 0;

    if (isOpen)
        typed.append (bytes.data(), (std::size_t) numBytes);
}

std::optional<TerminalKeys::Key> TerminalKeys::next()
{
    readMore();

    while (! typed.empty())
    {
        for (const auto& meaning : meanings)
            if (typed.rfind (meaning.typed, 0) == 0)
            {
                typed.erase (0, meaning.typed.size());
                return meaning.key;
            }

        // The beginning of a sequence, of which the rest is still to come.
        if (typed == "\033" || typed == "\033[" || typed == "\033O")
            break;

        typed.erase (0, 1);
    }

    return {};
}
