// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "host/HostError.h"
#include "support/ChildProcess.h"

/** A program from outside this project. Its environment is given in full. */
struct ForeignProgram
{
    /** It was ended by a signal, or had to be. */
    class Died : public HostError
    {
    public:
        using HostError::HostError;
    };

    std::vector<std::string> words;
    std::vector<std::pair<std::string, std::string>> environment;
    juce::File folder;
    std::chrono::seconds limit { 30 };

    /** Runs it to its end.
        @returns everything that it wrote to its two outputs
        @throws HostError if it cannot be started or fails
        @throws Died if it crashes or takes longer than the limit */
    [[nodiscard]] juce::String run() const;

    /** For a ChildProcess that goes on beside the test. */
    [[nodiscard]] ChildProcess::Options options() const;

    /** The file that takes its output. */
    [[nodiscard]] juce::File output() const { return folder.getChildFile (".output"); }
};
