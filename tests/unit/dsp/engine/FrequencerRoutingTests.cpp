// SPDX-License-Identifier: AGPL-3.0-or-later
// The ten steps in the ticks of either engine.
#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/Engines.h"

namespace
{
/** More ticks than the plug-in takes together. */
constexpr int manyTicks = 100;

// A tenth of a sum, through the 0.5 of the target: single precision.
constexpr float rounding = 1.0e-5f;

/** The sum of the steps over many ticks, read back from the target of a highpass knob in the middle. */
template <typename Driver>
[[nodiscard]] float highpassSum (Driver& driver)
{
    driver.set ("hp_freq", 0.5f);
    driver.tick (manyTicks);
    return (driver.engine.hpFreqSlew.target - 0.5f) * 2.0f;
}

template <typename Driver>
[[nodiscard]] bool isLit (Driver& driver, std::size_t step)
{
    driver.tick();
    return driver.engine.stepLit[step];
}

template <typename Driver>
[[nodiscard]] bool areAllLit (const Driver& driver)
{
    return std::all_of (std::begin (driver.engine.stepLit), std::end (driver.engine.stepLit),
                        [] (bool lit) { return lit; });
}

void setAll (EngineDriver& driver, const std::string& suffix, float offset)
{
    for (int step = 1; step <= 10; ++step)
        driver.set ("seq" + std::to_string (step) + suffix, offset);
}

template <typename Driver>
class FrequencerRouting : public testing::Test
{
};

TYPED_TEST_SUITE (FrequencerRouting, Engines);
} // namespace

TYPED_TEST (FrequencerRouting, AppliesAllOffsetsAsAConstantWithoutATransport)
{
    TypeParam driver;
    setAll (driver, "_hpf", 0.55f);
    EXPECT_NEAR (highpassSum (driver), 0.5f, rounding);
    EXPECT_TRUE (areAllLit (driver));

    driver.setTransportWithoutPosition();
    EXPECT_NEAR (highpassSum (driver), 0.5f, rounding);
    EXPECT_TRUE (areAllLit (driver));

    driver.setTransport (0.0);
    EXPECT_NEAR (highpassSum (driver), 0.5f, rounding);
    EXPECT_TRUE (areAllLit (driver));
}

TYPED_TEST (FrequencerRouting, LightsTheStepsAsTheDigitsOfACounterOfHalfBeats)
{
    TypeParam driver;

    for (const auto beats : { 0.25, 0.5, 0.995, 1.0, 1.75, 100.3, 255.0, 300.6, 511.9, 512.0 })
    {
        driver.setTransport (beats);
        driver.tick();
        const auto halfBeats = (int) std::floor (2.0 * (beats + 0.01));

        for (std::size_t step = 0; step < 10; ++step)
            EXPECT_EQ (driver.engine.stepLit[step], ((halfBeats >> step) & 1) == 0)
                << beats << " beats, step " << step + 1;
    }
}

TYPED_TEST (FrequencerRouting, HoldsItsStepsAtAStoppedTransport)
{
    TypeParam driver;
    driver.setTransport (5.3);
    driver.set ("seq1_hpf", 0.6f);
    driver.set ("seq3_hpf", 0.7f);
    const auto sum = highpassSum (driver);

    // Half beat 10, binary 1010: steps 2 and 4 are off.
    const std::array lit { true, false, true, false, true, true, true, true, true, true };
    const auto isHeld = [&] { return std::equal (lit.begin(), lit.end(), std::begin (driver.engine.stepLit)); };
    EXPECT_TRUE (isHeld());
    EXPECT_NEAR (sum, 0.2f + 0.8f, rounding);

    for (int i = 0; i < 10; ++i)
    {
        ASSERT_EQ (highpassSum (driver), sum);
        ASSERT_TRUE (isHeld());
    }
}

TYPED_TEST (FrequencerRouting, RunsAHundredthOfABeatAhead)
{
    TypeParam driver;
    driver.setTransport (0.995);
    EXPECT_TRUE (isLit (driver, 0));
    EXPECT_FALSE (isLit (driver, 1));
    driver.setTransport (0.985);
    EXPECT_FALSE (isLit (driver, 0));
    EXPECT_TRUE (isLit (driver, 1));
}

TYPED_TEST (FrequencerRouting, RunsOnBelowZero)
{
    TypeParam driver;
    driver.setTransport (-0.51);
    EXPECT_FALSE (isLit (driver, 0));

    // -0.5 with the hundredth of a beat: three quarters through the period of the second step.
    EXPECT_FALSE (isLit (driver, 1));
    driver.setTransport (-0.9);
    EXPECT_TRUE (isLit (driver, 0));
}

TYPED_TEST (FrequencerRouting, SquaresAnOffsetAndKeepsItsSign)
{
    for (const auto& [offset, sum] : { std::pair { 0.6f, 0.2f }, { 0.75f, 1.25f }, { 0.4f, -0.2f }, { 0.3f, -0.8f } })
    {
        TypeParam driver;
        driver.set ("lp_freq", 0.5f);
        driver.set ("seq5_hpf", offset);

        // The target ends at 1, and so at a sum of 1.
        EXPECT_NEAR (highpassSum (driver), std::min (sum, 1.0f), rounding);
        EXPECT_EQ (driver.engine.lpFreqSlew.target, 0.5f);
        EXPECT_TRUE (driver.isUpdatePending());
    }
}

