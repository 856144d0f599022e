// SPDX-License-Identifier: AGPL-3.0-or-later
#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "support/EngineUnderTest.h"

namespace
{
constexpr auto quietNaN = std::numeric_limits<float>::quiet_NaN();
constexpr auto infinity = std::numeric_limits<float>::infinity();
constexpr double rate = 48000.0;

/** A sound as a function of the frame. */
struct Signal
{
    const char* name;
    std::function<float (std::size_t)> sampleAt;
};

void PrintTo (const Signal& signal, std::ostream* stream) { *stream << signal.name; }

[[nodiscard]] float square (std::size_t frame, float amplitude) { return frame / 48 % 2 == 0 ? amplitude : -amplitude; }

const Signal signals[] {
    { "FullScaleDirectCurrent", [] (std::size_t) { return 1.0f; } },
    { "DirectCurrentAtTheClamp", [] (std::size_t) { return -1000.0f; } },
    { "SquareWaveOf25", [] (std::size_t frame) { return square (frame, 25.0f); } },
    { "Impulses", [] (std::size_t frame) { return frame % 4801 == 0 ? 20.0f : 0.0f; } },
    { "ImpulsesOfTheLargestNumber",
      [] (std::size_t frame) { return frame % 997 == 0 ? std::numeric_limits<float>::max() : 0.0f; } },
    { "Subnormals", [] (std::size_t frame) { return square (frame, std::numeric_limits<float>::min() / 2.0f); } },
    { "SmallestNumbers", [] (std::size_t frame) { return square (frame, std::numeric_limits<float>::min()); } },
    { "Infinities", [] (std::size_t frame) { return square (frame, infinity); } },
    { "AlternatingAtHalfTheRate", [] (std::size_t frame) { return frame % 2 == 0 ? 20.0f : -20.0f; } },
};

[[nodiscard]] EngineUnderTest::Frames framesOf (const Signal& signal, std::size_t numFrames)
{
    EngineUnderTest::Frames frames (numFrames);

    for (std::size_t frame = 0; frame < numFrames; ++frame)
        frames[frame] = { signal.sampleAt (frame), -signal.sampleAt (frame) };

    return frames;
}

/** Every combination that a patch can have of family and slope, both filters with full resonance. */
template <typename Check>
void forEveryFilter (Check check)
{
    for (const auto family : { 0, 1 })
    {
        for (const auto slope : { 1, 2, 3, 4 })
        {
            SCOPED_TRACE (testing::Message() << "family " << family << ", slope " << slope);
            EngineUnderTest engine (rate);
            engine.choose ("filtmode", family);
            engine.choose ("hp_mode", slope);
            engine.choose ("lp_mode", slope);
            engine.set ("hp_reso", 1.0f);
            engine.set ("lp_reso", 1.0f);
            engine.set ("hp_freq", 0.35f);
            engine.set ("lp_freq", 0.65f);
            check (engine);
        }
    }
}

void expectSound (const EngineUnderTest::Frames& frames)
{
    std::size_t numFlaws = 0;

    for (const auto& [left, right] : frames)
        for (const auto sample : { left, right })
            numFlaws += ! std::isfinite (sample) || std::fpclassify (sample) == FP_SUBNORMAL;

    EXPECT_EQ (numFlaws, 0u);
}

class BadAudio : public testing::TestWithParam<Signal>
{
};

/** Noise with one bad sample on one side. */
[[nodiscard]] EngineUnderTest::Frames withOneBadSample (float sample, bool isOnTheLeft)
{
    auto frames = EngineUnderTest::noise (5, 4000);
    (isOnTheLeft ? frames[1000].first : frames[1000].second) = sample;
    return frames;
}

[[nodiscard]] std::size_t countNaNs (const EngineUnderTest::Frames& frames, float std::pair<float, float>::*side)
{
    return (std::size_t) std::count_if (frames.begin(), frames.end(),
                                        [side] (const auto& frame) { return std::isnan (frame.*side); });
}
} // namespace

TEST_P (BadAudio, StaysFiniteAndNeverSubnormal)
{
    const auto input = framesOf (GetParam(), 24000);
    forEveryFilter ([&input] (EngineUnderTest& engine) { expectSound (engine.run (input)); });
}

TEST_P (BadAudio, LeavesSilenceBehindInAButterworthFilterWhenItEnds)
{
    const auto input = framesOf (GetParam(), 4800);

    forEveryFilter (
        [&input] (EngineUnderTest& engine)
        {
            // A ladder that is held back forgets a loud sound only after minutes: it falls, but by no fixed time.
            if (engine.parameter ("filtmode").getValue() > 0.0f)
                return;

            engine.run (input);
            engine.runSilence ((std::size_t) (10.0 * rate));
            EXPECT_TRUE (engine.run (EngineUnderTest::Frames (100)) == EngineUnderTest::Frames (100));
        });
}

