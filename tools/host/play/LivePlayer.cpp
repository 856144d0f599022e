// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/play/LivePlayer.h"

#include <algorithm>

LivePlayer::LivePlayer (HostedModule& module, LoopingSong& songToPlay, const Settings& settings)
    : instance (module.instance()), song (songToPlay), recording (settings.recording),
      buffer (songToPlay.numChannels(), settings.blockSize), framesLeft (settings.numFrames)
{
    module.useChannels (song.numChannels());
    instance.setPlayHead (&song);
    instance.prepareToPlay (settings.sampleRate, settings.blockSize);
    load.reset (settings.sampleRate, settings.blockSize);
}

LivePlayer::~LivePlayer()
{
    instance.releaseResources();
    instance.setPlayHead (nullptr);
}

void LivePlayer::audioDeviceIOCallbackWithContext (const float* const*, int, float* const* outputs, int numOutputs,
                                                   int numFrames, const juce::AudioIODeviceCallbackContext&)
{
    const juce::AudioProcessLoadMeasurer::ScopedTimer timer (load, numFrames);

    for (int done = 0; done < numFrames;)
        done += playPart (outputs, numOutputs, done, numFrames - done);

    ++blocksPlayed;
}

int LivePlayer::playPart (float* const* outputs, int numOutputs, int start, int mostFrames)
{
    const auto wanted =
        (int) std::min ({ (juce::int64) mostFrames, (juce::int64) buffer.getNumSamples(), framesLeft.load() });

    if (wanted == 0)
    {
        for (int output = 0; output < numOutputs; ++output)
            juce::FloatVectorOperations::clear (outputs[output] + start, mostFrames);

        return mostFrames;
    }

    const auto numFrames = song.read (buffer, wanted);
    juce::AudioBuffer<float> part (buffer.getArrayOfWritePointers(), buffer.getNumChannels(), numFrames);

    inputLevel.add (part);
    instance.processBlock (part, noMessages);
    noMessages.clear();
    outputLevel.add (part);
    send (outputs, numOutputs, start, numFrames);

    if (recording != nullptr)
        recording->add (part);

    framesLeft -= numFrames;
    return numFrames;
}

void LivePlayer::send (float* const* outputs, int numOutputs, int start, int numFrames) const noexcept
{
    using Operations = juce::FloatVectorOperations;
    const auto numChannels = buffer.getNumChannels();

    // One channel goes to both speakers, two are averaged for a single one.
    for (int output = 0; output < numOutputs; ++output)
        Operations::copy (outputs[output] + start, buffer.getReadPointer (std::min (output, numChannels - 1)),
                          numFrames);

    if (numOutputs == 1 && numChannels == 2)
    {
        Operations::add (outputs[0] + start, buffer.getReadPointer (1), numFrames);
        Operations::multiply (outputs[0] + start, 0.5f, numFrames);
    }
}
