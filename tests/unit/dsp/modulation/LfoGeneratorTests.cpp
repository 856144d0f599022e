// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/modulation/LfoGenerator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace
{
constexpr float rate = 48000.0f;
constexpr double pi = 3.141592653589793;

[[nodiscard]] LfoGenerator generatorOf (std::int32_t shape, float phase = 0.0f)
{
    LfoGenerator generator;
    generator.shape = shape;
    generator.phaseA = generator.phaseB = generator.phaseC = phase;
    return generator;
}

[[nodiscard]] float outputOf (std::int32_t shape, float phase, float curveExponent = 1.0f)
{
    auto generator = generatorOf (shape, phase);
    generator.curveExponent = curveExponent;
    return generator.render();
}

constexpr std::array namedShapes { LfoGenerator::sine,   LfoGenerator::triangle,        LfoGenerator::saw,
                                   LfoGenerator::square, LfoGenerator::randomTriangles, LfoGenerator::brownian };
} // namespace

TEST (TriangleOf, RisesToOneAtHalfAndFallsBack)
{
    EXPECT_EQ (triangleOf (0.0f), -1.0f);
    EXPECT_EQ (triangleOf (0.25f), 0.0f);
    EXPECT_EQ (triangleOf (0.5f), 1.0f);
    EXPECT_EQ (triangleOf (0.75f), 0.0f);
    EXPECT_EQ (triangleOf (1.0f), -1.0f);
}

TEST (TriangleOf, RunsOnInAStraightLineOutsideItsPeriod)
{
    EXPECT_EQ (triangleOf (-0.25f), -2.0f);
    EXPECT_EQ (triangleOf (1.5f), -3.0f);
}

TEST (TriangleOf, IsComputedInDoublePrecisionAndNarrowedOnce)
{
    for (const auto p : { 0.1f, 0.3333333f, 0.49999997f, 0.7f, 0.9999999f })
        EXPECT_EQ (triangleOf (p), p < 0.5f ? (float) (4.0 * (double) p - 1.0) : (float) ((0.75 - (double) p) * 4.0));
}

TEST (LfoGenerator, StartsAsAStandingTriangle)
{
    const LfoGenerator generator;
    EXPECT_EQ (generator.shape, LfoGenerator::triangle);
    EXPECT_EQ (generator.amplitude, 1.0f);
    EXPECT_EQ (generator.phaseA, 0.0f);
    EXPECT_EQ (generator.phaseStepA, 0.0f);
    EXPECT_EQ (generator.phaseStepB, 0.0f);
    EXPECT_EQ (generator.phaseStepC, 0.0f);
    EXPECT_EQ (generator.walkStep, 0.01f);
    EXPECT_EQ (generator.curveExponent, 1.0f);
    EXPECT_FALSE (generator.followReference);
    EXPECT_EQ (generator.uniformLow, -1.0);
    EXPECT_EQ (generator.uniformHigh, 1.0);
}

TEST (LfoGenerator, StartsEachShapeAtItsOwnValue)
{
    EXPECT_EQ (outputOf (LfoGenerator::sine, 0.0f), 0.0f);
    EXPECT_EQ (outputOf (LfoGenerator::triangle, 0.0f), -1.0f);
    EXPECT_EQ (outputOf (LfoGenerator::saw, 0.0f), 1.0f);
    EXPECT_EQ (outputOf (LfoGenerator::square, 0.0f), -1.0f);
    EXPECT_NEAR (outputOf (LfoGenerator::randomTriangles, 0.0f), -1.0f, 1.0e-6f);
    EXPECT_EQ (outputOf (LfoGenerator::brownian, 0.0f), 0.0f);
}

