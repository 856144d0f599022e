// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/ChildProcess.h"

#include <array>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
using Pipe = std::array<int, 2>;

std::vector<char*> pointersTo (std::vector<std::string>& texts)
{
    std::vector<char*> pointers;

    for (auto& text : texts)
        pointers.push_back (text.data());

    pointers.push_back (nullptr);
    return pointers;
}

/** Names and values as a process takes them. Of equal names the C library finds the first. */
std::vector<std::string> environmentOf (const ChildProcess::Options& options)
{
    std::vector<std::string> all;

    for (const auto& [name, value] : options.variables)
        all.push_back (name + "=" + value);

    for (auto** variable = environ; options.inheritsEnvironment && *variable != nullptr; ++variable)
        all.emplace_back (*variable);

    return all;
}

Pipe makePipe()
{
    Pipe ends {};

    if (pipe2 (ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error ("no pipe");

    return ends;
}

void replaceStream (int stream, const std::string& file, int flags) noexcept
{
    if (! file.empty())
        dup2 (open (file.c_str(), flags | O_CLOEXEC, 0600), stream);
}

/** Between fork and exec: nothing here allocates. */
[[noreturn]] void become (const ChildProcess::Options& options, char* const* words, char* const* environment,
                          const Pipe& input, const Pipe& output) noexcept
{
    constexpr int writing = O_CREAT | O_TRUNC | O_WRONLY;

    setpgid (0, 0);
    prctl (PR_SET_PDEATHSIG, SIGKILL);
    replaceStream (STDIN_FILENO, options.inputFile, O_RDONLY);
    replaceStream (STDOUT_FILENO, options.outputFile, writing);

    if (options.errorsFile == options.outputFile && ! options.outputFile.empty())
        dup2 (STDOUT_FILENO, STDERR_FILENO);
    else
        replaceStream (STDERR_FILENO, options.errorsFile, writing);

    if (options.hasPipes)
    {
        dup2 (input[0], STDIN_FILENO);
        dup2 (output[1], STDOUT_FILENO);
    }

    if (options.folder.empty() || chdir (options.folder.c_str()) == 0)
        execvpe (words[0], words, environment);

    _exit (127);
}
} // namespace

ChildProcess::ChildProcess (const Options& options)
{
    auto words = options.words;
    auto environment = environmentOf (options);
    const auto wordPointers = pointersTo (words), environmentPointers = pointersTo (environment);
    const auto inputEnds = options.hasPipes ? makePipe() : Pipe { -1, -1 };
    const auto outputEnds = options.hasPipes ? makePipe() : Pipe { -1, -1 };

    process = fork();

    if (process == 0)
        become (options, wordPointers.data(), environmentPointers.data(), inputEnds, outputEnds);

    if (options.hasPipes)
    {
        close (inputEnds[0]);
        close (outputEnds[1]);
        input = inputEnds[1];
        output = outputEnds[0];
    }

    if (process < 0)
        throw std::runtime_error ("cannot start " + options.words.front());

    // Parent and child both do it, so that the group exists when either of them continues.
    setpgid (process, process);
}

ChildProcess::~ChildProcess()
{
    signal (SIGKILL);
    wait();
    closeInput();

    if (output >= 0)
        close (output);
}

bool ChildProcess::collect (int options) noexcept
{
    int status = 0;

    if (! end.has_value() && waitpid (process, &status, options) == process)
        end = End { WIFEXITED (status) ? WEXITSTATUS (status) : 0, WIFSIGNALED (status) ? WTERMSIG (status) : 0 };

    return end.has_value();
}

bool ChildProcess::isRunning() { return ! collect (WNOHANG); }

ChildProcess::End ChildProcess::wait()
{
    collect (0);
    return end.value_or (End {});
}

void ChildProcess::signal (int number) const noexcept { kill (-process, number); }

void ChildProcess::closeInput() noexcept
{
    if (input >= 0)
        close (input);

    input = -1;
}
