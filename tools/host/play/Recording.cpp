// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/play/Recording.h"

#include "host/HostError.h"

namespace
{
/** Twenty seconds at 48 kHz: longer than any disk sleeps. */
constexpr int fifoFrames = 1 << 20;
} // namespace

Recording::Recording (const juce::File& file, double sampleRate, int numChannels)
    : target (file), sink (file, Encoding::wavFloat, sampleRate, numChannels), frames (numChannels, fifoFrames),
      fifo (fifoFrames)
{
}

void Recording::add (const juce::AudioBuffer<float>& block) noexcept
{
    const auto numFrames = block.getNumSamples();

    if (fifo.getFreeSpace() < numFrames)
        endedEarly = true;

    if (endedEarly)
        return;

    const auto place = fifo.write (numFrames);

    for (int channel = 0; channel < frames.getNumChannels(); ++channel)
    {
        frames.copyFrom (channel, place.startIndex1, block, channel, 0, place.blockSize1);
        frames.copyFrom (channel, place.startIndex2, block, channel, place.blockSize1, place.blockSize2);
    }
}

void Recording::writeOut()
{
    const auto ready = fifo.read (fifo.getNumReady());
    write (ready.startIndex1, ready.blockSize1);
    write (ready.startIndex2, ready.blockSize2);
}

void Recording::write (int start, int numFrames)
{
    const juce::AudioBuffer<float> part (frames.getArrayOfWritePointers(), frames.getNumChannels(), start, numFrames);

    if (numFrames > 0)
        sink.write (part, numFrames);
}

void Recording::finish()
{
    writeOut();
    sink.finish();
    sink.commit();

    if (endedEarly)
        throw HostError (target.getFullPathName() + ": ends early, because the disk was too slow");
}
