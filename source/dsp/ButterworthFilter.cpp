// SPDX-License-Identifier: AGPL-3.0-or-later
#include "ButterworthFilter.h"

#include <cmath>

#include "FilterConstants.h"

void ButterworthFilter::design (unsigned order, bool highpass, double cutoff, double newSampleRate) noexcept
{
    isHighpass = highpass;
    hasFirstOrderSection = (order & 1u) != 0;
    numSections = order >> 1;
    sampleRate = newSampleRate;
    limitedCutoff = limitCutoff (cutoff, sampleRate);
    prewarped = std::tan (limitedCutoff * pi / sampleRate);
    prewarpedSquared = prewarped * prewarped;
    numeratorMiddle = isHighpass ? -2.0 : 2.0;

    clearUnusedSections();
    designSections();

    if (hasFirstOrderSection)
        designFirstOrder (cutoff);
}

void ButterworthFilter::clearUnusedSections() noexcept
{
    for (auto i = numSections; i < maxSections; ++i)
    {
        sectionGain[i] = feedback1[i] = feedback2[i] = 0.0;
        w1[i] = w2[i] = {};
    }
}

void ButterworthFilter::designSections() noexcept
{
    const auto n = (double) numSections;

    for (unsigned i = 0; i < numSections; ++i)
    {
        poleSine = std::sin ((halfPi / n) * (double) i + quarterPi / n);
        const auto s = 2.0 * prewarped * poleSine + prewarpedSquared + 1.0;

        sectionGain[i] = (isHighpass ? 1.0 : prewarpedSquared) / s;
        feedback1[i] = 2.0 * (1.0 - prewarpedSquared) / s;
        feedback2[i] = (2.0 * prewarped * poleSine - prewarpedSquared - 1.0) / s;
    }
}

void ButterworthFilter::designFirstOrder (double cutoff) noexcept
{
    const auto w = cutoff * twoPi;
    const auto t = 2.0 * sampleRate;
    const auto inverse = inverseOrZero (w + t);

    firstOrderFeedback = (t - w) * inverse;
    firstOrderForward = inverse * w;
}
