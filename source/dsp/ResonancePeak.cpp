// SPDX-License-Identifier: AGPL-3.0-or-later
#include "ResonancePeak.h"

#include <cmath>

#include "FilterConstants.h"

namespace
{
constexpr double gainDb = 20.0;

// 10 to the power of gainDb / 40, and its inverse.
constexpr double amplitude = 3.1622776601683795;
constexpr double inverseAmplitude = 0.31622776601683794;

// ln (2) / 2 as a float.
constexpr double halfLn2 = 0.3465735912322998;
} // namespace

void ResonancePeak::design (double sampleRate, double frequency, double bandwidthOctaves) noexcept
{
    if (designed && sampleRate == designedRate && frequency == designedFrequency && gainDb == designedGainDb
        && bandwidthOctaves == designedBandwidth)
        return;

    designedRate = sampleRate;
    designedFrequency = frequency;
    designedGainDb = gainDb;
    designedBandwidth = bandwidthOctaves;
    designed = true;

    const auto w = frequency * twoPi / sampleRate;
    const auto s = std::sin (w);
    const auto c = std::cos (w);
    const auto alpha = std::sinh (bandwidthOctaves * halfLn2 * w / s) * s;

    b1 = a1 = -2.0 * c;
    b0 = alpha * amplitude + 1.0;
    b2 = 1.0 - alpha * amplitude;
    a0 = alpha * inverseAmplitude + 1.0;
    a2 = 1.0 - alpha * inverseAmplitude;
}
