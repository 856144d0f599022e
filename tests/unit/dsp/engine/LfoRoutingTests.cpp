// SPDX-License-Identifier: AGPL-3.0-or-later
// The two LFOs in the ticks of either engine: speed, wobble, tempo lock, bar lock, and what they move.
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/Engines.h"

namespace
{
constexpr float rate = 48000.0f;

/** More ticks than the plug-in takes together. */
constexpr int manyTicks = 100;

// Places of the shapes and sync types on their choices.
constexpr int triangle = 1;
constexpr int saw = 2;
constexpr int square = 3;
constexpr int randomTriangles = 4;
constexpr int brownian = 5;
constexpr int reservedPulse = 6;
constexpr int reservedSum = 7;
constexpr int wobbly = 1;
constexpr int drunk = 2;
constexpr int tempo = 3;

/** Any position of the transport but 0. */
constexpr double somewhere = 3.3;

/** The number of an LFO is 1 or 2. */
[[nodiscard]] std::string lfoId (int number, const char* suffix) { return "lfo" + std::to_string (number) + suffix; }

[[nodiscard]] std::string speedId (std::size_t i) { return lfoId ((int) i + 1, "_speed"); }

// What a knob's position means, from a value that the compiler cannot know.
[[nodiscard]] float freeFrequency (const EngineDriver& driver, std::size_t i, float multiplier = 1.0f)
{
    return std::exp (driver.get (speedId (i)) * multiplier * multiplier * 6.9077554f - 3.912023f);
}

/** Puts an LFO at full swing: a square in its upper half, and far from the end of it. */
template <typename Driver>
void raise (Driver& driver, std::size_t i)
{
    driver.choose (lfoId ((int) i + 1, "_shape"), square);
    driver.engine.lfo[i].shape = square;
    driver.engine.lfo[i].phaseA = 0.75f;
}

[[nodiscard]] float triangleAt (float phase)
{
    const auto p = (double) phase;
    return (float) (p < 0.5 ? 4.0 * p - 1.0 : (0.75 - p) * 4.0);
}

[[nodiscard]] float fractionOf (double cycles) { return (float) (cycles - std::floor (cycles)); }

template <typename Driver>
class LfoRouting : public testing::Test
{
};

TYPED_TEST_SUITE (LfoRouting, Engines);
} // namespace

//======================================================================================================================
// When they move.

TYPED_TEST (LfoRouting, HoldsBothLfosAtTheirStartWithoutATransport)
{
    for (const auto kind : { 0, 1, 2, 3 })
    {
        TypeParam driver;
        auto& engine = driver.engine;
        driver.choose ("lfo1_shape", brownian);
        driver.set ("lfo1_speed", 1.0f);
        driver.set ("lfo1T_lpf", 1.0f);
        driver.set ("lfo2T_lpf", 1.0f);

        if (kind == 1)
            driver.setTransportWithoutPosition();

        if (kind >= 2)
            driver.setTransport (kind == 2 ? 0.0 : -0.0);

        for (const auto together : { 1, 1, 1, 1, 1, 63, 64, 65, 500 })
        {
            driver.tick (together);

            for (const auto& generator : engine.lfo)
            {
                // One step from zero; before its first rate the step is none.
                ASSERT_LE (generator.phaseA, generator.phaseStepA);
                ASSERT_LE (std::abs (generator.walkValue), generator.walkStep);
            }
        }

        EXPECT_EQ (engine.lfo[1].phaseA, engine.lfo[1].phaseStepA);
        EXPECT_GT (engine.lfo[1].phaseA, 0.0f);
        EXPECT_NE (engine.lfo[0].walkValue, 0.0f);
    }
}

TYPED_TEST (LfoRouting, MovesUnderAStoppedTransportAwayFromZero)
{
    for (const auto beats : { somewhere, -1.0 })
    {
        TypeParam driver;
        driver.keepAwake();
        driver.setTransport (beats);
        driver.tick (101);

        for (const auto& generator : driver.engine.lfo)
        {
            auto expected = 0.0f;

            for (int i = 0; i < 100; ++i)
                expected += generator.phaseStepA;

            EXPECT_EQ (generator.phaseA, expected);
        }
    }
}

TYPED_TEST (LfoRouting, RunsAtItsFrequency)
{
    TypeParam driver;
    driver.keepAwake();
    driver.setTransport (somewhere);
    driver.tick (4801);

    // A tenth of a second of 0.02 * 1000^0.5 hertz.
    EXPECT_NEAR (driver.engine.lfo[0].phaseA, 0.0632456f, 2.0e-5f);
}

TYPED_TEST (LfoRouting, StandsStillWhileTheEngineSleeps)
{
    TypeParam driver;
    const auto& generator = driver.engine.lfo[0];
    driver.setTransport (somewhere);
    driver.fallAsleep();
    const auto phase = generator.phaseA;
    EXPECT_GT (phase, 0.0f);
    driver.runSilence (10000);
    EXPECT_EQ (generator.phaseA, phase);

    // One step for each wrap of the clock.
    driver.runSilence (65536);
    EXPECT_EQ (generator.phaseA, phase + generator.phaseStepA);
}

