// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "host/HostError.h"

/** A program of somebody else's, run to its end under an environment that is given in full. */
struct Process
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

    /** Waits for the end.
        @returns everything that it wrote to its two outputs
        @throws HostError if it cannot be started or fails
        @throws Died if it crashes or takes longer than the limit */
    [[nodiscard]] juce::String run() const;

    /** Starts it and comes back. Whoever does so ends it, and it ends with us.
        @returns the number of its process and of its group
        @throws HostError */
    [[nodiscard]] int start() const;

    /** Where its output goes. */
    [[nodiscard]] juce::File output() const { return folder.getChildFile (".output"); }
};
