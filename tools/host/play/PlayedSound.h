// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

/** A sound in memory, in one or two channels. */
struct PlayedSound
{
    juce::AudioBuffer<float> samples;
    double sampleRate = 0.0;

    /** Reads a file as a whole.
        @throws HostError if it cannot be used, is empty or is longer than an hour */
    [[nodiscard]] static PlayedSound fromFile (const juce::File& file);

    /** The same sound at another rate, in Hz; itself if it has that rate already. Its end is taken to lead to its beginning. */
    [[nodiscard]] PlayedSound atRate (double rate) const;
};