TYPED_TEST (LfoRouting, KeepsTheEngineAwakeFromADepthAboveAHundredth)
{
    for (const auto number : { 1, 2 })
        for (const auto* const suffix : { "T_hpf", "T_lpf", "T_hpr", "T_lpr" })
            for (const auto direction : { -1.0f, 1.0f })
            {
                TypeParam driver;
                auto& engine = driver.engine;
                driver.set ("hp_freq", 0.5f);
                driver.set ("lp_freq", 0.5f);
                driver.set (lfoId (number, suffix), 0.5f + direction * 0.0049f);
                driver.tick (10);

                // A depth inside the dead band is added all the same, but keeps nothing awake.
                for (auto* const slew :
                     { &engine.hpFreqSlew, &engine.lpFreqSlew, &engine.hpResoSlew, &engine.lpResoSlew })
                    slew->current = slew->target;

                driver.tick();
                EXPECT_FALSE (driver.isUpdatePending()) << suffix;

                driver.set (lfoId (number, suffix), 0.5f + direction * 0.0051f);
                driver.tick();
                EXPECT_TRUE (driver.isUpdatePending()) << suffix;
            }
}

TYPED_TEST (LfoRouting, LetsTheEngineSleepOverACrossRoute)
{
    TypeParam driver;
    driver.set ("lfo1T_lfo2", 1.0f);
    driver.set ("lfo2T_lfo1", 0.0f);
    driver.setTransport (somewhere);
    driver.fallAsleep();
    const auto before = driver.numQueries();
    driver.runSilence (1000);
    EXPECT_EQ (driver.numQueries(), before);
}

TYPED_TEST (LfoRouting, AsksTheHostOncePerTickAndOncePerReservedShape)
{
    TypeParam driver;
    driver.keepAwake();
    driver.setTransport (somewhere);
    driver.tick (manyTicks);
    EXPECT_EQ (driver.numQueries(), manyTicks);

    driver.choose ("lfo1_shape", reservedPulse);
    driver.tick (manyTicks);
    EXPECT_EQ (driver.numQueries(), 3 * manyTicks);

    driver.choose ("lfo2_shape", reservedSum);
    driver.tick (manyTicks);
    EXPECT_EQ (driver.numQueries(), 6 * manyTicks);
}

//======================================================================================================================
// What they move.

TYPED_TEST (LfoRouting, AddsADepthInsideTheDeadBandToo)
{
    TypeParam driver;
    driver.set ("lp_freq", 0.5f);
    driver.set ("lfo1T_lpf", 0.504f);
    driver.setTransport (somewhere);
    raise (driver, 0);
    driver.tick (manyTicks);
    const auto depth = driver.get ("lfo1T_lpf") * 2.0f - 1.0f;
    EXPECT_EQ (driver.engine.lpFreqSlew.target, depth * 0.5f + 0.5f);
    EXPECT_GT (depth, 0.0f);
}

TYPED_TEST (LfoRouting, RoutesEachDepthToItsOwnTarget)
{
    struct Route
    {
        const char* suffix;
        std::size_t target;
        float moved;
    };

    for (const auto number : { 1, 2 })
        for (const auto& [suffix, target, moved] : { Route { "T_hpf", 0, 0.125f }, Route { "T_lpf", 1, 0.125f },
                                                     Route { "T_hpr", 2, 0.25f }, Route { "T_lpr", 3, 0.25f } })
        {
            TypeParam driver;
            const auto& engine = driver.engine;
            driver.setTransport (somewhere);

            for (const auto* const id : { "hp_freq", "lp_freq", "hp_reso", "lp_reso" })
                driver.set (id, 0.5f);

            raise (driver, (std::size_t) number - 1);
            driver.set (lfoId (number, suffix), 0.625f);
            driver.tick (manyTicks);

            const std::array targets { engine.hpFreqSlew.target, engine.lpFreqSlew.target, engine.hpResoSlew.target,
                                       engine.lpResoSlew.target };

            for (std::size_t i = 0; i < targets.size(); ++i)
                EXPECT_EQ (targets[i], i == target ? 0.5f + moved : 0.5f) << lfoId (number, suffix);
        }
}

TYPED_TEST (LfoRouting, AddsTwoFullLfosToTwo)
{
    TypeParam driver;
    driver.setTransport (somewhere);
    driver.set ("hp_freq", 0.0f);
    driver.set ("lfo1T_hpf", 1.0f);
    driver.set ("lfo2T_hpf", 1.0f);
    raise (driver, 0);
    raise (driver, 1);
    driver.tick (manyTicks);
    EXPECT_EQ (driver.engine.hpFreqSlew.target, 1.0f);
}

TYPED_TEST (LfoRouting, MovesATargetAlongTheWaveInEveryShape)
{
    for (const auto shape : { 0, triangle, saw, square, randomTriangles, reservedPulse })
    {
        TypeParam driver;
        auto& generator = driver.engine.lfo[0];
        driver.setTransport (somewhere);
        driver.set ("lp_freq", 0.5f);
        driver.set ("lfo1T_lpf", 0.9f);
        driver.set ("lfo1_speed", 0.9f);
        driver.choose ("lfo1_shape", shape);

        for (int segment = 0; segment < 20; ++segment)
        {
            // The second tick has the shape of the choice.
            driver.tick (2 + segment * 13);
            const auto depth = driver.get ("lfo1T_lpf") * 2.0f - 1.0f;
            ASSERT_EQ (driver.engine.lpFreqSlew.target, depth * generator.render() * 0.5f + 0.5f)
                << "shape " << shape << ", segment " << segment;
        }
    }
}