TEST (LfoGenerator, HasTheWavesOfItsShapes)
{
    for (auto p = 0.0f; p < 1.0f; p += 0.0137f)
    {
        const auto triangle = p < 0.5f ? (float) (4.0 * (double) p - 1.0) : (float) ((0.75 - (double) p) * 4.0);
        EXPECT_EQ (outputOf (LfoGenerator::sine, p), std::sin ((float) ((double) (2.0f * p) * pi)));
        EXPECT_EQ (outputOf (LfoGenerator::triangle, p), triangle);
        EXPECT_EQ (outputOf (LfoGenerator::saw, p), 1.0f - 2.0f * p);
        EXPECT_EQ (outputOf (LfoGenerator::square, p), p < 0.5f ? -1.0f : 1.0f);
    }
}

TEST (LfoGenerator, AddsThreeTrianglesInTheRandomShape)
{
    auto generator = generatorOf (LfoGenerator::randomTriangles);
    generator.phaseA = 0.3f;
    generator.phaseB = 0.6f;
    generator.phaseC = 0.95f;
    const auto sum = triangleOf (0.6f) + triangleOf (0.3f) + triangleOf (0.95f);
    EXPECT_EQ (generator.render(), (float) ((double) sum * 0.333333333 * 1.0));
}

TEST (LfoGenerator, ScalesEveryShapeByItsAmplitude)
{
    for (const auto shape : { LfoGenerator::sine, LfoGenerator::triangle, LfoGenerator::saw, LfoGenerator::square,
                              LfoGenerator::randomTriangles, LfoGenerator::reservedPulse })
    {
        auto generator = generatorOf (shape, 0.8f);
        const auto full = generator.render();
        generator.amplitude = 0.5f;
        EXPECT_EQ (generator.render(), 0.5f * full) << shape;
    }

    auto walk = generatorOf (LfoGenerator::brownian);
    walk.amplitude = 0.5f;
    walk.walkValue = 0.75f;
    (void) walk.render();
    EXPECT_EQ (walk.outputSlew.target, 0.375f);
}

TEST (LfoGenerator, IsSilentInAShapeThatIsNone)
{
    for (const auto shape : { -1, 8, 29 })
        EXPECT_EQ (outputOf (shape, 0.3f), 0.0f);
}

TEST (LfoGenerator, LeavesTheWaveAloneAroundAStraightCurve)
{
    for (const auto exponent : { 0.9901f, 0.995f, 1.0f, 1.005f, 1.0099f })
        for (auto p = 0.0f; p < 1.0f; p += 0.07f)
            EXPECT_EQ (outputOf (LfoGenerator::triangle, p, exponent), triangleOf (p));
}

TEST (LfoGenerator, StartsToBendGently)
{
    for (const auto exponent : { 0.9899f, 1.0101f })
        for (auto p = 0.02f; p < 0.98f; p += 0.07f)
        {
            const auto bent = outputOf (LfoGenerator::triangle, p, exponent);
            EXPECT_NE (bent, triangleOf (p));
            EXPECT_NEAR (bent, triangleOf (p), 0.01f);
        }
}

TEST (LfoGenerator, BendsTowardItsEndsAndKeepsThem)
{
    for (const auto exponent : { std::exp (1.7f), 2.0f })
    {
        EXPECT_EQ (outputOf (LfoGenerator::triangle, 0.0f, exponent), -1.0f);
        EXPECT_EQ (outputOf (LfoGenerator::triangle, 0.5f, exponent), 1.0f);
        EXPECT_EQ (outputOf (LfoGenerator::triangle, 0.0f, 1.0f / exponent), -1.0f);
        EXPECT_EQ (outputOf (LfoGenerator::triangle, 0.5f, 1.0f / exponent), 1.0f);

        for (auto p = 0.01f; p < 0.5f; p += 0.05f)
        {
            EXPECT_LT (outputOf (LfoGenerator::triangle, p, exponent), triangleOf (p));
            EXPECT_GT (outputOf (LfoGenerator::triangle, p, 1.0f / exponent), triangleOf (p));
        }
    }
}

TEST (LfoGenerator, BendsByThePowerOfItsCurve)
{
    for (auto p = 0.0f; p < 1.0f; p += 0.0137f)
    {
        const auto x = triangleOf (p);
        const auto u = (float) (((double) x + 1.0) * 0.5);
        EXPECT_EQ (outputOf (LfoGenerator::triangle, p, 3.5f), 2.0f * std::pow (u, 3.5f) - 1.0f);
        EXPECT_EQ (outputOf (LfoGenerator::triangle, p, 0.3f), 2.0f * (1.0f - std::pow (1.0f - u, 1.0f / 0.3f)) - 1.0f);
    }
}

