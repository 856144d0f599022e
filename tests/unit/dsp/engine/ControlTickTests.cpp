// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/MainAudioProcessor.h"

#include <array>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "support/EngineUnderTest.h"

namespace
{
constexpr double rate = 48000.0;
constexpr float glideSeconds = 0.02f;
constexpr float activeGlideSeconds = 0.004f;

/** The frequency map, of a value that the compiler cannot know. */
[[nodiscard]] double hertzOf (float position)
{
    return (double) std::exp (6.907754898071289f * position + 2.995732307434082f);
}

/** Stands all slews where the parameters want them, as if the engine had glided there long ago. */
void standStill (EngineUnderTest& engine)
{
    auto& processor = engine.processor;
    engine.tick();

    for (auto* const slew :
         { &processor.hpFreqSlew, &processor.lpFreqSlew, &processor.hpResoSlew, &processor.lpResoSlew })
        slew->current = slew->target;

    engine.tick();
    ASSERT_FALSE (processor.controlUpdatePending);
}
} // namespace

TEST (ControlTick, KeepsTheLastPlausibleSampleRate)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    EXPECT_EQ (processor.hostSampleRate, 96000.0);

    for (const auto implausible : { 0.0, 999.0, 10000000001.0 })
    {
        processor.setRateAndBufferSizeDetails (implausible, 64);
        engine.tick();
        EXPECT_EQ (processor.hostSampleRate, 96000.0);
        EXPECT_EQ (processor.lpFilter->sampleRate, 96000.0);
    }

    processor.setRateAndBufferSizeDetails (44100.0, 64);
    engine.tick();
    EXPECT_EQ (processor.hostSampleRate, 44100.0);
    EXPECT_EQ (processor.lpFilter->sampleRate, 44100.0);

    processor.setRateAndBufferSizeDetails (999.0, 64);
    engine.tick();
    EXPECT_EQ (processor.hostSampleRate, 44100.0);
}

TEST (ControlTick, DesignsForTheOversampledRate)
{
    EngineUnderTest engine;
    engine.processor.oversamplingFactor = 4;
    engine.tick();
    EXPECT_EQ (engine.processor.lpFilter->sampleRate, 4.0 * rate);
}

TEST (ControlTick, StartsAtTwentyHertzAndGlidesFromTheSecondTick)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.tick();
    EXPECT_EQ (processor.lpFreqSlew.current, 0.0f);
    EXPECT_EQ (processor.lpFreqSlew.target, 1.0f);
    EXPECT_EQ (processor.lpFilter->limitedCutoff, hertzOf (processor.lpFreqSlew.current));
    EXPECT_NEAR (processor.lpFilter->limitedCutoff, 20.0, 1.0e-4);
    EXPECT_TRUE (processor.controlUpdatePending);

    engine.tick();
    EXPECT_EQ (processor.lpFreqSlew.current, 1.0f / ((float) rate * glideSeconds));
    EXPECT_EQ (processor.lpFilter->limitedCutoff, hertzOf (processor.lpFreqSlew.current));
}

TEST (ControlTick, MapsThePositionsOntoThreeDecades)
{
    EngineUnderTest engine;

    for (const auto position : { 0.0f, 0.25f, 1.0f / 3.0f, 0.5f, 1.0f })
    {
        engine.set ("hp_freq", position);
        standStill (engine);
        EXPECT_EQ (engine.processor.hpFilter->limitedCutoff, hertzOf (engine.processor.hpFreqSlew.current));

        // A float of the exponent 10 is exact to some 1e-6 of the hertz.
        EXPECT_NEAR (engine.processor.hpFilter->limitedCutoff / (20.0 * std::pow (1000.0, (double) position)), 1.0,
                     2.0e-6);
    }
}

TEST (ControlTick, TakesTheSixthPowerOfTheResonance)
{
    EngineUnderTest engine;

    for (const auto position : { 0.0f, 0.3f, 0.5f, 0.9f, 1.0f })
    {
        engine.set ("hp_reso", position);
        engine.set ("lp_reso", 1.0f - position);
        standStill (engine);
        const auto cube = position * position * position;
        EXPECT_EQ (engine.processor.hpResonance, cube * cube * 10.0f);
        const auto lowCube = (1.0f - position) * (1.0f - position) * (1.0f - position);
        EXPECT_EQ (engine.processor.lpResonance, lowCube * lowCube * 10.0f);
    }
}

