// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include <benchmark/benchmark.h>

/** Stereo noise that does not come back for longer than a branch predictor remembers. */
class Noise
{
public:
    Noise();

    struct Block
    {
        std::span<const float> left, right;
    };

    /** The next frames. */
    [[nodiscard]] Block next (std::size_t numFrames) noexcept;

private:
    std::vector<float> left, right;
    std::size_t position = 0;
};

/** Something that processes sound and is timed while it does. */
class Contestant
{
public:
    virtual ~Contestant() = default;

    /** Takes the sound over. Not timed. */
    virtual void take (const Noise::Block& block) = 0;

    /** Processes what it has taken. Timed. */
    virtual void run() = 0;
};

/** Measures contestants against each other: in every round each of them processes the same fresh block of sound, and the
    shortest time that each has ever taken counts. Whatever else the machine does falls on all of them alike and is left
    out by the minimum, so that a ratio of two minima repeats within a few percent even on a busy machine.

    A round is one iteration of Google Benchmark, which chooses their number and names, filters and repeats the rows. Its
    own time is the mean of whole rounds, which nobody needs: the results go into its counters. */
class Contest
{
public:
    explicit Contest (int numFramesOfRound = 512) : numFrames (numFramesOfRound) {}

    /** @param counter  the name of the result: nanoseconds per frame */
    void add (const char* counter, std::unique_ptr<Contestant> contestant);

    /** Runs all rounds and writes the counters. */
    void run (benchmark::State& state);

    /** The nanoseconds of one contestant, after the run. */
    [[nodiscard]] double nanosecondsPerFrame (std::size_t index) const;

private:
    struct Entry
    {
        const char* counter;
        std::unique_ptr<Contestant> contestant;
        double fastest;
    };

    int numFrames;
    Noise noise;
    std::vector<Entry> entries;
};