TEST_P (BadAudio, NeverRisesInALadderAfterItHasEnded)
{
    const auto peak = [] (const EngineUnderTest::Frames& frames)
    {
        auto result = 0.0f;

        for (const auto& [left, right] : frames)
            result = std::max ({ result, std::abs (left), std::abs (right) });

        return result;
    };

    EngineUnderTest engine (rate);
    engine.choose ("filtmode", 1);
    engine.choose ("hp_mode", 0);
    engine.choose ("lp_mode", 4);
    engine.set ("lp_reso", 1.0f);
    engine.run (framesOf (GetParam(), 4800));

    // The last of the eight stages may still rise for a while.
    engine.runSilence ((std::size_t) rate);

    auto last = peak (engine.run (EngineUnderTest::Frames (4800)));

    for (int i = 0; i < 10; ++i)
    {
        const auto next = peak (engine.run (EngineUnderTest::Frames (24000)));
        EXPECT_LE (next, last);
        last = next;
    }
}

INSTANTIATE_TEST_SUITE_P (Signals, BadAudio, testing::ValuesIn (signals),
                          [] (const auto& instance) { return std::string (instance.param.name); });

TEST (BadAudioForMinutes, StaysSoundAtFullResonanceInTheSteepestFilters)
{
    for (const auto family : { 0, 1 })
    {
        EngineUnderTest engine (rate);
        engine.choose ("filtmode", family);
        engine.choose ("hp_mode", 4);
        engine.choose ("lp_mode", 4);
        engine.set ("hp_reso", 1.0f);
        engine.set ("lp_reso", 1.0f);
        engine.set ("hp_freq", 0.35f);
        engine.set ("lp_freq", 0.65f);

        juce::AudioBuffer<float> block (2, 4096);
        long numFlaws = 0;

        for (int number = 0; number < 2 * 60 * (int) rate / 4096; ++number)
        {
            for (int channel = 0; channel < 2; ++channel)
                for (int frame = 0; frame < 4096; ++frame)
                    block.setSample (channel, frame, square ((std::size_t) (frame + 4096 * number), 25.0f));

            engine.run (block);

            for (int channel = 0; channel < 2; ++channel)
                for (int frame = 0; frame < 4096; ++frame)
                    numFlaws += ! std::isfinite (block.getSample (channel, frame));
        }

        EXPECT_EQ (numFlaws, 0);
    }
}

TEST (BadAudioNaN, CountsAsTheUpperBoundOnTheLeft)
{
    forEveryFilter (
        [] (EngineUnderTest& engine)
        {
            EngineUnderTest other (rate);

            for (const auto* const id :
                 { "filtmode", "hp_mode", "lp_mode", "hp_reso", "lp_reso", "hp_freq", "lp_freq" })
                other.set (id, engine.parameter (id).getValue());

            EXPECT_TRUE (engine.run (withOneBadSample (quietNaN, true)) == other.run (withOneBadSample (20.0f, true)));
        });
}

TEST (BadAudioNaN, OnTheRightDoesNotChangeTheLeft)
{
    forEveryFilter (
        [] (EngineUnderTest& engine)
        {
            EngineUnderTest other (rate);

            for (const auto* const id :
                 { "filtmode", "hp_mode", "lp_mode", "hp_reso", "lp_reso", "hp_freq", "lp_freq" })
                other.set (id, engine.parameter (id).getValue());

            const auto output = engine.run (withOneBadSample (quietNaN, false));
            const auto clean = other.run (withOneBadSample (0.0f, false));
            std::size_t numDifferent = 0;

            for (std::size_t frame = 0; frame < output.size(); ++frame)
                numDifferent += output[frame].first != clean[frame].first;

            EXPECT_EQ (numDifferent, 0u);

            // From its frame on, and not before.
            EXPECT_EQ (countNaNs (output, &std::pair<float, float>::second), 3000u);
            EXPECT_FALSE (std::isnan (output[999].second));
            EXPECT_EQ (countNaNs (engine.run (EngineUnderTest::noise (6, 1000)), &std::pair<float, float>::second),
                       1000u);
        });
}

TEST (BadAudioNaN, LeavesTheSectionsOfAButterworthFilterWhenTheyAreSwitchedOff)
{
    for (const auto slope : { 2, 3, 4 })
    {
        EngineUnderTest engine (rate);
        engine.choose ("hp_mode", slope);
        engine.choose ("lp_mode", slope);
        engine.run (withOneBadSample (quietNaN, false));

        engine.choose ("hp_mode", 0);
        engine.choose ("lp_mode", 0);
        engine.processor.requestControlUpdate();
        engine.runSilence (1000);

        engine.choose ("hp_mode", slope);
        engine.choose ("lp_mode", slope);
        engine.processor.requestControlUpdate();
        expectSound (engine.run (EngineUnderTest::noise (7, 4000)));
    }
}

TEST (BadAudioNaN, StaysInALadder)
{
    EngineUnderTest engine (rate);
    engine.choose ("filtmode", 1);
    engine.choose ("hp_mode", 0);
    engine.choose ("lp_mode", 2);
    engine.run (withOneBadSample (quietNaN, false));
    engine.choose ("lp_mode", 0);
    engine.processor.requestControlUpdate();
    expectSound (engine.run (EngineUnderTest::noise (7, 1000)));

    engine.choose ("lp_mode", 2);
    engine.processor.requestControlUpdate();
    EXPECT_EQ (countNaNs (engine.run (EngineUnderTest::noise (8, 1000)), &std::pair<float, float>::second), 1000u);
}
