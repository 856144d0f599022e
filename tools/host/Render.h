// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "host/AudioFiles.h"
#include "host/Automation.h"
#include "host/BlockSizes.h"
#include "host/HostedModule.h"
#include "host/Transport.h"

/** Sends a file through a module, in blocks, faster than real time. */
namespace render
{
struct Job
{
    juce::File input;
    juce::File output;

    Encoding encoding = Encoding::wavFloat;

    /** Silence that follows the input, so that the filters ring out. The output is that much longer. */
    double tailSeconds = 0.0;

    /** 1 or 2; 0 takes the file's own number. */
    int numChannels = 0;
    BlockSizes blockSizes { 512 };

    /** Empty: the host has no transport. */
    std::optional<Transport::Settings> transport = Transport::Settings {};
    std::vector<Automation::Lane> automation;

    /** Where the module's settings go at the end. */
    std::optional<juce::File> savedState;
};

/** Called after every block with the fraction of the work that is done, 0 to 1. */
using Progress = std::function<void (double)>;

/** Runs a job. Output and settings appear together or not at all.
    @returns the number of samples that were over full scale and that the encoding could not hold
    @throws HostError, Interrupted */
[[nodiscard]] juce::int64 run (HostedModule& module, const Job& job, const Progress& progress = {});
} // namespace render
