// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "dsp/simd/StereoBlock.h"

/** A chain of up to eight one-pole stages for two channels, 6 dB per octave each, whose pole gives way, frame by frame, the
    further a stage's linear output would lie from its input: a loud or fast signal lowers the filter's own cutoff. There
    is no feedback around the chain, and so no resonance peak.

    A stage is the first-order bilinear lowpass without prewarping, with pole a = (2 rate - w) / (2 rate + w), w = 2 pi cutoff,
    and b = 1 - a. With its prediction p = b x + a y and its distance d = |x - p|,

        lowpass:   e = b / (1 + k d),   y becomes e x + (1 - e) y, which is the output;
        highpass:  e = a / (1 + k d),   y becomes p, and the output is x - (e p + (1 - e) x).

    k, the grunge, is the fourth power of the resonance amount times a gain. The cutoff is not limited to half the rate.
    Audio thread only; never allocates. */
class GrungeLadder
{
public:
    static constexpr std::size_t maxStages = 8;

    /** What a stage needs of a configuration. */
    struct Coefficients
    {
        double poleCoefficient, inputCoefficient;

        /** Strength of the signal dependence. */
        double grunge;
    };

    /** The coefficients of a batch of frames, one configuration per frame. */
    using Series = std::array<Coefficients, maxBatchFrames>;

    /** Sets the coefficients and keeps all state, also that of stages that fall out of use.
        @param stages         0 to 8
        @param cutoff         Hz
        @param resonance      0 to 10: its fourth power is the strength of the signal dependence
        @param grungeGain     scales that strength
        @param newSampleRate  Hz */
    void configure (int stages, bool highpass, double cutoff, double resonance, double grungeGain,
                    double newSampleRate) noexcept;

    /** Configures once for each frame of a batch, as so many calls of configure would.
        @param cutoffs     Hz, of all frames of the batch so far, at most maxBatchFrames of them
        @param resonances  as many
        @param first       the frame to begin with; those before it keep their coefficients */
    void configureSeries (int stages, bool highpass, std::span<const double> cutoffs, std::span<const float> resonances,
                          std::size_t first, double grungeGain, double newSampleRate, Series& series) noexcept;

    /** Runs one frame in place. */
    void process (double& left, double& right) noexcept;

    /** Runs frames in place, as it is configured. */
    void process (StereoBlock frames) noexcept;

    /** The same with coefficients of each frame's own. */
    void process (const Series& series, StereoBlock frames) noexcept;

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
};
