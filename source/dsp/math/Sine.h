// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <limits>
#include <numbers>

#include "dsp/math/LaneArithmetic.h"

namespace elementary
{

/** What the sine and the cosine share. */
namespace circle
{
/** pi / 2 in three parts. The first two have 33 bits, so that their products with the number of quarter turns are exact. */
inline constexpr std::array halfPiParts { 0x1.921fb544p0, 0x1.0b4611a6p-34, 0x1.3198a2e037073p-69 };

/** 1 / pi. */
inline constexpr double inversePi = 0x1.45f306dc9c883p-2;

/** Beyond this the reduction would lose bits. The angle of a peak stays below 126: 20 kHz at the lowest rate. */
inline constexpr double limit = 128.0;

/** An angle within a quarter turn, or a little beyond, and what it was rounded by. */
template <typename Real>
struct Angle
{
    /** The angle, and what is to be added to it. */
    Real x, low;
};

/** x less `quarters` quarter turns. */
template <typename Real>
[[nodiscard]] Angle<Real> reduced (Real x, Real quarters) noexcept
{
    const auto first = quarters * all<Real> (halfPiParts[0]);
    const auto rest = x - first;
    const auto back = rest - x;
    const auto lost = (x - (rest - back)) - (first + back);
    const auto second = quarters * all<Real> (halfPiParts[1]);
    const auto angle = rest - second;
    return { angle, ((rest - angle) - second) + (lost - quarters * all<Real> (halfPiParts[2])) };
}

/** The sine of x plus low within a quarter turn. Most of x - x^3 / 6 is computed exactly, from the first 14 bits of x. So the
    sum is rounded once, and what is small is added before.
    @tparam hasLow  false: low is 0 */
template <bool hasLow, typename Real>
[[nodiscard]] Real sineOf (Real x, Real low) noexcept
{
    // Rounds to multiples of 2^-12.
    const auto shift = all<Real> (0x1.8p40);

    // 1 / 6 in 13 bits, and the rest of the series divided by x^3: sin (x) = x - sixth x^3 + x^3 tail (x^2).
    const auto sixth = all<Real> (0x1.555p-3);

    const auto head = (x + shift) - shift;
    const auto rest = x - head;
    const auto exact = head - (sixth * (head * head)) * head;
    const auto square = x * x;
    const auto slope = sixth * (head * (x + head) + square);
    const auto tail =
        polynomial (square, -0x1.555555555548ep-17, 0x1.1111111111107p-7, -0x1.a01a01a018abp-13, 0x1.71de3a54569c6p-19,
                    -0x1.ae6455a1f41eep-26, 0x1.61240164d1e34p-33, -0x1.ae513bb460ad7p-41, 0x1.89a4e179e0303p-49);
    auto small = (square * x) * tail - rest * slope;

    // The cosine, as far as low needs it.
    if constexpr (hasLow)
        small = small + low * polynomial (square, 1.0, -0.4957, 0.0368);

    return withSignOf (exact + (rest + small), x);
}

/** x, or NaN where the reduction ends. */
template <typename Real>
[[nodiscard]] Real limited (Real x) noexcept
{
    return whereAtLeast (all<Real> (limit), magnitudeOf (x), x, all<Real> (std::numeric_limits<double>::quiet_NaN()));
}

/** The sine of x, or its opposite where the integer in shifted is odd. */
template <typename Real>
[[nodiscard]] Real signedSineOf (Angle<Real> angle, Real shifted) noexcept
{
    return numbersOf (bitsOf (sineOf<true> (angle.x, angle.low)) ^ (bitsOf (shifted) << 63));
}
} // namespace circle

/** The sine for arguments from -pi / 2 to pi / 2, with the bits of sine().
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] Real sineWithinQuarterTurn (Real x) noexcept
{
    return circle::sineOf<false> (x, x);
}

/** The sine of x in radians, -128 to 128; NaN beyond. Less than 1 ulp off.
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] Real sine (Real x) noexcept
{
    const auto limited = circle::limited (x);
    const auto shifted = limited * all<Real> (circle::inversePi) + all<Real> (integerShift);
    const auto halfTurns = shifted - all<Real> (integerShift);
    return circle::signedSineOf (circle::reduced (limited, halfTurns + halfTurns), shifted);
}

/** The cosine of x in radians, -128 to 128; NaN beyond. Less than 1 ulp off.
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] Real cosine (Real x) noexcept
{
    const auto limited = circle::limited (x);
    const auto shifted = (limited * all<Real> (circle::inversePi) + all<Real> (0.5)) + all<Real> (integerShift);
    const auto halfTurns = shifted - all<Real> (integerShift);
    const auto quarters = (halfTurns + halfTurns) - all<Real> (1.0);

    // cos (x) = sin (x + pi / 2), and that is n half turns and the angle x + pi / 2 - n pi.
    return circle::signedSineOf (circle::reduced (limited, quarters), shifted);
}

} // namespace elementary
