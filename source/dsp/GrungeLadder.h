// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cmath>
#include <cstdint>

#include "StereoPair.h"

/** A chain of up to eight one-pole stages for two channels, 6 dB per octave each, whose pole gives way, frame by frame, the
    further a stage's linear output would lie from its input: a loud or fast signal lowers the filter's own cutoff. There
    is no feedback around the chain, and so no resonance peak.

    The stage is the first-order bilinear lowpass without prewarping; the cutoff is not limited to half the rate.
    Audio thread only; never allocates. */
class GrungeLadder
{
public:
    static constexpr int maxStages = 8;

    /** Sets the coefficients and keeps all state, also that of stages that fall out of use.
        @param stages      0 to 8
        @param cutoff      Hz
        @param resonance   0 to 10: its fourth power is the strength of the signal dependence
        @param grungeGain  scales that strength
        @param newSampleRate  Hz */
    void configure (int stages, bool highpass, double cutoff, double resonance, double grungeGain,
                    double newSampleRate) noexcept;

    /** Runs one frame in place. */
    void process (double& left, double& right) noexcept
    {
        StereoPair x { left, right };

        for (int i = 0; i < numStages; ++i)
            processStage (state[(unsigned) i], x);

        left = x[0];
        right = x[1];
    }

    bool isHighpass = false;
    std::int32_t numStages = 0;
    double sampleRate = 0.0;

    // Recorded beside the coefficients; these five play no part in the sound.
    double limitedCutoff = 0.0;
    double prewarped = 0.0;
    double prewarpedSquared = 0.0;
    double numeratorMiddle = 2.0;
    double forwardCoefficient = 0.0;

    double poleCoefficient = 0.0;
    double inputCoefficient = 0.0;
    double grunge = 1.0;
    std::array<StereoPair, maxStages> state {};

private:
    // The two forms are no mirror images: a lowpass stage's memory carries the non-linearity, a highpass stage's stays
    // linear and only its output is modulated.
    void processStage (StereoPair& y, StereoPair& x) const noexcept
    {
        for (unsigned channel = 0; channel < 2; ++channel)
        {
            const auto prediction = inputCoefficient * x[channel] + y[channel] * poleCoefficient;
            const auto distance = std::abs (x[channel] - prediction);

            if (isHighpass)
            {
                const auto e = poleCoefficient / (grunge * distance + 1.0);
                y[channel] = prediction;
                x[channel] = x[channel] - (e * prediction + (1.0 - e) * x[channel]);
            }
            else
            {
                const auto e = inputCoefficient / (grunge * distance + 1.0);
                y[channel] = x[channel] * e + (1.0 - e) * y[channel];
                x[channel] = y[channel];
            }
        }
    }
};
