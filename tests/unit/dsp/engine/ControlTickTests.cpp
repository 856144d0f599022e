// SPDX-License-Identifier: AGPL-3.0-or-later
// One tick of either engine, from the sample rate to the design of the filters.
#include <array>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "support/Engines.h"
#include "support/EngineUnderTest.h"

namespace
{
constexpr double rate = 48000.0;
constexpr float glideSeconds = 0.02f;
constexpr float activeGlideSeconds = 0.004f;
constexpr auto quietNaN = std::numeric_limits<float>::quiet_NaN();

constexpr std::array slewedIds { "hp_freq", "lp_freq", "hp_reso", "lp_reso" };

/** In the order of slewedIds. */
template <typename Engine>
[[nodiscard]] auto slewsOf (Engine& engine)
{
    return std::array { &engine.hpFreqSlew, &engine.lpFreqSlew, &engine.hpResoSlew, &engine.lpResoSlew };
}

/** The frequency map, of a value that the compiler cannot know. */
[[nodiscard]] double hertzOf (float position)
{
    return (double) std::exp (6.907754898071289f * position + 2.995732307434082f);
}

/** Puts all slews at their targets, as if the engine had glided there long ago. */
template <typename Driver>
void standStill (Driver& driver)
{
    // The frames notice one of the four watched parameters each.
    driver.tick (5);

    for (auto* const slew : slewsOf (driver.engine))
        slew->current = slew->target;

    driver.tick();
    ASSERT_FALSE (driver.isUpdatePending());
}

template <typename Driver>
class ControlTick : public testing::Test
{
};

TYPED_TEST_SUITE (ControlTick, Engines);
} // namespace

TYPED_TEST (ControlTick, KeepsTheLastPlausibleSampleRate)
{
    TypeParam driver;
    auto& engine = driver.engine;
    EXPECT_EQ (engine.hostSampleRate, 96000.0);

    for (const auto implausible : { 0.0, 999.0, 10000000001.0, -1.0, (double) quietNaN })
    {
        driver.setSampleRate (implausible);
        driver.tick();
        EXPECT_EQ (engine.hostSampleRate, 96000.0) << implausible;
        EXPECT_EQ (driver.lpFilter().sampleRate, 96000.0) << implausible;
    }

    driver.setSampleRate (44100.0);
    driver.tick();
    EXPECT_EQ (engine.hostSampleRate, 44100.0);
    EXPECT_EQ (driver.lpFilter().sampleRate, 44100.0);

    driver.setSampleRate (999.0);
    driver.tick();
    EXPECT_EQ (engine.hostSampleRate, 44100.0);
}

TYPED_TEST (ControlTick, StartsAtTwentyHertzAndGlidesFromTheSecondTick)
{
    TypeParam driver;
    auto& engine = driver.engine;
    driver.tick();
    EXPECT_EQ (engine.lpFreqSlew.current, 0.0f);
    EXPECT_EQ (engine.lpFreqSlew.target, 1.0f);
    EXPECT_EQ (driver.lpFilter().limitedCutoff, hertzOf (engine.lpFreqSlew.current));
    EXPECT_NEAR (driver.lpFilter().limitedCutoff, 20.0, 1.0e-4);
    EXPECT_TRUE (driver.isUpdatePending());

    driver.tick();
    EXPECT_EQ (engine.lpFreqSlew.current, 1.0f / ((float) rate * glideSeconds));
    EXPECT_EQ (driver.lpFilter().limitedCutoff, hertzOf (engine.lpFreqSlew.current));
}

TYPED_TEST (ControlTick, MapsThePositionsOntoThreeDecades)
{
    TypeParam driver;

    for (const auto position : { 0.0f, 0.25f, 1.0f / 3.0f, 0.5f, 1.0f })
    {
        driver.set ("hp_freq", position);
        standStill (driver);
        EXPECT_EQ (driver.hpFilter().limitedCutoff, hertzOf (driver.engine.hpFreqSlew.current));

        // A float of the exponent 10 is exact to some 1e-6 of the hertz.
        EXPECT_NEAR (driver.hpFilter().limitedCutoff / (20.0 * std::pow (1000.0, (double) position)), 1.0, 2.0e-6);
    }
}

