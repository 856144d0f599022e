// SPDX-License-Identifier: AGPL-3.0-or-later
// The elementary functions by themselves: their symmetries, their special values and their ends.
#include "reference/ReferenceMath.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace
{
using reference::cosine;
using reference::exponential;
using reference::hyperbolicSine;
using reference::power;
using reference::sine;
using reference::sineWithinQuarterTurn;
using reference::tangent;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double quietNaN = std::numeric_limits<double>::quiet_NaN();
constexpr float floatInfinity = std::numeric_limits<float>::infinity();
constexpr float floatNaN = std::numeric_limits<float>::quiet_NaN();
constexpr double halfPi = 1.5707963267948966;

using Function = double (*) (double);
} // namespace

//======================================================================================================================
TEST (ReferenceMath, DoublesKeepTheSignOfZeroAndMirrorExactly)
{
    const auto isOdd = [] (Function f, double end)
    {
        EXPECT_EQ (std::bit_cast<std::uint64_t> (f (0.0)), std::bit_cast<std::uint64_t> (0.0));
        EXPECT_EQ (std::bit_cast<std::uint64_t> (f (-0.0)), std::bit_cast<std::uint64_t> (-0.0));

        for (int i = 1; i <= 1000; ++i)
        {
            const double x = end * (double) i / 1000.0;
            EXPECT_EQ (f (-x), -f (x)) << x;
        }
    };

    isOdd (tangent, 1.57);
    isOdd (sineWithinQuarterTurn, halfPi);
    isOdd (sine, 128.0);
    isOdd (hyperbolicSine, 710.0);

    EXPECT_EQ (cosine (0.0), 1.0);
    EXPECT_EQ (cosine (-0.0), 1.0);
}

TEST (ReferenceMath, TinyDoublesAreTheirOwnSineTangentAndHyperbolicSine)
{
    for (const double x : { 5e-324, 1e-310, 2.2250738585072014e-308, 1e-100, 1e-10 })
    {
        EXPECT_EQ (tangent (x), x);
        EXPECT_EQ (sineWithinQuarterTurn (x), x);
        EXPECT_EQ (sine (x), x);
        EXPECT_EQ (hyperbolicSine (x), x);
        EXPECT_EQ (cosine (x), 1.0);
    }
}

TEST (ReferenceMath, DoublesThatAreNoAnglesGiveNaN)
{
    for (const double x : { quietNaN, infinity, -infinity })
    {
        EXPECT_TRUE (std::isnan (tangent (x))) << x;
        EXPECT_TRUE (std::isnan (sine (x))) << x;
        EXPECT_TRUE (std::isnan (cosine (x))) << x;
    }

    EXPECT_TRUE (std::isnan (sineWithinQuarterTurn (quietNaN)));

    // The end of the domain belongs to it.
    const double beyond = std::nextafter (128.0, infinity);
    EXPECT_FALSE (std::isnan (sine (128.0)) || std::isnan (sine (-128.0)));
    EXPECT_FALSE (std::isnan (cosine (128.0)) || std::isnan (cosine (-128.0)));
    EXPECT_TRUE (std::isnan (sine (beyond)) && std::isnan (sine (-beyond)));
    EXPECT_TRUE (std::isnan (cosine (beyond)) && std::isnan (cosine (-beyond)));
}

TEST (ReferenceMath, HyperbolicSineReachesInfinityWhereItNoLongerFitsIntoADouble)
{
    const double last = 710.4758600739439;
    EXPECT_LT (hyperbolicSine (last), infinity);
    EXPECT_EQ (hyperbolicSine (std::nextafter (last, infinity)), infinity);

    for (const double x : { 711.0, 1e5, 1e300, infinity })
    {
        EXPECT_EQ (hyperbolicSine (x), infinity) << x;
        EXPECT_EQ (hyperbolicSine (-x), -infinity) << x;
    }

    EXPECT_TRUE (std::isnan (hyperbolicSine (quietNaN)));
}

