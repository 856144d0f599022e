// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/modulation/Frequencer.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace
{
using frequencer::numSteps;

[[nodiscard]] frequencer::Offsets centred()
{
    frequencer::Offsets offsets;
    offsets.highpass.fill (0.5f);
    offsets.lowpass.fill (0.5f);
    return offsets;
}

/** Offsets of one step alone, at a position where it is on. */
[[nodiscard]] frequencer::Result withOneStep (float highpass, float lowpass, std::size_t step = 0)
{
    auto offsets = centred();
    offsets.highpass[step] = highpass;
    offsets.lowpass[step] = lowpass;
    return frequencer::evaluate (0.0, 0.0f, offsets);
}

[[nodiscard]] bool isLit (double beats, std::size_t step, float shiftBeats = 0.0f)
{
    return frequencer::evaluate (beats, shiftBeats, centred()).stepLit[step];
}
} // namespace

TEST (Frequencer, LightsAllStepsAtTheStart)
{
    for (std::size_t step = 0; step < numSteps; ++step)
        EXPECT_TRUE (isLit (0.0, step)) << step;
}

TEST (Frequencer, SumsAllOffsetsAtTheStart)
{
    auto offsets = centred();
    offsets.highpass.fill (0.55f);
    offsets.lowpass.fill (0.45f);
    const auto result = frequencer::evaluate (0.0, 0.0f, offsets);

    // Ten times 0.05 * 0.05 * 20, in single precision.
    EXPECT_NEAR (result.highpass, 0.5f, 1.0e-5f);
    EXPECT_NEAR (result.lowpass, -0.5f, 1.0e-5f);
}

TEST (Frequencer, TurnsEachStepOffAfterHalfItsPeriod)
{
    // The position runs a hundredth of a beat ahead.
    for (std::size_t step = 0; step < numSteps; ++step)
    {
        const auto firstOff = std::ldexp (0.5, (int) step);
        EXPECT_TRUE (isLit (firstOff - 0.011, step)) << step;
        EXPECT_FALSE (isLit (firstOff - 0.009, step)) << step;
        EXPECT_FALSE (isLit (firstOff, step)) << step;
        EXPECT_TRUE (isLit (2.0 * firstOff, step)) << step;
    }
}

TEST (Frequencer, CountsHalfBeatsInBinary)
{
    for (auto beats = -300.0; beats < 700.0; beats += 0.37)
    {
        const auto halves = (std::int64_t) std::floor (2.0 * (beats + 0.01));

        for (std::size_t step = 0; step < numSteps; ++step)
            ASSERT_EQ (isLit (beats, step), ((halves >> step) & 1) == 0) << beats << ", step " << step;
    }
}

TEST (Frequencer, RepeatsAfterFiveHundredAndTwelveBeats)
{
    for (auto beats = 0.0; beats < 512.0; beats += 0.75)
        ASSERT_EQ (frequencer::evaluate (beats, 0.0f, centred()).stepLit,
                   frequencer::evaluate (beats + 512.0, 0.0f, centred()).stepLit);

    EXPECT_NE (frequencer::evaluate (1.0, 0.0f, centred()).stepLit,
               frequencer::evaluate (257.0, 0.0f, centred()).stepLit);
}

TEST (Frequencer, CrossesABoundaryAHundredthOfABeatEarly)
{
    EXPECT_TRUE (isLit (0.995, 0));
    EXPECT_FALSE (isLit (0.995, 1));
}

TEST (Frequencer, RunsOnBelowZeroWithoutABreak)
{
    // A position of -0.5 beats, once by the transport and once by the shift.
    EXPECT_FALSE (isLit (-0.51, 0));
    EXPECT_FALSE (isLit (-0.01, 0, -0.5f));
    EXPECT_TRUE (isLit (-1.0, 0));
    EXPECT_FALSE (isLit (-0.02, 0));

    for (std::size_t step = 0; step < numSteps; ++step)
        EXPECT_FALSE (isLit (-0.02, step)) << step;
}

TEST (Frequencer, ShiftsThePatternByBeats)
{
    for (auto beats = -20.0; beats < 20.0; beats += 0.61)
        for (const auto shift : { -1024.0f, -3.5f, 0.25f, 1024.0f })
            ASSERT_EQ (frequencer::evaluate (beats, shift, centred()).stepLit,
                       frequencer::evaluate (beats + (double) shift, 0.0f, centred()).stepLit);
}

