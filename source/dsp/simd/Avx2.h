// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>

/** What is compiled a second time, for x86 processors with AVX2, and chosen when the module is loaded. It gives the same bits. */
namespace avx2
{
#if defined(TAMSILE_AVX2)
/** True if there is such a second form at all. */
inline constexpr bool isBuilt = true;

/** True if this processor has AVX2, and the system keeps its registers. */
inline const bool isThere = __builtin_cpu_supports ("avx2") != 0;
#else
inline constexpr bool isBuilt = false;
inline constexpr bool isThere = false;
#endif

/** Two stages in a register make the pipeline longer. It pays from so many frames on. */
inline constexpr std::size_t minFrames = 16;
} // namespace avx2
