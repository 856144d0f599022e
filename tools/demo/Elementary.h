// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cmath>
#include <numbers>

#include "dsp/math/HyperbolicSine.h"
#include "dsp/math/Sine.h"

/** The functions that the loop is made with. They are the sound's own, so that every machine makes the same loop: the C
    library's differ from one to the next. */
namespace demo
{
/** Up to 128 in size. */
[[nodiscard]] inline double sine (double radians) { return elementary::sine (radians); }
[[nodiscard]] inline double cosine (double radians) { return elementary::cosine (radians); }

/** Of a number of at most 700 in size: sinh + cosh, where nothing cancels. */
[[nodiscard]] inline double exponential (double x)
{
    const auto sinh = elementary::hyperbolicSine (std::abs (x));
    const auto rising = sinh + std::sqrt (1.0 + sinh * sinh);
    return x < 0.0 ? 1.0 / rising : rising;
}

} // namespace demo
