// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "dsp/simd/FrameRun.h"
#include "dsp/simd/StereoPair.h"

/** A Butterworth highpass or lowpass of order 0, 1, 2, 4 or 8 for two channels with common coefficients: a cascade of
    second-order sections in direct form II, and for order 1 a first-order section in their place.

    The sections come from the bilinear transform with tangent prewarping. The first-order section is neither prewarped nor
    limited to half the rate, and its highpass is the complement of its lowpass.
    Source: S. Butterworth, "On the Theory of Filter Amplifiers", 1930, for the poles.
    Audio thread only; never allocates. */
class ButterworthFilter
{
public:
    static constexpr std::size_t maxSections = 8;

    /** What a run of frames needs at the most: order 8. */
    static constexpr std::size_t maxSectionsOfRun = 4;

    /** The coefficients of a run of frames, one design per frame. */
    struct Series
    {
        using Values = std::array<double, maxDesigns>;

        std::array<Values, maxSectionsOfRun> sectionGain, feedback1, feedback2;
        Values firstOrderForward, firstOrderFeedback;
    };

    /** Recomputes all coefficients and keeps the delay lines of the sections that stay in use. A section that falls out
        of use is cleared, so that it comes back from silence; the first-order section never is.
        @param order          of the filter: its lowest bit selects the first-order section, half of it is the number of
                              second-order ones
        @param cutoff         the -3 dB frequency, Hz; the sections take at most 0.498 times the rate
        @param newSampleRate  Hz */
    void design (unsigned order, bool highpass, double cutoff, double newSampleRate) noexcept;

    /** Designs once for each frame of a run, as so many calls of design would, and leaves the last design in force.
        @param cutoffs  Hz, at most maxDesigns of them and at least one */
    void designSeries (unsigned order, bool highpass, std::span<const float> cutoffs, double newSampleRate,
                       Series& series) noexcept;

    /** Runs one frame in place. */
    void process (double& left, double& right) noexcept;

    /** Runs frames through a highpass and then a lowpass as they are designed, in place. */
    static void processRun (ButterworthFilter& first, ButterworthFilter& second, FrameRun frames) noexcept;

    /** The same straight on the samples, of which there may be maxRunFrames: the conversion overlaps with the filters. */
    static void processRun (ButterworthFilter& first, ButterworthFilter& second, SampleRun samples) noexcept;

    /** The same with coefficients of each frame's own. */
    static void processRun (ButterworthFilter& first, const Series& firstSeries, ButterworthFilter& second,
                            const Series& secondSeries, FrameRun frames) noexcept;

    /** Runs frames through this filter alone. */
    void processRun (FrameRun frames) noexcept;

    /** The same with coefficients of each frame's own. */
    void processRun (const Series& series, FrameRun frames) noexcept;

    bool isHighpass = false;
    std::uint32_t numSections = 0;
    bool hasFirstOrderSection = false;
    double sampleRate = 0.0;
    double limitedCutoff = 0.0;
    double prewarped = 0.0;
    double prewarpedSquared = 0.0;
    double poleSine = 0.0;
    double numeratorMiddle = 2.0;
    std::array<double, maxSections> sectionGain {};
    std::array<double, maxSections> feedback1 {};
    std::array<double, maxSections> feedback2 {};
    std::array<StereoPair, maxSections> w1 {};
    std::array<StereoPair, maxSections> w2 {};
    double firstOrderForward = 0.0;
    double firstOrderFeedback = 0.0;
    StereoPair firstOrderOutput {};
    StereoPair firstOrderInput {};

private:
    void setOrder (unsigned order, bool highpass, double newSampleRate) noexcept;
    void designSections() noexcept;
    void designFirstOrder (double cutoff) noexcept;
    void processFirstOrder (FrameRun frames) noexcept;
    void processFirstOrder (const Series& series, FrameRun frames) noexcept;
};
