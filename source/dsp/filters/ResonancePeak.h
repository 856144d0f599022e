// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "dsp/simd/StereoBlock.h"

/** One peaking section of fixed +20 dB gain and settable bandwidth, for two channels with common coefficients. What it
    adds to the dry signal, scaled by the resonance amount and limited by a sine, is the resonance of the Butterworth family:

        x + sin (clamp (amount (peak (x) - x), -pi/2, pi/2))

    The limit lets the resonance ring without ever adding more than 1 to a sample. A narrower bandwidth rings longer; the
    steeper slopes have the narrower ones.
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

    /** The coefficients of a batch of frames, one design per frame. */
    struct Series
    {
        using Values = std::array<double, maxBatchFrames>;

        /** Those of one frame. */
        [[nodiscard]] Coefficients at (std::size_t frame) const noexcept
        {
            return { b0[frame], b1[frame], b2[frame], a0[frame], b1[frame], a2[frame] };
        }

        Values b0, b1, b2, a0, a2;
    };

    /** True if a resonance of this amount runs at all; below it the section and its state stand still. */
    [[nodiscard]] static bool isAudible (float amount) noexcept { return amount > 1.0e-7f; }

    /** Recomputes the coefficients if anything differs from the last design; the delay lines are kept.
        @param frequency  of the peak, Hz. Not limited: at half the rate and its multiples the coefficients may be
                          infinite or NaN. */
    void design (double sampleRate, double frequency, double bandwidthOctaves) noexcept;

    /** Designs once for each frame of a batch, and leaves the last design whose amount is audible in force.
        @param cutoffs  Hz, of all frames of the batch so far, at most maxBatchFrames of them
        @param first    the frame to begin with; those before it keep their designs
        @param ratio    of the peak's frequency to the cutoff
        @param amounts  0 to 10, one per frame */
    void designSeries (double sampleRate, std::span<const double> cutoffs, std::size_t first, double ratio,
                       double bandwidthOctaves, std::span<const float> amounts, Series& series) noexcept;

    /** Runs one frame in place; before the first design it leaves the frame and its own state alone. */
    void process (double& left, double& right) noexcept;

    /** Adds the resonance to each frame.
        @param amount  0 to 10, audible */
    void addResonance (float amount, StereoBlock frames) noexcept;

    /** The same with coefficients and amounts of each frame's own; a frame whose amount is not audible stays as it is.
        @param amounts  one per frame */
    void addResonance (const Series& series, std::span<const float> amounts, StereoBlock frames) noexcept;

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

private:
    void keep (double sampleRate, double frequency, double bandwidthOctaves, const Coefficients& coefficients) noexcept;
};
