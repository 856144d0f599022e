// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

/** What the two filter families share: the numbers of a circle in double precision, and how a cutoff is kept in bounds. */
inline constexpr double pi = 3.141592653589793;
inline constexpr double twoPi = 6.283185307179586;
inline constexpr double halfPi = 1.5707963267948966;
inline constexpr double quarterPi = 0.7853981633974483;

/** Just below half the rate, where the tangent of the prewarping still is finite: 0.498 as a float. */
inline constexpr double maxCutoffOverRate = 0.49799999594688416;

/** A NaN stays NaN. */
[[nodiscard]] inline double limitCutoff (double cutoff, double sampleRate) noexcept
{
    const auto limit = maxCutoffOverRate * sampleRate;
    return cutoff > limit ? limit : cutoff;
}

[[nodiscard]] inline double inverseOrZero (double x) noexcept { return x == 0.0 ? 0.0 : 1.0 / x; }