TEST (LfoGenerator, LeavesItsRangeOutsideThePhaseUnlessTheCurveHoldsIt)
{
    EXPECT_EQ (outputOf (LfoGenerator::triangle, 1.5f), -3.0f);
    EXPECT_EQ (outputOf (LfoGenerator::saw, 1.5f), -2.0f);
    EXPECT_EQ (outputOf (LfoGenerator::triangle, 1.5f, 2.0f), -1.0f);
    EXPECT_EQ (outputOf (LfoGenerator::saw, 1.5f, 0.5f), -1.0f);
}

TEST (LfoGenerator, TakesItsStepsFromRateAndFrequency)
{
    LfoGenerator generator;
    generator.outputSlew.mode = 7;
    generator.setRate (LfoGenerator::saw, rate, 3.7f);
    EXPECT_EQ (generator.shape, LfoGenerator::saw);
    EXPECT_EQ (generator.walkStep, (float) ((double) 3.7f * 0.003));
    EXPECT_EQ (generator.phaseStepA, 3.7f / rate);
    EXPECT_EQ (generator.phaseStepB, (float) ((double) 3.7f * 1.28396548763 * (1.0 / (double) rate)));
    EXPECT_EQ (generator.phaseStepC, (float) ((double) 3.7f * 0.82343668762 * (1.0 / (double) rate)));
    EXPECT_EQ (generator.outputSlew.mode, 0);
    EXPECT_EQ (generator.outputSlew.step, 0.01f / rate);
}

TEST (LfoGenerator, StopsOnlyTheMainPhaseAtANegativeFrequency)
{
    LfoGenerator generator;
    generator.setRate (LfoGenerator::saw, rate, 10.0f);
    const auto stepB = generator.phaseStepB, stepC = generator.phaseStepC;
    generator.outputSlew.mode = 7;
    generator.setRate (LfoGenerator::triangle, rate, -1.0f);
    EXPECT_EQ (generator.phaseStepA, 0.0f);
    EXPECT_EQ (generator.phaseStepB, stepB);
    EXPECT_EQ (generator.phaseStepC, stepC);
    EXPECT_EQ (generator.outputSlew.mode, 0);
    EXPECT_EQ (generator.outputSlew.step, 0.01f / rate);
    EXPECT_EQ (generator.walkStep, (float) (-1.0 * 0.003));
}

TEST (LfoGenerator, StopsTheMainPhaseAndFreesTheOutputWithoutARate)
{
    for (const auto noRate : { 0.0f, -48000.0f, std::nanf ("") })
    {
        LfoGenerator generator;
        generator.setRate (LfoGenerator::saw, rate, 10.0f);
        const auto stepB = generator.phaseStepB;
        generator.setRate (LfoGenerator::saw, noRate, 10.0f);
        EXPECT_EQ (generator.phaseStepA, 0.0f);
        EXPECT_EQ (generator.phaseStepB, stepB);
        EXPECT_EQ (generator.outputSlew.step, 1.0e20f);
    }
}

TEST (LfoGenerator, StandsAllPhasesStillAtZeroFrequency)
{
    LfoGenerator generator;
    generator.setRate (LfoGenerator::saw, rate, 10.0f);
    generator.setRate (LfoGenerator::saw, rate, 0.0f);
    EXPECT_EQ (generator.phaseStepA, 0.0f);
    EXPECT_EQ (generator.phaseStepB, 0.0f);
    EXPECT_EQ (generator.phaseStepC, 0.0f);
}

