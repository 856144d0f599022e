// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <span>

#include "dsp/simd/Lanes.h"

/** Frames in one block at the most: long enough to fill a pipeline of stages and to make up for getting there. */
inline constexpr std::size_t maxBlockFrames = 512;

/** The same while every frame has coefficients of its own: short enough for all of them to stay near the processor. */
inline constexpr std::size_t maxBatchFrames = 64;

/** Samples of both channels, as the host gives them. */
struct SampleBlock
{
    float* left;
    float* right;
    std::size_t size;

    /** The first count of them. */
    [[nodiscard]] SampleBlock first (std::size_t count) const noexcept { return { left, right, count }; }

    /** All but the first count of them. */
    [[nodiscard]] SampleBlock after (std::size_t count) const noexcept
    {
        return { left + count, right + count, size - count };
    }
};

/** Consecutive frames in double precision, processed in place. */
using StereoBlock = std::span<StereoPair>;

/** Converts samples to as many frames, exactly. */
inline void widen (SampleBlock samples, StereoBlock frames) noexcept
{
    std::size_t i = 0;

    for (; i + 4 <= frames.size(); i += 4)
        widenFour (samples.left + i, samples.right + i, &frames[i]);

    for (; i < frames.size(); ++i)
        frames[i] = StereoPair::widened (samples.left[i], samples.right[i]);
}

/** Rounds frames to as many samples. */
inline void narrow (StereoBlock frames, SampleBlock samples) noexcept
{
    std::size_t i = 0;

    for (; i + 4 <= frames.size(); i += 4)
        narrowFour (&frames[i], samples.left + i, samples.right + i);

    for (; i < frames.size(); ++i)
        frames[i].narrowTo (samples.left[i], samples.right[i]);
}

/** Converts samples, at most maxBlockFrames of them, to double, has the frames processed, and converts them back to float in
    place. */
template <typename Process>
void processWidened (SampleBlock samples, Process process) noexcept
{
    assert (samples.size <= maxBlockFrames);

    std::array<StereoPair, maxBlockFrames> storage;
    const auto frames = StereoBlock (storage).first (samples.size);

    widen (samples, frames);
    process (frames);
    narrow (frames, samples);
}
