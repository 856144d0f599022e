// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <utility>
#include <vector>

#include "reference/ReferenceEngine.h"
#include "system/daw/Ardour.h"

/** The expected sound of a song: the reference engine is given what Ardour gives a plug-in during an export.

    - At first the transport is stopped for some blocks of 1024 frames, for silence. How many depends on how long the export
      takes to begin: about a hundred. It stands a few frames behind the start, nearly always 256; on a busy machine now and
      then 272. With Ardour 8 some blocks come before it has got there: they stand at frame 0, which counts as no position.
    - Then it rolls, from a whole number of blocks before that place: up to 0, up to the place where it has stood, and from
      there on blocks of 1024. One block before is the rule, and two have been seen.
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

    /** How an export's blocks lie on the song. */
    struct Alignment
    {
        /** The frame at which the transport stands at first, and where the song's first block ends. */
        int standsAt = 256;

        /** From so many blocks before that frame on it rolls. */
        int rollingBlocksBefore = 1;

        /** So many blocks stand at frame 0 before all others. */
        int blocksAtZero = 0;

        [[nodiscard]] int framesBeforeStart() const noexcept { return rollingBlocksBefore * blockSize - standsAt; }

        /** The blocks of the rolling transport that begin before the end: first frame and length. */
        [[nodiscard]] std::vector<std::pair<int, int>> rollingBlocks (int numFrames) const;
    };

    struct Match
    {
        Alignment alignment;

        /** Frames that the engine has processed before the sound begins. */
        int framesBefore = 0;

        /** Frames from the beginning on that are the same, bit for bit. */
        int numSame = 0;
    };

    /** Tries every number of blocks with a stopped transport, first with the usual alignment and then with others, and finds
        that with which most frames of the two channels match. */
    [[nodiscard]] Match bestMatch (const juce::AudioBuffer<float>& heard) const;

    /** The position of a lane at the end of a block. The lane's first segment is level. */
    [[nodiscard]] static float positionAtEnd (const std::vector<Ardour::Point>& lane, int endFrame);

private:
    [[nodiscard]] reference::Engine startedEngine (Alignment alignment) const;
    [[nodiscard]] Match bestMatch (const juce::AudioBuffer<float>& heard, Alignment alignment) const;
    [[nodiscard]] int countSame (const reference::Engine& started, const juce::AudioBuffer<float>& heard,
                                 Alignment alignment) const;
    void automate (reference::Engine& engine, int endFrame) const;

    const Ardour::Song& song;
};