TEST (LfoGenerator, WrapsEachPhaseOncePerTick)
{
    LfoGenerator generator;
    generator.phaseStepA = 0.75f;
    generator.phaseStepB = 0.5f;
    generator.phaseStepC = 2.5f;
    generator.phaseA = 0.5f;
    generator.phaseB = 0.5f;
    generator.referencePhase = 1.25f;
    generator.advance();
    EXPECT_EQ (generator.phaseA, 0.25f);
    EXPECT_EQ (generator.phaseB, 0.0f);
    EXPECT_EQ (generator.phaseC, 1.5f);
    EXPECT_EQ (generator.referencePhase, 0.25f);

    // More than one cycle per tick: the phase runs away, and is left alone.
    generator.advance();
    EXPECT_EQ (generator.phaseC, 3.0f);
}

TEST (LfoGenerator, RunsOneCycleInItsPeriod)
{
    // A step of 1/256 is exact, and so is every phase.
    LfoGenerator generator;
    generator.setRate (LfoGenerator::saw, 256.0f, 1.0f);

    for (int i = 1; i <= 512; ++i)
    {
        generator.advance();
        ASSERT_EQ (generator.phaseA, (float) (i % 256) / 256.0f);
    }
}

TEST (LfoGenerator, JumpsWithAllPhasesAndDropsTheWalk)
{
    auto generator = generatorOf (LfoGenerator::brownian, 0.1f);
    generator.walkValue = 0.7f;
    generator.outputSlew.current = 0.2f;
    generator.jumpTo (0.4f);
    EXPECT_EQ (generator.phaseA, 0.4f);
    EXPECT_EQ (generator.phaseB, 0.4f);
    EXPECT_EQ (generator.phaseC, 0.4f);
    EXPECT_EQ (generator.referencePhase, 0.4f);
    EXPECT_EQ (generator.walkValue, 0.0f);
    EXPECT_EQ (generator.outputSlew.current, 0.2f);

    generator.reset();
    EXPECT_EQ (generator.phaseA, 0.0f);
    EXPECT_EQ (generator.referencePhase, 0.0f);
}

TEST (LfoGenerator, WalksOnlyInTheBrownianShape)
{
    for (std::int32_t shape = 0; shape < 9; ++shape)
    {
        auto generator = generatorOf (shape);
        generator.setRate (shape, rate, 20.0f);

        for (int i = 0; i < 100; ++i)
            generator.advance();

        EXPECT_EQ (generator.walkValue != 0.0f, shape == LfoGenerator::brownian) << shape;
        EXPECT_EQ (generator.referencePhase != 0.0f, shape == LfoGenerator::brownian) << shape;
    }
}

TEST (LfoGenerator, AdvancesTheReferenceInTheBrownianShape)
{
    auto generator = generatorOf (LfoGenerator::brownian);
    generator.setRate (LfoGenerator::brownian, 256.0f, 1.0f);
    generator.advance();
    generator.advance();
    EXPECT_EQ (generator.referencePhase, 2.0f / 256.0f);
}

TEST (LfoGenerator, WalksAsItsDrawsSay)
{
    auto generator = generatorOf (LfoGenerator::brownian);
    generator.rng.seed (1234);
    generator.setRate (LfoGenerator::brownian, rate, 17.0f);

    std::mt19937 draws (1234);
    auto expected = 0.0f;

    for (int i = 0; i < 20000; ++i)
    {
        const auto r0 = (double) draws();
        const auto r1 = (double) draws();
        const auto u = (r0 + r1 * 4294967296.0) / (4294967296.0 * 4294967296.0);
        const auto r = -1.0 + (1.0 - -1.0) * u;
        expected = (float) ((double) expected + (double) generator.walkStep * r);
        expected = std::min (1.0f, std::max (-1.0f, expected));

        generator.advance();
        ASSERT_EQ (generator.walkValue, expected) << "draw " << i;
    }
}

TEST (LfoGenerator, DrawsBetweenItsBounds)
{
    auto generator = generatorOf (LfoGenerator::brownian);
    generator.rng.seed (5);
    generator.walkStep = 0.01f;
    generator.uniformLow = 0.0;
    auto previous = 0.0f;

    for (int i = 0; i < 100; ++i)
    {
        generator.advance();
        ASSERT_GE (generator.walkValue, previous);
        ASSERT_LE (generator.walkValue, previous + 0.0100001f);
        previous = generator.walkValue;
    }
}

