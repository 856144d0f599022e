// SPDX-License-Identifier: AGPL-3.0-or-later
// The elementary functions beside the C library's. The doubles are compared with its long doubles, which have 64 digits or more
// and stand for the exact value; the floats with its floats. Only glibc is exact enough for that, and it has one result for each
// float, whatever the processor, but for a few floats that are not looked at here.
#include <cmath>

#if defined(__GLIBC__)

#include "reference/ReferenceMath.h"

#include <algorithm>
#include <bit>
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

bool agree (float ours, float theirs)
{
    return std::isnan (theirs) ? std::isnan (ours)
                               : std::bit_cast<std::uint32_t> (ours) == std::bit_cast<std::uint32_t> (theirs);
}

// The floats with patterns from the first to the last, as far apart as the stride says.
template <typename Look>
void forFloats (std::uint32_t first, std::uint32_t last, std::uint32_t stride, Look look)
{
    for (std::uint64_t bits = first; bits <= last; bits += stride)
        look (std::bit_cast<float> ((std::uint32_t) bits));
}

using FloatFunction = float (*) (float);

// Looks at one float, unless another has failed already.
auto comparing (FloatFunction ours, FloatFunction theirs)
{
    return [=] (float x)
    {
        if (! testing::Test::HasFailure())
        {
            EXPECT_TRUE (agree (ours (x), theirs (x))) << std::hexfloat << x << " gives " << ours (x);
        }
    };
}

constexpr std::uint32_t patternOfInfinity = 0x7f800000;
constexpr std::uint32_t lastPattern = 0xffffffff;
} // namespace

//======================================================================================================================
TEST (ReferenceMathAccuracy, TangentIsRightToOneUlp)
{
    expectOneUlp (worstUpTo (1.57, tangent, [] (long double x) { return std::tan (x); }));
}

TEST (ReferenceMathAccuracy, SineWithinAQuarterTurnIsRightToOneUlp)
{
    expectOneUlp (worstUpTo (halfPi, sineWithinQuarterTurn, [] (long double x) { return std::sin (x); }));
}

TEST (ReferenceMathAccuracy, SineAndCosineAreRightToOneUlp)
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

TEST (ReferenceMathAccuracy, HyperbolicSineIsRightToOneUlp)
{
    const WideFunction exact = [] (long double x) { return std::sinh (x); };
    expectOneUlp (worstUpTo (2.0, hyperbolicSine, exact));
    expectOneUlp (worstUpTo (710.4758600739439, hyperbolicSine, exact));
}

//======================================================================================================================
TEST (ReferenceMathAccuracy, ExponentialHasTheBitsOfTheCLibrary)
{
    // All kinds of floats, and more closely those that the engine asks for, from 0.001 to 24 with both signs.
    const auto look = comparing (exponential, std::exp);

    forFloats (0, lastPattern, 4099, look);
    forFloats (std::bit_cast<std::uint32_t> (0.001f), std::bit_cast<std::uint32_t> (24.0f), 101, look);
    forFloats (std::bit_cast<std::uint32_t> (-0.001f), std::bit_cast<std::uint32_t> (-24.0f), 101, look);
}

TEST (ReferenceMathAccuracy, SineOfAFloatHasTheBitsOfTheCLibrary)
{
    // All kinds of floats, and more closely those within a turn.
    const auto look = comparing (sine, std::sin);

    forFloats (0, lastPattern, 4099, look);
    forFloats (std::bit_cast<std::uint32_t> (0.0001f), std::bit_cast<std::uint32_t> (6.2831855f), 101, look);

    // Around the place where the reduction changes its method, and the largest float.
    for (const float x : { std::nextafter (120.0f, 0.0f), 120.0f, std::numeric_limits<float>::max() })
        look (x);
}

TEST (ReferenceMathAccuracy, PowerHasTheBitsOfTheCLibrary)
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

#endif
