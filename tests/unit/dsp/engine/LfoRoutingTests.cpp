// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/MainAudioProcessor.h"

#include <array>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "support/EngineUnderTest.h"

namespace
{
constexpr float rate = 48000.0f;

// What a knob's position means, from a value that the compiler cannot know.
[[nodiscard]] float freeFrequency (EngineUnderTest& engine, std::size_t i, float multiplier = 1.0f)
{
    const auto speed = engine.processor.parameters.lfoSpeed[i]->get();
    return std::exp (speed * multiplier * multiplier * 6.9077554f - 3.912023f);
}

[[nodiscard]] std::string lfoId (int number, const char* suffix) { return "lfo" + std::to_string (number) + suffix; }

/** A transport that stands somewhere but at the start. */
constexpr double somewhere = 3.3;

/** Stands the LFO at full swing: a square in its upper half, whatever the tick adds to its phase. */
void raise (LfoGenerator& generator)
{
    generator.shape = LfoGenerator::square;
    generator.phaseA = 0.75f;
}

[[nodiscard]] float triangleAt (float phase)
{
    const auto p = (double) phase;
    return (float) (p < 0.5 ? 4.0 * p - 1.0 : (0.75 - p) * 4.0);
}

[[nodiscard]] float fractionOf (double cycles) { return (float) (cycles - std::floor (cycles)); }
} // namespace

TEST (LfoRouting, HoldsBothLfosAtTheirStartWithoutATransport)
{
    for (const auto kind : { 0, 1, 2 })
    {
        EngineUnderTest engine;
        auto& processor = engine.processor;
        engine.choose ("lfo1_shape", 5);
        engine.set ("lfo1_speed", 1.0f);
        engine.set ("lfo1T_lpf", 1.0f);
        engine.set ("lfo2T_lpf", 1.0f);

        if (kind == 1)
            processor.setPlayHead (&engine.playHead);

        if (kind == 2)
            engine.setTransport (0.0);

        for (int i = 0; i < 1000; ++i)
        {
            engine.tick();

            for (const auto& generator : processor.lfo)
            {
                // One step from zero; before its first rate the step is none.
                ASSERT_LE (generator.phaseA, generator.phaseStepA);
                ASSERT_LE (std::abs (generator.walkValue), generator.walkStep);
            }
        }

        EXPECT_EQ (processor.lfo[1].phaseA, processor.lfo[1].phaseStepA);
        EXPECT_GT (processor.lfo[1].phaseA, 0.0f);
        EXPECT_NE (processor.lfo[0].walkValue, 0.0f);
    }
}

TEST (LfoRouting, RunsUnderAStoppedTransportThatStandsAnywhereElse)
{
    for (const auto beats : { somewhere, -1.0 })
    {
        EngineUnderTest engine;
        engine.setTransport (beats);
        engine.tick (101);
        const auto& generator = engine.processor.lfo[0];
        auto expected = 0.0f;

        for (int i = 0; i < 100; ++i)
            expected += generator.phaseStepA;

        EXPECT_EQ (generator.phaseA, expected);
    }
}

TEST (LfoRouting, StandsStillWhileTheEngineSleeps)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.setTransport (somewhere);
    engine.fallAsleep();
    const auto phase = processor.lfo[0].phaseA;
    EXPECT_GT (phase, 0.0f);
    engine.runSilence (10000);
    EXPECT_EQ (processor.lfo[0].phaseA, phase);

    // One step for each wrap of the clock.
    engine.runSilence (65536);
    EXPECT_EQ (processor.lfo[0].phaseA, phase + processor.lfo[0].phaseStepA);
}

