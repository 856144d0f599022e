// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "dsp/math/LaneArithmetic.h"

/** One frame through a stage of the ladder, for StereoPair or more lanes; y is the state. */
namespace ladderLaw
{

/** The coefficients of GrungeLadder::Coefficients, in every lane. */
template <typename Lanes>
struct Coefficients
{
    Lanes pole, input, grunge;
};

/** The memory carries the non-linearity, so that the filter drags behind large signals. */
template <typename Lanes>
[[nodiscard]] Lanes processLowpass (const Coefficients<Lanes>& c, Lanes& y, Lanes x) noexcept
{
    using elementary::magnitudeOf;
    const auto one = elementary::all<Lanes> (1.0);
    const auto prediction = c.input * x + y * c.pole;
    const auto e = c.input / (c.grunge * magnitudeOf (x - prediction) + one);
    y = x * e + (one - e) * y;
    return y;
}

/** No mirror image of the lowpass: the state stays linear, and only the output is modulated. */
template <typename Lanes>
[[nodiscard]] Lanes processHighpass (const Coefficients<Lanes>& c, Lanes& y, Lanes x) noexcept
{
    using elementary::magnitudeOf;
    const auto one = elementary::all<Lanes> (1.0);
    const auto prediction = c.input * x + y * c.pole;
    const auto e = c.pole / (c.grunge * magnitudeOf (x - prediction) + one);
    y = prediction;
    return x - (e * prediction + (one - e) * x);
}

} // namespace ladderLaw
