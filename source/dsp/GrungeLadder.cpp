// SPDX-License-Identifier: AGPL-3.0-or-later
#include "GrungeLadder.h"

#include "FilterConstants.h"

void GrungeLadder::configure (int stages, bool highpass, double cutoff, double resonance, double grungeGain,
                              double newSampleRate) noexcept
{
    isHighpass = highpass;
    numStages = stages;
    sampleRate = newSampleRate;
    limitedCutoff = limitCutoff (cutoff, sampleRate);
    prewarped = std::tan (limitedCutoff * pi / sampleRate);
    prewarpedSquared = prewarped * prewarped;
    numeratorMiddle = isHighpass ? -2.0 : 2.0;

    const auto w = cutoff * twoPi;
    const auto t = 2.0 * sampleRate;
    const auto inverse = inverseOrZero (w + t);

    poleCoefficient = (t - w) * inverse;
    forwardCoefficient = inverse * w;
    inputCoefficient = 1.0 - poleCoefficient;
    grunge = (resonance * resonance * grungeGain) * (resonance * resonance);
}