TEST (LfoRouting, KeepsTheEngineAwakeFromADepthAboveAHundredth)
{
    for (const auto number : { 1, 2 })
        for (const auto* const suffix : { "T_hpf", "T_lpf", "T_hpr", "T_lpr" })
            for (const auto direction : { -1.0f, 1.0f })
            {
                EngineUnderTest engine;
                engine.set ("hp_freq", 0.5f);
                engine.set ("lp_freq", 0.5f);
                engine.fallAsleep();
                engine.set (lfoId (number, suffix), 0.5f + direction * 0.0049f);
                engine.tick (2);

                // Inside the dead band it is added all the same, too little here to wake a resonance that is limited at 0.
                auto* const slew = &engine.processor.hpFreqSlew;
                slew->current = slew->target;
                engine.processor.lpFreqSlew.current = engine.processor.lpFreqSlew.target;
                engine.processor.hpResoSlew.current = engine.processor.hpResoSlew.target;
                engine.processor.lpResoSlew.current = engine.processor.lpResoSlew.target;
                engine.tick();
                EXPECT_FALSE (engine.processor.controlUpdatePending) << suffix;

                engine.set (lfoId (number, suffix), 0.5f + direction * 0.0051f);
                engine.tick();
                EXPECT_TRUE (engine.processor.controlUpdatePending) << suffix;
            }
}

TEST (LfoRouting, LetsTheEngineSleepOverACrossRoute)
{
    EngineUnderTest engine;
    engine.set ("lfo1T_lfo2", 1.0f);
    engine.set ("lfo2T_lfo1", 0.0f);
    engine.setTransport (somewhere);
    engine.fallAsleep();
}

TEST (LfoRouting, AddsADepthInsideTheDeadBandToo)
{
    EngineUnderTest engine;
    engine.set ("lp_freq", 0.5f);
    engine.set ("lfo1T_lpf", 0.504f);
    engine.setTransport (somewhere);
    raise (engine.processor.lfo[0]);
    engine.tick();
    const auto depth = engine.processor.parameters.lfoToLpFreq[0]->get() * 2.0f - 1.0f;
    EXPECT_EQ (engine.processor.lpFreqSlew.target, depth * 0.5f + 0.5f);
    EXPECT_GT (depth, 0.0f);
}

TEST (LfoRouting, RoutesEachDepthToItsOwnTarget)
{
    struct Route
    {
        const char* suffix;
        SlewValue MainAudioProcessor::*slew;
        float moved;
    };

    for (const auto number : { 1, 2 })
        for (const auto& [suffix, slew, moved] : { Route { "T_hpf", &MainAudioProcessor::hpFreqSlew, 0.125f },
                                                   { "T_lpf", &MainAudioProcessor::lpFreqSlew, 0.125f },
                                                   { "T_hpr", &MainAudioProcessor::hpResoSlew, 0.25f },
                                                   { "T_lpr", &MainAudioProcessor::lpResoSlew, 0.25f } })
        {
            EngineUnderTest engine;
            engine.setTransport (somewhere);

            for (const auto* const id : { "hp_freq", "lp_freq", "hp_reso", "lp_reso" })
                engine.set (id, 0.5f);

            raise (engine.processor.lfo[(std::size_t) number - 1]);
            engine.set (lfoId (number, suffix), 0.625f);
            engine.tick();

            for (const auto each : { &MainAudioProcessor::hpFreqSlew, &MainAudioProcessor::lpFreqSlew,
                                     &MainAudioProcessor::hpResoSlew, &MainAudioProcessor::lpResoSlew })
                EXPECT_EQ ((engine.processor.*each).target, each == slew ? 0.5f + moved : 0.5f) << suffix;
        }
}

TEST (LfoRouting, AddsTwoFullLfosToTwo)
{
    EngineUnderTest engine;
    engine.setTransport (somewhere);
    engine.set ("hp_freq", 0.0f);
    engine.set ("lfo1T_hpf", 1.0f);
    engine.set ("lfo2T_hpf", 1.0f);
    raise (engine.processor.lfo[0]);
    raise (engine.processor.lfo[1]);
    engine.tick();
    EXPECT_EQ (engine.processor.hpFreqSlew.target, 1.0f);
}

