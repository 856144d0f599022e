// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "host/AudioFiles.h"

/** All of a sound file, in its own number of channels.
    @throws HostError if it cannot be read */
[[nodiscard]] inline juce::AudioBuffer<float> readSound (const juce::File& file)
{
    AudioSource source (file, 0);
    juce::AudioBuffer<float> buffer (source.numChannels(), (int) source.numFrames());
    source.read (buffer, 0, buffer.getNumSamples());
    return buffer;
}
