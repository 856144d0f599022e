// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <functional>
#include <vector>

#include "reference/ReferenceEngine.h"
#include "system/daw/Ardour.h"

/** The expected sound of a song: the reference engine is given what Ardour gives a plug-in during an export.

    - At first the transport is stopped at frame 256 for some blocks of 1024 frames, for silence. How many depends on how long
      the export takes to begin: about a hundred.
    - Then it rolls, from frame -768 on: one block up to 0, one up to 256, and from there blocks of 1024.
    - A song position is rounded to ticks, 1920 to the beat, and reported once per block.
    - An automated parameter is set once per block, to what its lane says at the block's end, rounded to ticks. Between two
      points a lane is straight in ticks.
    - Both channels are there, on a mono track too.
    - All other parameters have the values of the saved state, which has four decimals. */
class ReferenceSong
{
public:
    /** @param songToPlay  with two channels; it must live as long as this */
    explicit ReferenceSong (const Ardour::Song& songToPlay);

    static constexpr int blockSize = 1024;
    static constexpr int framesBeforeStart = 768;
    static constexpr int firstBlock = 256;

    struct Match
    {
        /** Frames that the engine has processed before the sound begins. */
        int framesBefore = 0;

        /** Frames from the beginning on that are the same, bit for bit. */
        int numSame = 0;
    };

    /** Tries every number of blocks with a stopped transport, and finds the one with which most frames of the two channels
        match. */
    [[nodiscard]] Match bestMatch (const juce::AudioBuffer<float>& heard) const;

    /** The blocks of a rolling transport that begin before the end: first frame and length. */
    [[nodiscard]] static std::vector<std::pair<int, int>> rollingBlocks (int numFrames);

    /** The position of a lane at the end of a block. The lane's first segment is level. */
    [[nodiscard]] static float positionAtEnd (const std::vector<Ardour::Point>& lane, int endFrame);

private:
    [[nodiscard]] int countSame (const reference::Engine& started, const juce::AudioBuffer<float>& heard) const;
    void automate (reference::Engine& engine, int endFrame) const;

    const Ardour::Song& song;
};