TEST (LfoRouting, RunsAFreeLfoOverThreeDecadesFromAFiftiethOfAHertz)
{
    EngineUnderTest engine;
    engine.setTransport (somewhere);

    for (const auto& [position, hertz] :
         { std::pair { 0.0f, 0.02f }, { 0.5f, 0.632456f }, { 1.0f, 20.0f }, { 1.0f / 3.0f, 0.2f } })
    {
        engine.set ("lfo2_speed", position);
        engine.tick();
        EXPECT_EQ (engine.processor.lfo[1].phaseStepA, freeFrequency (engine, 1) / rate);
        EXPECT_NEAR (freeFrequency (engine, 1), hertz, hertz * 1.0e-5f);
    }
}

TEST (LfoRouting, TakesTheShapeOfTheChoiceAtTheEndOfTheTick)
{
    EngineUnderTest engine;
    engine.setTransport (somewhere);
    engine.set ("lp_freq", 0.5f);
    engine.set ("lfo1T_lpf", 1.0f);
    engine.choose ("lfo1_shape", 2);
    engine.tick();

    // The triangle's -1 for one more tick, and then the saw's +1, one step on.
    EXPECT_EQ (engine.processor.lpFreqSlew.target, 0.0f);
    EXPECT_EQ (engine.processor.lfo[0].shape, LfoGenerator::saw);
    engine.tick();
    EXPECT_GT (engine.processor.lpFreqSlew.target, 0.99f);
}

TEST (LfoRouting, MakesASineOfEveryShapeWithoutAPlace)
{
    EngineUnderTest engine;
    engine.setTransport (somewhere);

    for (int index = 0; index < 30; ++index)
    {
        engine.choose ("lfo1_shape", index);
        engine.tick();
        EXPECT_EQ (engine.processor.lfo[0].shape, index < 8 ? index : 0);

        // The reserved shapes have no frequency of their own.
        if (index < 6 || index >= 8)
        {
            EXPECT_EQ (engine.processor.lfo[0].phaseStepA, freeFrequency (engine, 0) / rate);
        }
    }
}

TEST (LfoRouting, SetsTheAmplitudeAtEveryTick)
{
    EngineUnderTest engine;
    engine.processor.lfo[0].amplitude = 0.3f;
    engine.tick();
    EXPECT_EQ (engine.processor.lfo[0].amplitude, 1.0f);
}

TEST (LfoRouting, BendsByTheCurveKnobInBothDirections)
{
    EngineUnderTest engine;
    auto& generator = engine.processor.lfo[0];
    engine.tick();
    EXPECT_EQ (generator.curveExponent, 1.0f);

    for (const auto position : { 0.0f, 0.1f, 0.7f, 1.0f })
    {
        engine.set ("lfo1_curve", position);
        engine.tick();
        EXPECT_NEAR (generator.curveExponent, std::exp (-1.7 * (2.0 * (double) position - 1.0)), 2.0e-6);
        EXPECT_EQ (generator.curveExponent > 1.0f, position < 0.5f);
    }
}

TEST (LfoRouting, ActsLikeTimeInEverySyncWithoutAText)
{
    const auto rendered = [] (int sync)
    {
        EngineUnderTest engine;
        engine.setTransport (somewhere);
        engine.choose ("lfo1_sync", sync);
        engine.choose ("lfo2_sync", sync);
        engine.set ("lp_freq", 0.5f);
        engine.set ("lfo1T_lpf", 0.9f);
        engine.set ("lfo2T_hpr", 0.9f);
        engine.set ("lfo1_speed", 1.0f);
        return engine.run (EngineUnderTest::noise (1, 3000));
    };
    const auto time = rendered (0);

    for (int sync = 4; sync < 10; ++sync)
        EXPECT_EQ (rendered (sync), time) << sync;

    // "Wobbly" too is heard like "Time"; "Drunk" and "Tempo" are not.
    EXPECT_EQ (rendered (1), time);
    EXPECT_NE (rendered (2), time);
    EXPECT_NE (rendered (3), time);
}

