// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <span>

#include "dsp/simd/FrameRun.h"
#include "dsp/simd/StereoPair.h"

/** One peaking section of fixed +20 dB gain and settable bandwidth, for two channels with common coefficients. What it
    adds to the dry signal, limited by a sine, is the resonance of the Butterworth family.
    Source: R. Bristow-Johnson, "Cookbook formulae for audio EQ biquad filter coefficients", peaking EQ, bandwidth form.
    Audio thread only; never allocates. */
class ResonancePeak
{
public:
    /** A section: the numbers of its numerator and, from a0 on, of its denominator. */
    struct Coefficients
    {
        double b0, b1, b2, a0, a1, a2;
    };

    /** The coefficients of a run of frames, one design per frame. */
    using Series = std::array<Coefficients, maxDesigns>;

    /** Recomputes the coefficients if anything differs from the last design; the delay lines are kept.
        @param frequency  of the peak, Hz. Not limited: at half the rate and its multiples the coefficients may be
                          infinite or NaN. */
    void design (double sampleRate, double frequency, double bandwidthOctaves) noexcept;

    /** Designs once for each frame of a run, as so many calls of design would.
        @param cutoffs  Hz, at most maxDesigns of them
        @param ratio    of the peak's frequency to the cutoff */
    void designSeries (double sampleRate, std::span<const float> cutoffs, double ratio, double bandwidthOctaves,
                       Series& series) noexcept;

    /** Runs one frame in place; before the first design it leaves the frame and its own state alone. */
    void process (double& left, double& right) noexcept;

    /** Adds the resonance to each frame of a run: the sine of what the section would add, times the frame's amount,
        within a quarter of a circle.
        @param amounts  one per frame, 0 to 10 */
    void addResonance (std::span<const float> amounts, FrameRun frames) noexcept;

    /** The same with coefficients of each frame's own. */
    void addResonance (const Series& series, std::span<const float> amounts, FrameRun frames) noexcept;

    double b0 = 0.0, b1 = 0.0, b2 = 0.0;

    /** a0 is not normalised away: every frame divides by it. */
    double a0 = 0.0, a1 = 0.0, a2 = 0.0;

    /** The two earlier inputs and outputs of the section. */
    struct DelayLine
    {
        StereoPair input1, input2, output1, output2;
    };

    DelayLine delayLine {};
    double designedRate = -1.0;
    double designedFrequency = -1.0;
    double designedGainDb = -1.0;
    double designedBandwidth = -1.0;
    bool designed = false;
};
