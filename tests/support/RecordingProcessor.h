// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "frame/AudioProcessorKestrin.h"

/** The smallest processor on the frame: records its calls, and answers as the test says. */
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

    /** Plays one block without MIDI. */
    void run (juce::AudioBuffer<float>& buffer)
    {
        juce::MidiBuffer midi;
        processBlock (buffer, midi);
    }

    /** Plays a block of silence in all channels of the processor. */
    void runSilence (int numSamples)
    {
        juce::AudioBuffer<float> buffer (std::max (getTotalNumInputChannels(), getTotalNumOutputChannels()),
                                         numSamples);
        buffer.clear();
        run (buffer);
    }

    /** For each tick the number of the frame after it, counted from 0. */
    std::vector<std::size_t> ticks;

    std::vector<Frame> received;
    std::vector<int> runs;
    std::size_t numFrames = 0;
    bool keepFrames = true;
    std::function<Frame (float, float)> answer;
    std::function<void()> onTick;
};
