// SPDX-License-Identifier: AGPL-3.0-or-later
#include "system/play/LiveHost.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace
{
/** The longest time between two looks at a condition. */
constexpr int lookAgainMs = 20;

/** The end that a person sits at. */
int openTerminal()
{
    const auto terminal = posix_openpt (O_RDWR | O_NOCTTY | O_CLOEXEC);
    const winsize wide { 25, 120, 0, 0 };

    if (terminal < 0 || grantpt (terminal) != 0 || unlockpt (terminal) != 0 || ioctl (terminal, TIOCSWINSZ, &wide) != 0)
        throw std::runtime_error ("no pseudo-terminal");

    return terminal;
}
} // namespace

LiveHost::LiveHost (const HostProcess& place, const juce::StringArray& arguments, const Variables& variables)
    : folder (place), terminal (openTerminal()), process (optionsFor (arguments, variables))
{
}

LiveHost::~LiveHost() { close (terminal); }

ChildProcess::Options LiveHost::optionsFor (const juce::StringArray& arguments, const Variables& variables) const
{
    juce::StringArray words ("play");
    words.addArray (arguments);
    auto options = folder.options (words);
    options.variables.insert (options.variables.end(), variables.begin(), variables.end());
    options.inputFile = options.outputFile = ptsname (terminal);
    return options;
}

void LiveHost::press (const std::string& keys) const
{
    [[maybe_unused]] const auto written = write (terminal, keys.data(), keys.size());
}

std::string LiveHost::status() const
{
    const auto start = everything.rfind ('\r');
    return start == std::string::npos ? std::string() : everything.substr (start + 1);
}

int LiveHost::dropouts() const
{
    const std::string word ("dropouts ");
    const auto start = everything.rfind (word);
    const auto digit = start + word.size();
    return start == std::string::npos || digit >= everything.size() ? -1 : std::atoi (everything.c_str() + digit);
}

void LiveHost::listen()
{
    std::array<char, 4096> bytes {};
    pollfd output { terminal, POLLIN, 0 };

    if (poll (&output, 1, lookAgainMs) != 1)
        return;

    if (const auto numBytes = read (terminal, bytes.data(), bytes.size()); numBytes > 0)
        everything.append (bytes.data(), (std::size_t) numBytes);
}

bool LiveHost::waitUntil (const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;

    while (! condition())
    {
        if (! process.isRunning() || std::chrono::steady_clock::now() > deadline)
            return false;

        listen();
    }

    return true;
}

bool LiveHost::waitForStatus (const std::string& part)
{
    return waitUntil ([&] { return status().find (part) != std::string::npos; });
}

juce::int64 LiveHost::recordedBytes() const
{
    // Until its end the file has a hidden name.
    for (const auto& name : folder.files())
        if (name.contains ("heard.wav"))
            return folder.file (name).getSize();

    return 0;
}

bool LiveHost::waitForSound (int numFrames)
{
    const auto wanted = recordedBytes() + numFrames * 2 * (juce::int64) sizeof (float);
    return waitUntil ([&] { return recordedBytes() > wanted; });
}

int LiveHost::end()
{
    // What it prints must go somewhere meanwhile: a terminal that nobody reads is full at some time.
    if (waitUntil ([] { return false; }); process.isRunning())
        process.signal (SIGKILL);

    return process.wait().code();
}

bool LiveHost::terminalIsOrdinary() const
{
    termios state {};
    tcgetattr (terminal, &state);
    return (state.c_lflag & ICANON) != 0 && (state.c_lflag & ECHO) != 0;
}
