// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <memory>
#include <vector>

#include <juce_audio_formats/juce_audio_formats.h>

#include "host/StagedFile.h"

/** Reads a WAV, AIFF, FLAC or Ogg file of one or two channels piece by piece, as one or two channels of float. */
class AudioSource
{
public:
    /** @param numChannels  1 or 2; 0 takes the file's own number
        @throws HostError if the file is missing, damaged, of another kind or has more than two channels */
    AudioSource (const juce::File& file, int numChannels);

    [[nodiscard]] double sampleRate() const noexcept { return reader->sampleRate; }
    [[nodiscard]] juce::int64 numFrames() const noexcept { return reader->lengthInSamples; }
    [[nodiscard]] int numChannels() const noexcept { return outputChannels; }

    /** Fills the first numFrames frames of a buffer of numChannels(). One channel is copied to both sides; two channels
        are averaged to one.
        @throws HostError if the file is damaged there */
    void read (juce::AudioBuffer<float>& buffer, juce::int64 startFrame, int numFrames);

private:
    juce::File file;
    std::unique_ptr<juce::AudioFormatReader> reader;
    int outputChannels;
    juce::AudioBuffer<float> fileChannels;
};

/** The files that can be written. 24 bits are rounded to the nearest step, without dither. */
enum class Encoding
{
    wavFloat,
    wav24,
    flac24
};

/** Writes a sound file piece by piece. The file appears when commit is called. */
class AudioSink
{
public:
    /** @throws HostError if the place cannot be written to, or the kind of file has no such sample rate */
    AudioSink (const juce::File& file, Encoding encoding, double sampleRate, int numChannels);

    /** @throws HostError, for example when the disk is full */
    void write (const juce::AudioBuffer<float>& buffer, int numFrames);

    /** Completes the hidden file. commit moves it to its place.
        @throws HostError */
    void finish();
    void commit() { staged.commit(); }

    /** The samples so far that were over full scale and that 24 bits could not hold. */
    [[nodiscard]] juce::int64 numClipped() const noexcept { return clipped; }

private:
    [[nodiscard]] bool writeRounded (const juce::AudioBuffer<float>& buffer, int numFrames);
    [[nodiscard]] int rounded (float sample) noexcept;
    [[noreturn]] void fail() const;

    StagedFile staged;
    std::unique_ptr<juce::AudioFormatWriter> writer;

    /** Of a WAV file. Owned by the writer. */
    juce::FileOutputStream* stream = nullptr;

    std::array<std::vector<int>, 2> integers;
    juce::int64 clipped = 0;
};
