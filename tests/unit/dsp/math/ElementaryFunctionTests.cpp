// SPDX-License-Identifier: AGPL-3.0-or-later
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <random>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/math/FloatExponential.h"
#include "dsp/math/FloatPower.h"
#include "dsp/math/FloatSine.h"
#include "dsp/math/HyperbolicSine.h"
#include "dsp/math/Rows.h"
#include "dsp/math/Sine.h"
#include "dsp/math/Tangent.h"

namespace
{
constexpr auto infinity = std::numeric_limits<double>::infinity();
constexpr auto notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr auto halfPi = std::numbers::pi / 2.0;

[[nodiscard]] bool areSame (double a, double b)
{
    return (std::isnan (a) && std::isnan (b)) || std::bit_cast<std::uint64_t> (a) == std::bit_cast<std::uint64_t> (b);
}

[[nodiscard]] bool areSame (float a, float b)
{
    return (std::isnan (a) && std::isnan (b)) || std::bit_cast<std::uint32_t> (a) == std::bit_cast<std::uint32_t> (b);
}

/** Floats of all signs and sizes, and every kind of NaN: one of every `stride` patterns. */
[[nodiscard]] std::vector<float> floatsOfAllSizes (std::uint32_t stride)
{
    std::vector<float> floats;

    for (std::uint64_t pattern = 0; pattern <= 0xffffffffu; pattern += stride)
        floats.push_back (std::bit_cast<float> ((std::uint32_t) pattern));

    return floats;
}

/** Doubles of all sizes that the functions are asked for, and NaN. */
[[nodiscard]] std::vector<double> doublesOfAllSizes()
{
    std::vector<double> doubles { 0.0,    infinity,     notANumber, 0x1p-1074,         0x1p-1022,
                                  halfPi, halfPi / 2.0, 1.57,       710.4758600739439, 1.0e300 };
    std::mt19937 random (7);

    for (int i = 0; i < 20000; ++i)
        doubles.push_back (std::ldexp (1.0 + (double) random() * 0x1p-32, (int) (random() % 32) - 22));

    for (std::size_t i = 0, count = doubles.size(); i < count; ++i)
        doubles.push_back (-doubles[i]);

    return doubles;
}

/** A function of two lanes gives the bits of the function of one, in either lane and beside any other number. */
template <typename OfOne, typename OfTwo>
void expectTheSameInEachLane (OfOne ofOne, OfTwo ofTwo)
{
    const auto doubles = doublesOfAllSizes();

    for (std::size_t i = 0; i < doubles.size(); ++i)
    {
        const auto x = doubles[i], other = doubles[(i * 7 + 3) % doubles.size()];
        const auto both = ofTwo (StereoPair (x, other));
        ASSERT_TRUE (areSame (both.left(), ofOne (x))) << x;
        ASSERT_TRUE (areSame (both.right(), ofOne (other))) << other;
    }
}

/** Likewise for four floats. */
template <typename Function>
void expectTheSameInFourLanes (Function function)
{
    const auto floats = floatsOfAllSizes (60013);

    for (std::size_t i = 0; i < floats.size(); ++i)
    {
        FloatQuad::Values x;

        for (std::size_t lane = 0; lane < x.size(); ++lane)
            x[lane] = floats[(i * (lane + 1)) % floats.size()];

        const auto four = function (FloatQuad (x)).values();

        for (std::size_t lane = 0; lane < x.size(); ++lane)
            ASSERT_TRUE (areSame (four[lane], function (x[lane]))) << x[lane];
    }
}
} // namespace

TEST (ElementaryFunctions, GiveTheSameBitsInOneLaneAndInTwo)
{
    expectTheSameInEachLane (elementary::sine<double>, elementary::sine<StereoPair>);
    expectTheSameInEachLane (elementary::cosine<double>, elementary::cosine<StereoPair>);
    expectTheSameInEachLane (elementary::tangent<double>, elementary::tangent<StereoPair>);
    expectTheSameInEachLane (elementary::hyperbolicSine<double>, elementary::hyperbolicSine<StereoPair>);
    expectTheSameInEachLane (elementary::sineWithinQuarterTurn<double>, elementary::sineWithinQuarterTurn<StereoPair>);
}

