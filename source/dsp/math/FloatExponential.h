// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "dsp/math/LaneArithmetic.h"

namespace elementary
{

/** Powers of two in double, accurate enough for floats; the exponential and the power of floats share them.
    Source: S. Nagy, "Arm Optimized Routines", exp2f, 2017: table, coefficients and order. */
namespace powersOfTwo
{
/** 2^(i / 32) for i from 0, less i * 2^47. */
inline constexpr std::array<std::uint64_t, 32> table {
    0x3ff0000000000000, 0x3fefd9b0d3158574, 0x3fefb5586cf9890f, 0x3fef9301d0125b51, 0x3fef72b83c7d517b,
    0x3fef54873168b9aa, 0x3fef387a6e756238, 0x3fef1e9df51fdee1, 0x3fef06fe0a31b715, 0x3feef1a7373aa9cb,
    0x3feedea64c123422, 0x3feece086061892d, 0x3feebfdad5362a27, 0x3feeb42b569d4f82, 0x3feeab07dd485429,
    0x3feea47eb03a5585, 0x3feea09e667f3bcd, 0x3fee9f75e8ec5f74, 0x3feea11473eb0187, 0x3feea589994cce13,
    0x3feeace5422aa0db, 0x3feeb737b0cdc5e5, 0x3feec49182a3f090, 0x3feed503b23e255d, 0x3feee89f995ad3ad,
    0x3feeff76f2fb5e47, 0x3fef199bdd85529c, 0x3fef3720dcef9069, 0x3fef5818dcfba487, 0x3fef7c97337b9b5f,
    0x3fefa4afa2a490da, 0x3fefd0765b6e4540
};

/** 2^r is 1 and these times r, r^2 and r^3. */
inline constexpr std::array coefficients { 0x1.62e42ff0c52d6p-1, 0x1.ebfce50fac4f3p-3, 0x1.c6af84b912394p-5 };

/** 2 to the power of the 32nds in shifted and of r units.
    @param shifted  an integer in the lowest bits
    @tparam unitsPerOctave  1 or 32 */
template <int unitsPerOctave, typename Real>
[[nodiscard]] Real of (Real shifted, Real r) noexcept
{
    constexpr auto n = (double) unitsPerOctave;
    const auto bits = bitsOf (shifted);
    const auto power = numbersOf (lookUp (table, bits & allBits<Real> (31)) + (bits << 47));
    const auto upper = all<Real> (coefficients[2] / n / n / n) * r + all<Real> (coefficients[1] / n / n);
    const auto lower = all<Real> (coefficients[0] / n) * r + all<Real> (1.0);
    return (upper * (r * r) + lower) * power;
}
} // namespace powersOfTwo

/** The exponential of floats in doubles, before it is rounded to float.
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] Real unroundedExponential (Real x) noexcept
{
    // 32 / ln (2), in two parts: the products with a float are exact.
    const auto scale = all<Real> (0x1.7154765p5);
    const auto scaleLow = all<Real> (0x1.5c17f0p-26);

    // The result is 0 or infinite as a float well before these. A NaN passes.
    const auto limited = greaterOf (all<Real> (-110.0), lesserOf (all<Real> (100.0), x));
    const auto units = scale * limited;
    const auto unitsLow = scaleLow * limited;
    const auto shifted = (units + unitsLow) + all<Real> (integerShift);
    return powersOfTwo::of<32> (shifted, (units - (shifted - all<Real> (integerShift))) + unitsLow);
}

/** The exponential of a float. The bits of glibc's expf, at most 0.502 ulp off. */
[[nodiscard]] inline float exponential (float x) noexcept { return (float) unroundedExponential ((double) x); }

/** The same of four floats. */
[[nodiscard]] inline FloatQuad exponential (FloatQuad x) noexcept
{
    return FloatQuad::narrowed (unroundedExponential (x.firstHalf()), unroundedExponential (x.secondHalf()));
}

} // namespace elementary
