// SPDX-License-Identifier: AGPL-3.0-or-later
#include <cmath>
#include <functional>
#include <limits>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "support/EngineUnderTest.h"

namespace
{
constexpr auto notANumber = std::numeric_limits<float>::quiet_NaN();
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

/** Frames whose left side does not change and whose right side holds one bad sample. */
[[nodiscard]] EngineUnderTest::Frames withOneBadSample (float sample, bool isOnTheLeft)
{
    auto frames = EngineUnderTest::noise (5, 4000);
    (isOnTheLeft ? frames[1000].first : frames[1000].second) = sample;
    return frames;
}

[[nodiscard]] std::size_t countNotANumber (const EngineUnderTest::Frames& frames, float std::pair<float, float>::*side)
{
    return (std::size_t) std::count_if (frames.begin(), frames.end(),
                                        [side] (const auto& frame) { return std::isnan (frame.*side); });
}
} // namespace

TEST_P (BadAudio, LeavesAsNumbersThatAreNeitherInfiniteNorSubnormal)
{
    const auto input = framesOf (GetParam(), 48000);
    forEveryFilter ([&input] (EngineUnderTest& engine) { expectSound (engine.run (input)); });
}

TEST_P (BadAudio, LeavesSilenceBehindWhenItEnds)
{
    const auto input = framesOf (GetParam(), 4800);

    forEveryFilter (
        [&input] (EngineUnderTest& engine)
        {
            engine.run (input);
            engine.runSilence ((std::size_t) (12.0 * rate));
            const auto after = engine.run (EngineUnderTest::Frames (100));

            for (const auto& [left, right] : after)
            {
                EXPECT_EQ (left, 0.0f);
                EXPECT_EQ (right, 0.0f);
            }
        });
}

INSTANTIATE_TEST_SUITE_P (Signals, BadAudio, testing::ValuesIn (signals),
                          [] (const auto& instance) { return std::string (instance.param.name); });

TEST (BadAudioForMinutes, StaysSoundAtFullResonanceInTheSteepestFilters)
{
    const auto input = framesOf (signals[2], 48000);

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

        for (int second = 0; second < 180; ++second)
            expectSound (engine.run (input));
    }
}

TEST (BadAudioNotANumber, CountsAsTheUpperBoundOnTheLeft)
{
    forEveryFilter (
        [] (EngineUnderTest& engine)
        {
            EngineUnderTest other (rate);

            for (const auto* const id :
                 { "filtmode", "hp_mode", "lp_mode", "hp_reso", "lp_reso", "hp_freq", "lp_freq" })
                other.set (id, engine.parameter (id).getValue());

            EXPECT_TRUE (engine.run (withOneBadSample (notANumber, true))
                         == other.run (withOneBadSample (20.0f, true)));
        });
}

TEST (BadAudioNotANumber, OnTheRightLeavesTheLeftAsItWouldBe)
{
    forEveryFilter (
        [] (EngineUnderTest& engine)
        {
            EngineUnderTest other (rate);

            for (const auto* const id :
                 { "filtmode", "hp_mode", "lp_mode", "hp_reso", "lp_reso", "hp_freq", "lp_freq" })
                other.set (id, engine.parameter (id).getValue());

            const auto output = engine.run (withOneBadSample (notANumber, false));
            const auto clean = other.run (withOneBadSample (0.0f, false));
            std::size_t numDifferent = 0;

            for (std::size_t frame = 0; frame < output.size(); ++frame)
                numDifferent += output[frame].first != clean[frame].first;

            EXPECT_EQ (numDifferent, 0u);

            // From its frame on, and not before.
            EXPECT_EQ (countNotANumber (output, &std::pair<float, float>::second), 3000u);
            EXPECT_FALSE (std::isnan (output[999].second));
            EXPECT_EQ (
                countNotANumber (engine.run (EngineUnderTest::noise (6, 1000)), &std::pair<float, float>::second),
                1000u);
        });
}

TEST (BadAudioNotANumber, LeavesTheSectionsOfAButterworthFilterWhenTheyAreSwitchedOff)
{
    for (const auto slope : { 2, 3, 4 })
    {
        EngineUnderTest engine (rate);
        engine.choose ("hp_mode", slope);
        engine.choose ("lp_mode", slope);
        engine.run (withOneBadSample (notANumber, false));

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

TEST (BadAudioNotANumber, StaysInALadder)
{
    EngineUnderTest engine (rate);
    engine.choose ("filtmode", 1);
    engine.choose ("lp_mode", 2);
    engine.run (withOneBadSample (notANumber, false));
    engine.choose ("lp_mode", 0);
    engine.processor.requestControlUpdate();
    expectSound (engine.run (EngineUnderTest::noise (7, 1000)));

    engine.choose ("lp_mode", 2);
    engine.processor.requestControlUpdate();
    EXPECT_EQ (countNotANumber (engine.run (EngineUnderTest::noise (8, 1000)), &std::pair<float, float>::second),
               1000u);
}