TEST (LfoRouting, TurnsTheWobbleOfWobblyWithoutEffect)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.setTransport (somewhere);
    engine.choose ("lfo1_sync", 1);
    engine.choose ("lfo2_sync", 1);
    engine.tick (100);

    for (std::size_t i = 0; i < 2; ++i)
    {
        const auto detune = i == 0 ? 0.055f : 0.054f;
        const auto speed = processor.parameters.lfoSpeed[i]->get();
        const auto hertz = std::exp ((detune + 0.2297f) * speed * 5.7037826f - 4.6051702f);
        EXPECT_EQ (processor.wobbleStep[i], (float) ((double) hertz / (double) rate));
        EXPECT_EQ (processor.wobbleDepth[i], 0.01f);
        EXPECT_GT (processor.wobblePhase[i], 0.0f);
        EXPECT_EQ (processor.lfo[i].phaseStepA, freeFrequency (engine, i) / rate);
    }

    EXPECT_NE (processor.wobbleStep[0], processor.wobbleStep[1]);
}

TEST (LfoRouting, WobblesTheSpeedOfDrunk)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.setTransport (somewhere);
    engine.choose ("lfo1_sync", 2);
    engine.choose ("lfo2_sync", 2);

    for (const auto phase : { 0.0f, 0.2f, 0.5f, 0.9f })
    {
        processor.wobblePhase = { phase, phase };
        engine.tick();

        for (std::size_t i = 0; i < 2; ++i)
        {
            const auto detune = i == 0 ? 0.055f : 0.054f;
            const auto speed = processor.parameters.lfoSpeed[i]->get();
            const auto hertz = std::exp ((detune + 0.3297f) * speed * 5.857933f - 4.6051702f);
            EXPECT_EQ (processor.wobbleStep[i], (float) ((double) hertz / (double) rate));
            EXPECT_EQ (processor.wobbleDepth[i], 0.12f);
            EXPECT_EQ (processor.wobblePhase[i], phase + processor.wobbleStep[i]);

            const auto factor = triangleAt (processor.wobblePhase[i]) * 0.12f + 1.0f;
            EXPECT_EQ (processor.lfo[i].phaseStepA, freeFrequency (engine, i, factor * factor) / rate) << phase;
        }
    }
}

TEST (LfoRouting, StopsTheWobbleInEveryOtherSync)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.setTransport (somewhere);
    engine.choose ("lfo1_sync", 2);
    engine.tick (5);
    const auto phase = processor.wobblePhase[0];

    for (const auto sync : { 0, 3, 4, 9 })
    {
        engine.choose ("lfo1_sync", sync);
        engine.tick();
        EXPECT_EQ (processor.wobbleStep[0], 0.0f);
        EXPECT_EQ (processor.wobbleDepth[0], 0.0f);
        EXPECT_EQ (processor.wobblePhase[0], phase);
    }
}

TEST (LfoRouting, ResetsTheWobbleToZeroInsteadOfWrappingIt)
{
    EngineUnderTest engine (1000.0);
    auto& processor = engine.processor;
    engine.setTransport (somewhere);
    engine.choose ("lfo1_sync", 2);
    engine.set ("lfo1_speed", 1.0f);
    engine.tick();
    processor.wobblePhase[0] = std::nextafter (1.0f, 0.0f);
    engine.tick();
    EXPECT_GT (processor.wobbleStep[0], 1.0e-5f);
    EXPECT_EQ (processor.wobblePhase[0], 0.0f);
}

TEST (LfoRouting, KeepsTheWobbleThroughAReset)
{
    EngineUnderTest engine;
    engine.choose ("lfo1_sync", 2);
    engine.tick (10);
    EXPECT_GT (engine.processor.wobblePhase[0], engine.processor.wobbleStep[0]);
}