//======================================================================================================================
// Speed, shape and curve.

TYPED_TEST (LfoRouting, RunsAFreeLfoOverThreeDecadesFromAFiftiethOfAHertz)
{
    TypeParam driver;
    driver.setTransport (somewhere);

    for (const auto& [position, hertz] :
         { std::pair { 0.0f, 0.02f }, { 0.5f, 0.632456f }, { 1.0f, 20.0f }, { 1.0f / 3.0f, 0.2f } })
    {
        driver.set ("lfo2_speed", position);
        driver.tick();
        EXPECT_EQ (driver.engine.lfo[1].phaseStepA, freeFrequency (driver, 1) / rate);
        EXPECT_NEAR (freeFrequency (driver, 1), hertz, hertz * 1.0e-5f);
    }
}

TYPED_TEST (LfoRouting, TakesTheShapeOfTheChoiceAtTheEndOfTheTick)
{
    TypeParam driver;
    driver.setTransport (somewhere);
    driver.set ("lp_freq", 0.5f);
    driver.set ("lfo1T_lpf", 1.0f);
    driver.choose ("lfo1_shape", saw);
    driver.tick();

    // The triangle's -1 for one more tick, and then the saw's +1, one step on.
    EXPECT_EQ (driver.engine.lpFreqSlew.target, 0.0f);
    EXPECT_EQ (driver.engine.lfo[0].shape, saw);
    driver.tick();
    EXPECT_GT (driver.engine.lpFreqSlew.target, 0.99f);
}

TYPED_TEST (LfoRouting, TreatsEveryUnknownShapeAsASine)
{
    TypeParam driver;
    driver.setTransport (somewhere);

    for (int index = 0; index < 30; ++index)
    {
        driver.choose ("lfo1_shape", index);
        driver.tick();
        EXPECT_EQ (driver.engine.lfo[0].shape, index < 8 ? index : 0);

        // The reserved shapes have no frequency of their own.
        if (index < 6 || index >= 8)
        {
            EXPECT_EQ (driver.engine.lfo[0].phaseStepA, freeFrequency (driver, 0) / rate);
        }
    }
}

TYPED_TEST (LfoRouting, SetsTheAmplitudeAtEveryTick)
{
    TypeParam driver;
    driver.keepAwake();
    driver.engine.lfo[0].amplitude = 0.3f;
    driver.tick();
    EXPECT_EQ (driver.engine.lfo[0].amplitude, 1.0f);
    driver.engine.lfo[0].amplitude = 0.3f;
    driver.tick (manyTicks);
    EXPECT_EQ (driver.engine.lfo[0].amplitude, 1.0f);
}

TYPED_TEST (LfoRouting, BendsByTheCurveKnobInBothDirections)
{
    TypeParam driver;
    const auto& generator = driver.engine.lfo[0];
    driver.tick();
    EXPECT_EQ (generator.curveExponent, 1.0f);

    for (const auto position : { 0.0f, 0.1f, 0.7f, 1.0f })
    {
        driver.set ("lfo1_curve", position);
        driver.tick();
        EXPECT_NEAR (generator.curveExponent, std::exp (-1.7 * (2.0 * (double) position - 1.0)), 2.0e-6);
        EXPECT_EQ (generator.curveExponent > 1.0f, position < 0.5f);
    }
}

//======================================================================================================================
// Sync: time, wobbly, drunk.

TYPED_TEST (LfoRouting, SoundsLikeTimeInEverySyncWithoutAText)
{
    const auto rendered = [] (int sync)
    {
        TypeParam driver;
        driver.setTransport (somewhere);
        driver.choose ("lfo1_sync", sync);
        driver.choose ("lfo2_sync", sync);
        driver.set ("lp_freq", 0.5f);
        driver.set ("lfo1T_lpf", 0.9f);
        driver.set ("lfo2T_hpr", 0.9f);
        driver.set ("lfo1_speed", 1.0f);
        return driver.run (EngineDriver::noise (1, 3000));
    };
    const auto time = rendered (0);

    for (int sync = 4; sync < 10; ++sync)
        EXPECT_EQ (rendered (sync), time) << sync;

    // "Wobbly" too sounds like "Time"; "Drunk" and "Tempo" do not.
    EXPECT_EQ (rendered (wobbly), time);
    EXPECT_NE (rendered (drunk), time);
    EXPECT_NE (rendered (tempo), time);
}

TYPED_TEST (LfoRouting, MovesTheWobbleOfWobblyWithoutEffect)
{
    TypeParam driver;
    const auto& engine = driver.engine;
    driver.keepAwake();
    driver.setTransport (somewhere);
    driver.choose ("lfo1_sync", wobbly);
    driver.choose ("lfo2_sync", wobbly);
    driver.tick (manyTicks);

    for (std::size_t i = 0; i < 2; ++i)
    {
        const auto detune = i == 0 ? 0.055f : 0.054f;
        const auto hertz = std::exp ((detune + 0.2297f) * driver.get (speedId (i)) * 5.7037826f - 4.6051702f);
        EXPECT_EQ (engine.wobbleStep[i], (float) ((double) hertz / (double) rate));
        EXPECT_EQ (engine.wobbleDepth[i], 0.01f);
        EXPECT_EQ (engine.lfo[i].phaseStepA, freeFrequency (driver, i) / rate);

        auto phase = 0.0f;

        for (int tick = 0; tick < manyTicks; ++tick)
            phase += engine.wobbleStep[i];

        EXPECT_EQ (engine.wobblePhase[i], phase);
    }

    EXPECT_NE (engine.wobbleStep[0], engine.wobbleStep[1]);
}