TYPED_TEST (ControlTick, TakesTheSixthPowerOfTheResonance)
{
    TypeParam driver;

    for (const auto position : { 0.0f, 0.3f, 0.5f, 0.9f, 1.0f })
    {
        driver.set ("hp_reso", position);
        driver.set ("lp_reso", 1.0f - position);
        standStill (driver);
        const auto cube = position * position * position;
        EXPECT_EQ (driver.engine.hpResonance, cube * cube * 10.0f);
        const auto lowCube = (1.0f - position) * (1.0f - position) * (1.0f - position);
        EXPECT_EQ (driver.engine.lpResonance, lowCube * lowCube * 10.0f);
    }
}

TYPED_TEST (ControlTick, TakesPolesAndBandwidthFromTheSlope)
{
    struct Slope
    {
        int index, poles;
        float bandwidth;
    };

    TypeParam driver;
    auto& engine = driver.engine;

    for (const auto& slope :
         { Slope { 0, 0, 3.0f }, Slope { 1, 1, 2.0f }, Slope { 2, 2, 1.25f }, Slope { 3, 4, 0.707f },
           Slope { 4, 8, 0.5f }, Slope { 5, 0, 3.0f }, Slope { 7, 0, 3.0f }, Slope { 9, 0, 3.0f } })
    {
        driver.choose ("hp_mode", slope.index);
        driver.choose ("lp_mode", 4);
        driver.tick();
        EXPECT_EQ (engine.hpPoles, slope.poles) << slope.index;
        EXPECT_EQ (engine.hpPeakBandwidth, slope.bandwidth) << slope.index;
        EXPECT_EQ (engine.lpPoles, 8);
        EXPECT_EQ (engine.lpPeakBandwidth, 0.5f);

        driver.choose ("lp_mode", slope.index);
        driver.choose ("hp_mode", 1);
        driver.tick();
        EXPECT_EQ (engine.lpPoles, slope.poles) << slope.index;
        EXPECT_EQ (engine.lpPeakBandwidth, slope.bandwidth) << slope.index;
        EXPECT_EQ (engine.hpPoles, 1);
    }
}

TYPED_TEST (ControlTick, TreatsTheMiddlePositionOfTheSlopesAsBypass)
{
    // 4.5 of 9 is rounded away from 0, to an index without a text.
    TypeParam driver;
    driver.set ("hp_mode", 0.5f);
    driver.tick();
    EXPECT_EQ (driver.engine.hpPoles, 0);
    EXPECT_EQ (driver.engine.hpPeakBandwidth, 3.0f);
}

TYPED_TEST (ControlTick, GlidesLikeAOnePoleOfTwentyMilliseconds)
{
    TypeParam driver;
    driver.set ("lp_freq", 0.0f);
    standStill (driver);
    driver.set ("lp_freq", 1.0f);
    driver.tick (1 + 960);

    // One time constant; the float's rounding adds up to less than 1e-4 in a thousand steps.
    EXPECT_NEAR (1.0f - driver.engine.lpFreqSlew.current, std::pow (1.0 - 1.0 / 960.0, 960.0), 1.0e-4);
}

TYPED_TEST (ControlTick, GlidesFiveTimesAsFastWhileSomethingIsActive)
{
    for (const auto active : { false, true })
    {
        TypeParam driver;
        driver.set ("lp_freq", 0.0f);
        standStill (driver);

        // The offset of a step that moves the highpass alone.
        if (active)
            driver.set ("seq1_hpf", 0.6f);

        driver.set ("lp_freq", 0.5f);
        driver.tick();
        EXPECT_EQ (driver.engine.lpFreqSlew.current, 0.0f);
        driver.tick();
        const auto step = 0.5f / ((float) rate * (active ? activeGlideSeconds : glideSeconds));
        EXPECT_EQ (driver.engine.lpFreqSlew.current, step);
        EXPECT_EQ (driver.engine.lpFreqSlew.mode, 1);
    }
}

TYPED_TEST (ControlTick, FollowsANewTargetOneTickLater)
{
    TypeParam driver;
    auto& slew = driver.engine.hpFreqSlew;
    standStill (driver);
    driver.set ("hp_freq", 0.25f);
    driver.tick();
    EXPECT_EQ (slew.target, 0.25f);
    EXPECT_EQ (slew.step, 0.0f);
    EXPECT_EQ (slew.current, 0.0f);
    EXPECT_TRUE (driver.isUpdatePending());
    driver.tick();
    EXPECT_EQ (slew.current, 0.25f / ((float) rate * glideSeconds));
}

