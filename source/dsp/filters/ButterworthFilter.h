// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "dsp/filters/SectionCascade.h"

/** A Butterworth highpass or lowpass of order 0, 1, 2, 4 or 8 for two channels with common coefficients: a cascade of
    second-order sections, and for order 1 a first-order section in their place. A higher order falls off more steeply, 6 dB
    per octave and order, and is as flat below.

    Order n has its poles on a circle around the origin of the s plane, at equal angles. The bilinear transform with tangent
    prewarping brings them to the z plane and the -3 dB point to the cutoff. With a = tan (pi cutoff / rate) and the sine r
    of a pole pair's angle, a section is

        s = a^2 + 2 a r + 1,   gain = a^2 / s (lowpass) or 1 / s (highpass),
        feedback1 = 2 (1 - a^2) / s,   feedback2 = (2 a r - a^2 - 1) / s,

    whose pole pair lies inside the unit circle for every a above 0. How a section runs, and why it may be redesigned with
    every frame, stands in SectionCascade.h. The first-order section is neither prewarped nor limited to half the rate, and
    its highpass is the complement of its lowpass: projects sound like that.
    Source: S. Butterworth, "On the Theory of Filter Amplifiers", 1930, for the poles.
    Audio thread only; never allocates. */
class ButterworthFilter
{
public:
    static constexpr std::size_t maxSections = 8;
    static constexpr unsigned maxOrder = 2 * maxSections + 1;
    static_assert (2 * maxSections <= SectionCascade::maxSections, "two filters share a cascade");

    /** The coefficients of a batch of frames, one design per frame. */
    struct Series
    {
        using Values = std::array<double, maxBatchFrames>;

        /** Those of one section. */
        struct Section
        {
            Values gain, feedback1, feedback2;
        };

        std::array<Section, maxSections> sections;
        Values firstOrderForward, firstOrderFeedback;
    };

    /** Recomputes all coefficients and keeps the delay lines of the sections that stay in use. A section that falls out
        of use is cleared, so that it comes back from silence; the first-order section never is.
        @param order          of the filter, at most maxOrder: its lowest bit selects the first-order section, half of it is
                              the number of second-order ones
        @param cutoff         the -3 dB frequency, Hz; the sections take at most 0.498 times the rate
        @param newSampleRate  Hz */
    void design (unsigned order, bool highpass, double cutoff, double newSampleRate) noexcept;

    /** Designs once for each frame of a batch, as so many calls of design would, and leaves the last design in force.
        @param cutoffs  Hz, of all frames of the batch so far, at most maxBatchFrames of them
        @param first    the frame to begin with; those before it keep their designs */
    void designSeries (unsigned order, bool highpass, std::span<const double> cutoffs, std::size_t first,
                       double newSampleRate, Series& series) noexcept;

    /** Runs one frame in place. */
    void process (double& left, double& right) noexcept;

    /** Puts this filter, as it is designed, behind what is in the cascade. */
    void addTo (SectionCascade& cascade) noexcept;

    /** The same with coefficients of each frame's own. */
    void addTo (SectionCascade& cascade, const Series& series) noexcept;

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
    using Cutoffs = std::span<const double>;

    void setOrder (unsigned order, bool highpass, double newSampleRate) noexcept;
    void designSections (Cutoffs cutoffs, std::size_t first, Series& series) noexcept;
    void designFirstOrder (Cutoffs cutoffs, std::size_t first, Series& series) noexcept;
    void processFirstOrder (StereoBlock frames, std::span<const double> forward,
                            std::span<const double> feedback) noexcept;
};
