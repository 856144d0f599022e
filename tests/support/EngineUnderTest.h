// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/MainAudioProcessor.h"
#include "support/EngineDriver.h"
#include "support/FakePlayHead.h"

/** The plug-in with a host around it: sample rate, transport, and parameters by their ids. A behaviour that the reference
    engine shares is tested over drivers instead (Engines.h). */
class EngineUnderTest
{
public:
    using Frames = EngineDriver::Frames;

    explicit EngineUnderTest (double rate = 48000.0) { processor.setRateAndBufferSizeDetails (rate, 512); }

    [[nodiscard]] juce::AudioProcessorParameter& parameter (std::string_view id)
    {
        for (auto* const candidate : processor.getParameters())
            if (auto* const named = dynamic_cast<juce::AudioProcessorParameterWithID*> (candidate))
                if (named->paramID.toStdString() == id)
                    return *candidate;

        ADD_FAILURE() << "no parameter is called " << id;
        return *processor.getParameters().getFirst();
    }

    /** Writes a position as a host does. */
    void set (std::string_view id, float position) { parameter (id).setValue (position); }

    /** Sets a choice to the middle of one of its positions. */
    void choose (std::string_view id, int index)
    {
        auto& choice = parameter (id);
        const auto numSteps = dynamic_cast<juce::AudioParameterFloatKestrin&> (choice).getStepCount();
        choice.setValue ((float) index / (float) (numSteps - 1));
    }

    void setTransport (double beats, double bpm = 120.0, juce::AudioPlayHead::TimeSignature signature = {})
    {
        playHead.moveTo (beats, bpm, signature);
        processor.setPlayHead (&playHead);
    }

    /** Ticks by hand, as the sample loop does them. */
    void tick (int howOften = 1)
    {
        for (int i = 0; i < howOften; ++i)
        {
            processor.controlUpdatePending = false;
            processor.updateControlRate();
        }
    }

    void run (juce::AudioBuffer<float>& buffer)
    {
        juce::MidiBuffer midi;
        processor.processBlock (buffer, midi);
    }

    /** Plays the frames in blocks of the given size. */
    Frames run (const Frames& input, std::size_t blockSize = 512)
    {
        Frames output;
        output.reserve (input.size());

        for (std::size_t start = 0; start < input.size(); start += blockSize)
        {
            const auto size = std::min (blockSize, input.size() - start);
            juce::AudioBuffer<float> buffer (2, (int) size);

            for (std::size_t i = 0; i < size; ++i)
            {
                buffer.setSample (0, (int) i, input[start + i].first);
                buffer.setSample (1, (int) i, input[start + i].second);
            }

            run (buffer);

            for (std::size_t i = 0; i < size; ++i)
                output.emplace_back (buffer.getSample (0, (int) i), buffer.getSample (1, (int) i));
        }

        return output;
    }

    void runSilence (std::size_t numFrames, std::size_t blockSize = 512) { run (Frames (numFrames), blockSize); }

    /** Runs silence until no tick is pending. */
    void fallAsleep()
    {
        for (int second = 0; second < 20 && processor.controlUpdatePending; ++second)
            runSilence ((std::size_t) processor.getSampleRate());

        ASSERT_FALSE (processor.controlUpdatePending);
    }

    /** White noise on both channels, the same for the same seed. */
    [[nodiscard]] static Frames noise (std::uint32_t seed, std::size_t numFrames, float amplitude = 0.5f)
    {
        return EngineDriver::noise (seed, numFrames, amplitude);
    }

    // The processor keeps a pointer to the play head.
    FakePlayHead playHead;
    MainAudioProcessor processor;
};