TEST (LfoRouting, ReadsTheOtherLfoBeforeItsAdvanceInOneAndAfterItInTwo)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.setTransport (somewhere);
    engine.set ("lfo1T_lfo2", 0.9f);
    engine.set ("lfo2T_lfo1", 0.2f);
    engine.set ("lfo1_curve", 0.3f);
    engine.tick();
    processor.lfo[0].phaseA = 0.1f;
    processor.lfo[0].phaseStepA = 0.05f;
    processor.lfo[1].phaseA = 0.3f;
    processor.lfo[1].phaseStepA = 0.07f;

    auto first = processor.lfo[0], second = processor.lfo[1];
    const auto multiplied = [] (LfoGenerator& other, const ParameterSet::Parameter& route)
    {
        const auto depth = route.get() * 2.0f - 1.0f;
        const auto factor = 1.0f + other.render() * depth * 0.5f;
        return factor * factor;
    };

    first.advance();
    const auto ofFirst = multiplied (second, *processor.parameters.lfoToOtherLfo[1]);
    second.advance();
    const auto ofSecond = multiplied (first, *processor.parameters.lfoToOtherLfo[0]);

    engine.tick();
    EXPECT_EQ (processor.lfo[0].phaseStepA, freeFrequency (engine, 0, ofFirst) / rate);
    EXPECT_EQ (processor.lfo[1].phaseStepA, freeFrequency (engine, 1, ofSecond) / rate);
    EXPECT_NE (ofFirst, 1.0f);
    EXPECT_NE (ofSecond, 1.0f);
}

TEST (LfoRouting, LimitsTheSpeedMultiplier)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.setTransport (somewhere);
    engine.set ("lfo2T_lfo1", 1.0f);
    raise (processor.lfo[1]);
    engine.tick();
    EXPECT_EQ (processor.lfo[0].phaseStepA, freeFrequency (engine, 0, 1.99f) / rate);

    // A phase that has run away gives the triangle's -2, and (1 - 1) squared.
    processor.lfo[1].shape = LfoGenerator::triangle;
    processor.lfo[1].phaseA = 1.25f;
    engine.tick();
    EXPECT_EQ (processor.lfo[0].phaseStepA, freeFrequency (engine, 0, 0.01f) / rate);
}

TEST (LfoRouting, IgnoresACrossRouteInsideItsDeadBand)
{
    for (const auto position : { 0.4951f, 0.5f, 0.5049f })
    {
        EngineUnderTest engine;
        engine.setTransport (somewhere);
        engine.set ("lfo2T_lfo1", position);
        raise (engine.processor.lfo[1]);
        engine.tick();
        EXPECT_EQ (engine.processor.lfo[0].phaseStepA, freeFrequency (engine, 0) / rate);
    }
}

TEST (LfoRouting, LetsAPhaseRunAwayAtExtremeSpeeds)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.setTransport (somewhere);
    engine.set ("lfo1_speed", 1.0f);
    engine.set ("lfo2T_lfo1", 1.0f);
    engine.set ("lfo1T_lpf", 1.0f);
    engine.set ("lp_freq", 0.5f);
    engine.choose ("lfo2_shape", 3);
    engine.set ("lfo2_speed", 0.0f);
    raise (processor.lfo[1]);
    engine.tick (3);
    EXPECT_GT (processor.lfo[0].phaseStepA, 1.0f);
    EXPECT_GT (processor.lfo[0].phaseA, 1.0f);
    EXPECT_LT (processor.lfo[0].render(), -1.0f);

    // The curve holds the wave, and the clamp the target in either case.
    EXPECT_EQ (processor.lpFreqSlew.target, 0.0f);
    engine.set ("lfo1_curve", 0.9f);
    engine.tick();
    EXPECT_EQ (processor.lfo[0].render(), -1.0f);

    for (const auto& [left, right] : engine.run (EngineUnderTest::noise (2, 1000)))
        ASSERT_TRUE (std::isfinite (left) && std::isfinite (right));
}

TEST (LfoRouting, LocksATempoLfoToEachOfItsLengths)
{
    constexpr std::array beats { 64.0f, 32.0f, 16.0f,       12.0f, 8.0f,        6.0f,  4.0f,        3.0f,  2.0f,
                                 1.5f,  1.0f,  2.0f / 3.0f, 0.5f,  1.0f / 3.0f, 0.25f, 1.0f / 6.0f, 0.125f };

    for (std::size_t k = 0; k < beats.size(); ++k)
    {
        EngineUnderTest engine;
        auto& generator = engine.processor.lfo[1];
        engine.setTransport (37.3, 131.0);
        engine.choose ("lfo2_sync", 3);
        engine.choose ("lfo2_mode", (int) k);
        engine.set ("lfo2_phase", 0.3f);
        const auto phase = engine.processor.parameters.lfoPhase[1]->get();
        const auto wanted = fractionOf (37.3 / (double) beats[k] + 0.5 - (double) phase);

        // From the other side of the circle; the first tick has no step yet.
        generator.phaseA = wanted < 0.5f ? wanted + 0.5f : wanted - 0.5f;
        engine.tick();
        EXPECT_EQ (generator.phaseA, wanted) << k;
        EXPECT_EQ (generator.phaseStepA, (float) (131.0 / (double) beats[k] * 0.016666666666666666) / rate) << k;
    }
}

