// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/PrivateDisplay.h"

#include <csignal>
#include <cstdlib>
#include <string>

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/HostError.h"

namespace
{
/** Room for the window at four times its size. */
const char* const screenSize = "2560x2560x24";
constexpr int startTimeoutMs = 10000;

// Not the lowest numbers: a program that has no display falls back to :0, and would open its window on this one.
constexpr int firstNumber = 90;
constexpr int numberCount = 400;
constexpr int mostAttempts = 20;

[[noreturn]] void becomeServer (int displayNumber, int numberPipe)
{
    // No server is left behind, even if this program crashes.
    prctl (PR_SET_PDEATHSIG, SIGTERM);

    const auto displayText = ":" + std::to_string (displayNumber);
    const auto pipeText = std::to_string (numberPipe);
    [[maybe_unused]] const auto* silent = std::freopen ("/dev/null", "w", stderr);
    execlp ("Xvfb", "Xvfb", displayText.c_str(), "-displayfd", pipeText.c_str(), "-screen", "0", screenSize,
            "-nolisten", "tcp", "-noreset", static_cast<char*> (nullptr));
    _exit (127);
}

/** The server writes its number as soon as it accepts connections, and nothing if the number is already in use. */
std::string readNumber (int numberPipe)
{
    std::string number;
    pollfd waiting { numberPipe, POLLIN, 0 };
    char character = 0;

    while (poll (&waiting, 1, startTimeoutMs) == 1 && read (numberPipe, &character, 1) == 1 && character != '\n')
        number += character;

    return number;
}
} // namespace

PrivateDisplay::PrivateDisplay()
{
    if (const auto* existing = std::getenv ("DISPLAY"); existing != nullptr && *existing != '\0')
        return;

    std::string number;

    for (int attempt = 0; attempt < mostAttempts && number.empty(); ++attempt)
        number = startServer (firstNumber + (getpid() + attempt) % numberCount);

    if (number.empty())
        throw HostError ("there is no display, and Xvfb does not start: install Debian's xvfb, or set DISPLAY");

    setenv ("DISPLAY", (":" + number).c_str(), 1);
}

std::string PrivateDisplay::startServer (int displayNumber)
{
    int ends[2] {};

    if (pipe (ends) != 0)
        throw HostError ("cannot start a display: no pipe");

    server = fork();

    if (server == 0)
    {
        close (ends[0]);
        becomeServer (displayNumber, ends[1]);
    }

    close (ends[1]);
    const auto number = server > 0 ? readNumber (ends[0]) : std::string();
    close (ends[0]);

    if (number.empty())
        stopServer();

    return number;
}

PrivateDisplay::~PrivateDisplay() { stopServer(); }

void PrivateDisplay::stopServer() noexcept
{
    if (server <= 0)
        return;

    kill (server, SIGTERM);
    waitpid (server, nullptr, 0);
    server = -1;
}
