// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "StereoPair.h"

/** One peaking section of fixed +20 dB gain and settable bandwidth, for two channels with common coefficients. What it
    adds to the dry signal is the resonance of the Butterworth family.
    Source: R. Bristow-Johnson, "Cookbook formulae for audio EQ biquad filter coefficients", peaking EQ, bandwidth form.
    Audio thread only; never allocates. */
class ResonancePeak
{
public:
    /** Recomputes the coefficients if anything differs from the last design; the delay lines are kept.
        @param frequency  of the peak, Hz. Not limited: at half the rate and its multiples the coefficients may be
                          infinite or NaN. */
    void design (double sampleRate, double frequency, double bandwidthOctaves) noexcept;

    /** Runs one frame in place; before the first design it leaves the frame and its own state alone. */
    void process (double& left, double& right) noexcept
    {
        if (! designed)
            return;

        const auto g = 1.0 / a0;
        left = processChannel (0, g, left);
        right = processChannel (1, g, right);
    }

    double b0 = 0.0, b1 = 0.0, b2 = 0.0;

    /** a0 is not normalised away: every frame divides by it. */
    double a0 = 0.0, a1 = 0.0, a2 = 0.0;

    StereoPair input1 {}, input2 {}, output1 {}, output2 {};
    double designedRate = -1.0;
    double designedFrequency = -1.0;
    double designedGainDb = -1.0;
    double designedBandwidth = -1.0;
    bool designed = false;

private:
    [[nodiscard]] double processChannel (unsigned channel, double g, double x) noexcept
    {
        const auto y = g * b0 * x + g * b1 * input1[channel] + g * b2 * input2[channel] - g * a1 * output1[channel]
                       - g * a2 * output2[channel];
        input2[channel] = input1[channel];
        input1[channel] = x;
        output2[channel] = output1[channel];
        output1[channel] = y;
        return y;
    }
};