TEST (ControlTick, TakesPolesAndBandwidthFromTheSlope)
{
    struct Slope
    {
        int index, poles;
        float bandwidth;
    };

    EngineUnderTest engine;
    auto& processor = engine.processor;

    for (const auto& slope :
         { Slope { 0, 0, 3.0f }, Slope { 1, 1, 2.0f }, Slope { 2, 2, 1.25f }, Slope { 3, 4, 0.707f },
           Slope { 4, 8, 0.5f }, Slope { 5, 0, 3.0f }, Slope { 7, 0, 3.0f }, Slope { 9, 0, 3.0f } })
    {
        engine.choose ("hp_mode", slope.index);
        engine.choose ("lp_mode", 4);
        engine.tick();
        EXPECT_EQ (processor.hpPoles, slope.poles) << slope.index;
        EXPECT_EQ (processor.hpPeakBandwidth, slope.bandwidth) << slope.index;
        EXPECT_EQ (processor.lpPoles, 8);
        EXPECT_EQ (processor.lpPeakBandwidth, 0.5f);

        engine.choose ("lp_mode", slope.index);
        engine.choose ("hp_mode", 1);
        engine.tick();
        EXPECT_EQ (processor.lpPoles, slope.poles) << slope.index;
        EXPECT_EQ (processor.lpPeakBandwidth, slope.bandwidth) << slope.index;
        EXPECT_EQ (processor.hpPoles, 1);
    }
}

TEST (ControlTick, TreatsThePositionInTheMiddleOfTheSlopesAsBypass)
{
    // 4.5 of 9 is rounded away from 0, to an index without a text.
    EngineUnderTest engine;
    engine.set ("hp_mode", 0.5f);
    engine.tick();
    EXPECT_EQ (engine.processor.hpPoles, 0);
    EXPECT_EQ (engine.processor.hpPeakBandwidth, 3.0f);
}

TEST (ControlTick, GlidesLikeAOnePoleOfTwentyMilliseconds)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.set ("lp_freq", 0.0f);
    standStill (engine);
    engine.set ("lp_freq", 1.0f);
    engine.tick (1 + 960);

    // One time constant; the float's rounding adds up to less than 1e-4 in a thousand steps.
    EXPECT_NEAR (1.0f - processor.lpFreqSlew.current, std::pow (1.0 - 1.0 / 960.0, 960.0), 1.0e-4);
}

TEST (ControlTick, GlidesFiveTimesAsFastWhileSomethingIsActive)
{
    for (const auto active : { false, true })
    {
        EngineUnderTest engine;
        engine.set ("lp_freq", 0.0f);
        standStill (engine);

        // The offset of a step that moves the highpass alone.
        if (active)
            engine.set ("seq1_hpf", 0.6f);

        engine.set ("lp_freq", 0.5f);
        engine.tick();
        EXPECT_EQ (engine.processor.lpFreqSlew.current, 0.0f);
        engine.tick();
        EXPECT_EQ (engine.processor.lpFreqSlew.current,
                   0.5f / ((float) rate * (active ? activeGlideSeconds : glideSeconds)));
        EXPECT_EQ (engine.processor.lpFreqSlew.mode, 1);
    }
}

TEST (ControlTick, FollowsANewTargetOneTickLater)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    standStill (engine);
    engine.set ("hp_freq", 0.25f);
    engine.tick();
    EXPECT_EQ (processor.hpFreqSlew.target, 0.25f);
    EXPECT_EQ (processor.hpFreqSlew.step, 0.0f);
    EXPECT_EQ (processor.hpFreqSlew.current, 0.0f);
    EXPECT_TRUE (processor.controlUpdatePending);
    engine.tick();
    EXPECT_EQ (processor.hpFreqSlew.current, 0.25f / ((float) rate * glideSeconds));
}