TEST (LfoRouting, TakesAllPhasesAndTheWalkAlongInALock)
{
    EngineUnderTest engine;
    auto& generator = engine.processor.lfo[0];
    engine.setTransport (somewhere);
    engine.choose ("lfo1_sync", 3);
    generator.walkValue = 0.9f;
    engine.tick();
    EXPECT_EQ (generator.phaseA, fractionOf (somewhere / 64.0));
    EXPECT_EQ (generator.phaseB, generator.phaseA);
    EXPECT_EQ (generator.phaseC, generator.phaseA);
    EXPECT_EQ (generator.referencePhase, generator.phaseA);
    EXPECT_EQ (generator.walkValue, 0.0f);
}

TEST (LfoRouting, SnapsATempoLfoBackOnceItHasRunAHundredthOfABeat)
{
    EngineUnderTest engine;
    auto& generator = engine.processor.lfo[0];
    engine.setTransport (somewhere);
    engine.choose ("lfo1_sync", 3);
    engine.choose ("lfo1_mode", 6);
    engine.tick();
    const auto wanted = fractionOf (somewhere / 4.0);
    ASSERT_EQ (generator.phaseA, wanted);
    auto expected = wanted;
    auto numSnaps = 0;

    for (int i = 0; i < 2000; ++i)
    {
        // One hundredth of a beat is a four-hundredth of the cycle.
        if (expected - wanted >= 0.01f / 4.0f)
        {
            expected = wanted;
            ++numSnaps;
        }

        expected += generator.phaseStepA;
        engine.tick();
        ASSERT_EQ (generator.phaseA, expected) << i;
    }

    // 240 steps of half a hertz are 0.0025 cycles.
    EXPECT_GE (numSnaps, 7);
    EXPECT_LE (numSnaps, 8);
}

TEST (LfoRouting, MeasuresTheLocksDistanceAroundTheCircle)
{
    EngineUnderTest engine;
    auto& generator = engine.processor.lfo[0];
    engine.choose ("lfo1_sync", 3);
    engine.choose ("lfo1_mode", 6);
    engine.setTransport (4.001);
    generator.phaseA = 0.999f;
    engine.tick();

    // 0.00125 cycles across the wrap are near enough.
    EXPECT_EQ (generator.phaseA, 0.999f);
    generator.phaseA = 0.99f;
    generator.phaseStepA = 0.0f;
    engine.tick();
    EXPECT_EQ (generator.phaseA, fractionOf (4.001 / 4.0));
}

TEST (LfoRouting, FollowsAMovingTransportInTempo)
{
    EngineUnderTest engine;
    engine.choose ("lfo1_sync", 3);
    engine.choose ("lfo1_mode", 6);
    engine.setTransport (1.0);
    engine.tick();
    EXPECT_EQ (engine.processor.lfo[0].phaseA, 0.25f);
    engine.setTransport (3.0);
    engine.tick();
    EXPECT_NEAR (engine.processor.lfo[0].phaseA, 0.75f, 1.0e-4f);
    engine.setTransport (-1.0);
    engine.tick();
    EXPECT_NEAR (engine.processor.lfo[0].phaseA, 0.75f, 1.0e-4f);
    engine.setTransport (1.0);
    engine.tick();
    EXPECT_NEAR (engine.processor.lfo[0].phaseA, 0.25f, 1.0e-4f);
}

