// SPDX-License-Identifier: AGPL-3.0-or-later
#include <numeric>
#include <vector>

#include <gmock/gmock.h>

#include "host/play/LoopingSong.h"

namespace
{
constexpr double rate = 48000.0;
constexpr int framesPerBeat = 24000; // at 120 beats per minute
constexpr int framesPerBar = 4 * framesPerBeat;

/** A sound in which each frame is its own number. */
juce::AudioBuffer<float> numbered (int numFrames)
{
    juce::AudioBuffer<float> sound (1, numFrames);
    std::iota (sound.getWritePointer (0), sound.getWritePointer (0) + numFrames, 0.0f);
    return sound;
}

Transport::Settings startingAt (double beat)
{
    Transport::Settings song;
    song.startBeat = beat;
    return song;
}

/** The frames that come in the next blocks, and how long each block was. */
struct Heard
{
    std::vector<int> frames;
    std::vector<int> lengths;
};

Heard listen (LoopingSong& song, int numBlocks, int blockSize)
{
    juce::AudioBuffer<float> buffer (1, blockSize);
    Heard heard;

    for (int block = 0; block < numBlocks; ++block)
    {
        heard.lengths.push_back (song.read (buffer, blockSize));

        for (int frame = 0; frame < heard.lengths.back(); ++frame)
            heard.frames.push_back ((int) buffer.getSample (0, frame));
    }

    return heard;
}

double beatOf (const LoopingSong& song) { return *song.getPosition()->getPpqPosition(); }

using testing::ElementsAre;
} // namespace

TEST (LoopingSong, BeginsAgainWithoutAGapAndEndsABlockThere)
{
    LoopingSong song (numbered (5), rate, {});
    const auto heard = listen (song, 5, 3);

    EXPECT_THAT (heard.frames, ElementsAre (0, 1, 2, 3, 4, 0, 1, 2, 3, 4, 0, 1, 2));
    EXPECT_THAT (heard.lengths, ElementsAre (3, 2, 3, 2, 3));
}

TEST (LoopingSong, TellsTheSongPositionThatRenderTells)
{
    LoopingSong song (numbered (1000), rate, startingAt (32.0));
    Transport render (startingAt (32.0), rate);

    for (const auto frame : { 0, 300, 600, 900, 0 })
    {
        listen (song, 1, 300);
        render.moveTo (frame);
        const auto told = *song.getPosition(), expected = *render.getPosition();

        EXPECT_EQ (told.getPpqPosition(), expected.getPpqPosition()) << frame;
        EXPECT_EQ (told.getTimeInSamples(), expected.getTimeInSamples()) << frame;
        EXPECT_EQ (told.getPpqPositionOfLastBarStart(), expected.getPpqPositionOfLastBarStart()) << frame;
        EXPECT_EQ (told.getBpm(), expected.getBpm());
        EXPECT_TRUE (told.getIsPlaying());
    }
}

TEST (LoopingSong, IsSilentAndStandsWhileItIsHaltedAndGoesOnAtTheSameFrame)
{
    LoopingSong song (numbered (1000), rate, startingAt (32.0));
    listen (song, 1, 100);

    song.toggleHalt();
    EXPECT_THAT (listen (song, 2, 3).frames, ElementsAre (0, 0, 0, 0, 0, 0));
    EXPECT_EQ (beatOf (song), 32.0 + 100.0 / framesPerBeat);
    EXPECT_FALSE (song.getPosition()->getIsPlaying());

    song.toggleHalt();
    EXPECT_THAT (listen (song, 1, 3).frames, ElementsAre (100, 101, 102));
    EXPECT_TRUE (song.getPosition()->getIsPlaying());
}

TEST (LoopingSong, RepeatsTheBarThatPlaysUntilItIsLetGo)
{
    LoopingSong song (numbered (4 * framesPerBar), rate, startingAt (32.0));
    listen (song, 1, framesPerBar + 10);

    song.toggleBarLoop();
    EXPECT_THAT (listen (song, 2, framesPerBar).lengths, ElementsAre (framesPerBar - 10, framesPerBar));
    EXPECT_EQ (beatOf (song), 36.0);
    EXPECT_EQ (listen (song, 1, 1).frames.front(), framesPerBar);

    song.toggleBarLoop();
    listen (song, 2, framesPerBar);
    EXPECT_EQ (song.place().bar, 12);
}

TEST (LoopingSong, RepeatsWhatThereIsOfABarAtItsEnds)
{
    // The first bar begins a beat before the sound, and the last one ends three beats after it.
    LoopingSong song (numbered (framesPerBar), rate, startingAt (1.0));

    song.toggleBarLoop();
    EXPECT_THAT (listen (song, 2, framesPerBar).lengths, ElementsAre (3 * framesPerBeat, 3 * framesPerBeat));
    song.moveByBars (1);
    listen (song, 1, 1);
    EXPECT_THAT (listen (song, 2, framesPerBar).lengths, ElementsAre (3 * framesPerBeat - 1, 3 * framesPerBeat));
}

TEST (LoopingSong, MovesByBarsAtTheSamePlaceInTheBarAndAroundTheEnds)
{
    LoopingSong song (numbered (3 * framesPerBar), rate, startingAt (0.0));
    listen (song, 1, 7);

    for (const auto& [move, expected] :
         std::vector<std::pair<int, int>> { { 1, 1 }, { 1, 2 }, { 1, 0 }, { -1, 2 }, { -4, 1 } })
    {
        song.moveByBars (move);
        EXPECT_EQ (listen (song, 1, 1).frames.front() / framesPerBar, expected);
        EXPECT_EQ (song.place().bar, expected + 1);
    }
}

TEST (LoopingSong, CountsBarsAndBeatsInTheSignatureFromOne)
{
    auto settings = startingAt (0.0);
    settings.timeSignature = { 6, 8 };
    LoopingSong song (numbered (10 * framesPerBeat), rate, settings);
    std::vector<std::pair<int, int>> places;

    for (int eighth = 0; eighth < 8; ++eighth)
    {
        places.emplace_back (song.place().bar, song.place().beat);
        listen (song, 1, framesPerBeat / 2);
    }

    EXPECT_THAT (places, ElementsAre (std::pair (1, 1), std::pair (1, 2), std::pair (1, 3), std::pair (1, 4),
                                      std::pair (1, 5), std::pair (1, 6), std::pair (2, 1), std::pair (2, 2)));
}
