// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <limits>

#include "dsp/math/LaneArithmetic.h"

namespace elementary
{

/** The sine of floats: reduced in double by quarter turns, then a short polynomial.
    Source: W. Dijkstra, "Arm Optimized Routines", sinf, 2018: table, coefficients and order. */
namespace floatCircle
{
/** pi / 2. */
inline constexpr double halfPi = 0x1.921fb54442d18p0;

/** From here on the reduction takes many bits of pi. */
inline constexpr double limit = 120.0;

/** The sine of x plus the quarter turns in shifted, x within an eighth of a turn. */
template <typename Bits, typename Real>
[[nodiscard]] Real sineOf (Real x, Bits quarters) noexcept
{
    const auto square = x * x;
    const auto fourth = square * square;

    const auto cube = x * square;
    const auto sine =
        (x + cube * all<Real> (-0x1.555545995a603p-3))
        + (cube * square) * (all<Real> (0x1.1107605230bc4p-7) + square * all<Real> (-0x1.994eb3774cf24p-13));

    const auto lower =
        (all<Real> (1.0) + square * all<Real> (-0x1.ffffffd0c621cp-2)) + fourth * all<Real> (0x1.55553e1068f19p-5);
    const auto upper = all<Real> (-0x1.6c087e89a359dp-10) + square * all<Real> (0x1.99343027bf8c3p-16);
    const auto cosine = lower + (fourth * square) * upper;

    // An odd number takes the cosine, and the second bit the opposite.
    const auto isOdd = allBits<Real> (0) - (quarters & allBits<Real> (1));
    const auto sign = (quarters & allBits<Real> (2)) << 62;
    const auto ofSine = bitsOf (withSignOf (sine, x));
    return numbersOf ((ofSine ^ ((ofSine ^ bitsOf (cosine)) & isOdd)) ^ sign);
}

/** The sine of a float of any size: its significand times the bits of 2 / pi that matter, in integers. What lies above them
    are whole turns. Infinity gives NaN. */
[[nodiscard]] inline double sineOfLarge (float x) noexcept
{
    // 192 bits of 2 / pi, 32 from every eighth.
    static constexpr std::array<std::uint32_t, 24> table { 0x000000a2, 0x0000a2f9, 0x00a2f983, 0xa2f9836e, 0xf9836e4e,
                                                           0x836e4e44, 0x6e4e4415, 0x4e441529, 0x441529fc, 0x1529fc27,
                                                           0x29fc2757, 0xfc2757d1, 0x2757d1f5, 0x57d1f534, 0xd1f534dd,
                                                           0xf534ddc0, 0x34ddc0db, 0xddc0db62, 0xc0db6295, 0xdb629599,
                                                           0x6295993c, 0x95993c43, 0x993c4390, 0x3c439041 };

    const auto bits = std::bit_cast<std::uint32_t> (x);
    const auto exponent = (bits >> 23) & 0xffu;

    if (exponent == 0xffu)
        return std::numeric_limits<double>::quiet_NaN();

    const auto* const digits = &table[(exponent >> 3) & 15u];
    const std::uint64_t significand = ((bits & 0x7fffffu) | 0x800000u) << (exponent & 7u);
    const auto high = ((significand * digits[0]) & 0xffffffffu) << 32;
    const auto product = high + significand * digits[4] + ((significand * digits[8]) >> 32);

    // Quarter turns, rounded, in the upper two bits.
    const auto quarters = (product + (std::uint64_t { 1 } << 61)) >> 62;
    const auto rest = (double) (std::int64_t) (product - (quarters << 62)) * (halfPi * 0x1p-62);
    const auto sine = sineOf (rest, quarters);
    return (bits >> 31) != 0 ? -sine : sine;
}

} // namespace floatCircle

/** The sine of floats between -120 and 120 in doubles, before it is rounded to float.
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] Real unroundedSine (Real x) noexcept
{
    const auto shifted = x * all<Real> (0x1.45f306dc9c883p-1) + all<Real> (integerShift);
    const auto quarters = shifted - all<Real> (integerShift);

    // pi / 2 in two parts, whose products with so few quarters are exact.
    const auto reduced = (x - quarters * all<Real> (0x1.921fb544p0)) - quarters * all<Real> (0x1.0b46p-34);
    return floatCircle::sineOf (reduced, bitsOf (shifted));
}

/** The sine of a float in radians, of any size. The bits of glibc's sinf, at most 0.56 ulp off. */
[[nodiscard]] inline float sine (float x) noexcept
{
    const auto isLarge = magnitudeOf ((double) x) >= floatCircle::limit;
    return (float) (isLarge ? floatCircle::sineOfLarge (x) : unroundedSine ((double) x));
}

/** The same of four floats. */
[[nodiscard]] inline FloatQuad sine (FloatQuad x) noexcept
{
    const auto first = x.firstHalf(), second = x.secondHalf();

    if (isAnyAtLeast (greaterOf (magnitudeOf (first), magnitudeOf (second)), all<StereoPair> (floatCircle::limit)))
        [[unlikely]]
    {
        auto values = x.values();

        for (auto& value : values)
            value = sine (value);

        return FloatQuad (values);
    }

    return FloatQuad::narrowed (unroundedSine (first), unroundedSine (second));
}

} // namespace elementary