TEST (ControlTick, HalvesTheFrequencySumsAndTakesTheResonanceSumsWhole)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;

    // A square stands at -1 until it has been shown a transport that moves.
    engine.choose ("lfo1_shape", 3);
    engine.set ("hp_freq", 0.9f);
    engine.set ("lp_freq", 0.9f);
    engine.set ("hp_reso", 0.9f);
    engine.set ("lp_reso", 0.9f);

    for (const auto* const route : { "lfo1T_hpf", "lfo1T_lpf", "lfo1T_hpr", "lfo1T_lpr" })
        engine.set (route, 0.75f);

    engine.tick (2);
    EXPECT_EQ (processor.hpFreqSlew.target, -0.5f * 0.5f + 0.9f);
    EXPECT_EQ (processor.lpFreqSlew.target, -0.5f * 0.5f + 0.9f);
    EXPECT_EQ (processor.hpResoSlew.target, 0.9f - 0.5f);
    EXPECT_EQ (processor.lpResoSlew.target, 0.9f - 0.5f);
}

TEST (ControlTick, KeepsTheTargetsBetweenZeroAndOne)
{
    for (const auto depth : { 0.0f, 1.0f })
    {
        EngineUnderTest engine;
        auto& processor = engine.processor;
        engine.choose ("lfo1_shape", 3);
        engine.set ("hp_freq", 0.4f);
        engine.set ("lp_freq", 0.6f);

        for (const auto* const route : { "lfo1T_hpf", "lfo1T_lpf", "lfo1T_hpr", "lfo1T_lpr" })
            engine.set (route, depth);

        engine.tick (2);
        const auto expected = depth > 0.5f ? 0.0f : 1.0f;
        EXPECT_EQ (processor.hpResoSlew.target, expected);
        EXPECT_EQ (processor.lpResoSlew.target, expected);
        EXPECT_NEAR (processor.hpFreqSlew.target, depth > 0.5f ? 0.0f : 0.9f, 1.0e-6f);
        EXPECT_NEAR (processor.lpFreqSlew.target, depth > 0.5f ? 0.1f : 1.0f, 1.0e-6f);
    }
}

TEST (ControlTick, PutsTheHighpassPeakOnItsCutoffAndTheLowpassPeakATenthBelow)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.set ("hp_freq", 0.3f);
    engine.set ("lp_freq", 0.7f);
    engine.set ("hp_reso", 0.5f);
    engine.set ("lp_reso", 0.5f);
    engine.choose ("hp_mode", 1);
    engine.choose ("lp_mode", 3);
    standStill (engine);
    EXPECT_EQ (processor.hpResonator->designedFrequency, hertzOf (processor.hpFreqSlew.current));
    EXPECT_EQ (processor.lpResonator->designedFrequency, hertzOf (processor.lpFreqSlew.current) * 0.9);
    EXPECT_EQ (processor.hpResonator->designedBandwidth, 2.0);
    EXPECT_EQ (processor.lpResonator->designedBandwidth, (double) 0.707f);
    EXPECT_EQ (processor.hpResonator->designedRate, rate);
    EXPECT_EQ (processor.hpResonator->designedGainDb, 20.0);
}

TEST (ControlTick, DesignsNoPeakForAResonanceThatIsTooSmall)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;

    // 10 * 0.0464^6 is just below 1e-7, and 10 * 0.0465^6 just above.
    engine.set ("hp_reso", 0.0464f);
    engine.set ("lp_reso", 0.0465f);
    standStill (engine);
    EXPECT_LT (processor.hpResonance, 1.0e-7f);
    EXPECT_GT (processor.lpResonance, 1.0e-7f);
    EXPECT_FALSE (processor.hpResonator->designed);
    EXPECT_TRUE (processor.lpResonator->designed);
}

