// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/filters/GrungeLadder.h"

#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "reference/ReferenceFilters.h"
#include "support/Response.h"

namespace
{
constexpr double rate = 48000.0;
constexpr double highpassGain = 15.0;
constexpr double lowpassGain = 80.0;

template <typename Filter>
[[nodiscard]] Filter configured (int stages, bool highpass, double cutoff, double resonance)
{
    Filter ladder;
    ladder.configure (stages, highpass, cutoff, resonance, highpass ? highpassGain : lowpassGain, rate);
    return ladder;
}

/** The pole of a first-order bilinear lowpass without prewarping. */
[[nodiscard]] double poleOf (double cutoff)
{
    const auto w = 2.0 * std::numbers::pi * cutoff;
    return (2.0 * rate - w) / (2.0 * rate + w);
}

/** The magnitude of one stage without resonance. A highpass stage gives the pole times what a complement would give. */
[[nodiscard]] double stageMagnitude (bool highpass, double cutoff, double f)
{
    const auto a = poleOf (cutoff);
    const auto c = std::cos (2.0 * std::numbers::pi * f / rate);
    const auto numerator = highpass ? a * a * std::sqrt (2.0 - 2.0 * c) : 1.0 - a;
    return numerator / std::sqrt (1.0 + a * a - 2.0 * a * c);
}

template <typename GrungeLadder>
class GrungeLadders : public testing::Test
{
};

using GrungeLadderTypes = testing::Types<GrungeLadder, reference::GrungeLadder>;
TYPED_TEST_SUITE (GrungeLadders, GrungeLadderTypes);
} // namespace

TYPED_TEST (GrungeLadders, ChangesNothingWithoutStages)
{
    for (const auto highpass : { false, true })
    {
        auto ladder = configured<TypeParam> (0, highpass, 1000.0, 10.0);

        for (const auto x : response::noise (1, 100))
        {
            auto left = x, right = -x;
            ladder.process (left, right);
            ASSERT_EQ (left, x);
            ASSERT_EQ (right, -x);
        }
    }
}

TYPED_TEST (GrungeLadders, IsALinearCascadeOfOnePoleStagesWithoutResonance)
{
    for (const auto stages : { 1, 2, 4, 8 })
        for (const auto highpass : { false, true })
            for (const auto cutoff : { 300.0, 4000.0, 20000.0 })
            {
                auto ladder = configured<TypeParam> (stages, highpass, cutoff, 0.0);
                const auto impulseResponse = response::toImpulse (ladder, 10000);

                // Linear stages of a gain of at most 1, in double precision.
                for (const auto f : { 20.0, 300.0, 1000.0, 4000.0, 10000.0, 23000.0 })
                    EXPECT_NEAR (response::magnitude (impulseResponse, f / rate),
                                 std::pow (stageMagnitude (highpass, cutoff, f), stages), 1.0e-12)
                        << stages << (highpass ? " highpass " : " lowpass ") << cutoff << ' ' << f;
            }
}

TYPED_TEST (GrungeLadders, HasNoPeakAtTheCutoffWithoutResonance)
{
    for (const auto stages : { 1, 2, 4, 8 })
        for (const auto highpass : { false, true })
        {
            auto ladder = configured<TypeParam> (stages, highpass, 1000.0, 0.0);
            const auto impulseResponse = response::toImpulse (ladder, 10000);
            const auto passband = response::magnitude (impulseResponse, highpass ? 0.5 : 0.0);

            for (auto f = 50.0; f < 24000.0; f *= 1.3)
                EXPECT_LE (response::magnitude (impulseResponse, f / rate), passband + 1.0e-12);
        }
}

TYPED_TEST (GrungeLadders, TakesTheFourthPowerOfTheResonance)
{
    EXPECT_EQ (configured<TypeParam> (1, true, 1000.0, 10.0).grunge, 150000.0);
    EXPECT_EQ (configured<TypeParam> (1, false, 1000.0, 10.0).grunge, 800000.0);
    EXPECT_EQ (configured<TypeParam> (1, false, 1000.0, 0.5).grunge, 5.0);
    EXPECT_EQ (configured<TypeParam> (1, false, 1000.0, 0.0).grunge, 0.0);
}

TYPED_TEST (GrungeLadders, SlowsALowpassStageInItsMemory)
{
    auto ladder = configured<TypeParam> (1, false, 1000.0, 0.5);
    const auto a = poleOf (1000.0), b = 1.0 - a, k = 5.0;

    const auto first = b / (k * (1.0 - b) + 1.0);
    const auto prediction = b * -0.5 + first * a;
    const auto e = b / (k * std::abs (-0.5 - prediction) + 1.0);
    const auto second = -0.5 * e + (1.0 - e) * first;

    auto left = 1.0, right = 0.0;
    ladder.process (left, right);
    EXPECT_DOUBLE_EQ (left, first);
    EXPECT_EQ (right, 0.0);

    left = -0.5;
    ladder.process (left, right);
    EXPECT_DOUBLE_EQ (left, second);
}

