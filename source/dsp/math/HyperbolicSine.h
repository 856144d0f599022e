// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "dsp/math/LaneArithmetic.h"

namespace elementary
{

/** The hyperbolic sine of any number; infinite beyond 710.4758. Less than 1 ulp off, also near 0.

    With |x| = k ln (2) + r it is sinh (k ln (2)) cosh (r) + cosh (k ln (2)) sinh (r), whose first factors are sums of two powers
    of two. So nothing cancels where x is small, and there is no division.
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] Real hyperbolicSine (Real x) noexcept
{
    // ln (2) in two parts; the first has 40 bits, so that its products with k are exact.
    const auto ln2 = all<Real> (0x1.62e42fefa4p-1);
    const auto ln2Low = all<Real> (-0x1.8432a1b0e2634p-43);

    const auto magnitude = magnitudeOf (x);
    const auto limited = lesserOf (all<Real> (710.5), magnitude);

    const auto shifted = limited * all<Real> (0x1.71547652b82fep0) + all<Real> (integerShift);
    const auto k = shifted - all<Real> (integerShift);
    const auto exponent = bitsOf (shifted) << 52;

    // A quarter of 2^k and of 2^-k: a half of either belongs to the sine, and a half is left for the end, since 2^k may
    // overflow where the sine does not. Where 2^-k counts for nothing, its pattern would be none.
    const auto quarter = allBits<Real> (0x3fd0000000000000);
    const auto rising = numbersOf (quarter + exponent);
    const auto falling = whereGreater (k, all<Real> (60.0), all<Real> (0.0), numbersOf (quarter - exponent));
    const auto sineOfK = rising - falling;
    const auto sineOfKLow = (rising - sineOfK) - falling;
    const auto cosineOfK = rising + falling;

    const auto rest = limited - k * ln2;
    const auto low = k * ln2Low;
    const auto r = rest - low;
    const auto head = shortened (r);
    const auto tail = (rest - head) - low;
    const auto square = r * r;

    // The large terms: rising times head is exact, and what the sum was rounded by goes to the small ones.
    const auto linear = rising * head;
    const auto sum = sineOfK + linear;
    const auto sumLow = (sineOfK - sum) + linear;

    const auto sineTail = (square * r)
                          * polynomial (square, 0x1.5555555555556p-3, 0x1.111111111070bp-7, 0x1.a01a01a9023a5p-13,
                                        0x1.71de0a3cc24aep-19, 0x1.af3f0692fc77dp-26);
    const auto cosineTail = square
                            * polynomial (square, 0x1p-1, 0x1.5555555555556p-5, 0x1.6c16c16c15ffap-10,
                                          0x1.a01a01a818b6ap-16, 0x1.27e4d81784c6dp-22, 0x1.1f78e2ac93699p-29);
    const auto small = (cosineOfK * (tail + sineTail) + sineOfK * cosineTail) + (sineOfKLow + sumLow);
    const auto half = sum + (falling * head + small);

    // Below 2^-28 the sine is its argument, and a half of that might be too small for a double.
    return withSignOf (whereGreater (all<Real> (0x1p-28), magnitude, magnitude, half + half), x);
}

} // namespace elementary