TEST (LfoGenerator, WalksWithEvenSteps)
{
    constexpr auto numDraws = 200000;
    auto generator = generatorOf (LfoGenerator::brownian);
    generator.rng.seed (99);
    generator.walkStep = 0.001f;
    auto sum = 0.0, sumOfSquares = 0.0;

    for (int i = 0; i < numDraws; ++i)
    {
        // From the middle every time, so that the range limits nothing.
        generator.walkValue = 0.0f;
        generator.advance();
        const auto step = (double) generator.walkValue / 0.001;
        ASSERT_LE (std::abs (step), 1.0);
        sum += step;
        sumOfSquares += step * step;
    }

    // Uniform between -1 and 1: mean 0, variance 1/3. Five standard errors: 5 sqrt (1/3 / n) and 5 sqrt (4/45 / n).
    EXPECT_NEAR (sum / numDraws, 0.0, 0.0065);
    EXPECT_NEAR (sumOfSquares / numDraws, 1.0 / 3.0, 0.0034);
}

TEST (LfoGenerator, KeepsTheWalkInItsRange)
{
    auto generator = generatorOf (LfoGenerator::brownian);
    generator.rng.seed (3);
    generator.walkStep = 0.9f;
    auto lowest = 0.0f, highest = 0.0f;

    for (int i = 0; i < 10000; ++i)
    {
        generator.advance();
        lowest = std::min (lowest, generator.walkValue);
        highest = std::max (highest, generator.walkValue);
    }

    EXPECT_EQ (lowest, -1.0f);
    EXPECT_EQ (highest, 1.0f);
}

TEST (LfoGenerator, DriftsByAHundredthPerSecondAtTheMostInTheBrownianShape)
{
    for (const auto frequency : { 0.02f, 20.0f, 20000.0f })
    {
        auto generator = generatorOf (LfoGenerator::brownian);
        generator.rng.seed (7);
        generator.setRate (LfoGenerator::brownian, rate, frequency);
        const auto framesPerSecond = (int) rate;
        auto before = generator.render();

        for (int second = 0; second < 5; ++second)
        {
            auto previous = before;

            for (int i = 0; i < framesPerSecond; ++i)
            {
                generator.advance();
                const auto output = generator.render();
                ASSERT_LE (std::abs (output - previous), 0.01f / rate * 1.01f);
                previous = output;
            }

            // 48000 additions of a float: their rounding is below one part in 10000.
            ASSERT_LE (std::abs (previous - before), 0.01f * 1.0001f);
            before = previous;
        }

        // The walk itself is far quicker, but at the lowest speed.
        EXPECT_EQ (frequency > 1.0f, std::abs (generator.walkValue - generator.outputSlew.current) > 0.01f);
    }
}

TEST (LfoGenerator, BendsTheBrownianShapeToo)
{
    auto generator = generatorOf (LfoGenerator::brownian);
    generator.outputSlew.current = 0.5f;
    generator.curveExponent = 2.0f;
    EXPECT_EQ (generator.render(), 2.0f * std::pow (0.75f, 2.0f) - 1.0f);
}

TEST (LfoGenerator, HandsTheWalkToItsOutputWithoutMovingByItself)
{
    auto generator = generatorOf (LfoGenerator::brownian);
    generator.walkValue = 0.6f;
    EXPECT_EQ (generator.render(), 0.0f);
    EXPECT_EQ (generator.outputSlew.target, 0.6f);
    EXPECT_EQ (generator.render(), 0.0f);
}

TEST (LfoGenerator, WalksUnlikeAnyOther)
{
    std::array<LfoGenerator, 3> generators;
    EXPECT_NE (generators[0].rng, generators[1].rng);
    EXPECT_NE (generators[1].rng, generators[2].rng);
    EXPECT_NE (generators[0].rng, generators[2].rng);
}