TEST (LfoRouting, UsesThePhaseKnobInTempoAlone)
{
    for (int sync = 0; sync < 10; ++sync)
    {
        EngineUnderTest centred, shifted;
        shifted.set ("lfo1_phase", 0.9f);

        for (auto* const engine : { &centred, &shifted })
        {
            engine->setTransport (somewhere);
            engine->choose ("lfo1_sync", sync);
            engine->tick (10);
        }

        EXPECT_EQ (centred.processor.lfo[0].phaseA != shifted.processor.lfo[0].phaseA, sync == 3) << sync;
    }
}

TEST (LfoRouting, RunsATempoLfoAtItsFreeSpeedWithoutAPlayHead)
{
    EngineUnderTest engine;
    auto& generator = engine.processor.lfo[0];
    engine.choose ("lfo1_sync", 3);
    engine.set ("lfo1_phase", 0.75f);
    engine.set ("lfo2T_lfo1", 1.0f);
    engine.tick (50);

    // Reset to 0, caught by the lock and one step on, tick by tick; the cross route has no say.
    EXPECT_EQ (generator.phaseStepA, freeFrequency (engine, 0) / rate);
    EXPECT_EQ (generator.phaseA, 0.75f + generator.phaseStepA);
}

TEST (LfoRouting, RunsATempoLfoAtItsFreeSpeedAtZeroBeatsPerMinuteAndLocksItStill)
{
    EngineUnderTest engine;
    auto& generator = engine.processor.lfo[0];
    engine.setTransport (somewhere, 0.0);
    engine.choose ("lfo1_sync", 3);
    engine.choose ("lfo1_mode", 6);
    engine.tick();
    EXPECT_EQ (generator.phaseStepA, freeFrequency (engine, 0) / rate);
    EXPECT_EQ (generator.phaseA, fractionOf (somewhere / 4.0));
}

TEST (LfoRouting, LetsATempoLfoFeedTheOtherButNotBeFed)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.setTransport (4.0);
    engine.choose ("lfo1_sync", 3);
    engine.set ("lfo1T_lfo2", 1.0f);
    engine.set ("lfo2T_lfo1", 1.0f);
    raise (processor.lfo[1]);
    engine.tick();
    EXPECT_EQ (processor.lfo[0].phaseStepA, (float) (120.0 / 64.0 * 0.016666666666666666) / rate);

    // The triangle of 4/64 gives -0.75.
    const auto factor = 1.0f + -0.75f * 0.5f;
    EXPECT_EQ (processor.lfo[1].phaseStepA, freeFrequency (engine, 1, factor * factor) / rate);
}

TEST (LfoRouting, KeepsABrownianLfoNearZeroInTempo)
{
    EngineUnderTest engine;
    auto& generator = engine.processor.lfo[0];
    generator.rng.seed (1);
    engine.setTransport (somewhere);
    engine.choose ("lfo1_sync", 3);
    engine.choose ("lfo1_mode", 16);
    engine.choose ("lfo1_shape", 5);
    auto numReturns = 0;

    for (int i = 0; i < 5000; ++i)
    {
        engine.tick();
        numReturns += std::abs (generator.walkValue) <= generator.walkStep ? 1 : 0;
    }

    EXPECT_GT (numReturns, 10);
}

TEST (LfoRouting, DriftsAHundredthPerSecondAtTheMostWithABrownianLfo)
{
    EngineUnderTest engine;
    auto& generator = engine.processor.lfo[0];
    generator.rng.seed (2);
    engine.setTransport (somewhere);
    engine.choose ("lfo1_shape", 5);
    engine.set ("lfo1_speed", 1.0f);
    engine.set ("lfo1T_lpf", 1.0f);
    auto highest = 0.0f;

    for (int second = 0; second < 3; ++second)
    {
        const auto before = generator.outputSlew.current;
        engine.runSilence (48000);
        EXPECT_LE (std::abs (generator.outputSlew.current - before), 0.0100001f);
        EXPECT_NE (generator.outputSlew.current, before);
        highest = std::max (highest, std::abs (generator.walkValue));
    }

    EXPECT_GT (highest, 0.05f);
}