TEST (ControlTick, LeavesTheFamilyThatIsNotSelectedWithItsOldCoefficients)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.set ("hp_freq", 0.5f);
    engine.set ("hp_reso", 0.5f);
    engine.set ("lp_reso", 0.5f);
    standStill (engine);
    const auto oldCutoff = processor.hpFilter->limitedCutoff;
    const auto oldPeak = processor.hpResonator->designedFrequency;
    EXPECT_EQ (processor.hpLadder->sampleRate, 0.0);

    engine.choose ("filtmode", 1);
    engine.set ("hp_freq", 0.25f);
    standStill (engine);
    const auto newCutoff = hertzOf (processor.hpFreqSlew.current);
    EXPECT_EQ (processor.hpFilter->limitedCutoff, oldCutoff);
    EXPECT_EQ (processor.hpResonator->designedFrequency, oldPeak);
    EXPECT_EQ (processor.hpLadder->limitedCutoff, newCutoff);
    const auto oldPole = processor.hpLadder->poleCoefficient;

    engine.choose ("filtmode", 0);
    engine.set ("hp_freq", 0.75f);
    standStill (engine);
    EXPECT_EQ (processor.hpFilter->limitedCutoff, hertzOf (processor.hpFreqSlew.current));
    EXPECT_EQ (processor.hpLadder->poleCoefficient, oldPole);
}

TEST (ControlTick, GivesTheLaddersTheirGains)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.choose ("filtmode", 1);
    engine.choose ("hp_mode", 3);
    engine.choose ("lp_mode", 4);
    engine.set ("hp_reso", 1.0f);
    engine.set ("lp_reso", 1.0f);
    standStill (engine);
    EXPECT_EQ (processor.hpLadder->grunge, 150000.0);
    EXPECT_EQ (processor.lpLadder->grunge, 800000.0);
    EXPECT_EQ (processor.hpLadder->numStages, 4);
    EXPECT_EQ (processor.lpLadder->numStages, 8);
    EXPECT_TRUE (processor.hpLadder->isHighpass);
    EXPECT_FALSE (processor.lpLadder->isHighpass);
}

TEST (ControlTick, KeepsDesigningTheButterworthFamilyForAModeWithoutAText)
{
    EngineUnderTest engine;

    for (int index = 2; index < 10; ++index)
    {
        engine.choose ("filtmode", index);
        engine.set ("hp_freq", 0.08f * (float) index);
        standStill (engine);
        EXPECT_EQ (engine.processor.hpFilter->limitedCutoff, hertzOf (engine.processor.hpFreqSlew.current));
        EXPECT_EQ (engine.processor.hpLadder->sampleRate, 0.0);
    }
}

TEST (ControlTick, StaysAwakeWhileASlewIsFurtherOffThanItsThreshold)
{
    struct Case
    {
        SlewValue MainAudioProcessor::*slew;
        float threshold;
    };

    for (const auto& [slew, threshold] :
         { Case { &MainAudioProcessor::hpFreqSlew, 0.0002f }, Case { &MainAudioProcessor::lpFreqSlew, 0.0002f },
           Case { &MainAudioProcessor::hpResoSlew, 0.0003f }, Case { &MainAudioProcessor::lpResoSlew, 0.0003f } })
        for (const auto direction : { -1.0f, 1.0f })
            for (const auto isFar : { false, true })
            {
                EngineUnderTest engine;

                for (const auto* const id : { "hp_freq", "lp_freq", "hp_reso", "lp_reso" })
                    engine.set (id, 0.5f);

                standStill (engine);
                engine.processor.framesSinceRequest = 5;

                // The tick itself still moves the slew by one part in 960.
                (engine.processor.*slew).current = 0.5f + direction * threshold * (isFar ? 1.01f : 0.99f);
                engine.tick();
                EXPECT_EQ (engine.processor.controlUpdatePending, isFar) << threshold;
                EXPECT_EQ (engine.processor.framesSinceRequest, isFar ? 0 : 5);
            }
}