//======================================================================================================================
TEST (ReferenceMath, ExponentialOverflowsToInfinityAndFadesThroughSubnormalsToZero)
{
    EXPECT_EQ (exponential (0.0f), 1.0f);
    EXPECT_EQ (exponential (-0.0f), 1.0f);
    EXPECT_LT (exponential (88.72283f), floatInfinity);
    EXPECT_EQ (exponential (88.72284f), floatInfinity);
    EXPECT_EQ (exponential (1e30f), floatInfinity);
    EXPECT_EQ (exponential (floatInfinity), floatInfinity);
    EXPECT_EQ (exponential (-103.9f), std::numeric_limits<float>::denorm_min());
    EXPECT_EQ (exponential (-104.0f), 0.0f);
    EXPECT_EQ (exponential (-floatInfinity), 0.0f);
    EXPECT_TRUE (std::isnan (exponential (floatNaN)));
}

TEST (ReferenceMath, SineOfAFloatKeepsTheSignOfZeroAndTakesAnyAngle)
{
    EXPECT_EQ (std::bit_cast<std::uint32_t> (sine (0.0f)), std::bit_cast<std::uint32_t> (0.0f));
    EXPECT_EQ (std::bit_cast<std::uint32_t> (sine (-0.0f)), std::bit_cast<std::uint32_t> (-0.0f));

    // Around the place where the reduction changes its method, and the largest float.
    for (const float x : { std::nextafter (120.0f, 0.0f), 120.0f, std::numeric_limits<float>::max() })
        EXPECT_EQ (sine (-x), -sine (x)) << x;

    EXPECT_TRUE (std::isnan (sine (floatInfinity)));
    EXPECT_TRUE (std::isnan (sine (-floatInfinity)));
    EXPECT_TRUE (std::isnan (sine (floatNaN)));
}

TEST (ReferenceMath, PowerHasTheSpecialValuesOfC)
{
    for (const float anything : { 0.0f, 0.5f, 1.0f, 2.0f, floatInfinity, floatNaN })
    {
        EXPECT_EQ (power (anything, 0.0f), 1.0f) << anything;
        EXPECT_EQ (power (anything, -0.0f), 1.0f) << anything;
        EXPECT_EQ (power (1.0f, anything), 1.0f) << anything;
    }

    EXPECT_EQ (power (0.0f, 2.5f), 0.0f);
    EXPECT_EQ (power (0.0f, -2.5f), floatInfinity);
    EXPECT_EQ (power (-0.0f, 2.5f), 0.0f);
    EXPECT_EQ (power (0.0f, floatInfinity), 0.0f);
    EXPECT_EQ (power (0.5f, floatInfinity), 0.0f);
    EXPECT_EQ (power (0.5f, -floatInfinity), floatInfinity);
    EXPECT_EQ (power (2.0f, floatInfinity), floatInfinity);
    EXPECT_EQ (power (2.0f, -floatInfinity), 0.0f);
    EXPECT_EQ (power (floatInfinity, 0.5f), floatInfinity);
    EXPECT_EQ (power (floatInfinity, 1e-30f), floatInfinity);
    EXPECT_EQ (power (floatInfinity, -0.5f), 0.0f);
    EXPECT_TRUE (std::isnan (power (floatNaN, 0.5f)));
    EXPECT_TRUE (std::isnan (power (0.5f, floatNaN)));
    EXPECT_TRUE (std::isnan (power (0.0f, floatNaN)));
    EXPECT_TRUE (std::isnan (power (floatInfinity, floatNaN)));
}

TEST (ReferenceMath, PowerEndsAtTheEndsOfTheFloats)
{
    EXPECT_EQ (power (2.0f, 127.0f), 0x1p127f);
    EXPECT_EQ (power (2.0f, 128.0f), floatInfinity);
    EXPECT_EQ (power (2.0f, -149.0f), 0x1p-149f);
    EXPECT_EQ (power (2.0f, -150.0f), 0.0f);
    EXPECT_EQ (power (0x1p-149f, 1.0f), 0x1p-149f);
    EXPECT_EQ (power (std::numeric_limits<float>::max(), 1.0f), std::numeric_limits<float>::max());
}