TYPED_TEST (GrungeLadders, KeepsTheMemoryOfAHighpassStageLinear)
{
    auto ladder = configured<TypeParam> (1, true, 1000.0, 0.5);
    const auto a = poleOf (1000.0), b = 1.0 - a, k = 15.0 / 16.0;
    const auto mixed = [=] (double x, double prediction)
    {
        const auto e = a / (k * std::abs (x - prediction) + 1.0);
        return x - (e * prediction + (1.0 - e) * x);
    };

    auto left = 1.0, right = 0.0;
    ladder.process (left, right);
    EXPECT_NEAR (left, mixed (1.0, b), 1.0e-15);

    // The state is the prediction itself and does not depend on the output.
    left = -0.5;
    ladder.process (left, right);
    EXPECT_NEAR (left, mixed (-0.5, b * -0.5 + a * b), 1.0e-15);
}

TYPED_TEST (GrungeLadders, NeverRaisesTheLevelAtTheCutoffWithTheResonance)
{
    for (const auto stages : { 1, 2, 4, 8 })
        for (const auto highpass : { false, true })
            for (const auto cutoff : { 200.0, 1000.0, 6000.0 })
                for (const auto amplitude : { 0.01, 1.0, 20.0 })
                {
                    auto previous = std::numeric_limits<double>::max();

                    for (const auto resonance : { 0.0, 0.02, 0.1, 0.3, 1.0, 3.0, 10.0 })
                    {
                        auto ladder = configured<TypeParam> (stages, highpass, cutoff, resonance);
                        const auto level = response::levelOfSine (ladder, cutoff / rate, amplitude, 9600);
                        EXPECT_LE (level, previous * (1.0 + 1.0e-9))
                            << stages << (highpass ? " highpass " : " lowpass ") << cutoff << ", amplitude "
                            << amplitude << ", resonance " << resonance;
                        previous = level;
                    }
                }
}

TYPED_TEST (GrungeLadders, NeverSwingsByItself)
{
    for (const auto stages : { 1, 4, 8 })
        for (const auto highpass : { false, true })
            for (const auto cutoff : { 100.0, 5000.0, 15000.0 })
                for (const auto resonance : { 0.0, 0.3, 10.0 })
                {
                    auto ladder = configured<TypeParam> (stages, highpass, cutoff, resonance);
                    response::toNoise (ladder, 2, 500);

                    // One frame of the tail may carry what the last input left in the chain; from then on it only falls.
                    const auto tail = response::toSilence (ladder, 4000);
                    auto early = 0.0, late = 0.0;

                    for (std::size_t i = 0; i < tail.size(); ++i)
                        (i < tail.size() / 2 ? early : late) =
                            std::max (i < tail.size() / 2 ? early : late, std::abs (tail[i]));

                    EXPECT_LE (late, early);
                    EXPECT_LT (early, 10.0);
                }
}

TYPED_TEST (GrungeLadders, MufflesALoudSoundAndPassesAQuietOne)
{
    constexpr auto frequency = 500.0 / rate;
    auto linear = configured<TypeParam> (4, false, 2000.0, 0.0);
    auto loud = configured<TypeParam> (4, false, 2000.0, 10.0);
    auto quiet = configured<TypeParam> (4, false, 2000.0, 10.0);

    const auto linearGain = response::levelOfSine (linear, frequency, 1.0, 9600);
    const auto loudGain = response::levelOfSine (loud, frequency, 1.0, 9600);
    const auto quietGain = response::levelOfSine (quiet, frequency, 1.0e-9, 9600) / 1.0e-9;

    EXPECT_LT (loudGain, 0.05 * linearGain);
    EXPECT_NEAR (quietGain, linearGain, 0.01 * linearGain);
}

TYPED_TEST (GrungeLadders, ReturnsToItsLinearFormInSilence)
{
    auto ladder = configured<TypeParam> (1, false, 1000.0, 0.5);
    const auto a = poleOf (1000.0);
    response::toNoise (ladder, 3, 100);
    const auto tail = response::toSilence (ladder, 400);

    // Two channels alternate: the first decays by more than the pole, the last by the pole alone.
    EXPECT_GT (tail[2] / tail[0], a + 1.0e-4);
    EXPECT_NEAR (tail[798] / tail[796], a, 1.0e-6);
}

