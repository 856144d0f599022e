// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>

#include "host/ParameterList.h"

/** One instance of a module with its list of parameters. Message thread only. */
class HostedModule
{
public:
    /** @throws HostError if the module cannot be loaded */
    explicit HostedModule (const juce::File& module);

    [[nodiscard]] juce::AudioPluginInstance& instance() noexcept { return *plugin; }
    [[nodiscard]] const ParameterList& parameters() const noexcept { return list; }

    /** Makes input and output mono or stereo. The instance must not be prepared.
        @param numChannels  1 or 2
        @throws HostError if the module does not take that */
    void useChannels (int numChannels);

    /** Makes the instance take the values that were set, without any audio: otherwise they travel with the next block. */
    void deliverParameters();

private:
    std::unique_ptr<juce::AudioPluginInstance> plugin;
    ParameterList list;
};