TYPED_TEST (LfoRouting, WobblesTheSpeedOfDrunk)
{
    TypeParam driver;
    auto& engine = driver.engine;
    driver.keepAwake();
    driver.setTransport (somewhere);
    driver.choose ("lfo1_sync", drunk);
    driver.choose ("lfo2_sync", drunk);

    for (const auto together : { 1, manyTicks })
        for (const auto start : { 0.0f, 0.2f, 0.5f, 0.9f })
        {
            engine.wobblePhase[0] = start;
            engine.wobblePhase[1] = start;
            driver.tick (together);

            for (std::size_t i = 0; i < 2; ++i)
            {
                const auto detune = i == 0 ? 0.055f : 0.054f;
                const auto hertz = std::exp ((detune + 0.3297f) * driver.get (speedId (i)) * 5.857933f - 4.6051702f);
                EXPECT_EQ (engine.wobbleStep[i], (float) ((double) hertz / (double) rate));
                EXPECT_EQ (engine.wobbleDepth[i], 0.12f);

                auto phase = start;

                for (int tick = 0; tick < together; ++tick)
                    phase += engine.wobbleStep[i];

                EXPECT_EQ (engine.wobblePhase[i], phase);

                const auto factor = triangleAt (phase) * 0.12f + 1.0f;
                EXPECT_EQ (engine.lfo[i].phaseStepA, freeFrequency (driver, i, factor * factor) / rate) << start;
            }
        }
}

TYPED_TEST (LfoRouting, StopsTheWobbleInEveryOtherSync)
{
    TypeParam driver;
    const auto& engine = driver.engine;
    driver.keepAwake();
    driver.setTransport (somewhere);
    driver.choose ("lfo1_sync", drunk);
    driver.tick (5);
    const auto phase = engine.wobblePhase[0];
    EXPECT_GT (phase, 0.0f);

    for (const auto sync : { 0, tempo, 4, 9 })
    {
        driver.choose ("lfo1_sync", sync);
        driver.tick (manyTicks);
        EXPECT_EQ (engine.wobbleStep[0], 0.0f);
        EXPECT_EQ (engine.wobbleDepth[0], 0.0f);
        EXPECT_EQ (engine.wobblePhase[0], phase);
    }
}

TYPED_TEST (LfoRouting, ResetsTheWobbleToZeroInsteadOfWrappingIt)
{
    TypeParam driver;
    auto& engine = driver.engine;
    driver.setSampleRate (1000.0);
    driver.setTransport (somewhere);
    driver.choose ("lfo1_sync", drunk);
    driver.set ("lfo1_speed", 1.0f);
    driver.tick();
    engine.wobblePhase[0] = std::nextafter (1.0f, 0.0f);
    driver.tick();
    EXPECT_GT (engine.wobbleStep[0], 1.0e-5f);
    EXPECT_EQ (engine.wobblePhase[0], 0.0f);
}

TYPED_TEST (LfoRouting, KeepsTheWobbleWhenTheTransportResetsTheLfos)
{
    TypeParam driver;
    driver.keepAwake();
    driver.choose ("lfo1_sync", drunk);
    driver.tick (10);
    EXPECT_GT (driver.engine.wobblePhase[0], 9.0f * driver.engine.wobbleStep[0]);
    EXPECT_LT (driver.engine.lfo[0].phaseA, 2.0f * driver.engine.lfo[0].phaseStepA);
}

//======================================================================================================================
// Cross routes.

TYPED_TEST (LfoRouting, ReadsLfoTwoBeforeItMovesAndLfoOneAfterItHasMoved)
{
    TypeParam driver;
    auto& engine = driver.engine;
    driver.setTransport (somewhere);
    driver.set ("lfo1T_lfo2", 0.9f);
    driver.set ("lfo2T_lfo1", 0.2f);
    driver.set ("lfo1_curve", 0.3f);
    driver.tick();
    engine.lfo[0].phaseA = 0.1f;
    engine.lfo[0].phaseStepA = 0.05f;
    engine.lfo[1].phaseA = 0.3f;
    engine.lfo[1].phaseStepA = 0.07f;

    auto first = engine.lfo[0], second = engine.lfo[1];
    const auto multiplied = [&] (auto& other, const char* route)
    {
        const auto depth = driver.get (route) * 2.0f - 1.0f;
        const auto factor = 1.0f + other.render() * depth * 0.5f;
        return factor * factor;
    };

    // LFO 1 reads LFO 2 before it has moved. LFO 2 reads LFO 1 one step on.
    first.phaseA += first.phaseStepA;
    const auto ofFirst = multiplied (second, "lfo2T_lfo1");
    const auto ofSecond = multiplied (first, "lfo1T_lfo2");

    driver.tick();
    EXPECT_EQ (engine.lfo[0].phaseStepA, freeFrequency (driver, 0, ofFirst) / rate);
    EXPECT_EQ (engine.lfo[1].phaseStepA, freeFrequency (driver, 1, ofSecond) / rate);
    EXPECT_NE (ofFirst, 1.0f);
    EXPECT_NE (ofSecond, 1.0f);
}