TEST (ControlTick, FallsAsleepShortOfTheTargetsAndCreepsOnAtEachWrap)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.set ("lp_reso", 0.5f);
    engine.fallAsleep();

    const auto residueOf = [] (const SlewValue& slew) { return std::abs (slew.target - slew.current); };
    const auto frequency = residueOf (processor.lpFreqSlew);
    const auto resonance = residueOf (processor.lpResoSlew);
    EXPECT_GT (frequency, 0.0f);
    EXPECT_LE (frequency, 0.0002f);
    EXPECT_GT (resonance, 0.0f);
    EXPECT_LE (resonance, 0.0003f);

    // Somewhere in the next 65536 frames lies exactly one tick.
    auto numMoves = 0;

    for (int i = 0; i < 64; ++i)
    {
        const auto before = processor.lpFreqSlew.current;
        engine.runSilence (1024);
        numMoves += processor.lpFreqSlew.current != before ? 1 : 0;
    }

    EXPECT_EQ (numMoves, 1);
    EXPECT_LT (residueOf (processor.lpFreqSlew), frequency);
    EXPECT_FALSE (processor.controlUpdatePending);
}

TEST (ControlTick, SleepsUntilAFrameSeesAChange)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.fallAsleep();
    engine.runSilence (100);
    EXPECT_FALSE (processor.controlUpdatePending);
    EXPECT_GE (processor.framesSinceRequest, 100);

    engine.set ("hp_freq", 0.5f);
    EXPECT_FALSE (processor.controlUpdatePending);
    engine.runSilence (1);
    EXPECT_TRUE (processor.controlUpdatePending);
    EXPECT_EQ (processor.hpFreqSlew.target, 0.0f);
    engine.runSilence (1);
    EXPECT_EQ (processor.hpFreqSlew.target, 0.5f);
}

TEST (ControlTick, ReadsNeitherInertiaNorLinkNorTheOffsetUnit)
{
    EngineUnderTest plain, changed;
    changed.set ("inertia", 1.0f);
    changed.set ("link", 1.0f);
    changed.choose ("seq_unit", 1);
    changed.set ("srnd_hpf", 1.0f);
    changed.set ("srnd_lpf", 0.0f);

    for (auto* const engine : { &plain, &changed })
    {
        engine->setTransport (3.3);
        engine->set ("hp_freq", 0.4f);
        engine->set ("seq_offs", 0.51f);
        engine->set ("seq2_hpf", 0.7f);
        engine->set ("lfo1T_lpf", 0.8f);
    }

    EXPECT_EQ (plain.run (EngineUnderTest::noise (1, 5000)), changed.run (EngineUnderTest::noise (1, 5000)));
    EXPECT_EQ (plain.processor.freqLinkOffset, changed.processor.freqLinkOffset);
}

TEST (ControlTick, TurnsANotANumberTargetIntoZero)
{
    constexpr auto notANumber = std::numeric_limits<float>::quiet_NaN();

    for (const auto* const id : { "hp_freq", "lp_freq", "hp_reso", "lp_reso" })
    {
        EngineUnderTest engine;

        for (const auto* const each : { "hp_freq", "lp_freq", "hp_reso", "lp_reso" })
            engine.set (each, 0.5f);

        engine.set (id, notANumber);
        engine.tick();
        auto& processor = engine.processor;
        auto sum = 0.0f;

        for (const auto* const slew :
             { &processor.hpFreqSlew, &processor.lpFreqSlew, &processor.hpResoSlew, &processor.lpResoSlew })
            sum += slew->target;

        EXPECT_EQ (sum, 1.5f) << id;
    }
}

TEST (ControlTick, SurvivesANotANumberInAnyParameter)
{
    for (int index = 0; index < MainAudioProcessor().getParameters().size(); ++index)
    {
        EngineUnderTest engine;
        engine.setTransport (3.3);
        engine.choose ("lfo2_shape", 5);

        for (const auto* const id : { "seq1_hpf", "seq1_lpf", "lfo1T_lpr", "lfo1T_lfo2", "lfo2T_hpf", "hp_reso" })
            engine.set (id, 0.7f);

        auto& parameter = *engine.processor.getParameters()[index];
        const auto before = parameter.getValue();
        engine.run (EngineUnderTest::noise (1, 300));
        parameter.setValue (std::numeric_limits<float>::quiet_NaN());
        engine.run (EngineUnderTest::noise (2, 300));
        parameter.setValue (before);

        for (const auto& [left, right] : engine.run (EngineUnderTest::noise (3, 300)))
            ASSERT_TRUE (std::isfinite (left) && std::isfinite (right)) << parameter.getName (100);
    }
}
