// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <limits>

#include "dsp/math/FloatExponential.h"

namespace elementary
{

/** The logarithm to base 2 of floats above 0 in doubles, from a table of 16 parts of an octave; finite for anything else.
    Source: S. Nagy, "Arm Optimized Routines", powf, 2017: table, coefficients and order.
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] Real logarithmForPower (Real x) noexcept
{
    // The inverse of a number c within each sixteenth, as a pattern, and the logarithm of c likewise.
    static constexpr auto patternsOf = [] (std::array<double, 16> numbers)
    {
        std::array<std::uint64_t, 16> patterns {};

        for (std::size_t i = 0; i < numbers.size(); ++i)
            patterns[i] = std::bit_cast<std::uint64_t> (numbers[i]);

        return patterns;
    };
    static constexpr auto inverses =
        patternsOf ({ 0x1.661ec79f8f3bep+0, 0x1.571ed4aaf883dp+0, 0x1.49539f0f010bp+0, 0x1.3c995b0b80385p+0,
                      0x1.30d190c8864a5p+0, 0x1.25e227b0b8eap+0, 0x1.1bb4a4a1a343fp+0, 0x1.12358f08ae5bap+0,
                      0x1.0953f419900a7p+0, 0x1p+0, 0x1.e608cfd9a47acp-1, 0x1.ca4b31f026aap-1, 0x1.b2036576afce6p-1,
                      0x1.9c2d163a1aa2dp-1, 0x1.886e6037841edp-1, 0x1.767dcf5534862p-1 });
    static constexpr auto logarithms =
        patternsOf ({ -0x1.efec65b963019p-2, -0x1.b0b6832d4fca4p-2, -0x1.7418b0a1fb77bp-2, -0x1.39de91a6dcf7bp-2,
                      -0x1.01d9bf3f2b631p-2, -0x1.97c1d1b3b7afp-3, -0x1.2f9e393af3c9fp-3, -0x1.960cbbf788d5cp-4,
                      -0x1.a6f9db6475fcep-5, 0.0, 0x1.338ca9f24f53dp-4, 0x1.476a9543891bap-3, 0x1.e840b4ac4e4d2p-3,
                      0x1.40645f0c6651cp-2, 0x1.88e9c2c1b9ff8p-2, 0x1.ce0a44eb17bccp-2 });

    // The octaves begin at 0.69921875, which keeps the logarithm accurate on both sides of 1.
    const auto bits = bitsOf (x);
    const auto fromBegin = bits - allBits<Real> (0x3fe6600000000000);
    const auto part = (fromBegin >> 48) & allBits<Real> (15);
    const auto octaveBits = fromBegin & allBits<Real> (0xfff0000000000000);
    const auto z = numbersOf (bits - octaveBits);

    // The number of octaves: 1024 more than that makes it positive, and 2^52 makes it a double.
    const auto octaves =
        numbersOf (((octaveBits + allBits<Real> (0x4000000000000000)) >> 52) | allBits<Real> (0x4330000000000000))
        - all<Real> (0x1p52 + 1024.0);

    const auto r = z * numbersOf (lookUp (inverses, part)) - all<Real> (1.0);
    const auto constant = numbersOf (lookUp (logarithms, part)) + octaves;
    const auto square = r * r;
    const auto fifth = all<Real> (0x1.27616c9496e0bp-2) * r + all<Real> (-0x1.71969a075c67ap-2);
    const auto third = all<Real> (0x1.ec70a6ca7baddp-2) * r + all<Real> (-0x1.7154748bef6c8p-1);
    const auto first = all<Real> (0x1.71547652ab82bp0) * r + constant;
    return fifth * (square * square) + (third * square + first);
}

/** The power of floats in doubles, before it is rounded to float.
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] Real unroundedPower (Real base, Real exponent) noexcept
{
    const auto zero = all<Real> (0.0);

    // 0 has the logarithm of minus infinity; infinity and NaN have their own.
    const auto infinity = all<Real> (std::numeric_limits<double>::infinity());
    const auto ofPositive = whereGreater (infinity, base, logarithmForPower (base), infinity);
    const auto logarithm = whereGreater (base, zero, ofPositive, base - infinity);

    // 1 to any power and any number to the power of 0 is 1, also with NaN.
    auto octaves = exponent * logarithm;
    octaves = whereAtLeast (zero, magnitudeOf (exponent), zero, octaves);
    octaves = whereAtLeast (zero, magnitudeOf (logarithm), zero, octaves);

    // As a float the result is infinite from 128 on, and 0 from -150 down.
    octaves = whereAtLeast (all<Real> (-150.0), octaves, all<Real> (-160.0), lesserOf (all<Real> (130.0), octaves));

    const auto shift = all<Real> (integerShift / 32.0);
    const auto shifted = octaves + shift;
    return powersOfTwo::of<1> (shifted, octaves - (shifted - shift));
}

/** A base that is not negative, to the power of any exponent. The bits of glibc's powf, at most 0.52 ulp off. */
[[nodiscard]] inline float power (float base, float exponent) noexcept
{
    return (float) unroundedPower ((double) base, (double) exponent);
}

/** The same of four floats each. */
[[nodiscard]] inline FloatQuad power (FloatQuad base, FloatQuad exponent) noexcept
{
    return FloatQuad::narrowed (unroundedPower (base.firstHalf(), exponent.firstHalf()),
                                unroundedPower (base.secondHalf(), exponent.secondHalf()));
}

} // namespace elementary
