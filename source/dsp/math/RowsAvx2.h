// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <span>

#include "dsp/simd/Lanes.h"

/** The rows of dsp/math/Rows.h, four values at a time. */
namespace avx2
{

void tangents (std::span<double> values) noexcept;
void sines (std::span<double> values) noexcept;
void cosines (std::span<double> values) noexcept;
void hyperbolicSines (std::span<double> values) noexcept;
void sinesWithinQuarterTurn (std::span<StereoPair> values) noexcept;

} // namespace avx2
