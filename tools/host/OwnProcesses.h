// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/** This program, run again for each of many files, a few at a time. A run that fails, even by a crash, stops no other. */
namespace ownProcesses
{
struct Task
{
    /** The command line of the run, without the program. It prints what is done as lines such as "17 %". */
    std::vector<std::string> words;

    /** Its part of all the work, in any unit. */
    double work = 1.0;
};

struct Outcome
{
    bool succeeded = false;

    /** What else the run printed. */
    std::vector<std::string> lines;
};

/** Called now and then with the fraction of all the work that is done, 0 to 1. */
using Progress = std::function<void (double)>;

/** Waits for all tasks.
    @returns an outcome for each task, in their order
    @throws HostError if no process can be started
    @throws Interrupted, when the tasks that were running have cleaned up */
[[nodiscard]] std::vector<Outcome> run (const std::vector<Task>& tasks, std::size_t numAtATime,
                                        const Progress& progress);
} // namespace ownProcesses