TYPED_TEST (LfoRouting, MovesTheSpeedOfTheOtherLfoBySquares)
{
    TypeParam driver;
    driver.keepAwake();
    driver.setTransport (somewhere);
    driver.choose ("lfo1_shape", square);
    driver.set ("lfo1T_lfo2", 0.75f);
    driver.tick (manyTicks);

    // The square is at -1 in its first half: at a depth of 0.5 the factor is (1 - 0.25)^2, and it enters squared.
    const auto hertz = 0.02 * std::pow (1000.0, 0.5 * 0.5625 * 0.5625);
    EXPECT_NEAR (driver.engine.lfo[1].phaseStepA * rate, hertz, 1.0e-6);
    EXPECT_EQ (driver.engine.lfo[0].phaseStepA, freeFrequency (driver, 0) / rate);
}

TYPED_TEST (LfoRouting, LimitsTheSpeedMultiplier)
{
    TypeParam driver;
    auto& engine = driver.engine;
    driver.keepAwake();
    driver.setTransport (somewhere);
    driver.set ("lfo2T_lfo1", 1.0f);
    raise (driver, 1);
    driver.tick (manyTicks);
    EXPECT_EQ (engine.lfo[0].phaseStepA, freeFrequency (driver, 0, 1.99f) / rate);

    // A phase that has run away gives the triangle's -2, and (1 - 1) squared.
    engine.lfo[1].shape = triangle;
    engine.lfo[1].phaseA = 1.25f;
    driver.tick();
    EXPECT_EQ (engine.lfo[0].phaseStepA, freeFrequency (driver, 0, 0.01f) / rate);
}

TYPED_TEST (LfoRouting, IgnoresACrossRouteInsideItsDeadBand)
{
    for (const auto position : { 0.4951f, 0.5f, 0.5049f })
    {
        TypeParam driver;
        driver.keepAwake();
        driver.setTransport (somewhere);
        driver.set ("lfo2T_lfo1", position);
        raise (driver, 1);
        driver.tick (manyTicks);
        EXPECT_EQ (driver.engine.lfo[0].phaseStepA, freeFrequency (driver, 0) / rate);
    }
}

TYPED_TEST (LfoRouting, LeavesTheRangeAtAnExtremeSpeedUnlessTheCurveLimitsIt)
{
    for (const auto shape : { triangle, saw, randomTriangles })
    {
        TypeParam driver;
        auto& engine = driver.engine;
        auto& generator = engine.lfo[0];
        driver.setTransport (somewhere);
        driver.choose ("lfo1_shape", shape);
        driver.set ("lfo1_speed", 1.0f);
        driver.set ("lfo2T_lfo1", 1.0f);
        driver.set ("lfo1T_lpf", 1.0f);
        driver.set ("lp_freq", 0.5f);
        driver.set ("lfo2_speed", 0.0f);
        raise (driver, 1);
        driver.tick (3);
        ASSERT_GT (generator.phaseStepA, 1.0f);
        ASSERT_GT (generator.phaseA, 1.0f);
        ASSERT_GT (generator.phaseB, 1.0f);
        ASSERT_GT (generator.phaseC, 1.0f);

        const auto sum = triangleAt (generator.phaseB) + triangleAt (generator.phaseA) + triangleAt (generator.phaseC);
        const auto expected = shape == triangle ? triangleAt (generator.phaseA)
                              : shape == saw    ? 1.0f - 2.0f * generator.phaseA
                                                : (float) ((double) sum * 0.333333333);
        EXPECT_LT (expected, -1.0f);
        EXPECT_EQ (generator.render(), expected) << shape;

        // The curve limits the wave, and in either case the tick limits the target.
        EXPECT_EQ (engine.lpFreqSlew.target, 0.0f);
        driver.set ("lfo1_curve", 0.9f);
        driver.tick();
        EXPECT_EQ (generator.render(), -1.0f);

        for (const auto& [left, right] : driver.run (EngineDriver::noise (2, 1000)))
            ASSERT_TRUE (std::isfinite (left) && std::isfinite (right));
    }
}

//======================================================================================================================
// Tempo.

TYPED_TEST (LfoRouting, LocksATempoLfoToEachOfItsLengths)
{
    constexpr std::array beats { 64.0f, 32.0f, 16.0f,       12.0f, 8.0f,        6.0f,  4.0f,        3.0f,  2.0f,
                                 1.5f,  1.0f,  2.0f / 3.0f, 0.5f,  1.0f / 3.0f, 0.25f, 1.0f / 6.0f, 0.125f };

    for (std::size_t k = 0; k < beats.size(); ++k)
    {
        TypeParam driver;
        auto& generator = driver.engine.lfo[1];
        driver.setTransport (37.3, 131.0);
        driver.choose ("lfo2_sync", tempo);
        driver.choose ("lfo2_mode", (int) k);
        driver.set ("lfo2_phase", 0.3f);
        const auto phase = driver.get ("lfo2_phase");
        const auto target = fractionOf (37.3 / (double) beats[k] + 0.5 - (double) phase);

        // From the other side of the circle; the first tick has no step yet.
        generator.phaseA = target < 0.5f ? target + 0.5f : target - 0.5f;
        driver.tick();
        EXPECT_EQ (generator.phaseA, target) << k;
        EXPECT_EQ (generator.phaseStepA, (float) (131.0 / (double) beats[k] * 0.016666666666666666) / rate) << k;
    }
}

