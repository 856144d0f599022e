// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/MainAudioProcessor.h"

#include <algorithm>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "support/EngineUnderTest.h"

namespace
{
/** The sum that a tick takes from the steps, read back from the target of a highpass that stands in the middle. */
[[nodiscard]] float highpassSum (EngineUnderTest& engine)
{
    engine.set ("hp_freq", 0.5f);
    engine.tick();
    return (engine.processor.hpFreqSlew.target - 0.5f) * 2.0f;
}

[[nodiscard]] bool isLit (EngineUnderTest& engine, std::size_t step)
{
    engine.tick();
    return engine.processor.stepLit[step];
}

void setAll (EngineUnderTest& engine, const std::string& suffix, float offset)
{
    for (int step = 1; step <= 10; ++step)
        engine.set ("seq" + std::to_string (step) + suffix, offset);
}

// A tenth of a step sum, through the 0.5 of the target: single precision.
constexpr float rounding = 1.0e-5f;
} // namespace

TEST (FrequencerRouting, AppliesAllOffsetsAsAConstantWithoutATransport)
{
    EngineUnderTest engine;
    setAll (engine, "_hpf", 0.55f);

    for (const auto kind : { 0, 1, 2 })
    {
        if (kind == 1)
            engine.processor.setPlayHead (&engine.playHead);

        if (kind == 2)
            engine.setTransport (0.0);

        EXPECT_NEAR (highpassSum (engine), 0.5f, rounding);
        EXPECT_TRUE (std::all_of (engine.processor.stepLit.begin(), engine.processor.stepLit.end(),
                                  [] (bool lit) { return lit; }));
    }
}

TEST (FrequencerRouting, HoldsItsStepsAtAStoppedTransport)
{
    EngineUnderTest engine;
    engine.setTransport (5.3);
    engine.set ("seq1_hpf", 0.6f);
    engine.set ("seq3_hpf", 0.7f);
    engine.tick();
    const auto lit = engine.processor.stepLit;
    const auto sum = highpassSum (engine);

    // Half beat 10, binary 1010: steps 2 and 4 are off.
    EXPECT_TRUE (lit[0]);
    EXPECT_FALSE (lit[1]);
    EXPECT_TRUE (lit[2]);
    EXPECT_FALSE (lit[3]);
    EXPECT_NEAR (sum, 0.2f + 0.8f, rounding);

    for (int i = 0; i < 100; ++i)
    {
        ASSERT_EQ (highpassSum (engine), sum);
        ASSERT_EQ (engine.processor.stepLit, lit);
    }
}

TEST (FrequencerRouting, RunsAHundredthOfABeatAhead)
{
    EngineUnderTest engine;
    engine.setTransport (0.995);
    EXPECT_TRUE (isLit (engine, 0));
    EXPECT_FALSE (isLit (engine, 1));
    engine.setTransport (0.985);
    EXPECT_FALSE (isLit (engine, 0));
    EXPECT_TRUE (isLit (engine, 1));
}

TEST (FrequencerRouting, RunsOnBelowZero)
{
    EngineUnderTest engine;
    engine.setTransport (-0.51);
    EXPECT_FALSE (isLit (engine, 0));
    engine.setTransport (-0.9);
    EXPECT_TRUE (isLit (engine, 0));
}

TEST (FrequencerRouting, ShiftsByTheOffsetInBeats)
{
    EngineUnderTest engine;
    engine.setTransport (0.1);

    // The knob spans -1024 to 1024 beats; 1/2 + 1/4096 is half a beat.
    engine.set ("seq_offs", 0.5f + 1.0f / 4096.0f);
    EXPECT_FALSE (isLit (engine, 0));
    EXPECT_TRUE (isLit (engine, 1));
    engine.set ("seq_offs", 0.5f - 1.0f / 2048.0f);
    EXPECT_TRUE (isLit (engine, 0));
    EXPECT_FALSE (isLit (engine, 1));
}

