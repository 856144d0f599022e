// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/OwnProcesses.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <list>
#include <numeric>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/HostError.h"
#include "host/Interrupt.h"

namespace ownProcesses
{
namespace
{
/** One run, from its start to its end. If it is destroyed before that, the run is told to end. */
class Run
{
public:
    Run (const Task& work, Outcome& result) : task (work), outcome (result)
    {
        std::array<int, 2> ends {};

        if (pipe2 (ends.data(), O_CLOEXEC) != 0)
            throw HostError ("no process can be started: no pipe is left");

        output = ends[0];
        const auto started = start (ends[1]);
        close (ends[1]);

        if (! started)
        {
            close (output);
            throw HostError ("no process can be started");
        }
    }

    ~Run()
    {
        if (process > 0)
        {
            kill (process, SIGTERM);
            waitpid (process, nullptr, 0);
        }

        close (output);
    }

    Run (const Run&) = delete;
    Run& operator= (const Run&) = delete;

    [[nodiscard]] int outputPipe() const noexcept { return output; }
    [[nodiscard]] double work() const noexcept { return task.work; }
    [[nodiscard]] double workDone() const noexcept { return task.work * fractionDone; }

    /** Takes what it has printed since. False when it has ended. */
    bool follow()
    {
        std::array<char, 4096> bytes {};
        const auto numRead = read (output, bytes.data(), bytes.size());

        if (numRead > 0)
        {
            text.append (bytes.data(), (std::size_t) numRead);
            takeLines();
            return true;
        }

        finish();
        return false;
    }

private:
    [[nodiscard]] bool start (int outputEnd)
    {
        auto words = task.words;
        words.insert (words.begin(), std::filesystem::read_symlink ("/proc/self/exe"));
        std::vector<char*> arguments;

        for (auto& word : words)
            arguments.push_back (word.data());

        arguments.push_back (nullptr);

        posix_spawn_file_actions_t streams;
        posix_spawn_file_actions_init (&streams);
        posix_spawn_file_actions_addopen (&streams, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2 (&streams, outputEnd, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2 (&streams, outputEnd, STDERR_FILENO);
        const auto error = posix_spawn (&process, arguments[0], &streams, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy (&streams);
        return error == 0;
    }

    void takeLines()
    {
        for (auto end = text.find ('\n'); end != std::string::npos; end = text.find ('\n'))
        {
            const auto line = text.substr (0, end);
            text.erase (0, end + 1);

            if (line.size() > 2 && line.compare (line.size() - 2, 2, " %") == 0)
                fractionDone = std::atoi (line.c_str()) / 100.0;
            else
                outcome.lines.push_back (line);
        }
    }

    void finish()
    {
        int status = 0;
        waitpid (process, &status, 0);
        process = -1;
        outcome.succeeded = WIFEXITED (status) && WEXITSTATUS (status) == 0;

        if (WIFSIGNALED (status))
            outcome.lines.push_back ("ended by signal " + std::to_string (WTERMSIG (status)));
    }

    const Task& task;
    Outcome& outcome;
    pid_t process = -1;
    int output = -1;
    double fractionDone = 0.0;
    std::string text;
};

using Runs = std::list<Run>;

[[nodiscard]] double workDone (const Runs& runs)
{
    return std::accumulate (runs.begin(), runs.end(), 0.0,
                            [] (double sum, const Run& run) { return sum + run.workDone(); });
}

void throwIfInterrupted (std::size_t numEnded, std::size_t numTasks)
{
    try
    {
        interrupt::throwIfRequested();
    }
    catch (const Interrupted&)
    {
        throw Interrupted ("interrupted after " + std::to_string (numEnded) + " of " + std::to_string (numTasks)
                           + " files; nothing was written of the others");
    }
}

/** Waits a moment until a run prints something or ends. */
void followAll (Runs& runs, double& workEnded)
{
    constexpr int momentMs = 100;
    std::vector<pollfd> pipes;

    for (const auto& run : runs)
        pipes.push_back ({ run.outputPipe(), POLLIN, 0 });

    if (poll (pipes.data(), pipes.size(), momentMs) <= 0)
        return;

    auto pipe = pipes.begin();

    for (auto run = runs.begin(); run != runs.end();)
    {
        const auto isSilent = (pipe++)->revents == 0;

        if (isSilent || run->follow())
        {
            ++run;
            continue;
        }

        workEnded += run->work();
        run = runs.erase (run);
    }
}
} // namespace

std::vector<Outcome> run (const std::vector<Task>& tasks, std::size_t numAtATime, const Progress& progress)
{
    std::vector<Outcome> outcomes (tasks.size());
    Runs runs;
    std::size_t numStarted = 0;
    double workEnded = 0.0;
    const auto allWork = std::accumulate (tasks.begin(), tasks.end(), 0.0,
                                          [] (double sum, const Task& task) { return sum + task.work; });

    while (numStarted < tasks.size() || ! runs.empty())
    {
        throwIfInterrupted (numStarted - runs.size(), tasks.size());

        for (; runs.size() < numAtATime && numStarted < tasks.size(); ++numStarted)
            runs.emplace_back (tasks[numStarted], outcomes[numStarted]);

        followAll (runs, workEnded);
        progress ((workEnded + workDone (runs)) / allWork);
    }

    return outcomes;
}
} // namespace ownProcesses
