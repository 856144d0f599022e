// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <span>

#include "dsp/filters/GrungeLadder.h"

namespace avx2
{

/** The stages of a ladder, two in a register. */
struct LadderPipeline
{
    bool isHighpass;

    /** One to GrungeLadder::maxStages of them. */
    std::span<StereoPair> state;

    /** One for all frames, or one for each. */
    const GrungeLadder::Coefficients* coefficients;
    bool perFrame;

    /** Processed in place. */
    StereoBlock frames;

    /** Runs all frames. */
    void process() const noexcept;
};

} // namespace avx2