TEST (FrequencerRouting, TakesTheOffsetInBeatsWhateverItsUnitSays)
{
    for (const auto unit : { 0, 1, 9 })
    {
        EngineUnderTest engine;
        engine.setTransport (0.1, 60.0);
        engine.choose ("seq_unit", unit);
        engine.set ("seq_offs", 0.5f + 1.0f / 4096.0f);
        EXPECT_FALSE (isLit (engine, 0)) << unit;
        EXPECT_TRUE (isLit (engine, 1)) << unit;
    }
}

TEST (FrequencerRouting, LimitsTheStepsBeforeTheLfosAdd)
{
    EngineUnderTest engine;
    engine.setTransport (64.0);
    engine.set ("lp_freq", 0.25f);
    setAll (engine, "_lpf", 0.0f);

    // A square at +1, at full depth twice: -2 of the steps and +2 of the LFOs are nothing.
    for (auto& generator : engine.processor.lfo)
    {
        generator.shape = LfoGenerator::square;
        generator.phaseA = 0.75f;
    }

    engine.set ("lfo1T_lpf", 1.0f);
    engine.set ("lfo2T_lpf", 1.0f);
    engine.tick();
    EXPECT_EQ (engine.processor.lpFreqSlew.target, 0.25f);
}

TEST (FrequencerRouting, IsWorthAWholeRangeAtItsLimit)
{
    EngineUnderTest engine;
    setAll (engine, "_hpf", 1.0f);
    engine.set ("hp_freq", 0.0f);
    engine.tick();
    EXPECT_EQ (engine.processor.hpFreqSlew.target, 1.0f);
}

TEST (FrequencerRouting, SleepsOnAStepInsideTheDeadBand)
{
    EngineUnderTest engine;
    engine.set ("seq1_hpf", 0.5004f);
    EXPECT_EQ (highpassSum (engine), 0.0f);
    engine.fallAsleep();
}

TEST (FrequencerRouting, StaysAwakeThroughAStepThatIsOff)
{
    EngineUnderTest engine;
    engine.setTransport (0.5);
    engine.set ("seq1_lpf", 0.502f);
    engine.runSilence (48000);
    EXPECT_TRUE (engine.processor.controlUpdatePending);
    EXPECT_EQ (engine.processor.framesSinceRequest, 0);
    EXPECT_FALSE (engine.processor.stepLit[0]);
}

TEST (FrequencerRouting, AddsTheSmallPartnerOfAStepThatIsHeard)
{
    EngineUnderTest engine;
    engine.set ("seq1_hpf", 0.5005f);
    engine.set ("seq1_lpf", 0.8f);
    engine.set ("hp_freq", 0.0f);
    engine.tick();
    const auto h = engine.processor.parameters.seqHpf[0]->get() - 0.5f;
    EXPECT_EQ (engine.processor.hpFreqSlew.target, std::abs (h) * h * 20.0f * 0.5f);
    EXPECT_GT (engine.processor.hpFreqSlew.target, 0.0f);
}

TEST (FrequencerRouting, JumpsWithTheTransport)
{
    EngineUnderTest engine;
    engine.set ("seq3_hpf", 0.6f);
    engine.setTransport (1.0);
    EXPECT_NEAR (highpassSum (engine), 0.2f, rounding);
    engine.setTransport (2.0);
    EXPECT_EQ (highpassSum (engine), 0.0f);
    engine.setTransport (1.0);
    EXPECT_NEAR (highpassSum (engine), 0.2f, rounding);
}

TEST (FrequencerRouting, RenewsTheLightsOfASleepingEngineOnlyAtItsWraps)
{
    EngineUnderTest engine;
    engine.setTransport (0.1);
    engine.fallAsleep();
    EXPECT_TRUE (engine.processor.stepLit[0]);
    engine.setTransport (0.6);
    engine.runSilence (512);
    EXPECT_TRUE (engine.processor.stepLit[0]);
    engine.runSilence (65536);
    EXPECT_FALSE (engine.processor.stepLit[0]);
}