TYPED_TEST (LfoRouting, MovesAllPhasesInALockAndClearsTheWalk)
{
    TypeParam driver;
    auto& generator = driver.engine.lfo[0];
    driver.setTransport (somewhere);
    driver.choose ("lfo1_sync", tempo);
    generator.walkValue = 0.9f;
    driver.tick();
    EXPECT_EQ (generator.phaseA, fractionOf (somewhere / 64.0));
    EXPECT_EQ (generator.phaseB, generator.phaseA);
    EXPECT_EQ (generator.phaseC, generator.phaseA);
    EXPECT_EQ (generator.referencePhase, generator.phaseA);
    EXPECT_EQ (generator.walkValue, 0.0f);

    // And in the first of many ticks, where the transport jumps. From there on the phases drift apart by their own speeds.
    driver.set ("lfo1T_lpf", 0.9f);
    driver.tick (manyTicks);
    generator.walkValue = 0.9f;
    generator.phaseB = 0.9f;
    generator.phaseC = 0.9f;
    driver.setTransport (somewhere + 20.0);
    driver.tick (manyTicks);
    EXPECT_NEAR (generator.phaseA, fractionOf ((somewhere + 20.0) / 64.0), 1.0e-3f);
    EXPECT_NEAR (generator.phaseB, generator.phaseA, 1.0e-3f);
    EXPECT_NEAR (generator.phaseC, generator.phaseA, 1.0e-3f);
    EXPECT_EQ (generator.walkValue, 0.0f);
}

TYPED_TEST (LfoRouting, SnapsATempoLfoBackOnceItHasRunAHundredthOfABeat)
{
    for (const auto together : { 1, 7, 500 })
    {
        TypeParam driver;
        const auto& generator = driver.engine.lfo[0];
        driver.set ("lfo1T_lpf", 0.9f);
        driver.setTransport (somewhere);
        driver.choose ("lfo1_sync", tempo);
        driver.choose ("lfo1_mode", 6);
        driver.tick();
        const auto target = fractionOf (somewhere / 4.0);
        ASSERT_EQ (generator.phaseA, target);
        auto expected = target;
        auto numSnaps = 0;

        for (int done = 0; done < 2000; done += together)
        {
            for (int i = 0; i < together; ++i)
            {
                // One hundredth of a beat is a four-hundredth of the cycle.
                if (expected - target >= 0.01f / 4.0f)
                {
                    expected = target;
                    ++numSnaps;
                }

                expected += generator.phaseStepA;
            }

            driver.tick (together);
            ASSERT_EQ (generator.phaseA, expected) << done;
        }

        // 240 steps of half a hertz are 0.0025 cycles.
        EXPECT_GE (numSnaps, 7);
        EXPECT_LE (numSnaps, 8);
    }
}

TYPED_TEST (LfoRouting, MeasuresTheLocksDistanceAroundTheCircle)
{
    TypeParam driver;
    auto& generator = driver.engine.lfo[0];
    driver.choose ("lfo1_sync", tempo);
    driver.choose ("lfo1_mode", 6);
    driver.setTransport (4.001);
    generator.phaseA = 0.999f;
    driver.tick();

    // 0.00125 cycles across the wrap are near enough.
    EXPECT_EQ (generator.phaseA, 0.999f);
    generator.phaseA = 0.99f;
    generator.phaseStepA = 0.0f;
    driver.tick();
    EXPECT_EQ (generator.phaseA, fractionOf (4.001 / 4.0));
}

TYPED_TEST (LfoRouting, FollowsAMovingTransportInTempo)
{
    TypeParam driver;
    const auto& generator = driver.engine.lfo[0];
    driver.set ("lfo1T_lpf", 0.9f);
    driver.choose ("lfo1_sync", tempo);
    driver.choose ("lfo1_mode", 6);
    driver.setTransport (1.0);
    driver.tick();
    EXPECT_EQ (generator.phaseA, 0.25f);

    for (const auto& [beats, phase] : { std::pair { 3.0, 0.75f }, { 1.0, 0.25f }, { -1.0, 0.75f }, { 6.0, 0.5f } })
    {
        driver.setTransport (beats);
        driver.tick();
        EXPECT_NEAR (generator.phaseA, phase, 1.0e-4f) << beats;

        // And stays within a hundredth of a beat of it.
        driver.tick (1000);
        EXPECT_NEAR (generator.phaseA, phase, 0.0026f) << beats;
    }
}

TYPED_TEST (LfoRouting, UsesThePhaseKnobInTempoAlone)
{
    for (int sync = 0; sync < 10; ++sync)
    {
        TypeParam centred, shifted;
        shifted.set ("lfo1_phase", 0.9f);

        for (auto* const driver : { &centred, &shifted })
        {
            driver->keepAwake();
            driver->setTransport (somewhere);
            driver->choose ("lfo1_sync", sync);
            driver->tick (manyTicks);
        }

        EXPECT_EQ (centred.engine.lfo[0].phaseA != shifted.engine.lfo[0].phaseA, sync == tempo) << sync;
    }
}