TYPED_TEST (GrungeLadders, LetsTheCutoffRunAboveHalfTheRate)
{
    auto previous = 1.0;

    for (const auto cutoff : { 0.3 * rate, 0.498 * rate, 0.5 * rate, rate, 100.0 * rate })
    {
        const auto ladder = configured<TypeParam> (1, false, cutoff, 0.0);
        EXPECT_NEAR (ladder.poleCoefficient, poleOf (cutoff), 1.0e-14);
        EXPECT_EQ (ladder.inputCoefficient, 1.0 - ladder.poleCoefficient);
        EXPECT_LT (ladder.poleCoefficient, previous);
        EXPECT_EQ ((ladder.poleCoefficient < 0.0), (cutoff > rate / std::numbers::pi));
        previous = ladder.poleCoefficient;
    }

    EXPECT_NEAR (configured<TypeParam> (1, false, 1.0e12, 0.0).poleCoefficient, -1.0, 1.0e-6);

    // The limited cutoff is kept as well, and nothing uses it.
    EXPECT_EQ (configured<TypeParam> (1, false, 40000.0, 0.0).limitedCutoff, (double) 0.498f * rate);
}

TYPED_TEST (GrungeLadders, KeepsTheStateOfStagesThatFallOutOfUse)
{
    for (const auto highpass : { false, true })
    {
        auto ladder = configured<TypeParam> (8, highpass, 1000.0, 1.0);
        response::toNoise (ladder, 4, 300);
        auto untouched = ladder;

        // Without stages neither input nor configuration moves anything.
        ladder.configure (0, ! highpass, 50.0, 9.0, 1.0, 96000.0);
        response::toNoise (ladder, 5, 100);
        ladder.configure (8, highpass, 1000.0, 1.0, highpass ? highpassGain : lowpassGain, rate);
        EXPECT_EQ (response::toNoise (ladder, 6, 300), response::toNoise (untouched, 6, 300));
    }
}

TYPED_TEST (GrungeLadders, ResumesALaterStageWhereItStopped)
{
    auto ladder = configured<TypeParam> (2, false, 1000.0, 0.0);
    response::toNoise (ladder, 7, 300);
    ladder.configure (1, false, 1000.0, 0.0, lowpassGain, rate);
    response::toSilence (ladder, 20000);
    ladder.configure (2, false, 1000.0, 0.0, lowpassGain, rate);
    EXPECT_GT (std::abs (response::toSilence (ladder, 1).front()), 1.0e-4);
}

TYPED_TEST (GrungeLadders, GivesTheSameHoweverOftenItIsConfiguredAgain)
{
    for (const auto highpass : { false, true })
    {
        auto once = configured<TypeParam> (8, highpass, 2500.0, 2.0);
        auto always = once;

        for (const auto x : response::noise (8, 300))
        {
            auto left = x, right = x, l = x, r = x;
            once.process (left, right);
            always.configure (8, highpass, 2500.0, 2.0, highpass ? highpassGain : lowpassGain, rate);
            always.process (l, r);
            ASSERT_EQ (left, l);
            ASSERT_EQ (right, r);
        }
    }
}

TYPED_TEST (GrungeLadders, TreatsBothChannelsAlikeAndApart)
{
    for (const auto highpass : { false, true })
    {
        auto both = configured<TypeParam> (4, highpass, 800.0, 3.0);
        auto alone = both, swapped = both;
        const auto lefts = response::noise (9, 300);
        const auto rights = response::noise (10, 300);

        for (std::size_t i = 0; i < lefts.size(); ++i)
        {
            auto left = lefts[i], right = rights[i], l = lefts[i], r = rights[i], only = lefts[i], silent = 0.0;
            both.process (left, right);
            swapped.process (r, l);
            alone.process (only, silent);
            ASSERT_EQ (left, l);
            ASSERT_EQ (right, r);
            ASSERT_EQ (left, only);
            ASSERT_EQ (silent, 0.0);
        }
    }
}

TYPED_TEST (GrungeLadders, StaysFiniteAtEveryCutoffAndResonance)
{
    for (const auto cutoff : { 0.0, 20.0, 20000.0, 1.0e15 })
        for (const auto resonance : { 0.0, 1.0, 10.0 })
            for (const auto highpass : { false, true })
            {
                auto ladder = configured<TypeParam> (8, highpass, cutoff, resonance);

                for (const auto y : response::toNoise (ladder, 11, 500))
                    ASSERT_TRUE (std::isfinite (y)) << cutoff << ' ' << resonance;
            }
}

TYPED_TEST (GrungeLadders, NeverForgetsANaNInALowpass)
{
    auto ladder = configured<TypeParam> (1, false, 1000.0, 1.0);
    auto left = std::numeric_limits<double>::quiet_NaN(), right = 0.0;
    ladder.process (left, right);
    ladder.configure (0, false, 1000.0, 0.0, lowpassGain, rate);
    ladder.configure (1, false, 1000.0, 0.0, lowpassGain, rate);

    const auto after = response::toSilence (ladder, 100);
    EXPECT_TRUE (std::isnan (after[198]));
    EXPECT_EQ (after[199], 0.0);
}
