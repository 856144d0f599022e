// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <utility>

/** Sends frames through a row of stages of which each waits for its own previous frame, and for the stage before it.

    Taken frame by frame, a row of n stages is one chain of n dependent results per frame, and the processor idles. Taken
    along a diagonal, with stage i on frame n - i, the stages of one turn have nothing to do with each other and overlap;
    every stage still sees every frame in order, so that not a bit changes.

    Stages must offer `template <std::size_t i> void run (std::size_t frame)`. */
template <std::size_t numStages, typename Stages>
void runSkewed (std::size_t numFrames, Stages& stages) noexcept
{
    const auto runEach = [&]<std::size_t... i> (std::size_t turn, std::index_sequence<i...>)
    {
        (stages.template run<i> (turn - i), ...);
    };

    // At both ends some stages have no frame. A turn before a stage's first one wraps to a huge frame number.
    const auto runThoseWithAFrame = [&]<std::size_t... i> (std::size_t turn, std::index_sequence<i...>)
    {
        ((turn - i < numFrames ? stages.template run<i> (turn - i) : void()), ...);
    };

    constexpr auto all = std::make_index_sequence<numStages> {};

    for (std::size_t turn = 0; turn + 1 < numFrames + numStages; ++turn)
    {
        if (turn + 1 >= numStages && turn < numFrames)
            runEach (turn, all);
        else
            runThoseWithAFrame (turn, all);
    }
}