TEST (LfoGenerator, PulsesInTheFirstReservedShape)
{
    for (const auto p : { 0.0f, 0.3f, 0.9f, 0.94f, 0.97f, 0.999f })
    {
        auto q = (double) p + 0.06;
        q = q >= 1.0 ? q - 1.0 : q;
        const auto y = 1.0 - q;
        const auto z = (float) ((y * y * y) * (y * y * y));
        EXPECT_EQ (outputOf (LfoGenerator::reservedPulse, p), triangleOf (z)) << p;
        EXPECT_LE (std::abs (outputOf (LfoGenerator::reservedPulse, p)), 1.0f);
    }
}

TEST (LfoGenerator, SumsEightSawsInTheSecondReservedShape)
{
    for (const auto p : { 0.0f, 0.1f, 0.5f, 0.77f, 0.99995f })
    {
        auto generator = generatorOf (LfoGenerator::reservedSum, p);
        EXPECT_EQ (generator.render(), 0.0f);

        auto q = (double) p + 0.0001;
        q = q >= 1.0 ? q - 1.0 : q;
        const auto y = 1.0 - q;
        auto sum = 0.0;

        for (const auto k : { 1.0, 2.0, 4.0, 8.0, 16.0, 32.0, 64.0, 128.0 })
            sum += (k * y - std::floor (k * y)) / (double) std::log ((float) (2.0 * k));

        EXPECT_EQ (generator.outputSlew.target, (float) ((sum * sum - 1.9) * 1.0 * 0.3)) << p;
    }
}

TEST (LfoGenerator, FollowsTheReferenceInTheReservedShapesAlone)
{
    for (std::int32_t shape = 0; shape < 9; ++shape)
        for (const auto follows : { false, true })
        {
            auto generator = generatorOf (shape, 0.25f);
            generator.referencePhase = 0.5f;
            generator.phaseStepA = 0.125f;
            generator.followReference = follows;
            generator.advance();

            // The step to 0.375, and from there an eighth of an eighth of the distance.
            const auto isReserved = shape == LfoGenerator::reservedPulse || shape == LfoGenerator::reservedSum;
            EXPECT_EQ (generator.phaseA, isReserved && follows ? 0.375f + 0.125f * 0.125f : 0.375f) << shape;
        }
}

TEST (LfoGenerator, FollowsTheReferenceFromBothSides)
{
    const auto followed = [] (float from, float reference, float step)
    {
        auto generator = generatorOf (LfoGenerator::reservedPulse, from - step);
        generator.followReference = true;
        generator.referencePhase = reference;
        generator.phaseStepA = step;
        generator.advance();
        return generator.phaseA;
    };

    EXPECT_EQ (followed (0.5f, 0.25f, 0.125f), 0.5f - 0.25f * 0.125f);
    EXPECT_EQ (followed (0.25f, 0.5f, 0.125f), 0.25f + 0.25f * 0.125f);
    EXPECT_EQ (followed (0.25f, 0.25f, 0.125f), 0.25f);

    // Half a cycle apart and more: it is driven the other way.
    EXPECT_EQ (followed (0.25f, 0.75f, 0.125f), 0.25f - 0.5f * 0.125f);
    EXPECT_EQ (followed (0.75f, 0.25f, 0.125f), 0.75f + 0.5f * 0.125f);
}

TEST (LfoGenerator, StopsAtTheReferenceInsteadOfPassingIt)
{
    // A step above one cycle would carry it past.
    auto generator = generatorOf (LfoGenerator::reservedPulse, -1.25f);
    generator.followReference = true;
    generator.referencePhase = 0.5f;
    generator.phaseStepA = 1.5f;
    generator.advance();
    EXPECT_EQ (generator.phaseA, 0.5f);
}

TEST (LfoGenerator, StaysInItsRangeInEveryNamedShape)
{
    for (const auto shape : namedShapes)
        for (const auto exponent : { 0.1827f, 1.0f, 5.474f })
        {
            auto generator = generatorOf (shape);
            generator.rng.seed (11);
            generator.curveExponent = exponent;
            generator.setRate (shape, 1000.0f, 313.7f);

            for (int i = 0; i < 5000; ++i)
            {
                generator.advance();
                const auto output = generator.render();
                ASSERT_LE (std::abs (output), 1.0f + 1.0e-6f) << shape;
            }
        }
}

