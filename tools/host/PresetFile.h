// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <vector>

#include <juce_audio_processors/juce_audio_processors.h>

#include "host/HostedModule.h"

/** Presets as VST3 hosts load them (.vstpreset), and as people write them.

    The written form is lines of `key = value`: `name` and `about` (what the preset is for) must be there. `play` (what to play
    through it), `listen` (what to listen for) and `stem` (which stem of the demo does) may be. Every other key is the id of a
    parameter, with a text or a position. Blank lines and lines that begin with # are ignored. A parameter that is not named has
    its default. */
namespace presetFile
{
[[nodiscard]] bool isPreset (const juce::MemoryBlock& content);

/** The component's block inside a preset.
    @throws HostError, naming the file, if the preset is damaged */
[[nodiscard]] juce::MemoryBlock componentBlock (const juce::MemoryBlock& preset, const juce::File& file);

/** A preset for the instance's class with this block. */
[[nodiscard]] juce::MemoryBlock fromBlock (juce::AudioPluginInstance& instance, const juce::MemoryBlock& block);

/** A preset as people write it. */
struct Written
{
    struct Value
    {
        const HostedParameter* parameter = nullptr;
        float position = 0.0f;
    };

    juce::String name;
    juce::String about;
    juce::String play;
    juce::String listen;
    juce::String stem;
    std::vector<Value> values;
};

/** Understands a written preset by the module's parameters and texts.
    @throws HostError, naming file and line; a missing key is reported for the last line */
[[nodiscard]] Written parse (const HostedModule& module, const juce::File& file);

/** The preset's bytes: the defaults of the module with the written values, and nothing that tells of the machine. The module
    is left with these settings.
    @throws HostError if the module does not accept them */
[[nodiscard]] juce::MemoryBlock build (HostedModule& module, const Written& written);
} // namespace presetFile
