// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <atomic>

#include "host/AudioFiles.h"

/** Takes what is heard from the audio thread into a WAV file of 32-bit floats. Between the two lies a fifo, as the audio thread
    must not wait for a disk. */
class Recording
{
public:
    /** @throws HostError if the place cannot be written to */
    Recording (const juce::File& file, double sampleRate, int numChannels);

    /** Appends a block. If the fifo is full, because the disk is far too slow, the recording ends before it. Audio thread. */
    void add (const juce::AudioBuffer<float>& block) noexcept;

    /** Moves what is in the fifo into the file; often enough for the fifo. Message thread.
        @throws HostError */
    void writeOut();

    /** Completes the file, which appears now. The audio thread must have ended.
        @throws HostError if it cannot be completed, or had to end early */
    void finish();

private:
    void write (int start, int numFrames);

    juce::File target;
    AudioSink sink;
    juce::AudioBuffer<float> frames;
    juce::AbstractFifo fifo;
    std::atomic<bool> endedEarly { false };
};
