// SPDX-License-Identifier: AGPL-3.0-or-later
#include "reference/ReferenceFilters.h"

#include "reference/ReferenceMath.h"

#include <cmath>

namespace reference
{

namespace
{
// 0.498 in single precision, converted to double.
constexpr double cutoffLimit = 0.49799999594688416;

// The smaller of the two, but a cutoff that is NaN stays NaN.
double limitCutoff (double cutoff, double rate)
{
    const double limit = cutoffLimit * rate;

    if (cutoff > limit)
        return limit;

    return cutoff;
}
} // namespace

void ButterworthFilter::design (unsigned order, bool highpass, double cutoff, double rate)
{
    limitedCutoff = limitCutoff (cutoff, rate);

    isHighpass = highpass;
    hasFirstOrderSection = (order & 1u) != 0;
    numSections = order >> 1;
    sampleRate = rate;

    prewarped = tangent (limitedCutoff * 3.141592653589793 / rate);
    const double a = prewarped;
    prewarpedSquared = a * a;

    if (isHighpass)
        numeratorMiddle = -2.0;
    else
        numeratorMiddle = 2.0;

    for (unsigned i = numSections; i < 8; ++i)
    {
        sectionGain[i] = 0.0;
        feedback1[i] = 0.0;
        feedback2[i] = 0.0;
        w0Left[i] = 0.0;
        w0Right[i] = 0.0;
        w1Right[i] = 0.0;
        w1Left[i] = 0.0;
        w2Right[i] = 0.0;
        w2Left[i] = 0.0;
    }

    for (unsigned i = 0; i < numSections; ++i)
    {
        const double n = (double) numSections;
        poleSine = sineWithinQuarterTurn ((1.5707963267948966 / n) * (double) i + 0.7853981633974483 / n);
        const double r = poleSine;
        const double s = 2.0 * a * r + prewarpedSquared + 1.0;

        if (isHighpass)
            sectionGain[i] = 1.0 / s;
        else
            sectionGain[i] = prewarpedSquared / s;

        feedback1[i] = 2.0 * (1.0 - prewarpedSquared) / s;
        feedback2[i] = (2.0 * a * r - prewarpedSquared - 1.0) / s;
    }

    if (hasFirstOrderSection)
    {
        // The cutoff as given: the first-order section has neither the limit nor the prewarping.
        const double w = cutoff * 6.283185307179586;
        const double t = 2.0 * rate;
        const double inverse = (w + t) == 0.0 ? 0.0 : 1.0 / (w + t);
        firstOrderFeedback = (t - w) * inverse;
        firstOrderForward = inverse * w;
    }
}

void ButterworthFilter::process (double& left, double& right)
{
    for (unsigned i = 0; i < numSections; ++i)
    {
        double x = left;
        w0Left[i] = w1Left[i] * feedback1[i] + feedback2[i] * w2Left[i] + x;
        x = (numeratorMiddle * w1Left[i] + w0Left[i] + w2Left[i]) * sectionGain[i];
        w2Left[i] = w1Left[i];
        w1Left[i] = w0Left[i];
        left = x;

        x = right;
        w0Right[i] = w1Right[i] * feedback1[i] + feedback2[i] * w2Right[i] + x;
        x = (numeratorMiddle * w1Right[i] + w0Right[i] + w2Right[i]) * sectionGain[i];
        w2Right[i] = w1Right[i];
        w1Right[i] = w0Right[i];
        right = x;
    }

    if (hasFirstOrderSection)
    {
        double x = left;
        firstOrderOlderInputLeft = firstOrderInputLeft;
        double y = (firstOrderInputLeft + x) * firstOrderForward + firstOrderFeedback * firstOrderOutputLeft;
        firstOrderInputLeft = x;
        firstOrderOutputLeft = y;

        if (isHighpass)
            left = x - y;
        else
            left = y;

        x = right;
        firstOrderOlderInputRight = firstOrderInputRight;
        y = (firstOrderInputRight + x) * firstOrderForward + firstOrderFeedback * firstOrderOutputRight;
        firstOrderInputRight = x;
        firstOrderOutputRight = y;

        if (isHighpass)
            right = x - y;
        else
            right = y;
    }
}

void ResonancePeak::design (double rate, double frequency, double bandwidthOctaves)
{
    if (designed && rate == designedRate && frequency == designedFrequency && 20.0 == designedGainDb
        && bandwidthOctaves == designedBandwidth)
        return;

    designedRate = rate;
    designedFrequency = frequency;
    designedGainDb = 20.0;
    designedBandwidth = bandwidthOctaves;
    designed = true;
    ++designCount;

    const double w = frequency * 6.283185307179586 / rate;
    const double s = sine (w);
    const double c = cosine (w);
    const double alpha = hyperbolicSine (bandwidthOctaves * 0.3465735912322998 * w / s) * s;

    b1 = -2.0 * c;
    a1 = -2.0 * c;
    b0 = alpha * 3.1622776601683795 + 1.0;
    b2 = 1.0 - alpha * 3.1622776601683795;
    a0 = alpha * 0.31622776601683794 + 1.0;
    a2 = 1.0 - alpha * 0.31622776601683794;
}

void ResonancePeak::process (double& left, double& right)
{
    if (! designed)
        return;

    const double g = 1.0 / a0;

    inputLeft = left;
    const double yLeft =
        g * b0 * inputLeft + g * b1 * input1Left + g * b2 * input2Left - g * a1 * output1Left - g * a2 * output2Left;
    input2Left = input1Left;
    input1Left = inputLeft;
    output2Left = output1Left;
    output1Left = yLeft;
    left = yLeft;

    inputRight = right;
    const double yRight = g * b0 * inputRight + g * b1 * input1Right + g * b2 * input2Right - g * a1 * output1Right
                          - g * a2 * output2Right;
    input2Right = input1Right;
    input1Right = inputRight;
    output2Right = output1Right;
    output1Right = yRight;
    right = yRight;
}

void GrungeLadder::configure (int stages, bool highpass, double cutoff, double resonance, double grungeGain,
                              double rate)
{
    isHighpass = highpass;
    numStages = stages;
    sampleRate = rate;

    // For tests alone: none of these enters the sound.
    limitedCutoff = limitCutoff (cutoff, rate);
    prewarped = tangent (limitedCutoff * 3.141592653589793 / rate);
    prewarpedSquared = prewarped * prewarped;

    if (isHighpass)
        numeratorMiddle = -2.0;
    else
        numeratorMiddle = 2.0;

    const double w = cutoff * 6.283185307179586;
    const double t = 2.0 * rate;
    const double inverse = (w + t) == 0.0 ? 0.0 : 1.0 / (w + t);
    poleCoefficient = (t - w) * inverse;
    forwardCoefficient = inverse * w;
    inputCoefficient = 1.0 - poleCoefficient;
    grunge = (resonance * resonance * grungeGain) * (resonance * resonance);
}

void GrungeLadder::process (double& left, double& right)
{
    const double a = poleCoefficient;
    const double b = inputCoefficient;
    const double k = grunge;

    for (int i = 0; i < numStages; ++i)
    {
        {
            const double x = left;
            const double y = stateLeft[i];
            input2Left[i] = input1Left[i];
            input1Left[i] = x;
            const double p = b * x + y * a;
            const double d = std::abs (x - p);

            if (! isHighpass)
            {
                const double e = b / (k * d + 1.0);
                const double newY = x * e + (1.0 - e) * y;
                stateLeft[i] = newY;
                left = newY;
            }
            else
            {
                stateLeft[i] = p;
                const double e = a / (k * d + 1.0);
                left = x - (e * p + (1.0 - e) * x);
            }
        }

        {
            const double x = right;
            const double y = stateRight[i];
            input2Right[i] = input1Right[i];
            input1Right[i] = x;
            const double p = b * x + y * a;
            const double d = std::abs (x - p);

            if (! isHighpass)
            {
                const double e = b / (k * d + 1.0);
                const double newY = x * e + (1.0 - e) * y;
                stateRight[i] = newY;
                right = newY;
            }
            else
            {
                stateRight[i] = p;
                const double e = a / (k * d + 1.0);
                right = x - (e * p + (1.0 - e) * x);
            }
        }
    }
}

} // namespace reference
