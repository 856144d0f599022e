// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/modulation/LfoGenerator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/math/FloatPower.h"
#include "dsp/math/FloatSine.h"
#include "reference/ReferenceLfo.h"

namespace
{
constexpr float rate = 48000.0f;
constexpr double pi = 3.141592653589793;

template <typename Generator>
[[nodiscard]] Generator generatorOf (std::int32_t shape, float phase = 0.0f)
{
    Generator generator;
    generator.shape = shape;
    generator.phaseA = generator.phaseB = generator.phaseC = phase;
    return generator;
}

template <typename Generator>
[[nodiscard]] float outputOf (std::int32_t shape, float phase, float curveExponent = 1.0f)
{
    auto generator = generatorOf<Generator> (shape, phase);
    generator.curveExponent = curveExponent;
    return generator.render();
}

/** What a tick does to a generator before its wave is read. */
void advance (LfoGenerator& generator) { generator.advance(); }

/** The same in the single steps of the reference engine. */
void advance (reference::LfoGenerator& generator)
{
    generator.outputSlew.advance();
    generator.advancePhases();

    if (generator.shape == 5)
    {
        generator.walk();
        generator.referencePhase += generator.phaseStepA;
    }

    generator.follow();
    generator.wrapPhases();
}

constexpr std::array namedShapes { LfoGenerator::sine,   LfoGenerator::triangle,        LfoGenerator::saw,
                                   LfoGenerator::square, LfoGenerator::randomTriangles, LfoGenerator::brownian };

template <typename Generator>
class LfoGenerators : public testing::Test
{
};

using LfoGeneratorTypes = testing::Types<LfoGenerator, reference::LfoGenerator>;
TYPED_TEST_SUITE (LfoGenerators, LfoGeneratorTypes);
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

TEST (TriangleOf, IsComputedInDoubleAndConvertedToFloatOnce)
{
    for (const auto p : { 0.1f, 0.3333333f, 0.49999997f, 0.7f, 0.9999999f })
        EXPECT_EQ (triangleOf (p), p < 0.5f ? (float) (4.0 * (double) p - 1.0) : (float) ((0.75 - (double) p) * 4.0));
}

TYPED_TEST (LfoGenerators, StartsAsATriangleAtRest)
{
    const TypeParam generator;
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

TYPED_TEST (LfoGenerators, StartsEachShapeAtItsOwnValue)
{
    EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::sine, 0.0f), 0.0f);
    EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::triangle, 0.0f), -1.0f);
    EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::saw, 0.0f), 1.0f);
    EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::square, 0.0f), -1.0f);
    EXPECT_NEAR (outputOf<TypeParam> (LfoGenerator::randomTriangles, 0.0f), -1.0f, 1.0e-6f);
    EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::brownian, 0.0f), 0.0f);
}

TYPED_TEST (LfoGenerators, HasTheWavesOfItsShapes)
{
    for (auto p = 0.0f; p < 1.0f; p += 0.0137f)
    {
        const auto triangle = p < 0.5f ? (float) (4.0 * (double) p - 1.0) : (float) ((0.75 - (double) p) * 4.0);
        EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::sine, p), elementary::sine ((float) ((double) (2.0f * p) * pi)));
        EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::triangle, p), triangle);
        EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::saw, p), 1.0f - 2.0f * p);
        EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::square, p), p < 0.5f ? -1.0f : 1.0f);
    }
}

TYPED_TEST (LfoGenerators, AddsThreeTrianglesInTheRandomShape)
{
    auto generator = generatorOf<TypeParam> (LfoGenerator::randomTriangles);
    generator.phaseA = 0.3f;
    generator.phaseB = 0.6f;
    generator.phaseC = 0.95f;
    const auto sum = triangleOf (0.6f) + triangleOf (0.3f) + triangleOf (0.95f);
    EXPECT_EQ (generator.render(), (float) ((double) sum * 0.333333333 * 1.0));
}

