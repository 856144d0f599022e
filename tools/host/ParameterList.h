// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <vector>

#include <juce_audio_processors/juce_audio_processors.h>

/** One parameter as a host sees it. */
struct HostedParameter
{
    /** Its name on the command line and in saved settings. */
    juce::String id;

    /** Its number in the VST3 interface. */
    juce::uint32 number = 0;

    /** Owned by the instance. */
    juce::AudioProcessorParameter* parameter = nullptr;

    [[nodiscard]] juce::String name() const { return parameter->getName (128); }

    /** The module's own text for a position, with all its blanks. */
    [[nodiscard]] juce::String textAt (float position) const { return parameter->getText (position, 128); }
};

/** The parameters of an instance in the module's order, with their ids. A VST3 host sees only numbers, which are hashes of
    the ids; the ids themselves are in the settings that the module saves. */
class ParameterList
{
public:
    explicit ParameterList (juce::AudioPluginInstance& instance);

    [[nodiscard]] const std::vector<HostedParameter>& all() const noexcept { return parameters; }

    /** @throws HostError if there is no such id; it names ids that are similar */
    [[nodiscard]] const HostedParameter& find (const juce::String& id) const;

private:
    std::vector<HostedParameter> parameters;
};