TEST (Frequencer, SquaresAnOffsetAndKeepsItsSign)
{
    // |h| * h * 20, in single precision; 0.6f and 0.4f are no exact tenths.
    EXPECT_EQ (withOneStep (0.5f, 0.75f).highpass, 0.0f);
    EXPECT_EQ (withOneStep (0.75f, 0.25f).highpass, 1.25f);
    EXPECT_EQ (withOneStep (0.75f, 0.25f).lowpass, -1.25f);
    EXPECT_NEAR (withOneStep (0.6f, 0.4f).highpass, 0.2f, 1.0e-6f);
    EXPECT_NEAR (withOneStep (0.6f, 0.4f).lowpass, -0.2f, 1.0e-6f);
}

TEST (Frequencer, LimitsTheSumsToTwo)
{
    auto offsets = centred();
    offsets.highpass.fill (1.0f);
    offsets.lowpass.fill (0.0f);
    const auto all = frequencer::evaluate (0.0, 0.0f, offsets);
    EXPECT_EQ (all.highpass, 2.0f);
    EXPECT_EQ (all.lowpass, -2.0f);

    // One full step alone is worth 5 already.
    EXPECT_EQ (withOneStep (1.0f, 0.0f, 9).highpass, 2.0f);
    EXPECT_EQ (withOneStep (1.0f, 0.0f, 9).lowpass, -2.0f);
}

TEST (Frequencer, AddsNothingInsideTheDeadBandAndStaysInactive)
{
    for (const auto offset : { 0.5f, 0.5004f, 0.4996f })
    {
        const auto result = withOneStep (offset, 0.5f);
        EXPECT_EQ (result.highpass, 0.0f);
        EXPECT_EQ (result.lowpass, 0.0f);
        EXPECT_FALSE (result.active);
    }
}

TEST (Frequencer, ComparesTheDeadBandStrictly)
{
    // The floats around 0.5 lie 6e-8 apart, so that none hits 0.001f exactly: the neighbours decide.
    EXPECT_FALSE (withOneStep (0.5f + 0.00099f, 0.5f - 0.00099f).active);
    EXPECT_TRUE (withOneStep (0.5f + 0.00101f, 0.5f).active);
    EXPECT_TRUE (withOneStep (0.5f, 0.5f - 0.00101f).active);
}

TEST (Frequencer, AddsBothOffsetsOfAStepWhenOneLeavesTheDeadBand)
{
    const auto h = 0.5005f - 0.5f;
    const auto result = withOneStep (0.5005f, 0.8f);
    EXPECT_EQ (result.highpass, std::abs (h) * h * 20.0f);
    EXPECT_GT (result.highpass, 0.0f);
    EXPECT_NEAR (result.lowpass, 1.8f, 1.0e-5f);
    EXPECT_TRUE (result.active);
}

TEST (Frequencer, IsActiveThroughAStepThatIsOff)
{
    auto offsets = centred();
    offsets.highpass[0] = 0.9f;
    const auto result = frequencer::evaluate (0.5, 0.0f, offsets);
    EXPECT_FALSE (result.stepLit[0]);
    EXPECT_TRUE (result.active);
    EXPECT_EQ (result.highpass, 0.0f);
}

TEST (Frequencer, AddsOnlyTheStepsThatAreOn)
{
    auto offsets = centred();
    offsets.highpass[0] = 0.6f;
    offsets.highpass[1] = 0.7f;
    offsets.highpass[2] = 0.3f;

    // At beat 1 the second step alone is off: 0.2 - 0.8.
    EXPECT_NEAR (frequencer::evaluate (1.0, 0.0f, offsets).highpass, -0.6f, 1.0e-5f);
}

TEST (Frequencer, TakesEveryPositionAndOffsetWithoutFault)
{
    for (const auto beats : { std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity(), 1.0e300, -1.0e300 })
    {
        auto offsets = centred();
        offsets.highpass.fill (0.6f);
        const auto result = frequencer::evaluate (beats, 0.0f, offsets);
        EXPECT_TRUE (result.active);
        EXPECT_LE (std::abs (result.highpass), 2.0f);
    }

    // No position, no step: a NaN lights none.
    EXPECT_FALSE (isLit (std::numeric_limits<double>::quiet_NaN(), 0));

    const auto offsetsOfNoNumber = withOneStep (std::nanf (""), 0.5f);
    EXPECT_FALSE (offsetsOfNoNumber.active);
}
