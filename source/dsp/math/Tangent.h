// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "dsp/math/LaneArithmetic.h"

namespace elementary
{

/** The tangent for arguments from -1.57 to 1.57, a little less than a quarter turn; what it gives beyond means nothing. At most
    0.9 ulp off.

    With c (r) = r cot (r) the tangent of r is r / c (r), and that of pi / 2 - r is c (r) / r. So an eighth of a turn is enough
    for c, which converges fast, and one division serves both. Its quotient is taken in 26 bits and the rest from what remains.
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] Real tangent (Real x) noexcept
{
    const auto eighthTurn = all<Real> (0x1.921fb54442d18p-1);
    const auto quarterTurn = all<Real> (0x1.921fb54442d18p0);
    const auto quarterTurnLow = all<Real> (0x1.1a62633145c07p-54);
    const auto zero = all<Real> (0.0);
    const auto one = all<Real> (1.0);

    const auto magnitude = magnitudeOf (x);
    const auto r = whereGreater (magnitude, eighthTurn, quarterTurn - magnitude, magnitude);
    const auto rLow = whereGreater (magnitude, eighthTurn, quarterTurnLow, zero);

    // (1 - r cot (r)) / r^2 is third + tail (r^2), with 1 / 3 in 13 bits and most of r^2 in multiples of 2^-26: so most of c is
    // exact.
    const auto third = all<Real> (0x1.555p-2);
    const auto shift = all<Real> (0x1.8p26);
    const auto square = r * r;
    const auto squareHead = (square + shift) - shift;
    const auto tail =
        polynomial (square, 0x1.55555555554c3p-16, 0x1.6c16c16c16c45p-6, 0x1.1566abc00c878p-9, 0x1.bbd7793981594p-13,
                    0x1.66a8f0b90f21ep-16, 0x1.2280be7b63ffap-19, 0x1.d6c51b0fee4bdp-23, 0x1.7f2fe839e2aacp-26,
                    0x1.24d94908d43ffp-29, 0x1.5981e529373bcp-32);
    const auto exact = one - third * squareHead;
    const auto loss = third * (square - squareHead) + square * tail;
    const auto c = exact - loss;

    // What c was rounded by, and how it follows rLow.
    const auto cLow = ((exact - c) - loss) - (r * rLow) * all<Real> (0.7);

    const auto over = whereGreater (magnitude, eighthTurn, c, r);
    const auto overLow = whereGreater (magnitude, eighthTurn, cLow, rLow);
    const auto under = whereGreater (magnitude, eighthTurn, r, c);
    const auto underLow = whereGreater (magnitude, eighthTurn, rLow, cLow);

    const auto inverse = one / under;
    const auto quotient = shortened (over * inverse);
    const auto underHead = shortened (under);
    const auto remainder =
        ((over - quotient * underHead) - quotient * (under - underHead)) + (overLow - quotient * underLow);
    return withSignOf (quotient + remainder * inverse, x);
}

} // namespace elementary
