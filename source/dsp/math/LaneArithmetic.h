// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "dsp/simd/Lanes.h"

/** The elementary functions of the sound, each a fixed sequence of additions, subtractions, multiplications, divisions, comparisons
    and operations on bits, so that every machine gives the same bits. The C library would give others on other machines.
    docs/dsp.md tells each of them in full. One double and two are one text. */
namespace elementary
{

/** The patterns of two numbers. */
[[nodiscard]] inline BitPair bitsOf (StereoPair x) noexcept { return x.bits(); }
/** The numbers of two patterns. */
[[nodiscard]] inline StereoPair numbersOf (BitPair bits) noexcept { return StereoPair::ofBits (bits); }
/** Two numbers without their signs. */
[[nodiscard]] inline StereoPair magnitudeOf (StereoPair x) noexcept { return x.magnitude(); }

// One double as a lane. The functions for two have the same names and lie with their type.

/** The pattern of one number. */
[[nodiscard]] inline std::uint64_t bitsOf (double x) noexcept { return std::bit_cast<std::uint64_t> (x); }
/** The number of one pattern. */
[[nodiscard]] inline double numbersOf (std::uint64_t bits) noexcept { return std::bit_cast<double> (bits); }
/** x if a is greater than b, and y else. */
[[nodiscard]] inline double whereGreater (double a, double b, double x, double y) noexcept { return a > b ? x : y; }
/** x if a is at least b, and y else. */
[[nodiscard]] inline double whereAtLeast (double a, double b, double x, double y) noexcept { return a >= b ? x : y; }
/** x without its sign. */
[[nodiscard]] inline double magnitudeOf (double x) noexcept { return std::abs (x); }
/** a if it is less than b, and b else. */
[[nodiscard]] inline double lesserOf (double a, double b) noexcept { return a < b ? a : b; }
/** a if it is greater than b, and b else. */
[[nodiscard]] inline double greaterOf (double a, double b) noexcept { return a > b ? a : b; }

/** The entry of a table. */
template <std::size_t size>
[[nodiscard]] std::uint64_t lookUp (const std::array<std::uint64_t, size>& table, std::uint64_t index) noexcept
{
    return table[(std::size_t) index];
}

/** The bits that go with a lane type. */
template <typename Real>
struct BitsOf
{
    /** Two patterns. */
    using Type = BitPair;
};

/** The same for a type that names them. */
template <typename Real>
requires requires { typename Real::Bits; }
struct BitsOf<Real>
{
    /** As many patterns. */
    using Type = typename Real::Bits;
};

/** The same for one double. */
template <>
struct BitsOf<double>
{
    /** One pattern. */
    using Type = std::uint64_t;
};

/** A constant in every lane.
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] Real all (double x) noexcept
{
    if constexpr (std::is_same_v<Real, double>)
        return x;
    else if constexpr (std::is_same_v<Real, StereoPair>)
        return Real::both (x);
    else
        return Real::all (x);
}

/** A pattern in every lane.
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] typename BitsOf<Real>::Type allBits (std::uint64_t bits) noexcept
{
    if constexpr (std::is_same_v<Real, double>)
        return bits;
    else if constexpr (std::is_same_v<Real, StereoPair>)
        return BitPair::both (bits);
    else
        return Real::Bits::all (bits);
}

/** The pattern of -0. */
inline constexpr std::uint64_t signBit = 0x8000000000000000u;

/** A number that is 0 or has the sign of another already, with the sign of that. */
template <typename Real>
[[nodiscard]] Real withSignOf (Real x, Real sign) noexcept
{
    return numbersOf (bitsOf (x) | (bitsOf (sign) & allBits<Real> (signBit)));
}

/** The first 26 binary digits: the product of two such numbers is exact. */
template <typename Real>
[[nodiscard]] Real shortened (Real x) noexcept
{
    return numbersOf (bitsOf (x) & allBits<Real> (~std::uint64_t { 0x7ffffff }));
}

/** Every second of the coefficients, from the first, as a polynomial in x. Computed from the last to the first. */
template <typename Real, typename... Others>
[[nodiscard]] Real everySecond (Real x, double first, Others... others) noexcept
{
    const auto skipOne = [x] (double, auto... rest) { return everySecond (x, rest...); };

    if constexpr (sizeof...(others) < 2)
        return all<Real> (first);
    else
        return skipOne (others...) * x + all<Real> (first);
}

/** The sum of the coefficients, each times x to the power of its place from 0. The even and the odd powers are two chains, which a
    processor computes at the same time. */
template <typename Real, typename... Others>
[[nodiscard]] Real polynomial (Real x, double first, Others... others) noexcept
{
    const auto square = x * x;
    return everySecond (square, first, others...) + everySecond (square, others...) * x;
}

/** 1.5 times 2 to the power of 52. Added to a number below 2^51 it rounds that to the nearest integer, a tie to even, which then
    is the lowest bits of the sum. */
inline constexpr double integerShift = 0x1.8p52;

} // namespace elementary