TYPED_TEST (ControlTick, HalvesTheModulationOfFrequenciesButNotOfResonances)
{
    TypeParam driver;
    const auto& engine = driver.engine;

    // Without a transport the phase is held at 0, where a square gives -1.
    driver.choose ("lfo1_shape", 3);

    for (const auto* const id : slewedIds)
        driver.set (id, 0.9f);

    for (const auto* const route : { "lfo1T_hpf", "lfo1T_lpf", "lfo1T_hpr", "lfo1T_lpr" })
        driver.set (route, 0.75f);

    driver.tick (100);
    EXPECT_EQ (engine.hpFreqSlew.target, -0.5f * 0.5f + 0.9f);
    EXPECT_EQ (engine.lpFreqSlew.target, -0.5f * 0.5f + 0.9f);
    EXPECT_EQ (engine.hpResoSlew.target, 0.9f - 0.5f);
    EXPECT_EQ (engine.lpResoSlew.target, 0.9f - 0.5f);
}

TYPED_TEST (ControlTick, KeepsTheTargetsBetweenZeroAndOne)
{
    for (const auto depth : { 0.0f, 1.0f })
    {
        TypeParam driver;
        const auto& engine = driver.engine;
        driver.choose ("lfo1_shape", 3);
        driver.set ("hp_freq", 0.4f);
        driver.set ("lp_freq", 0.6f);

        for (const auto* const route : { "lfo1T_hpf", "lfo1T_lpf", "lfo1T_hpr", "lfo1T_lpr" })
            driver.set (route, depth);

        driver.tick (100);
        const auto expected = depth > 0.5f ? 0.0f : 1.0f;
        EXPECT_EQ (engine.hpResoSlew.target, expected);
        EXPECT_EQ (engine.lpResoSlew.target, expected);
        EXPECT_NEAR (engine.hpFreqSlew.target, depth > 0.5f ? 0.0f : 0.9f, 1.0e-6f);
        EXPECT_NEAR (engine.lpFreqSlew.target, depth > 0.5f ? 0.1f : 1.0f, 1.0e-6f);
    }
}

TYPED_TEST (ControlTick, PutsTheHighpassPeakOnItsCutoffAndTheLowpassPeakATenthBelow)
{
    TypeParam driver;
    driver.set ("hp_freq", 0.3f);
    driver.set ("lp_freq", 0.7f);
    driver.set ("hp_reso", 0.5f);
    driver.set ("lp_reso", 0.5f);
    driver.choose ("hp_mode", 1);
    driver.choose ("lp_mode", 3);
    standStill (driver);
    EXPECT_EQ (driver.hpResonator().designedFrequency, hertzOf (driver.engine.hpFreqSlew.current));
    EXPECT_EQ (driver.lpResonator().designedFrequency, hertzOf (driver.engine.lpFreqSlew.current) * 0.9);
    EXPECT_EQ (driver.hpResonator().designedBandwidth, 2.0);
    EXPECT_EQ (driver.lpResonator().designedBandwidth, (double) 0.707f);
    EXPECT_EQ (driver.hpResonator().designedRate, rate);
    EXPECT_EQ (driver.hpResonator().designedGainDb, 20.0);
}

TYPED_TEST (ControlTick, DesignsNoPeakForAResonanceThatIsTooSmall)
{
    TypeParam driver;

    // 10 * 0.0464^6 is just below 1e-7, and 10 * 0.0465^6 just above.
    driver.set ("hp_reso", 0.0464f);
    driver.set ("lp_reso", 0.0465f);
    standStill (driver);
    EXPECT_LT (driver.engine.hpResonance, 1.0e-7f);
    EXPECT_GT (driver.engine.lpResonance, 1.0e-7f);
    EXPECT_FALSE (driver.hpResonator().designed);
    EXPECT_TRUE (driver.lpResonator().designed);
}