TEST (ElementaryFunctions, GiveTheSameBitsAloneAndInRowsOfAnyLength)
{
    const auto expectTheSame = [] (auto ofRow, auto ofOne)
    {
        const auto doubles = doublesOfAllSizes();

        for (std::size_t first = 0, size = 0; first + size <= doubles.size(); first += size, size = (size + 1) % 11)
        {
            const auto alone = std::span (doubles).subspan (first, size);
            std::vector<double> row (alone.begin(), alone.end());

            // What is behind the row stays.
            row.push_back (7.0);
            ofRow (std::span (row).first (size));
            ASSERT_EQ (row.back(), 7.0);

            for (std::size_t i = 0; i < size; ++i)
                ASSERT_TRUE (areSame (row[i], ofOne (alone[i]))) << alone[i] << " in a row of " << size;
        }
    };

    expectTheSame (elementary::sines, elementary::sine<double>);
    expectTheSame (elementary::cosines, elementary::cosine<double>);
    expectTheSame (elementary::tangents, elementary::tangent<double>);
    expectTheSame (elementary::hyperbolicSines, elementary::hyperbolicSine<double>);

    for (std::size_t size = 0; size < 11; ++size)
    {
        std::vector<StereoPair> row;

        for (std::size_t i = 0; i < size; ++i)
            row.push_back ({ 0.14 * (double) i, -0.1 * (double) i });

        elementary::sinesWithinQuarterTurn (row);

        for (std::size_t i = 0; i < size; ++i)
        {
            EXPECT_EQ (row[i].left(), elementary::sine (0.14 * (double) i));
            EXPECT_EQ (row[i].right(), elementary::sine (-0.1 * (double) i));
        }
    }
}

TEST (ElementaryFunctions, GiveTheSameBitsInOneLaneAndInFour)
{
    expectTheSameInFourLanes ([] (auto x) { return elementary::exponential (x); });
    expectTheSameInFourLanes ([] (auto x) { return elementary::sine (x); });

    for (const auto exponent : { 1.0f, 1.0001f, 2.5f, 5.47f, 0.0f, -1.0f })
        expectTheSameInFourLanes (
            [=] (auto x)
            {
                if constexpr (std::is_same_v<decltype (x), float>)
                    return elementary::power (std::abs (x), exponent);
                else
                    return elementary::power (x.magnitude(), FloatQuad::all (exponent));
            });
}

TEST (ElementaryFunctions, GiveTheBitsOfTheGeneralSineWithinAQuarterTurn)
{
    for (const auto x : doublesOfAllSizes())
        ASSERT_TRUE (! (std::abs (x) <= halfPi)
                     || areSame (elementary::sineWithinQuarterTurn (x), elementary::sine (x)))
            << x;

    // The limit of the resonance.
    EXPECT_EQ (elementary::sineWithinQuarterTurn (halfPi), 1.0);
    EXPECT_EQ (elementary::sineWithinQuarterTurn (-halfPi), -1.0);
}

TEST (ElementaryFunctions, KeepTheSignOfZero)
{
    for (const auto zero : { 0.0, -0.0 })
    {
        EXPECT_TRUE (areSame (elementary::sine (zero), zero));
        EXPECT_TRUE (areSame (elementary::sineWithinQuarterTurn (zero), zero));
        EXPECT_TRUE (areSame (elementary::tangent (zero), zero));
        EXPECT_TRUE (areSame (elementary::hyperbolicSine (zero), zero));
        EXPECT_TRUE (areSame (elementary::sine ((float) zero), (float) zero));
        EXPECT_EQ (elementary::cosine (zero), 1.0);
        EXPECT_EQ (elementary::exponential ((float) zero), 1.0f);
    }
}

TEST (ElementaryFunctions, GiveNoNumberForNaNAndForTheAngleInfinity)
{
    for (const auto x : { notANumber, infinity, -infinity })
    {
        EXPECT_TRUE (std::isnan (elementary::sine (x)));
        EXPECT_TRUE (std::isnan (elementary::sineWithinQuarterTurn (x)));
        EXPECT_TRUE (std::isnan (elementary::cosine (x)));
        EXPECT_TRUE (std::isnan (elementary::tangent (x)));
        EXPECT_TRUE (std::isnan (elementary::sine ((float) x)));
    }

    EXPECT_TRUE (std::isnan (elementary::hyperbolicSine (notANumber)));
    EXPECT_TRUE (std::isnan (elementary::exponential ((float) notANumber)));
}

