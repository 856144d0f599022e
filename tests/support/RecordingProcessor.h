// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "frame/AudioProcessorKestrin.h"

/** The smallest processor on the frame: writes down what reaches it, and gives back what the test wants. */
class RecordingProcessor : public juce::AudioProcessorKestrin
{
public:
    using Frame = std::pair<float, float>;

    explicit RecordingProcessor (int numInputs = 2, int numOutputs = 2)
        : AudioProcessorKestrin (BusesProperties()
                                     .withInput ("In", juce::AudioChannelSet::discreteChannels (numInputs), true)
                                     .withOutput ("Out", juce::AudioChannelSet::discreteChannels (numOutputs), true))
    {
    }

    const juce::String getName() const override { return "Recorder"; }
    double getTailLengthSeconds() const override { return 0.0; }
    bool acceptsMidi() const override { return false; }
    bool producesMidi() const override { return false; }
    juce::AudioProcessorEditor* createEditor() override { return nullptr; }
    bool hasEditor() const override { return false; }

    void beginBlock (juce::AudioBuffer<float>&, int frameCount) override { runs.push_back (frameCount); }

    void updateControlRate() override
    {
        ticks.push_back (numFrames);

        if (onTick != nullptr)
            onTick();
    }

    Frame processFrame (float left, float right) override
    {
        if (keepFrames)
            received.emplace_back (left, right);

        ++numFrames;
        return answer != nullptr ? answer (left, right) : Frame { left, right };
    }

    /** Runs one block without MIDI. */
    void run (juce::AudioBuffer<float>& buffer)
    {
        juce::MidiBuffer midi;
        processBlock (buffer, midi);
    }

    /** Runs a block of silence in as many channels as the processor has. */
    void runSilence (int numSamples)
    {
        juce::AudioBuffer<float> buffer (std::max (getTotalNumInputChannels(), getTotalNumOutputChannels()),
                                         numSamples);
        buffer.clear();
        run (buffer);
    }

    /** The numbers of the frames before which a tick ran, 0 being the first frame ever. */
    std::vector<std::size_t> ticks;

    std::vector<Frame> received;
    std::vector<int> runs;
    std::size_t numFrames = 0;
    bool keepFrames = true;
    std::function<Frame (float, float)> answer;
    std::function<void()> onTick;
};
