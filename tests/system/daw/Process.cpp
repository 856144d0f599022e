// SPDX-License-Identifier: AGPL-3.0-or-later
#include "system/daw/Process.h"

#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
using Clock = std::chrono::steady_clock;
constexpr auto lookAgain = std::chrono::milliseconds (5);

std::vector<char*> pointersTo (std::vector<std::string>& texts)
{
    std::vector<char*> pointers;

    for (auto& text : texts)
        pointers.push_back (text.data());

    pointers.push_back (nullptr);
    return pointers;
}

[[noreturn]] void become (std::vector<std::string> words, std::vector<std::string> variables, const juce::File& folder,
                          const juce::File& output)
{
    const auto path = folder.getFullPathName().toStdString();
    const auto outputPath = output.getFullPathName().toStdString();

    // A group of its own, so that its children can be ended with it; and it does not outlive us.
    setpgid (0, 0);
    prctl (PR_SET_PDEATHSIG, SIGKILL);

    const auto file = open (outputPath.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
    dup2 (open ("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2 (file, STDOUT_FILENO);
    dup2 (file, STDERR_FILENO);

    if (chdir (path.c_str()) == 0)
        execvpe (words.front().c_str(), pointersTo (words).data(), pointersTo (variables).data());

    _exit (127);
}

/** The last lines, for a message. */
juce::String tailOf (const juce::String& output)
{
    auto lines = juce::StringArray::fromLines (output.trim());
    lines.removeRange (0, lines.size() - 6);
    return lines.joinIntoString ("\n");
}
} // namespace

int Process::start() const
{
    std::vector<std::string> variables;

    for (const auto& [name, value] : environment)
        variables.push_back (name + "=" + value);

    const auto process = fork();

    if (process < 0)
        throw HostError ("cannot start " + juce::String (words.front()));

    if (process == 0)
        become (words, variables, folder, output());

    return process;
}

juce::String Process::run() const
{
    const auto deadline = Clock::now() + limit;
    const auto process = start();
    int status = 0;

    while (waitpid (process, &status, WNOHANG) == 0)
    {
        if (Clock::now() > deadline)
        {
            kill (-process, SIGKILL);
            waitpid (process, &status, 0);
            throw Died (juce::String (words.front()) + " was not done after " + juce::String (limit.count()) + " s:\n"
                        + tailOf (output().loadFileAsString()));
        }

        std::this_thread::sleep_for (lookAgain);
    }

    const auto text = output().loadFileAsString();

    if (WIFSIGNALED (status))
        throw Died (juce::String (words.front()) + " was ended by signal " + juce::String (WTERMSIG (status)) + ":\n"
                    + tailOf (text));

    if (WEXITSTATUS (status) != 0)
        throw HostError (juce::String (words.front()) + " failed with code " + juce::String (WEXITSTATUS (status))
                         + ":\n" + tailOf (text));

    return text;
}
