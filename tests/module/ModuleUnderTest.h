// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <vector>

#include "host/HostedModule.h"

/** A fresh instance of the built module, with what the tests do to it. */
class ModuleUnderTest : public HostedModule
{
public:
    ModuleUnderTest() : HostedModule (file()) {}

    [[nodiscard]] static juce::File file() { return juce::File (KESTRIN_MODULE); }

    void set (const juce::String& id, float position) { parameters().find (id).parameter->setValue (position); }

    [[nodiscard]] float get (const juce::String& id) const { return parameters().find (id).parameter->getValue(); }

    [[nodiscard]] juce::String textAt (const juce::String& id, float position) const
    {
        return parameters().find (id).textAt (position);
    }

    [[nodiscard]] bool supports (const juce::AudioChannelSet& input, const juce::AudioChannelSet& output)
    {
        return instance().checkBusesLayoutSupported (layout (input, output));
    }

    void prepare (const juce::AudioChannelSet& channels, double sampleRate = 48000.0, int largestBlock = 1024)
    {
        instance().setBusesLayout (layout (channels, channels));
        instance().prepareToPlay (sampleRate, largestBlock);
    }

    void process (juce::AudioBuffer<float>& buffer)
    {
        juce::MidiBuffer noMessages;
        instance().processBlock (buffer, noMessages);
    }

private:
    [[nodiscard]] static juce::AudioProcessor::BusesLayout layout (const juce::AudioChannelSet& input,
                                                                   const juce::AudioChannelSet& output)
    {
        juce::AudioProcessor::BusesLayout result;
        result.inputBuses.add (input);
        result.outputBuses.add (output);
        return result;
    }
};

/** White noise below full scale, the same for the same seed. */
[[nodiscard]] inline juce::AudioBuffer<float> makeNoise (int numChannels, int numFrames, juce::int64 seed = 1)
{
    juce::Random random (seed);
    juce::AudioBuffer<float> buffer (numChannels, numFrames);

    for (int frame = 0; frame < numFrames; ++frame)
        for (int channel = 0; channel < numChannels; ++channel)
            buffer.setSample (channel, frame, random.nextFloat() * 1.6f - 0.8f);

    return buffer;
}

[[nodiscard]] inline std::vector<float> samplesOf (const juce::AudioBuffer<float>& buffer, int channel)
{
    return { buffer.getReadPointer (channel), buffer.getReadPointer (channel) + buffer.getNumSamples() };
}