TYPED_TEST (ControlTick, KeepsTheOldCoefficientsOfTheFamilyThatIsNotSelected)
{
    TypeParam driver;
    const auto& engine = driver.engine;
    driver.set ("hp_freq", 0.5f);
    driver.set ("hp_reso", 0.5f);
    driver.set ("lp_reso", 0.5f);
    standStill (driver);
    const auto oldCutoff = driver.hpFilter().limitedCutoff;
    const auto oldPeak = driver.hpResonator().designedFrequency;
    EXPECT_EQ (driver.hpLadder().sampleRate, 0.0);

    driver.choose ("filtmode", 1);
    driver.set ("hp_freq", 0.25f);
    standStill (driver);
    const auto newCutoff = hertzOf (engine.hpFreqSlew.current);
    EXPECT_EQ (driver.hpFilter().limitedCutoff, oldCutoff);
    EXPECT_EQ (driver.hpResonator().designedFrequency, oldPeak);
    EXPECT_EQ (driver.hpLadder().limitedCutoff, newCutoff);
    const auto oldPole = driver.hpLadder().poleCoefficient;

    driver.choose ("filtmode", 0);
    driver.set ("hp_freq", 0.75f);
    standStill (driver);
    EXPECT_EQ (driver.hpFilter().limitedCutoff, hertzOf (engine.hpFreqSlew.current));
    EXPECT_EQ (driver.hpLadder().poleCoefficient, oldPole);
}

TYPED_TEST (ControlTick, GivesTheLaddersTheirStagesAndGains)
{
    TypeParam driver;
    driver.choose ("filtmode", 1);
    driver.choose ("hp_mode", 3);
    driver.choose ("lp_mode", 4);
    driver.set ("hp_reso", 1.0f);
    driver.set ("lp_reso", 1.0f);
    standStill (driver);
    EXPECT_EQ (driver.hpLadder().grunge, 150000.0);
    EXPECT_EQ (driver.lpLadder().grunge, 800000.0);
    EXPECT_EQ (driver.hpLadder().numStages, 4);
    EXPECT_EQ (driver.lpLadder().numStages, 8);
    EXPECT_TRUE (driver.hpLadder().isHighpass);
    EXPECT_FALSE (driver.lpLadder().isHighpass);
}

TYPED_TEST (ControlTick, DesignsTheButterworthFamilyForAModeWithoutAText)
{
    TypeParam driver;

    for (int index = 2; index < 10; ++index)
    {
        driver.choose ("filtmode", index);
        driver.set ("hp_freq", 0.08f * (float) index);
        standStill (driver);
        EXPECT_EQ (driver.hpFilter().limitedCutoff, hertzOf (driver.engine.hpFreqSlew.current));
        EXPECT_EQ (driver.hpLadder().sampleRate, 0.0);
    }
}

TYPED_TEST (ControlTick, StaysAwakeWhileASlewIsFurtherOffThanItsThreshold)
{
    for (std::size_t i = 0; i < slewedIds.size(); ++i)
        for (const auto direction : { -1.0f, 1.0f })
            for (const auto isFar : { false, true })
            {
                TypeParam driver;

                for (const auto* const id : slewedIds)
                    driver.set (id, 0.5f);

                standStill (driver);

                // The tick itself still moves the slew by one part in 960.
                const auto threshold = i < 2 ? 0.0002f : 0.0003f;
                slewsOf (driver.engine)[i]->current = 0.5f + direction * threshold * (isFar ? 1.01f : 0.99f);
                driver.tick();
                EXPECT_EQ (driver.isUpdatePending(), isFar) << slewedIds[i];
                EXPECT_EQ (driver.framesSinceRequest(), isFar ? 0 : 1) << slewedIds[i];
            }
}

TYPED_TEST (ControlTick, FallsAsleepShortOfTheTargetsAndCreepsOnWhenTheClockWraps)
{
    TypeParam driver;
    const auto& engine = driver.engine;
    driver.set ("lp_reso", 0.5f);
    driver.fallAsleep();

    const auto residueOf = [] (const auto& slew) { return std::abs (slew.target - slew.current); };
    const auto frequency = residueOf (engine.lpFreqSlew);
    const auto resonance = residueOf (engine.lpResoSlew);
    EXPECT_GT (frequency, 0.0f);
    EXPECT_LE (frequency, 0.0002f);
    EXPECT_GT (resonance, 0.0f);
    EXPECT_LE (resonance, 0.0003f);

    // Somewhere in the next 65536 frames lies exactly one tick.
    auto numMoves = 0;

    for (int i = 0; i < 64; ++i)
    {
        const auto before = engine.lpFreqSlew.current;
        driver.runSilence (1024);
        numMoves += engine.lpFreqSlew.current != before ? 1 : 0;
    }

    EXPECT_EQ (numMoves, 1);
    EXPECT_LT (residueOf (engine.lpFreqSlew), frequency);
    EXPECT_FALSE (driver.isUpdatePending());
}

