// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <vector>

#include "support/scenario/Scenario.h"

namespace scenario
{

/** What an engine makes of a scenario. */
struct Output
{
    std::vector<float> left;
    std::vector<float> right; // empty in mono
};

/** The same bits, where any NaN equals any other: sign and payload of a NaN are the compiler's business. */
[[nodiscard]] bool isSameSample (float a, float b);

/** Index of the first frame that differs, or -1. */
[[nodiscard]] int firstDifference (const Output& a, const Output& b);

/** Plays a scenario into anything that has these operations, in this order of calls:

        void seedLfo (int lfo, std::uint32_t seed);
        void setParameter (int index, float position);
        void setSampleRate (double hostRate);
        void prepareToPlay();
        void setTransport (const reference::Transport&);
        void process (float* left, float* rightOrNull, int numFrames);
        void blockDone (int blockIndex);            // a place to compare inner state

    @returns the effect's output */
template <typename Player>
Output play (const Scenario& scenario, Player& player)
{
    Output output { scenario.left, scenario.right };

    for (int lfo = 0; lfo < 2; ++lfo)
        player.seedLfo (lfo, scenario.lfoSeeds[(std::size_t) lfo]);

    for (int i = 0; i < reference::Index::count; ++i)
        player.setParameter (i, scenario.positions[(std::size_t) i]);

    std::size_t done = 0;
    int blockIndex = 0;

    for (const Block& block : scenario.blocks)
    {
        player.setSampleRate (block.hostRate);

        if (block.prepare)
            player.prepareToPlay();

        for (const ParameterMove& move : block.moves)
            player.setParameter (move.index, move.position);

        player.setTransport (block.transport);
        player.process (output.left.data() + done, scenario.stereo ? output.right.data() + done : nullptr,
                        block.numFrames);
        player.blockDone (blockIndex++);
        done += (std::size_t) block.numFrames;
    }

    return output;
}

} // namespace scenario