TEST (LfoGenerator, TakesExtremeArgumentsWithoutFault)
{
    for (const auto frequency : { 1.0e30f, INFINITY, std::nanf (""), -INFINITY })
        for (std::int32_t shape = -1; shape < 10; ++shape)
        {
            auto generator = generatorOf (shape);
            generator.followReference = true;
            generator.setRate (shape, rate, frequency);

            for (int i = 0; i < 10; ++i)
            {
                generator.advance();
                (void) generator.render();
            }

            EXPECT_EQ (generator.shape, shape);
            EXPECT_FALSE (generator.walkValue > 1.0f || generator.walkValue < -1.0f);
        }
}

TEST (LfoGenerator, MovesThroughSteadyTicksInARowAsThroughSingleOnes)
{
    const auto nan = std::numeric_limits<float>::quiet_NaN();

    // Standing still, backward and unknown among them: the steps of the second and third phase then stay.
    const std::array frequencies { 0.1f, 20.0f, 30000.0f, 0.0f, -5.0f, 7000.0f, nan, 90000.0f, 440.0f, 12000.0f };

    for (const auto ticksPerSecond : { rate, 0.0f })
        for (const std::int32_t shape : { LfoGenerator::sine, LfoGenerator::triangle, LfoGenerator::saw,
                                          LfoGenerator::square, LfoGenerator::randomTriangles })
        {
            const LfoGenerator::TickRate tickRate (ticksPerSecond);
            auto single = generatorOf (shape, 0.3f);
            single.referencePhase = 2.75f;
            single.setRate (shape, ticksPerSecond, 1000.0f);
            ASSERT_TRUE (single.isSteadyIn (shape));

            auto together = single;
            auto phases = together.phases();
            std::vector<FloatQuad::Values> passed;
            std::vector<float> expected;

            for (const auto frequency : frequencies)
            {
                single.advance();
                expected.push_back (single.render());
                single.setRate (shape, ticksPerSecond, frequency);

                phases.advance();
                passed.push_back (phases.now.values());
                phases.setFrequency (frequency, tickRate);
            }

            std::vector<float> outputs (passed.size());
            together.setPhases (phases);
            together.render<std::dynamic_extent> (passed, outputs);

            EXPECT_EQ (outputs, expected) << "shape " << shape;
            EXPECT_EQ (together.phaseA, single.phaseA);
            EXPECT_EQ (together.phaseB, single.phaseB);
            EXPECT_EQ (together.phaseC, single.phaseC);
            EXPECT_EQ (together.referencePhase, single.referencePhase);
            EXPECT_EQ (together.phaseStepA, single.phaseStepA);
            EXPECT_EQ (together.phaseStepB, single.phaseStepB);
            EXPECT_EQ (together.phaseStepC, single.phaseStepC);
        }
}

TEST (LfoGenerator, IsNotSteadyWhileATickChangesMoreThanItsPhases)
{
    EXPECT_TRUE (generatorOf (LfoGenerator::saw).isSteadyIn (LfoGenerator::saw));
    EXPECT_FALSE (generatorOf (LfoGenerator::saw).isSteadyIn (LfoGenerator::sine));

    // They walk, follow and glide.
    for (const std::int32_t shape : { LfoGenerator::brownian, LfoGenerator::reservedPulse, LfoGenerator::reservedSum })
        EXPECT_FALSE (generatorOf (shape).isSteadyIn (shape)) << shape;

    // Neither of these has a wave.
    EXPECT_FALSE (generatorOf (-1).isSteadyIn (-1));
    EXPECT_FALSE (generatorOf (8).isSteadyIn (8));

    auto gliding = generatorOf (LfoGenerator::sine);
    gliding.outputSlew.target = 0.1f;
    EXPECT_FALSE (gliding.isSteadyIn (LfoGenerator::sine));
}
