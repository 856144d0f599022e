// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cmath>

namespace reference
{

/* The functions of ReferenceMath.h by the C library. Inline, because a call more for each would make the yardstick slower: by a
   seventh with both resonances. */

inline double tangent (double angle) { return std::tan (angle); }

inline double sineWithinQuarterTurn (double angle) { return std::sin (angle); }

inline double sine (double angle) { return std::sin (angle); }

inline double cosine (double angle) { return std::cos (angle); }

inline double hyperbolicSine (double x) { return std::sinh (x); }

inline float exponential (float x) { return std::exp (x); }

inline float sine (float angle) { return std::sin (angle); }

inline float power (float base, float exponent) { return std::pow (base, exponent); }

} // namespace reference