TYPED_TEST (FrequencerRouting, ShiftsByTheOffsetInBeats)
{
    TypeParam driver;
    driver.setTransport (0.1);

    // The knob spans -1024 to 1024 beats; 1/2 + 1/4096 is half a beat.
    driver.set ("seq_offs", 0.5f + 1.0f / 4096.0f);
    EXPECT_FALSE (isLit (driver, 0));
    EXPECT_TRUE (isLit (driver, 1));
    driver.set ("seq_offs", 0.5f - 1.0f / 2048.0f);
    EXPECT_TRUE (isLit (driver, 0));
    EXPECT_FALSE (isLit (driver, 1));
}

TYPED_TEST (FrequencerRouting, TakesTheOffsetInBeatsInEveryUnit)
{
    for (const auto unit : { 0, 1, 9 })
    {
        TypeParam driver;
        driver.setTransport (0.1, 60.0);
        driver.choose ("seq_unit", unit);
        driver.set ("seq_offs", 0.5f + 1.0f / 4096.0f);
        EXPECT_FALSE (isLit (driver, 0)) << unit;
        EXPECT_TRUE (isLit (driver, 1)) << unit;
    }
}

TYPED_TEST (FrequencerRouting, LimitsTheStepsBeforeTheLfosAdd)
{
    for (const auto* const filter : { "hp", "lp" })
    {
        TypeParam driver;
        auto& engine = driver.engine;
        const std::string suffix = filter;
        driver.setTransport (64.0);
        driver.set (suffix + "_freq", 0.25f);
        setAll (driver, "_" + suffix + "f", 0.0f);

        // A square at +1, at full depth twice: -2 of the steps and +2 of the LFOs cancel out.
        for (std::size_t i = 0; i < 2; ++i)
        {
            const auto lfo = "lfo" + std::to_string (i + 1);
            driver.choose (lfo + "_shape", 3);
            engine.lfo[i].shape = 3;
            engine.lfo[i].phaseA = 0.75f;
            driver.set (lfo + "T_" + suffix + "f", 1.0f);
        }

        driver.tick (manyTicks);
        EXPECT_EQ ((suffix == "hp" ? engine.hpFreqSlew : engine.lpFreqSlew).target, 0.25f) << filter;
    }
}

TYPED_TEST (FrequencerRouting, MovesAFrequencyOverItsWholeRangeAtTheLimit)
{
    TypeParam driver;
    setAll (driver, "_hpf", 1.0f);
    setAll (driver, "_lpf", 0.0f);
    driver.set ("hp_freq", 0.0f);
    driver.set ("lp_freq", 1.0f);
    driver.tick (manyTicks);
    EXPECT_EQ (driver.engine.hpFreqSlew.target, 1.0f);
    EXPECT_EQ (driver.engine.lpFreqSlew.target, 0.0f);
}

TYPED_TEST (FrequencerRouting, SleepsOnAStepInsideTheDeadBand)
{
    TypeParam driver;
    driver.set ("seq1_hpf", 0.5004f);
    EXPECT_EQ (highpassSum (driver), 0.0f);
    driver.fallAsleep();
}

TYPED_TEST (FrequencerRouting, StaysAwakeThroughAStepThatIsOff)
{
    TypeParam driver;
    driver.setTransport (0.5);
    driver.set ("hp_freq", 0.5f);
    driver.set ("seq1_lpf", 0.502f);
    driver.runSilence (48000);
    EXPECT_TRUE (driver.isUpdatePending());
    EXPECT_EQ (driver.framesSinceRequest(), 0);
    EXPECT_FALSE (driver.engine.stepLit[0]);
    EXPECT_EQ (driver.numQueries(), 48000);
    EXPECT_EQ (driver.engine.hpFreqSlew.target, 0.5f);
}

TYPED_TEST (FrequencerRouting, AddsASmallOffsetWhenTheOtherOffsetOfTheStepIsLarge)
{
    TypeParam driver;
    driver.set ("seq1_hpf", 0.5005f);
    driver.set ("seq1_lpf", 0.8f);
    driver.set ("hp_freq", 0.0f);
    driver.set ("lp_freq", 0.0f);
    driver.tick (manyTicks);
    const auto h = driver.get ("seq1_hpf") - 0.5f;
    EXPECT_EQ (driver.engine.hpFreqSlew.target, std::abs (h) * h * 20.0f * 0.5f);
    EXPECT_GT (driver.engine.hpFreqSlew.target, 0.0f);
    EXPECT_NEAR (driver.engine.lpFreqSlew.target, 0.9f, rounding);
    EXPECT_TRUE (driver.isUpdatePending());
}

TYPED_TEST (FrequencerRouting, JumpsWithTheTransport)
{
    TypeParam driver;
    driver.set ("seq3_hpf", 0.6f);
    driver.setTransport (1.0);
    EXPECT_NEAR (highpassSum (driver), 0.2f, rounding);
    driver.setTransport (2.0);
    EXPECT_EQ (highpassSum (driver), 0.0f);
    driver.setTransport (1.0);
    EXPECT_NEAR (highpassSum (driver), 0.2f, rounding);
}

TYPED_TEST (FrequencerRouting, UpdatesTheLightsOfASleepingEngineOnlyWhenTheClockWraps)
{
    TypeParam driver;
    driver.setTransport (0.1);
    driver.fallAsleep();
    EXPECT_TRUE (driver.engine.stepLit[0]);
    driver.setTransport (0.6);
    driver.runSilence (512);
    EXPECT_TRUE (driver.engine.stepLit[0]);
    driver.runSilence (65536);
    EXPECT_FALSE (driver.engine.stepLit[0]);
}
