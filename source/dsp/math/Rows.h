// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <span>

#include "dsp/simd/Lanes.h"

/** Functions of many values at once, in place: each value is replaced by what the function for one gives, bit for bit. They take as
    many values together as the processor can. */
namespace elementary
{

/** @param values  radians, -1.57 to 1.57 */
void tangents (std::span<double> values) noexcept;

/** @param values  radians, -128 to 128; NaN beyond */
void sines (std::span<double> values) noexcept;

/** @param values  radians, -128 to 128; NaN beyond */
void cosines (std::span<double> values) noexcept;

/** @param values  any */
void hyperbolicSines (std::span<double> values) noexcept;

/** @param values  radians, -pi / 2 to pi / 2 */
void sinesWithinQuarterTurn (std::span<StereoPair> values) noexcept;

} // namespace elementary