TYPED_TEST (LfoGenerators, ScalesEveryShapeByItsAmplitude)
{
    for (const auto shape : { LfoGenerator::sine, LfoGenerator::triangle, LfoGenerator::saw, LfoGenerator::square,
                              LfoGenerator::randomTriangles, LfoGenerator::reservedPulse })
    {
        auto generator = generatorOf<TypeParam> (shape, 0.8f);
        const auto full = generator.render();
        generator.amplitude = 0.5f;
        EXPECT_EQ (generator.render(), 0.5f * full) << shape;
    }

    auto walk = generatorOf<TypeParam> (LfoGenerator::brownian);
    walk.amplitude = 0.5f;
    walk.walkValue = 0.75f;
    (void) walk.render();
    EXPECT_EQ (walk.outputSlew.target, 0.375f);
}

TYPED_TEST (LfoGenerators, IsSilentInAnUnknownShape)
{
    for (const auto shape : { -1, 8, 29 })
        EXPECT_EQ (outputOf<TypeParam> (shape, 0.3f), 0.0f);
}

TYPED_TEST (LfoGenerators, LeavesTheWaveAloneAroundAStraightCurve)
{
    for (const auto exponent : { 0.9901f, 0.995f, 1.0f, 1.005f, 1.0099f })
        for (auto p = 0.0f; p < 1.0f; p += 0.07f)
            EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::triangle, p, exponent), triangleOf (p));
}

TYPED_TEST (LfoGenerators, StartsToBendGently)
{
    for (const auto exponent : { 0.9899f, 1.0101f })
        for (auto p = 0.02f; p < 0.98f; p += 0.07f)
        {
            const auto bent = outputOf<TypeParam> (LfoGenerator::triangle, p, exponent);
            EXPECT_NE (bent, triangleOf (p));
            EXPECT_NEAR (bent, triangleOf (p), 0.01f);
        }
}

TYPED_TEST (LfoGenerators, BendsTowardItsEndsAndKeepsThem)
{
    for (const auto exponent : { std::exp (1.7f), 2.0f })
    {
        EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::triangle, 0.0f, exponent), -1.0f);
        EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::triangle, 0.5f, exponent), 1.0f);
        EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::triangle, 0.0f, 1.0f / exponent), -1.0f);
        EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::triangle, 0.5f, 1.0f / exponent), 1.0f);

        for (auto p = 0.01f; p < 0.5f; p += 0.05f)
        {
            EXPECT_LT (outputOf<TypeParam> (LfoGenerator::triangle, p, exponent), triangleOf (p));
            EXPECT_GT (outputOf<TypeParam> (LfoGenerator::triangle, p, 1.0f / exponent), triangleOf (p));
        }
    }
}

TYPED_TEST (LfoGenerators, BendsByThePowerOfItsCurve)
{
    for (auto p = 0.0f; p < 1.0f; p += 0.0137f)
    {
        const auto x = triangleOf (p);
        const auto u = (float) (((double) x + 1.0) * 0.5);
        EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::triangle, p, 3.5f), 2.0f * elementary::power (u, 3.5f) - 1.0f);
        EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::triangle, p, 0.3f),
                   2.0f * (1.0f - elementary::power (1.0f - u, 1.0f / 0.3f)) - 1.0f);
    }
}

TYPED_TEST (LfoGenerators, LeavesItsRangeOutsideThePhaseUnlessTheCurveHoldsIt)
{
    EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::triangle, 1.5f), -3.0f);
    EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::saw, 1.5f), -2.0f);
    EXPECT_NEAR (outputOf<TypeParam> (LfoGenerator::randomTriangles, 1.5f), -3.0f, 1.0e-6f);
    EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::triangle, 1.5f, 2.0f), -1.0f);
    EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::randomTriangles, 1.5f, 2.0f), -1.0f);
    EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::saw, 1.5f, 0.5f), -1.0f);
}

