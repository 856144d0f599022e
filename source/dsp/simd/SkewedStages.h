// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <utility>

/** One turn in which every stage has a frame. */
template <typename Stages, std::size_t... i>
void runEachStage (Stages& stages, std::size_t turn, std::index_sequence<i...>) noexcept
{
    (stages.template run<i> (turn - i), ...);
}

/** At both ends some stages have no frame: one that is not there yet wraps to a huge number. */
template <typename Stages, std::size_t... i>
void runStagesWithAFrame (Stages& stages, std::size_t turn, std::size_t numFrames, std::index_sequence<i...>) noexcept
{
    ((turn - i < numFrames ? stages.template run<i> (turn - i) : void()), ...);
}

/** Sends frames through a row of stages of which each waits for its own previous frame, and for the stage before it.

    Taken frame by frame, a row of n stages is one chain of n dependent results per frame, and the processor idles. Taken
    along a diagonal, with stage i on frame n - i, the stages of one turn have nothing to do with each other and overlap;
    every stage still sees every frame in order, so that not a bit changes.

    Stages must offer `template <std::size_t i> void run (std::size_t frame)`. What they keep from frame to frame lives in
    registers only if it is never indexed by a variable and no lambda refers to it: hence the index sequences. */
template <std::size_t numStages, typename Stages>
void runSkewed (std::size_t numFrames, Stages& stages) noexcept
{
    constexpr auto all = std::make_index_sequence<numStages> {};

    for (std::size_t turn = 0; turn + 1 < numFrames + numStages; ++turn)
    {
        if (turn + 1 >= numStages && turn < numFrames)
            runEachStage (stages, turn, all);
        else
            runStagesWithAFrame (stages, turn, numFrames, all);
    }
}
