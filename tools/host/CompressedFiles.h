// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>

#include <juce_audio_formats/juce_audio_formats.h>

/** FLAC and Ogg files, by libsndfile: JUCE's own readers pass over damaged frames without a word, and Debian's tree of JUCE has
    no codecs. */
namespace compressedFiles
{
/** True if the file begins as FLAC or Ogg files do. */
[[nodiscard]] bool isOneOfThem (const juce::File& file);

/** Reads 32-bit floats. Reading fails where the file is damaged.
    @throws HostError if the file is damaged or holds something else */
[[nodiscard]] std::unique_ptr<juce::AudioFormatReader> open (const juce::File& file);

/** Writes 24 bits, taken from the upper bits of integers. Flushing completes the file, and nothing can be written after it.
    @throws HostError if FLAC has no such sample rate, or the file cannot be made */
[[nodiscard]] std::unique_ptr<juce::AudioFormatWriter> createFlacWriter (const juce::File& file, double sampleRate,
                                                                         int numChannels);
} // namespace compressedFiles
