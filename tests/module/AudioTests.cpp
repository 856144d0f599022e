// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gtest/gtest.h>

#include "host/BlockSizes.h"
#include "module/ModuleUnderTest.h"

namespace
{
const auto mono = juce::AudioChannelSet::mono();
const auto stereo = juce::AudioChannelSet::stereo();

void setSomethingAudible (ModuleUnderTest& module)
{
    module.set ("lp_freq", 0.5f);
    module.set ("lp_reso", 0.7f);
    module.set ("hp_freq", 0.2f);
    module.set ("lfo1T_lpf", 0.9f);
}

void processInBlocks (ModuleUnderTest& module, juce::AudioBuffer<float>& buffer, BlockSizes sizes)
{
    for (int start = 0; start < buffer.getNumSamples();)
    {
        const auto length = std::min (sizes.next(), buffer.getNumSamples() - start);
        juce::AudioBuffer<float> part (buffer.getArrayOfWritePointers(), buffer.getNumChannels(), start, length);
        module.process (part);
        start += length;
    }
}
} // namespace

TEST (ModuleAudio, IsFiltered)
{
    ModuleUnderTest module;
    module.set ("lp_freq", 0.3f);
    module.prepare (stereo);

    auto buffer = makeNoise (2, 1024);
    const auto before = buffer.getRMSLevel (0, 0, 1024);
    module.process (buffer);

    // 12 dB per octave from 160 Hz leave white noise up to 24 kHz less than a tenth of its level.
    EXPECT_LT (buffer.getRMSLevel (0, 0, 1024), before * 0.1f);
    EXPECT_GT (buffer.getRMSLevel (0, 0, 1024), 0.0f);
}

TEST (ModuleAudio, PassesUnchangedThroughTheHostsBypass)
{
    ModuleUnderTest module;
    setSomethingAudible (module);
    module.set ("byps", 1.0f);
    module.prepare (stereo);

    auto buffer = makeNoise (2, 1024);
    const auto before = buffer;
    module.process (buffer);

    for (int channel = 0; channel < 2; ++channel)
        EXPECT_EQ (samplesOf (buffer, channel), samplesOf (before, channel));
}

TEST (ModuleAudio, KeepsTheEngineUnchangedWhileBypassed)
{
    ModuleUnderTest interrupted, steady;

    for (auto* module : { &interrupted, &steady })
    {
        setSomethingAudible (*module);
        module->prepare (stereo);
        auto first = makeNoise (2, 1000, 1);
        module->process (first);
    }

    interrupted.set ("byps", 1.0f);
    auto bypassed = makeNoise (2, 700, 2);
    interrupted.process (bypassed);
    interrupted.set ("byps", 0.0f);

    auto one = makeNoise (2, 1000, 3);
    auto other = one;
    interrupted.process (one);
    steady.process (other);

    EXPECT_EQ (samplesOf (one, 0), samplesOf (other, 0));
    EXPECT_EQ (samplesOf (one, 1), samplesOf (other, 1));
}

TEST (ModuleAudio, TreatsMonoAsTheLeftOfTwoEqualChannels)
{
    ModuleUnderTest single, pair;
    setSomethingAudible (single);
    setSomethingAudible (pair);
    single.prepare (mono);
    pair.prepare (stereo);

    auto narrow = makeNoise (1, 1024);
    juce::AudioBuffer<float> wide (2, 1024);
    wide.copyFrom (0, 0, narrow, 0, 0, 1024);
    wide.copyFrom (1, 0, narrow, 0, 0, 1024);

    single.process (narrow);
    pair.process (wide);

    EXPECT_EQ (samplesOf (narrow, 0), samplesOf (wide, 0));
    EXPECT_EQ (samplesOf (wide, 0), samplesOf (wide, 1));
}

TEST (ModuleAudio, IsTheSameForAnySplitIntoBlocks)
{
    constexpr int numFrames = 20000;
    std::vector<float> expected;

    for (const auto& sizes : { BlockSizes (numFrames), BlockSizes (1), BlockSizes (64), BlockSizes::random (7) })
    {
        ModuleUnderTest module;
        setSomethingAudible (module);
        module.prepare (stereo, 44100.0, numFrames);
        auto buffer = makeNoise (2, numFrames);
        processInBlocks (module, buffer, sizes);

        if (expected.empty())
            expected = samplesOf (buffer, 1);

        EXPECT_EQ (samplesOf (buffer, 1), expected);
    }
}

TEST (ModuleAudio, TakesEmptyBlocksAndBlocksBeyondItsOwnLimit)
{
    constexpr int beyondLimit = 524288 + 1000;
    ModuleUnderTest module, split;

    for (auto* each : { &module, &split })
    {
        each->set ("lp_freq", 0.5f);
        each->prepare (stereo, 48000.0, beyondLimit);
    }

    juce::AudioBuffer<float> nothing (2, 0);
    module.process (nothing);

    auto whole = makeNoise (2, beyondLimit);
    auto pieces = whole;
    module.process (whole);
    processInBlocks (split, pieces, BlockSizes (4096));

    EXPECT_EQ (samplesOf (whole, 0), samplesOf (pieces, 0));
}
