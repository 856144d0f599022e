// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

namespace reference
{

/* The functions that the sound is made of, in the widths that it takes them in.

   ReferenceMath.cpp writes them out as docs/dsp.md defines them, operation by operation, so that the reference engine gives
   the same bits on every machine. Only the yardstick of speed takes them from the C library, by CLibraryMath.h. */

/** The tangent of an angle from -1.57 to 1.57. NaN for NaN and infinities; beyond 1.57 the result means nothing. */
double tangent (double angle);

/** The sine of an angle from -pi / 2 to pi / 2. Beyond, the result means nothing. */
double sineWithinQuarterTurn (double angle);

/** Sine and cosine of an angle from -128 to 128. NaN for every other argument. */
double sine (double angle);
double cosine (double angle);

/** The hyperbolic sine of any number. */
double hyperbolicSine (double x);

/** e to the power of any number. */
float exponential (float x);

/** The sine of any angle. NaN for NaN and infinities. */
float sine (float angle);

/** A base that is not negative, to any power. -0 counts as 0; below it, the result means nothing. */
float power (float base, float exponent);

} // namespace reference

#if defined(KESTRIN_REFERENCE_C_LIBRARY_MATH)
#include "reference/CLibraryMath.h"
#endif
