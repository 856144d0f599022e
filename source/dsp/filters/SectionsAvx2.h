// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <span>

#include "dsp/filters/SectionCascade.h"

namespace avx2
{

/** Sections in series, two of them in a register of four doubles: twice as many in one pipeline, at the same pace. */
struct SectionPipeline
{
    static constexpr std::size_t maxSections = 8;

    /** One to maxSections of them. */
    std::span<const SectionCascade::Section> sections;

    /** Each frame has coefficients of its own. */
    bool perFrame;

    /** What is between the sections, and what goes in and comes out, in place, unless there are samples. */
    StereoBlock frames;

    /** What goes in and comes out; null: the frames. Only if the coefficients stand. */
    float* left;
    float* right;

    /** Runs all frames. */
    void process() const noexcept;
};

} // namespace avx2
