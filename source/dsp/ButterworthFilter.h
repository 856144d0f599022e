// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>

#include "StereoPair.h"

/** A Butterworth highpass or lowpass of order 0, 1, 2, 4 or 8 for two channels with common coefficients: a cascade of
    second-order sections in direct form II, and for order 1 a first-order section in their place.

    The sections come from the bilinear transform with tangent prewarping. The first-order section is neither prewarped nor
    limited to half the rate, and its highpass is the complement of its lowpass.
    Source: S. Butterworth, "On the Theory of Filter Amplifiers", 1930, for the poles.
    Audio thread only; never allocates after construction. */
class ButterworthFilter
{
public:
    static constexpr unsigned maxSections = 8;

    /** Recomputes all coefficients and keeps the delay lines of the sections that stay in use. A section that falls out
        of use is cleared, so that it comes back from silence; the first-order section never is.
        @param order          of the filter: its lowest bit selects the first-order section, half of it is the number of
                              second-order ones
        @param cutoff         the -3 dB frequency, Hz; the sections take at most 0.498 times the rate
        @param newSampleRate  Hz */
    void design (unsigned order, bool highpass, double cutoff, double newSampleRate) noexcept;

    /** Runs one frame in place. */
    void process (double& left, double& right) noexcept
    {
        StereoPair x { left, right };

        for (unsigned i = 0; i < numSections; ++i)
            processSection (i, x);

        if (hasFirstOrderSection)
            processFirstOrder (x);

        left = x[0];
        right = x[1];
    }

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
    void processSection (unsigned i, StereoPair& x) noexcept
    {
        for (unsigned channel = 0; channel < 2; ++channel)
        {
            const auto w0 = w1[i][channel] * feedback1[i] + feedback2[i] * w2[i][channel] + x[channel];
            x[channel] = (numeratorMiddle * w1[i][channel] + w0 + w2[i][channel]) * sectionGain[i];
            w2[i][channel] = w1[i][channel];
            w1[i][channel] = w0;
        }
    }

    void processFirstOrder (StereoPair& x) noexcept
    {
        for (unsigned channel = 0; channel < 2; ++channel)
        {
            const auto lowpassed = (firstOrderInput[channel] + x[channel]) * firstOrderForward
                                   + firstOrderFeedback * firstOrderOutput[channel];
            firstOrderInput[channel] = x[channel];
            firstOrderOutput[channel] = lowpassed;
            x[channel] = isHighpass ? x[channel] - lowpassed : lowpassed;
        }
    }

    void clearUnusedSections() noexcept;
    void designSections() noexcept;
    void designFirstOrder (double cutoff) noexcept;
};