TYPED_TEST (LfoRouting, FallsBackToFreeSpeedInTempoWithoutAPlayHead)
{
    TypeParam driver;
    const auto& generator = driver.engine.lfo[0];
    driver.keepAwake();
    driver.choose ("lfo1_sync", tempo);
    driver.set ("lfo1_phase", 0.75f);
    driver.set ("lfo2T_lfo1", 1.0f);
    driver.tick (50);

    // At every tick reset to 0, locked and one step on; the cross route has no say.
    EXPECT_EQ (generator.phaseStepA, freeFrequency (driver, 0) / rate);
    EXPECT_EQ (generator.phaseA, 0.75f + generator.phaseStepA);
}

TYPED_TEST (LfoRouting, FallsBackToFreeSpeedAtZeroBpmAndStillLocks)
{
    TypeParam driver;
    const auto& generator = driver.engine.lfo[0];
    driver.setTransport (somewhere, 0.0);
    driver.choose ("lfo1_sync", tempo);
    driver.choose ("lfo1_mode", 6);
    driver.tick();
    EXPECT_EQ (generator.phaseStepA, freeFrequency (driver, 0) / rate);
    EXPECT_EQ (generator.phaseA, fractionOf (somewhere / 4.0));
}

TYPED_TEST (LfoRouting, LetsATempoLfoMoveTheOtherButNotBeMoved)
{
    TypeParam driver;
    auto& engine = driver.engine;
    driver.setTransport (4.0);
    driver.choose ("lfo1_sync", tempo);
    driver.set ("lfo1T_lfo2", 1.0f);
    driver.set ("lfo2T_lfo1", 1.0f);
    raise (driver, 1);
    driver.tick();
    EXPECT_EQ (engine.lfo[0].phaseStepA, (float) (120.0 / 64.0 * 0.016666666666666666) / rate);

    // The triangle of 4/64 gives -0.75.
    const auto factor = 1.0f + -0.75f * 0.5f;
    EXPECT_EQ (engine.lfo[1].phaseStepA, freeFrequency (driver, 1, factor * factor) / rate);
}

//======================================================================================================================
// The walk of a Brownian LFO.

TYPED_TEST (LfoRouting, RestartsTheWalkAtEverySnapInTempo)
{
    for (const bool isTakenTogether : { false, true })
    {
        TypeParam driver;
        auto& generator = driver.engine.lfo[0];
        generator.rng.seed (1);
        driver.set ("lfo1T_lpf", 0.9f);
        driver.setTransport (somewhere);
        driver.choose ("lfo1_sync", tempo);
        driver.choose ("lfo1_mode", 16);
        driver.choose ("lfo1_shape", brownian);
        driver.tick (2);
        const auto target = fractionOf (somewhere / 0.125);
        auto phase = generator.phaseA;
        auto numLongWalks = 0;

        for (int snap = 0; snap < 20; ++snap)
        {
            // To the last tick before the snap: a hundredth of a beat is a good twelfth of the cycle.
            auto numTicks = 0;

            for (; std::abs (phase - target) < 0.01f / 0.125f; ++numTicks)
                phase += generator.phaseStepA;

            if (isTakenTogether)
                driver.tick (numTicks);
            else
                for (int i = 0; i < numTicks; ++i)
                    driver.tick();

            ASSERT_EQ (generator.phaseA, phase) << snap;
            numLongWalks += std::abs (generator.walkValue) > 3.0f * generator.walkStep ? 1 : 0;

            // The snap clears the walk, and the tick draws its first step.
            driver.tick();
            phase = target + generator.phaseStepA;
            ASSERT_EQ (generator.phaseA, phase) << snap;
            EXPECT_LE (std::abs (generator.walkValue), generator.walkStep) << snap;
        }

        EXPECT_GT (numLongWalks, 10);
    }
}

TYPED_TEST (LfoRouting, DriftsAHundredthPerSecondAtMostWithABrownianLfo)
{
    TypeParam driver;
    auto& generator = driver.engine.lfo[0];
    generator.rng.seed (2);
    driver.setTransport (somewhere);
    driver.choose ("lfo1_shape", brownian);
    driver.set ("lfo1_speed", 1.0f);
    driver.set ("lfo1T_lpf", 1.0f);
    auto highest = 0.0f;

    for (int second = 0; second < 3; ++second)
    {
        const auto before = generator.outputSlew.current;
        driver.runSilence (48000);
        EXPECT_LE (std::abs (generator.outputSlew.current - before), 0.0100001f);
        EXPECT_NE (generator.outputSlew.current, before);
        highest = std::max (highest, std::abs (generator.walkValue));
    }

    EXPECT_GT (highest, 0.05f);
}

TYPED_TEST (LfoRouting, WalksTheSameFromTheSameSeed)
{
    const auto rendered = [] (std::uint32_t seed)
    {
        TypeParam driver;
        driver.engine.lfo[0].rng.seed (seed);
        driver.engine.lfo[1].rng.seed (seed + 1);
        driver.setTransport (somewhere);
        driver.set ("lp_freq", 0.5f);

        for (const auto number : { 1, 2 })
        {
            driver.choose (lfoId (number, "_shape"), brownian);
            driver.set (lfoId (number, "_speed"), 1.0f);
            driver.set (lfoId (number, "T_lpf"), 1.0f);
        }

        return driver.run (EngineDriver::noise (3, 20000));
    };
    EXPECT_EQ (rendered (5), rendered (5));
    EXPECT_NE (rendered (5), rendered (6));
}

