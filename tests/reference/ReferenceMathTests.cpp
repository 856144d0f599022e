// SPDX-License-Identifier: AGPL-3.0-or-later
// The elementary functions by themselves, beside the C library's. The doubles are compared with its long doubles, which have
// 64 digits or more and stand for the exact value; the floats with its floats.
#include "reference/ReferenceMath.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>
#include <random>

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
using WideFunction = long double (*) (long double);

// The distance of a result from the exact value, in units of the last place of a double as large as that value.
double errorInUlps (double result, long double exact)
{
    int exponent = 0;
    std::frexp (exact, &exponent);
    const long double ulp = std::ldexp (1.0L, std::max (exponent - 53, -1074));
    return (double) (std::fabs ((long double) result - exact) / ulp);
}

struct Worst
{
    double error = 0.0;
    double argument = 0.0;

    void look (Function f, WideFunction exact, double x)
    {
        const double found = errorInUlps (f (x), exact ((long double) x));

        // Written so that NaN counts as an error too.
        if (! (found <= error))
        {
            error = found;
            argument = x;
        }
    }
};

std::ostream& operator<< (std::ostream& out, const Worst& worst)
{
    return out << std::hexfloat << "at " << worst.argument << std::defaultfloat << " by " << worst.error << " ulp";
}

// The largest error over both signs of the ends, of evenly spread arguments and of arguments of every size down to 1e-13.
Worst worstUpTo (double end, Function f, WideFunction exact)
{
    std::mt19937_64 random (1);
    std::uniform_real_distribution<double> upToOne (0.0, 1.0);
    Worst worst;
    worst.look (f, exact, end);
    worst.look (f, exact, -end);

    for (int i = 0; i < 100000; ++i)
    {
        const double even = upToOne (random);
        const double ofAnySize = std::exp (-30.0 * upToOne (random));

        for (const double part : { even, -even, ofAnySize, -ofAnySize })
            worst.look (f, exact, end * part);
    }

    return worst;
}

void expectOneUlp (const Worst& worst) { EXPECT_LE (worst.error, 1.0) << worst; }

// A float in the order of the floats, so that neighbours differ by 1 and both zeros are one.
std::int64_t placeOf (float x)
{
    const std::int32_t bits = std::bit_cast<std::int32_t> (x);
    return bits >= 0 ? std::int64_t { bits } : std::int64_t { std::numeric_limits<std::int32_t>::min() } - bits;
}

// glibc has one result for each float, whatever the processor, but for a few floats that are not looked at here. Other
// libraries round a few otherwise.
#if defined(__GLIBC__)
constexpr std::int64_t allowedPlaces = 0;
#else
constexpr std::int64_t allowedPlaces = 1;
#endif

bool agree (float ours, float theirs)
{
    if (std::isnan (theirs))
        return std::isnan (ours);

    return ! std::isnan (ours) && std::signbit (ours) == std::signbit (theirs)
           && std::abs (placeOf (ours) - placeOf (theirs)) <= allowedPlaces;
}

// The floats with patterns from the first to the last, as far apart as the stride says.
template <typename Look>
void forFloats (std::uint32_t first, std::uint32_t last, std::uint32_t stride, Look look)
{
    for (std::uint64_t bits = first; bits <= last; bits += stride)
        look (std::bit_cast<float> ((std::uint32_t) bits));
}

constexpr std::uint32_t patternOfInfinity = 0x7f800000;
constexpr std::uint32_t lastPattern = 0xffffffff;
} // namespace

//======================================================================================================================
TEST (ReferenceMath, TangentIsRightToOneUlp)
{
    expectOneUlp (worstUpTo (1.57, tangent, [] (long double x) { return std::tan (x); }));
}

TEST (ReferenceMath, SineWithinAQuarterTurnIsRightToOneUlp)
{
    expectOneUlp (worstUpTo (halfPi, sineWithinQuarterTurn, [] (long double x) { return std::sin (x); }));
}

TEST (ReferenceMath, SineAndCosineAreRightToOneUlp)
{
    const WideFunction exactSine = [] (long double x) { return std::sin (x); };
    const WideFunction exactCosine = [] (long double x) { return std::cos (x); };

    expectOneUlp (worstUpTo (128.0, sine, exactSine));
    expectOneUlp (worstUpTo (128.0, cosine, exactCosine));

    // Where they are next to 0, nearly all digits of the angle cancel.
    Worst worstSine;
    Worst worstCosine;

    for (int quarters = -81; quarters <= 81; ++quarters)
    {
        double x = (double) quarters * halfPi;

        for (int step = 0; step < 100; ++step)
        {
            worstSine.look (sine, exactSine, x);
            worstCosine.look (cosine, exactCosine, x);
            x = std::nextafter (x, infinity);
        }
    }

    expectOneUlp (worstSine);
    expectOneUlp (worstCosine);
}

TEST (ReferenceMath, HyperbolicSineIsRightToOneUlp)
{
    const WideFunction exact = [] (long double x) { return std::sinh (x); };
    expectOneUlp (worstUpTo (2.0, hyperbolicSine, exact));
    expectOneUlp (worstUpTo (710.4758600739439, hyperbolicSine, exact));
}

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
TEST (ReferenceMath, ExponentialHasTheBitsOfTheCLibrary)
{
    // All kinds of floats, and more closely those that the engine asks for, from 0.001 to 24 with both signs.
    const auto look = [] (float x)
    {
        if (! HasFailure())
        {
            EXPECT_TRUE (agree (exponential (x), std::exp (x))) << std::hexfloat << x << " gives " << exponential (x);
        }
    };

    forFloats (0, lastPattern, 4099, look);
    forFloats (std::bit_cast<std::uint32_t> (0.001f), std::bit_cast<std::uint32_t> (24.0f), 101, look);
    forFloats (std::bit_cast<std::uint32_t> (-0.001f), std::bit_cast<std::uint32_t> (-24.0f), 101, look);
}

TEST (ReferenceMath, SineOfAFloatHasTheBitsOfTheCLibrary)
{
    // All kinds of floats, and more closely those within a turn.
    const auto look = [] (float x)
    {
        if (! HasFailure())
        {
            EXPECT_TRUE (agree (sine (x), std::sin (x))) << std::hexfloat << x << " gives " << sine (x);
        }
    };

    forFloats (0, lastPattern, 4099, look);
    forFloats (std::bit_cast<std::uint32_t> (0.0001f), std::bit_cast<std::uint32_t> (6.2831855f), 101, look);
}

TEST (ReferenceMath, PowerHasTheBitsOfTheCLibrary)
{
    const auto look = [] (float x, float y)
    {
        if (! HasFailure())
        {
            EXPECT_TRUE (agree (power (x, y), std::pow (x, y)))
                << std::hexfloat << x << " ^ " << y << " gives " << power (x, y);
        }
    };

    // Every kind of base with every kind of exponent. The patterns are spread so that the places behind the point differ too.
    forFloats (0, patternOfInfinity, 1500007,
               [&] (float x) { forFloats (0, lastPattern, 4500007, [&] (float y) { look (x, y); }); });

    // What the curve stage asks for.
    for (int i = 0; i <= 2000; ++i)
        for (int j = 0; j <= 200; ++j)
            look ((float) i / 2000.0f, (float) std::exp (1.7 * (double) j / 200.0));
}

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
    {
        EXPECT_TRUE (agree (sine (x), std::sin (x))) << x;
        EXPECT_EQ (sine (-x), -sine (x)) << x;
    }

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
