// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>

#include "dsp/simd/StereoBlock.h"

/** Second-order sections in series, of one filter or of several that follow each other: the more there are, the more of
    them overlap in the processor, until it is full.

    A section is a biquad in direct form II whose numerator is (1, +-2, 1), for two channels with common coefficients:

        w0 = feedback1 w1 + feedback2 w2 + x
        y  = gain (w0 + numeratorMiddle w1 + w2)

    Why this form may have other coefficients with every frame: w is the input through the poles alone, and all of a section's
    memory. It stays bounded, because every single design is stable (the cutoff is kept below half the rate) and consecutive
    designs are close to each other (the control tick never lets a cutoff jump; it glides with a time constant of 4 ms or
    more). The gain is applied behind the memory, so that a fast sweep is a little louder or softer on its way. Existing songs
    depend on that. At low cutoffs w grows with the square of rate over cutoff; double precision has room for it.

    Sections are collected by add. They run when somebody needs their output (processed), and at the end (finish).
    Audio thread only; never allocates. */
class SectionCascade
{
public:
    /** Two filters of the highest order. */
    static constexpr std::size_t maxSections = 16;

    /** One number for all frames, or one for each. */
    enum class Coefficients
    {
        standing,
        perFrame
    };

    /** One section: its delay line, and where its coefficients lie. */
    struct Section
    {
        StereoPair* w1;
        StereoPair* w2;
        double numeratorMiddle;
        const double* gain;
        const double* feedback1;
        const double* feedback2;
    };

    /** @param newSamples  processed in place, at most maxBlockFrames of them */
    SectionCascade (SampleBlock newSamples, Coefficients newCoefficients) noexcept;

    /** @param newFrames  processed in place; already in double precision */
    SectionCascade (StereoBlock newFrames, Coefficients newCoefficients) noexcept;

    SectionCascade (const SectionCascade&) = delete;
    SectionCascade& operator= (const SectionCascade&) = delete;

    /** Puts a section behind those that are there. */
    void add (const Section& section) noexcept;

    /** The frames behind all sections that have been added so far, to be processed further in place. */
    [[nodiscard]] StereoBlock processed() noexcept;

    /** Runs what has not run yet, and leaves the result where the frames or samples came from. */
    void finish() noexcept;

private:
    const SampleBlock samples;
    const Coefficients coefficients;
    std::array<StereoPair, maxBlockFrames> storage;
    const StereoBlock frames;
    bool areConverted;
    std::array<Section, maxSections> sections;
    std::size_t numSections = 0;
};