//======================================================================================================================
// The bar lock of the reserved shapes.

TYPED_TEST (LfoRouting, LocksBothLfosToTheBarsInAReservedShape)
{
    struct Case
    {
        int shape;
        float bars;
    };

    for (const auto& [shape, bars] : { Case { reservedPulse, 1.0f }, Case { reservedSum, 16.0f } })
    {
        TypeParam driver;
        driver.keepAwake();
        driver.setTransport (7.3, 133.0, 6, 8);
        driver.choose ("lfo1_mode", 8);
        driver.choose ("lfo2_mode", 10);
        driver.choose ("lfo2_shape", shape);
        driver.tick (manyTicks);

        for (std::size_t i = 0; i < 2; ++i)
        {
            const auto& generator = driver.engine.lfo[i];
            const auto span = bars * (i == 0 ? 2.0f : 1.0f);
            const auto period = rate * 60.0f * 0.75f * span / 133.0f;
            EXPECT_EQ (generator.phaseStepA, (float) (1.0 / (double) period));
            EXPECT_EQ (generator.phaseStepB, (float) (0.5 / (double) period));
            EXPECT_EQ (generator.phaseStepC, (float) (2.0 / (double) period));
            EXPECT_EQ (generator.referencePhase, fractionOf (7.3 / 0.75 / (double) span));
            EXPECT_TRUE (generator.followReference);
        }
    }
}

TYPED_TEST (LfoRouting, RestoresTheStepsOfLfoTwoWhenLfoOneIsLockedToTheBars)
{
    TypeParam driver;
    const auto& engine = driver.engine;
    driver.keepAwake();
    driver.setTransport (7.3);
    driver.choose ("lfo1_shape", reservedPulse);
    driver.tick (manyTicks);
    EXPECT_EQ (engine.lfo[1].phaseStepA, freeFrequency (driver, 1) / rate);
    EXPECT_EQ (engine.lfo[0].phaseStepA, (float) (1.0 / (double) (rate * 60.0f * 64.0f / 120.0f)));
    EXPECT_TRUE (engine.lfo[1].followReference);
}

TYPED_TEST (LfoRouting, TreatsPositionZeroAsAPositionInTheBarLock)
{
    TypeParam driver;
    const auto& generator = driver.engine.lfo[1];
    driver.keepAwake();
    driver.setTransport (0.0);
    driver.choose ("lfo2_shape", reservedPulse);
    driver.choose ("lfo2_mode", 6);
    driver.tick (manyTicks);
    EXPECT_EQ (generator.phaseStepA, (float) (1.0 / (double) (rate * 60.0f * 4.0f / 120.0f)));

    // The start of a bar is no phase to follow.
    EXPECT_FALSE (generator.followReference);
}

TYPED_TEST (LfoRouting, StandsStillInAReservedShapeWithoutAPosition)
{
    for (const auto hasPlayHead : { false, true })
    {
        TypeParam driver;
        const auto& generator = driver.engine.lfo[1];

        if (hasPlayHead)
            driver.setTransportWithoutPosition();

        driver.keepAwake();
        driver.choose ("lfo2_shape", reservedSum);
        driver.tick (manyTicks);
        EXPECT_EQ (generator.shape, reservedSum);
        EXPECT_EQ (generator.phaseStepA, 0.0f);
        EXPECT_EQ (generator.phaseA, 0.0f);
        EXPECT_FALSE (generator.followReference);
    }
}

TYPED_TEST (LfoRouting, NeverStopsFollowingOnceABarLockHasBegun)
{
    TypeParam driver;
    auto& generator = driver.engine.lfo[0];
    driver.setTransport (7.3);
    driver.choose ("lfo1_shape", reservedPulse);
    driver.tick();
    driver.choose ("lfo1_shape", triangle);
    driver.tick();
    EXPECT_TRUE (generator.followReference);

    // It acts on a reserved shape alone: the triangle runs free.
    generator.phaseA = 0.25f;
    generator.referencePhase = 0.3f;
    const auto step = generator.phaseStepA;
    driver.tick();
    EXPECT_EQ (generator.phaseA, 0.25f + step);
}

TYPED_TEST (LfoRouting, SurvivesATransportThatIsNotFinite)
{
    constexpr auto quietNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr auto infinity = std::numeric_limits<double>::infinity();

    for (const auto strange : { quietNaN, infinity, 1.0e300, -infinity })
        for (const auto sync : { 0, drunk, tempo })
            for (const auto shape : { triangle, randomTriangles, brownian, reservedPulse, reservedSum })
            {
                TypeParam driver;
                driver.setTransport (strange, strange);
                driver.choose ("lfo1_shape", shape);
                driver.choose ("lfo1_sync", sync);
                driver.set ("lfo1T_lpf", 1.0f);
                driver.set ("seq4_lpf", 0.8f);
                driver.runSilence (300);
                EXPECT_GE (driver.engine.lpFreqSlew.target, 0.0f);
                EXPECT_LE (driver.engine.lpFreqSlew.target, 1.0f);
                EXPECT_TRUE (std::isfinite (driver.lpFilter().limitedCutoff));
            }
}
