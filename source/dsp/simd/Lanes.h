// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

// Lanes: numbers that lie side by side and on which every operation works alike. StereoPair has two doubles, left and right, and
// BitPair their patterns; FloatQuad has four floats. There is one file for each processor family, and the same bits come from all
// of them: the operations are the same, each rounded once. Comparisons treat NaN alike, too. Only which NaN an operation makes is
// the processor's, as it is for single numbers. On 32-bit ARM, NEON has no doubles and flushes subnormal floats to zero, so lanes
// are plain there.

#if defined(TAMSILE_PLAIN_STEREO)
#include "dsp/simd/PlainLanes.h"
#elif defined(__SSE2__)
#include "dsp/simd/Sse2Lanes.h"
#elif defined(__aarch64__) || defined(_M_ARM64)
#include "dsp/simd/NeonLanes.h"
#else
#include "dsp/simd/PlainLanes.h"
#endif

/** The smaller of two floats as lanes have it: a where it is less than b, and b elsewhere. With the three functions below, a
    law that is written for a FloatQuad serves one float too. */
[[nodiscard]] inline float lesserOf (float a, float b) noexcept { return a < b ? a : b; }

/** a where it is greater than b, and b elsewhere. */
[[nodiscard]] inline float greaterOf (float a, float b) noexcept { return a > b ? a : b; }

/** x where a is greater than b, and y elsewhere. */
[[nodiscard]] inline float whereGreater (float a, float b, float x, float y) noexcept { return a > b ? x : y; }
