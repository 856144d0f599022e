// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "dsp/simd/StereoPair.h"

/** Frames that are taken together at the most: long enough to fill a row of skewed stages and to make up for getting
    there. */
inline constexpr std::size_t maxRunFrames = 512;

/** The same while every frame has a design of its own: short enough for all coefficients to stay near the processor. */
inline constexpr std::size_t maxDesigns = 64;

/** Samples of both sides, as the host gives them. */
struct SampleRun
{
    float* left;
    float* right;
    std::size_t size;

    /** The first count of them. */
    [[nodiscard]] SampleRun first (std::size_t count) const noexcept { return { left, right, count }; }

    /** All but the first count of them. */
    [[nodiscard]] SampleRun after (std::size_t count) const noexcept
    {
        return { left + count, right + count, size - count };
    }
};

/** Consecutive frames during which nothing of the engine's structure changes, processed in place. */
using FrameRun = std::span<StereoPair>;

/** Widens samples, at most maxRunFrames of them, has the frames processed, and rounds them back. */
template <typename Process>
void processWidened (SampleRun samples, Process process) noexcept
{
    std::array<StereoPair, maxRunFrames> storage;
    const auto frames = FrameRun (storage).first (samples.size);

    widen (samples.left, samples.right, frames);
    process (frames);
    narrow (frames, samples.left, samples.right);
}