TYPED_TEST (LfoGenerators, TakesItsStepsFromRateAndFrequency)
{
    TypeParam generator;
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

TYPED_TEST (LfoGenerators, StopsOnlyTheMainPhaseAtANegativeFrequency)
{
    TypeParam generator;
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

TYPED_TEST (LfoGenerators, StopsTheMainPhaseAndFreesTheOutputWithoutARate)
{
    for (const auto noRate : { 0.0f, -48000.0f, std::nanf ("") })
    {
        TypeParam generator;
        generator.setRate (LfoGenerator::saw, rate, 10.0f);
        const auto stepB = generator.phaseStepB;
        generator.setRate (LfoGenerator::saw, noRate, 10.0f);
        EXPECT_EQ (generator.phaseStepA, 0.0f);
        EXPECT_EQ (generator.phaseStepB, stepB);
        EXPECT_EQ (generator.outputSlew.step, 1.0e20f);
    }
}

TYPED_TEST (LfoGenerators, StopsAllPhasesAtZeroFrequency)
{
    TypeParam generator;
    generator.setRate (LfoGenerator::saw, rate, 10.0f);
    generator.setRate (LfoGenerator::saw, rate, 0.0f);
    EXPECT_EQ (generator.phaseStepA, 0.0f);
    EXPECT_EQ (generator.phaseStepB, 0.0f);
    EXPECT_EQ (generator.phaseStepC, 0.0f);
}

TYPED_TEST (LfoGenerators, WrapsEachPhaseOncePerTick)
{
    TypeParam generator;
    generator.phaseStepA = 0.75f;
    generator.phaseStepB = 0.5f;
    generator.phaseStepC = 2.5f;
    generator.phaseA = 0.5f;
    generator.phaseB = 0.5f;
    generator.referencePhase = 1.25f;
    advance (generator);
    EXPECT_EQ (generator.phaseA, 0.25f);
    EXPECT_EQ (generator.phaseB, 0.0f);
    EXPECT_EQ (generator.phaseC, 1.5f);
    EXPECT_EQ (generator.referencePhase, 0.25f);

    // More than one cycle per tick: the phase runs away, and is left alone.
    advance (generator);
    EXPECT_EQ (generator.phaseC, 3.0f);
}

TYPED_TEST (LfoGenerators, RunsOneCycleInItsPeriod)
{
    // A step of 1/256 is exact, and so is every phase.
    TypeParam generator;
    generator.setRate (LfoGenerator::saw, 256.0f, 1.0f);

    for (int i = 1; i <= 512; ++i)
    {
        advance (generator);
        ASSERT_EQ (generator.phaseA, (float) (i % 256) / 256.0f);
    }
}

TEST (LfoGenerator, JumpsWithAllPhasesAndDropsTheWalk)
{
    auto generator = generatorOf<LfoGenerator> (LfoGenerator::brownian, 0.1f);
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

TYPED_TEST (LfoGenerators, WalksOnlyInTheBrownianShape)
{
    for (std::int32_t shape = 0; shape < 9; ++shape)
    {
        auto generator = generatorOf<TypeParam> (shape);
        generator.setRate (shape, rate, 20.0f);

        for (int i = 0; i < 100; ++i)
            advance (generator);

        EXPECT_EQ (generator.walkValue != 0.0f, shape == LfoGenerator::brownian) << shape;
        EXPECT_EQ (generator.referencePhase != 0.0f, shape == LfoGenerator::brownian) << shape;
    }
}

TYPED_TEST (LfoGenerators, AdvancesTheReferenceInTheBrownianShape)
{
    auto generator = generatorOf<TypeParam> (LfoGenerator::brownian);
    generator.setRate (LfoGenerator::brownian, 256.0f, 1.0f);
    advance (generator);
    advance (generator);
    EXPECT_EQ (generator.referencePhase, 2.0f / 256.0f);
}

TYPED_TEST (LfoGenerators, WalksAsItsDrawsSay)
{
    auto generator = generatorOf<TypeParam> (LfoGenerator::brownian);
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

        advance (generator);
        ASSERT_EQ (generator.walkValue, expected) << "draw " << i;
    }
}

TYPED_TEST (LfoGenerators, DrawsBetweenItsBounds)
{
    auto generator = generatorOf<TypeParam> (LfoGenerator::brownian);
    generator.rng.seed (5);
    generator.walkStep = 0.01f;
    generator.uniformLow = 0.0;
    auto previous = 0.0f;

    for (int i = 0; i < 100; ++i)
    {
        advance (generator);
        ASSERT_GE (generator.walkValue, previous);
        ASSERT_LE (generator.walkValue, previous + 0.0100001f);
        previous = generator.walkValue;
    }
}

TYPED_TEST (LfoGenerators, WalksWithEvenSteps)
{
    constexpr auto numDraws = 200000;
    auto generator = generatorOf<TypeParam> (LfoGenerator::brownian);
    generator.rng.seed (99);
    generator.walkStep = 0.001f;
    auto sum = 0.0, sumOfSquares = 0.0;

    for (int i = 0; i < numDraws; ++i)
    {
        // From the middle every time, so that the range limits nothing.
        generator.walkValue = 0.0f;
        advance (generator);
        const auto step = (double) generator.walkValue / 0.001;
        ASSERT_LE (std::abs (step), 1.0);
        sum += step;
        sumOfSquares += step * step;
    }

    // Uniform between -1 and 1: mean 0, variance 1/3. Five standard errors: 5 sqrt (1/3 / n) and 5 sqrt (4/45 / n).
    EXPECT_NEAR (sum / numDraws, 0.0, 0.0065);
    EXPECT_NEAR (sumOfSquares / numDraws, 1.0 / 3.0, 0.0034);
}

TYPED_TEST (LfoGenerators, KeepsTheWalkInItsRange)
{
    auto generator = generatorOf<TypeParam> (LfoGenerator::brownian);
    generator.rng.seed (3);
    generator.walkStep = 0.9f;
    auto lowest = 0.0f, highest = 0.0f;

    for (int i = 0; i < 10000; ++i)
    {
        advance (generator);
        lowest = std::min (lowest, generator.walkValue);
        highest = std::max (highest, generator.walkValue);
    }

    EXPECT_EQ (lowest, -1.0f);
    EXPECT_EQ (highest, 1.0f);
}

TYPED_TEST (LfoGenerators, DriftsByAHundredthPerSecondAtTheMostInTheBrownianShape)
{
    for (const auto frequency : { 0.02f, 20.0f, 20000.0f })
    {
        auto generator = generatorOf<TypeParam> (LfoGenerator::brownian);
        generator.rng.seed (7);
        generator.setRate (LfoGenerator::brownian, rate, frequency);
        const auto framesPerSecond = (int) rate;
        auto before = generator.render();

        for (int second = 0; second < 5; ++second)
        {
            auto previous = before;

            for (int i = 0; i < framesPerSecond; ++i)
            {
                advance (generator);
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

TYPED_TEST (LfoGenerators, BendsTheBrownianShapeToo)
{
    auto generator = generatorOf<TypeParam> (LfoGenerator::brownian);
    generator.outputSlew.current = 0.5f;
    generator.curveExponent = 2.0f;
    EXPECT_EQ (generator.render(), 2.0f * elementary::power (0.75f, 2.0f) - 1.0f);
}

TYPED_TEST (LfoGenerators, HandsTheWalkToItsOutputWithoutMovingByItself)
{
    auto generator = generatorOf<TypeParam> (LfoGenerator::brownian);
    generator.walkValue = 0.6f;
    EXPECT_EQ (generator.render(), 0.0f);
    EXPECT_EQ (generator.outputSlew.target, 0.6f);
    EXPECT_EQ (generator.render(), 0.0f);
}

TYPED_TEST (LfoGenerators, WalksUnlikeAnyOther)
{
    std::array<TypeParam, 3> generators;
    EXPECT_NE (generators[0].rng, generators[1].rng);
    EXPECT_NE (generators[1].rng, generators[2].rng);
    EXPECT_NE (generators[0].rng, generators[2].rng);
}

TYPED_TEST (LfoGenerators, PulsesInTheFirstReservedShape)
{
    for (const auto p : { 0.0f, 0.3f, 0.9f, 0.94f, 0.97f, 0.999f })
    {
        auto q = (double) p + 0.06;
        q = q >= 1.0 ? q - 1.0 : q;
        const auto y = 1.0 - q;
        const auto z = (float) ((y * y * y) * (y * y * y));
        EXPECT_EQ (outputOf<TypeParam> (LfoGenerator::reservedPulse, p), triangleOf (z)) << p;
        EXPECT_LE (std::abs (outputOf<TypeParam> (LfoGenerator::reservedPulse, p)), 1.0f);
    }
}

TYPED_TEST (LfoGenerators, SumsEightSawsInTheSecondReservedShape)
{
    for (const auto p : { 0.0f, 0.1f, 0.5f, 0.77f, 0.99995f })
    {
        auto generator = generatorOf<TypeParam> (LfoGenerator::reservedSum, p);
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

TYPED_TEST (LfoGenerators, FollowsTheReferenceInTheReservedShapesAlone)
{
    for (std::int32_t shape = 0; shape < 9; ++shape)
        for (const auto follows : { false, true })
        {
            auto generator = generatorOf<TypeParam> (shape, 0.25f);
            generator.referencePhase = 0.5f;
            generator.phaseStepA = 0.125f;
            generator.followReference = follows;
            advance (generator);

            // The step to 0.375, and from there an eighth of an eighth of the distance.
            const auto isReserved = shape == LfoGenerator::reservedPulse || shape == LfoGenerator::reservedSum;
            EXPECT_EQ (generator.phaseA, isReserved && follows ? 0.375f + 0.125f * 0.125f : 0.375f) << shape;
        }
}

TYPED_TEST (LfoGenerators, FollowsTheReferenceFromBothSides)
{
    const auto followed = [] (float from, float reference, float step)
    {
        auto generator = generatorOf<TypeParam> (LfoGenerator::reservedPulse, from - step);
        generator.followReference = true;
        generator.referencePhase = reference;
        generator.phaseStepA = step;
        advance (generator);
        return generator.phaseA;
    };

    EXPECT_EQ (followed (0.5f, 0.25f, 0.125f), 0.5f - 0.25f * 0.125f);
    EXPECT_EQ (followed (0.25f, 0.5f, 0.125f), 0.25f + 0.25f * 0.125f);
    EXPECT_EQ (followed (0.25f, 0.25f, 0.125f), 0.25f);

    // Half a cycle apart and more: it is driven the other way.
    EXPECT_EQ (followed (0.25f, 0.75f, 0.125f), 0.25f - 0.5f * 0.125f);
    EXPECT_EQ (followed (0.75f, 0.25f, 0.125f), 0.75f + 0.5f * 0.125f);
}

TYPED_TEST (LfoGenerators, StopsAtTheReferenceInsteadOfPassingIt)
{
    // A step above one cycle would carry it past.
    auto generator = generatorOf<TypeParam> (LfoGenerator::reservedPulse, -1.25f);
    generator.followReference = true;
    generator.referencePhase = 0.5f;
    generator.phaseStepA = 1.5f;
    advance (generator);
    EXPECT_EQ (generator.phaseA, 0.5f);
}

TYPED_TEST (LfoGenerators, StaysInItsRangeInEveryNamedShape)
{
    for (const auto shape : namedShapes)
        for (const auto exponent : { 0.1827f, 1.0f, 5.474f })
        {
            auto generator = generatorOf<TypeParam> (shape);
            generator.rng.seed (11);
            generator.curveExponent = exponent;
            generator.setRate (shape, 1000.0f, 313.7f);

            for (int i = 0; i < 5000; ++i)
            {
                advance (generator);
                const auto output = generator.render();
                ASSERT_LE (std::abs (output), 1.0f + 1.0e-6f) << shape;
            }
        }
}

TYPED_TEST (LfoGenerators, TakesExtremeArgumentsWithoutFault)
{
    for (const auto frequency : { 1.0e30f, INFINITY, std::nanf (""), -INFINITY })
        for (std::int32_t shape = -1; shape < 10; ++shape)
        {
            auto generator = generatorOf<TypeParam> (shape);
            generator.followReference = true;
            generator.setRate (shape, rate, frequency);

            for (int i = 0; i < 10; ++i)
            {
                advance (generator);
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
            auto single = generatorOf<LfoGenerator> (shape, 0.3f);
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
    EXPECT_TRUE (generatorOf<LfoGenerator> (LfoGenerator::saw).isSteadyIn (LfoGenerator::saw));
    EXPECT_FALSE (generatorOf<LfoGenerator> (LfoGenerator::saw).isSteadyIn (LfoGenerator::sine));

    // They walk, follow and glide.
    for (const std::int32_t shape : { LfoGenerator::brownian, LfoGenerator::reservedPulse, LfoGenerator::reservedSum })
        EXPECT_FALSE (generatorOf<LfoGenerator> (shape).isSteadyIn (shape)) << shape;

    // Neither of these has a wave.
    EXPECT_FALSE (generatorOf<LfoGenerator> (-1).isSteadyIn (-1));
    EXPECT_FALSE (generatorOf<LfoGenerator> (8).isSteadyIn (8));

    auto gliding = generatorOf<LfoGenerator> (LfoGenerator::sine);
    gliding.outputSlew.target = 0.1f;
    EXPECT_FALSE (gliding.isSteadyIn (LfoGenerator::sine));
}
