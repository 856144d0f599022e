// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

#if JUCE_INTEL
#include <immintrin.h>
#endif

/** How this thread rounds, what it traps, and what it does to denormals, without the flags of what has happened. Elsewhere than on
    x86 the denormals alone. */
[[nodiscard]] inline unsigned floatingPointMode()
{
#if JUCE_INTEL
    constexpr auto control = 0xffc0u;
    return _mm_getcsr() & control;
#else
    return juce::FloatVectorOperations::areDenormalsDisabled() ? 1 : 0;
#endif
}