TYPED_TEST (ControlTick, SleepsUntilAFrameSeesAChange)
{
    TypeParam driver;
    driver.fallAsleep();
    driver.runSilence (100);
    EXPECT_FALSE (driver.isUpdatePending());
    EXPECT_GE (driver.framesSinceRequest(), 100);

    driver.set ("hp_freq", 0.5f);
    EXPECT_FALSE (driver.isUpdatePending());
    driver.runSilence (1);
    EXPECT_TRUE (driver.isUpdatePending());
    EXPECT_EQ (driver.engine.hpFreqSlew.target, 0.0f);
    driver.runSilence (1);
    EXPECT_EQ (driver.engine.hpFreqSlew.target, 0.5f);
}

TYPED_TEST (ControlTick, IgnoresInertiaLinkOffsetUnitAndRandomAmounts)
{
    TypeParam plain, changed;
    changed.set ("inertia", 1.0f);
    changed.set ("link", 1.0f);
    changed.choose ("seq_unit", 1);
    changed.set ("srnd_hpf", 1.0f);
    changed.set ("srnd_lpf", 0.0f);

    for (auto* const driver : { &plain, &changed })
    {
        driver->setTransport (3.3);
        driver->set ("hp_freq", 0.4f);
        driver->set ("seq_offs", 0.51f);
        driver->set ("seq2_hpf", 0.7f);
        driver->set ("lfo1T_lpf", 0.8f);
    }

    EXPECT_EQ (plain.run (EngineDriver::noise (1, 5000)), changed.run (EngineDriver::noise (1, 5000)));
}

TYPED_TEST (ControlTick, TurnsANaNTargetIntoZero)
{
    for (const auto* const id : slewedIds)
    {
        TypeParam driver;

        for (const auto* const each : slewedIds)
            driver.set (each, 0.5f);

        driver.set (id, quietNaN);
        driver.tick();

        for (std::size_t i = 0; i < slewedIds.size(); ++i)
            EXPECT_EQ (slewsOf (driver.engine)[i]->target, slewedIds[i] == id ? 0.0f : 0.5f)
                << id << ", " << slewedIds[i];
    }
}

TYPED_TEST (ControlTick, SurvivesNaNInAnyParameter)
{
    for (const auto& info : reference::parameterTable())
    {
        TypeParam driver;
        driver.setTransport (3.3);
        driver.choose ("lfo2_shape", 5);

        for (const auto* const id : { "seq1_hpf", "seq1_lpf", "lfo1T_lpr", "lfo1T_lfo2", "lfo2T_hpf", "hp_reso" })
            driver.set (id, 0.7f);

        const auto before = driver.get (info.id);
        driver.run (EngineDriver::noise (1, 300));
        driver.set (info.id, quietNaN);
        driver.run (EngineDriver::noise (2, 300));
        driver.set (info.id, before);

        for (const auto& [left, right] : driver.run (EngineDriver::noise (3, 300)))
            ASSERT_TRUE (std::isfinite (left) && std::isfinite (right)) << info.id;
    }
}

//======================================================================================================================
// What the plug-in alone has.

TEST (PluginTick, DesignsForTheOversampledRate)
{
    EngineUnderTest engine;
    engine.processor.oversamplingFactor = 4;
    engine.tick();
    EXPECT_EQ (engine.processor.lpFilter->sampleRate, 4.0 * rate);
}

TEST (PluginTick, LeavesTheOffsetOfLinkedFrequenciesToTheWindow)
{
    EngineUnderTest engine;
    engine.set ("link", 1.0f);
    engine.set ("hp_freq", 0.4f);
    const auto before = engine.processor.freqLinkOffset;
    engine.runSilence (1000);
    EXPECT_EQ (engine.processor.freqLinkOffset, before);
}