TEST (ElementaryFunctions, GiveNoNumberForAnAngleBeyondTheirReduction)
{
    for (const auto x : { 128.00000000000003, -128.00000000000003, 1.0e300 })
    {
        EXPECT_TRUE (std::isnan (elementary::sine (x)));
        EXPECT_TRUE (std::isnan (elementary::cosine (x)));
    }

    EXPECT_FALSE (std::isnan (elementary::sine (128.0)));
    EXPECT_FALSE (std::isnan (elementary::cosine (-128.0)));
}

TEST (ElementaryFunctions, EndInInfinityAsInC)
{
    EXPECT_EQ (elementary::hyperbolicSine (infinity), infinity);
    EXPECT_EQ (elementary::hyperbolicSine (-infinity), -infinity);
    EXPECT_EQ (elementary::hyperbolicSine (1.0e300), infinity);
    EXPECT_EQ (elementary::hyperbolicSine (-711.0), -infinity);
    EXPECT_LT (elementary::hyperbolicSine (710.4758600739439), infinity);
    EXPECT_EQ (elementary::hyperbolicSine (710.475860073944), infinity);
    EXPECT_EQ (elementary::exponential ((float) infinity), (float) infinity);
    EXPECT_EQ (elementary::exponential (89.0f), (float) infinity);
    EXPECT_EQ (elementary::exponential (-(float) infinity), 0.0f);
    EXPECT_EQ (elementary::exponential (-104.0f), 0.0f);
}

TEST (ElementaryPower, TakesTheSpecialValuesOfC)
{
    const auto inf = (float) infinity, none = (float) notANumber;

    for (const auto anything : { 0.0f, 0.5f, 1.0f, 2.0f, inf, none })
        EXPECT_EQ (elementary::power (anything, 0.0f), 1.0f) << anything;

    for (const auto anything : { 0.0f, -0.0f, 0.5f, -3.0f, inf, -inf, none })
        EXPECT_EQ (elementary::power (1.0f, anything), 1.0f) << anything;

    EXPECT_EQ (elementary::power (0.0f, 2.0f), 0.0f);
    EXPECT_EQ (elementary::power (0.0f, 1.0e-30f), 0.0f);
    EXPECT_EQ (elementary::power (0.0f, -1.0f), inf);
    EXPECT_EQ (elementary::power (0.5f, inf), 0.0f);
    EXPECT_EQ (elementary::power (0.5f, -inf), inf);
    EXPECT_EQ (elementary::power (2.0f, inf), inf);
    EXPECT_EQ (elementary::power (2.0f, -inf), 0.0f);
    EXPECT_EQ (elementary::power (inf, 1.0e-30f), inf);
    EXPECT_EQ (elementary::power (inf, -2.0f), 0.0f);
    EXPECT_TRUE (std::isnan (elementary::power (none, 2.0f)));
    EXPECT_TRUE (std::isnan (elementary::power (0.5f, none)));
    EXPECT_TRUE (std::isnan (elementary::power (0.0f, none)));
}

// A float that differs in its last bit moves the phase of an LFO for ever, so a project would sound otherwise than before.
#ifdef __GLIBC__
TEST (ElementaryFunctions, GiveTheFloatsOfTheCLibrary)
{
    for (const auto x : floatsOfAllSizes (4099))
    {
        ASSERT_TRUE (areSame (elementary::exponential (x), std::exp (x))) << x;
        ASSERT_TRUE (areSame (elementary::sine (x), std::sin (x))) << x;
    }
}

TEST (ElementaryPower, GivesTheFloatsOfTheCLibraryForEveryCurve)
{
    constexpr auto numPositions = 201;

    for (int position = 0; position < numPositions; ++position)
    {
        const auto knob = (float) position / 200.0f;
        const auto curve = 1.0f / std::exp ((float) ((double) (knob * 2.0f - 1.0f) * 1.7));
        const auto exponent = curve > 1.0f ? curve : 1.0f / curve;

        for (int i = 0; i <= 2000; ++i)
        {
            const auto base = (float) i / 2000.0f;
            ASSERT_TRUE (areSame (elementary::power (base, exponent), std::pow (base, exponent)))
                << base << ' ' << exponent;
        }
    }
}
#endif
