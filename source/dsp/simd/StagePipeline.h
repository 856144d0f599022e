// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <utility>

/** Sends a block of frames through stages in series, in software pipelining: in iteration n stage i processes frame n - i.

    Each stage waits for its own previous frame, and for the stage before it. Taken frame by frame, n stages are one chain of
    n dependent results per frame, and the processor idles. In a pipeline the stages of one iteration have nothing to do
    with each other and overlap; every stage still sees every frame in order, so that not a bit changes.

    Stages must offer `template <std::size_t i> void process (std::size_t frame)`. Their state lives in registers only if it
    is never indexed by a variable and no lambda refers to it: hence the index sequences. */
template <std::size_t numStages>
class StagePipeline
{
public:
    /** Sends frames 0 to numFrames - 1 through all stages. */
    template <typename Stages>
    static void process (Stages& stages, std::size_t numFrames) noexcept
    {
        constexpr auto all = std::make_index_sequence<numStages> {};

        for (std::size_t iteration = 0; iteration + 1 < numFrames + numStages; ++iteration)
        {
            if (iteration + 1 >= numStages && iteration < numFrames)
                processEach (stages, iteration, all);
            else
                processWhereFrameExists (stages, iteration, numFrames, all);
        }
    }

private:
    template <typename Stages, std::size_t... i>
    static void processEach (Stages& stages, std::size_t iteration, std::index_sequence<i...>) noexcept
    {
        (stages.template process<i> (iteration - i), ...);
    }

    /** At both ends some stages have no frame: a frame before the first wraps to a huge number. */
    template <typename Stages, std::size_t... i>
    static void processWhereFrameExists (Stages& stages, std::size_t iteration, std::size_t numFrames,
                                         std::index_sequence<i...>) noexcept
    {
        ((iteration - i < numFrames ? stages.template process<i> (iteration - i) : void()), ...);
    }
};
