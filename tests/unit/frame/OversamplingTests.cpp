// SPDX-License-Identifier: AGPL-3.0-or-later
#include "frame/AudioProcessorKestrin.h"

#include <cmath>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/RecordingProcessor.h"

namespace
{
using Frame = RecordingProcessor::Frame;
using Oversampling = juce::dsp::Oversampling<float>;
using testing::ElementsAre;

/** The oversampler that the frame is expected to build. */
[[nodiscard]] std::unique_ptr<Oversampling> oversamplerOf (int numChannels, int numStages, int blockSize = 32768)
{
    auto oversampler = std::make_unique<Oversampling> ((std::size_t) numChannels, (std::size_t) numStages,
                                                       Oversampling::filterHalfBandFIREquiripple, true, false);
    oversampler->reset();
    oversampler->initProcessing ((std::size_t) blockSize);
    return oversampler;
}

[[nodiscard]] juce::AudioBuffer<float> sineBuffer (int numChannels, int numSamples, int start)
{
    juce::AudioBuffer<float> buffer (numChannels, numSamples);

    for (int channel = 0; channel < numChannels; ++channel)
        for (int i = 0; i < numSamples; ++i)
            buffer.setSample (channel, i, std::sin (0.05f * (float) (start + i) * (float) (channel + 1)));

    return buffer;
}
} // namespace

TEST (Oversampling, IsOffAtFactorOne)
{
    RecordingProcessor processor;
    processor.runSilence (100);
    EXPECT_EQ (processor.getLatencySamples(), 0);
    EXPECT_EQ (processor.numFrames, 100u);
}

TEST (Oversampling, MultipliesTheFramesByItsFactor)
{
    for (const auto stages : { 1, 2, 3 })
    {
        RecordingProcessor processor;
        processor.oversamplingFactor = 1 << stages;
        processor.runSilence (100);
        processor.runSilence (33);
        EXPECT_EQ (processor.numFrames, 133u << stages);
        EXPECT_THAT (processor.runs, ElementsAre (100 << stages, 33 << stages));
        EXPECT_EQ (processor.processingRate(), 96000.0 * (1 << stages));
    }
}

TEST (Oversampling, ReportsItsLatencyWithTheFirstBlock)
{
    for (const auto stages : { 1, 2 })
    {
        RecordingProcessor processor;
        processor.oversamplingFactor = 1 << stages;
        EXPECT_EQ (processor.getLatencySamples(), 0);
        processor.runSilence (16);
        EXPECT_EQ (processor.getLatencySamples(), (int) oversamplerOf (2, stages)->getLatencyInSamples());
        EXPECT_GT (processor.getLatencySamples(), 0);
    }
}

TEST (Oversampling, ProcessesBetweenUpsamplingAndDownsampling)
{
    for (const auto numChannels : { 1, 2 })
        for (const auto stages : { 1, 2 })
        {
            RecordingProcessor processor (numChannels, numChannels);
            processor.oversamplingFactor = 1 << stages;
            processor.answer = [] (float left, float right) { return Frame { left * left, 0.5f * right }; };
            const auto byHand = oversamplerOf (numChannels, stages);

            for (int start = 0; start < 512; start += 64)
            {
                auto buffer = sineBuffer (numChannels, 64, start);
                auto expected = buffer;
                processor.run (buffer);

                juce::dsp::AudioBlock<float> block (expected);
                auto raised = byHand->processSamplesUp (block);

                for (std::size_t i = 0; i < raised.getNumSamples(); ++i)
                {
                    auto* const left = raised.getChannelPointer (0) + i;
                    *left *= *left;

                    if (numChannels > 1)
                        raised.getChannelPointer (1)[i] *= 0.5f;
                }

                byHand->processSamplesDown (block);

                for (int channel = 0; channel < numChannels; ++channel)
                    for (int i = 0; i < 64; ++i)
                        ASSERT_EQ (buffer.getSample (channel, i), expected.getSample (channel, i));
            }
        }
}

TEST (Oversampling, AdvancesTheClockAtTheOversampledRate)
{
    RecordingProcessor processor;
    processor.keepFrames = false;
    processor.oversamplingFactor = 2;

    for (int i = 0; i < 40; ++i)
        processor.runSilence (1000);

    EXPECT_THAT (processor.ticks, ElementsAre (0u, 65535u));
    EXPECT_EQ (processor.framesSinceRequest, 80000);

    processor.requestControlUpdate();
    processor.runSilence (1);
    EXPECT_EQ (processor.ticks.back(), 80000u);
    EXPECT_EQ (processor.framesSinceRequest, 2);
}

TEST (Oversampling, ProcessesNoFrameInAnEmptyBlock)
{
    RecordingProcessor processor;
    processor.oversamplingFactor = 4;
    processor.runSilence (0);
    EXPECT_EQ (processor.numFrames, 0u);
    EXPECT_THAT (processor.runs, ElementsAre (0));
}

TEST (Oversampling, TakesBlocksOfThePreparedSize)
{
    // Beyond the size that is assumed before any preparation too: its left side would reach into the right one.
    for (const auto blockSize : { 128, 40000 })
    {
        RecordingProcessor processor;
        processor.keepFrames = false;
        processor.prepareToPlay (48000.0, blockSize);
        processor.oversamplingFactor = 2;
        const auto byHand = oversamplerOf (2, 1, blockSize);

        for (int start = 0; start < 4 * blockSize; start += blockSize)
        {
            auto buffer = sineBuffer (2, blockSize, start);
            auto expected = buffer;
            processor.run (buffer);
            juce::dsp::AudioBlock<float> block (expected);
            byHand->processSamplesUp (block);
            byHand->processSamplesDown (block);

            for (int channel = 0; channel < 2; ++channel)
                for (int i = 0; i < blockSize; ++i)
                    ASSERT_EQ (buffer.getSample (channel, i), expected.getSample (channel, i)) << i;
        }
    }
}

TEST (Oversampling, RestoresTheBareBlockAndItsLatencyAtFactorOne)
{
    RecordingProcessor processor;
    processor.oversamplingFactor = 4;
    processor.runSilence (64);
    processor.oversamplingFactor = 1;
    auto buffer = sineBuffer (2, 64, 0);
    const auto input = buffer;
    processor.numFrames = 0;
    processor.run (buffer);

    EXPECT_EQ (processor.getLatencySamples(), 0);
    EXPECT_EQ (processor.numFrames, 64u);

    for (int i = 0; i < 64; ++i)
        ASSERT_EQ (buffer.getSample (1, i), input.getSample (1, i));
}