TEST (LfoRouting, WalksTheSameFromTheSameSeed)
{
    const auto rendered = [] (std::uint32_t seed)
    {
        EngineUnderTest engine;
        engine.processor.lfo[0].rng.seed (seed);
        engine.processor.lfo[1].rng.seed (seed + 1);
        engine.setTransport (somewhere);
        engine.set ("lp_freq", 0.5f);

        for (const auto number : { 1, 2 })
        {
            engine.choose (lfoId (number, "_shape"), 5);
            engine.set (lfoId (number, "_speed"), 1.0f);
            engine.set (lfoId (number, "T_lpf"), 1.0f);
        }

        return engine.run (EngineUnderTest::noise (3, 20000));
    };
    EXPECT_EQ (rendered (5), rendered (5));
    EXPECT_NE (rendered (5), rendered (6));
}

TEST (LfoRouting, LocksBothLfosToTheBarsInAReservedShape)
{
    struct Case
    {
        int shape;
        float bars;
    };

    for (const auto& [shape, bars] : { Case { 6, 1.0f }, Case { 7, 16.0f } })
    {
        EngineUnderTest engine;
        auto& processor = engine.processor;
        engine.setTransport (7.3, 133.0, { 6, 8 });
        engine.choose ("lfo1_mode", 8);
        engine.choose ("lfo2_mode", 10);
        engine.choose ("lfo2_shape", shape);
        engine.tick();

        for (std::size_t i = 0; i < 2; ++i)
        {
            const auto& generator = processor.lfo[i];
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

TEST (LfoRouting, GivesLfoTwoItsOwnStepsBackWhenLfoOneIsLockedToTheBars)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.setTransport (7.3);
    engine.choose ("lfo1_shape", 6);
    engine.tick();
    EXPECT_EQ (processor.lfo[1].phaseStepA, freeFrequency (engine, 1) / rate);
    EXPECT_EQ (processor.lfo[0].phaseStepA, (float) (1.0 / (double) (rate * 60.0f * 64.0f / 120.0f)));
    EXPECT_TRUE (processor.lfo[1].followReference);
}

TEST (LfoRouting, TakesAPositionOfZeroForOneInTheBarLock)
{
    EngineUnderTest engine;
    auto& generator = engine.processor.lfo[1];
    engine.setTransport (0.0);
    engine.choose ("lfo2_shape", 6);
    engine.choose ("lfo2_mode", 6);
    engine.tick();
    EXPECT_EQ (generator.phaseStepA, (float) (1.0 / (double) (rate * 60.0f * 4.0f / 120.0f)));

    // The start of a bar is no phase to follow.
    EXPECT_FALSE (generator.followReference);
}

TEST (LfoRouting, StandsStillInAReservedShapeWithoutAPosition)
{
    for (const auto hasPlayHead : { false, true })
    {
        EngineUnderTest engine;
        auto& generator = engine.processor.lfo[1];

        if (hasPlayHead)
            engine.processor.setPlayHead (&engine.playHead);

        engine.choose ("lfo2_shape", 7);
        engine.tick (5);
        EXPECT_EQ (generator.shape, LfoGenerator::reservedSum);
        EXPECT_EQ (generator.phaseStepA, 0.0f);
        EXPECT_EQ (generator.phaseA, 0.0f);
        EXPECT_FALSE (generator.followReference);
    }
}

TEST (LfoRouting, NeverStopsFollowingOnceABarLockHasBegun)
{
    EngineUnderTest engine;
    auto& generator = engine.processor.lfo[0];
    engine.setTransport (7.3);
    engine.choose ("lfo1_shape", 6);
    engine.tick();
    engine.choose ("lfo1_shape", 1);
    engine.tick();
    EXPECT_TRUE (generator.followReference);

    // It acts on a reserved shape alone: the triangle runs free.
    generator.phaseA = 0.25f;
    generator.referencePhase = 0.3f;
    const auto step = generator.phaseStepA;
    engine.tick();
    EXPECT_EQ (generator.phaseA, 0.25f + step);
}
