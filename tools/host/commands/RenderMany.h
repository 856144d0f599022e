// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <juce_core/juce_core.h>

/** Many files, each rendered by a run of this program for itself: a file comes out as if it were the only one. */
namespace renderMany
{
struct Job
{
    /** As the command line names them. */
    std::vector<std::string> inputs;

    /** Made if it is not there. */
    juce::File folder;

    /** What the outputs' names end with; their beginnings are the inputs'. */
    juce::String ending;

    /** The options that all files have in common, as words. */
    std::vector<std::string> options;

    std::size_t numAtATime = 1;
};

/** Renders all files that can be, with one progress bar, and prints why the others can't.
    @throws HostError if two inputs would become one file, before anything is rendered; or if a file could not be rendered,
            at the end
    @throws Interrupted */
void run (const Job& job);
} // namespace renderMany
