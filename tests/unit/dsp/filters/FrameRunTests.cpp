// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/simd/FrameRun.h"

#include <array>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/filters/ButterworthFilter.h"
#include "dsp/filters/GrungeLadder.h"
#include "dsp/filters/ResonancePeak.h"
#include "support/Response.h"

namespace
{
constexpr double rate = 48000.0;
constexpr std::array orders { 0u, 1u, 2u, 4u, 8u };

/** Lengths from one frame to the longest run, the shortest ones most often: there the skewed stages overlap least. */
class RunLengths
{
public:
    explicit RunLengths (std::uint32_t seed) : generator (seed) {}

    [[nodiscard]] std::size_t next (std::size_t longest)
    {
        const auto isShort = generator() % 2 == 0;
        return 1 + generator() % (isShort ? 10 : longest);
    }

private:
    std::mt19937 generator;
};

[[nodiscard]] std::vector<StereoPair> stereoNoise (std::uint32_t seed, std::size_t numFrames)
{
    const auto lefts = response::noise (seed, numFrames);
    const auto rights = response::noise (seed + 1, numFrames);
    std::vector<StereoPair> frames;

    for (std::size_t i = 0; i < numFrames; ++i)
        frames.emplace_back (lefts[i], rights[i]);

    return frames;
}

/** Cutoffs that glide and jump. */
[[nodiscard]] std::vector<float> movingCutoffs (std::uint32_t seed, std::size_t numFrames)
{
    std::vector<float> cutoffs;

    for (const auto x : response::noise (seed, numFrames))
        cutoffs.push_back (x > 0.9 ? 60000.0f : 1000.0f + 900.0f * (float) x);

    return cutoffs;
}

template <typename Filter>
[[nodiscard]] StereoPair processed (Filter& filter, StereoPair frame)
{
    auto left = frame.left();
    auto right = frame.right();
    filter.process (left, right);
    return { left, right };
}

testing::AssertionResult areEqual (StereoPair a, StereoPair b)
{
    if (a.left() == b.left() && a.right() == b.right())
        return testing::AssertionSuccess();

    return testing::AssertionFailure() << a.left() << ", " << a.right() << " is not " << b.left() << ", " << b.right();
}

[[nodiscard]] StereoPair withResonance (ResonancePeak& peak, float amount, StereoPair frame)
{
    const auto saturated = [&] (double excess)
    {
        const auto x = excess * (double) amount;
        return std::sin (x < -1.5707963267948966  ? -1.5707963267948966
                         : x < 1.5707963267948966 ? x
                                                  : 1.5707963267948966);
    };
    const auto peaked = processed (peak, frame);
    return { frame.left() + saturated (peaked.left() - frame.left()),
             frame.right() + saturated (peaked.right() - frame.right()) };
}
} // namespace

TEST (FrameRun, RunsAFilterAsFrameByFrame)
{
    for (const auto order : orders)
        for (const auto highpass : { false, true })
        {
            ButterworthFilter together;
            together.design (order, highpass, 1500.0, rate);
            auto oneByOne = together;
            RunLengths lengths (order + 1);

            for (std::uint32_t run = 0; run < 60; ++run)
            {
                auto frames = stereoNoise (run, lengths.next (maxRunFrames));
                const auto input = frames;
                together.processRun (frames);

                for (std::size_t i = 0; i < input.size(); ++i)
                    ASSERT_TRUE (areEqual (frames[i], processed (oneByOne, input[i]))) << order << ", frame " << i;
            }
        }
}

TEST (FrameRun, RunsTwoFiltersAsOneAfterTheOther)
{
    for (const auto firstOrder : orders)
        for (const auto secondOrder : orders)
        {
            ButterworthFilter first, second;
            first.design (firstOrder, true, 300.0, rate);
            second.design (secondOrder, false, 7000.0, rate);
            auto firstByHand = first, secondByHand = second;
            RunLengths lengths (10 * firstOrder + secondOrder);

            for (std::uint32_t run = 0; run < 30; ++run)
            {
                auto frames = stereoNoise (run, lengths.next (maxRunFrames));
                const auto input = frames;
                ButterworthFilter::processRun (first, second, frames);

                for (std::size_t i = 0; i < input.size(); ++i)
                    ASSERT_TRUE (areEqual (frames[i], processed (secondByHand, processed (firstByHand, input[i]))))
                        << firstOrder << " and " << secondOrder << ", frame " << i;
            }
        }
}

TEST (FrameRun, DesignsAFilterForEachFrameAsOneByOne)
{
    for (const auto highpass : { false, true })
    {
        // The order moves from run to run, so that sections come and go.
        ButterworthFilter together, oneByOne;
        RunLengths lengths (highpass ? 1 : 2);

        for (std::uint32_t run = 0; run < 300; ++run)
        {
            const auto order = orders[(run * 7) % orders.size()];
            auto frames = stereoNoise (run, lengths.next (maxDesigns));
            const auto input = frames;
            const auto cutoffs = movingCutoffs (run + 1000, frames.size());
            ButterworthFilter::Series series;
            together.designSeries (order, highpass, cutoffs, rate, series);
            together.processRun (series, frames);

            for (std::size_t i = 0; i < input.size(); ++i)
            {
                oneByOne.design (order, highpass, (double) cutoffs[i], rate);
                ASSERT_TRUE (areEqual (frames[i], processed (oneByOne, input[i]))) << order << ", frame " << i;
            }

            // The last design stays in force.
            ASSERT_EQ (together.limitedCutoff, oneByOne.limitedCutoff);
            ASSERT_TRUE (areEqual (processed (together, { 0.5, -0.5 }), processed (oneByOne, { 0.5, -0.5 })));
        }
    }
}

TEST (FrameRun, DesignsTwoFiltersForEachFrameAsOneAfterTheOther)
{
    ButterworthFilter first, second, firstByHand, secondByHand;
    RunLengths lengths (3);

    for (std::uint32_t run = 0; run < 500; ++run)
    {
        const auto firstOrder = orders[run % orders.size()];
        const auto secondOrder = orders[(run / 5) % orders.size()];
        auto frames = stereoNoise (run, lengths.next (maxDesigns));
        const auto input = frames;
        const auto firstCutoffs = movingCutoffs (run + 1000, frames.size());
        const auto secondCutoffs = movingCutoffs (run + 2000, frames.size());
        ButterworthFilter::Series firstSeries, secondSeries;
        first.designSeries (firstOrder, true, firstCutoffs, rate, firstSeries);
        second.designSeries (secondOrder, false, secondCutoffs, rate, secondSeries);
        ButterworthFilter::processRun (first, firstSeries, second, secondSeries, frames);

        for (std::size_t i = 0; i < input.size(); ++i)
        {
            firstByHand.design (firstOrder, true, (double) firstCutoffs[i], rate);
            secondByHand.design (secondOrder, false, (double) secondCutoffs[i], rate);
            ASSERT_TRUE (areEqual (frames[i], processed (secondByHand, processed (firstByHand, input[i]))))
                << firstOrder << " and " << secondOrder << ", frame " << i;
        }
    }
}

TEST (FrameRun, RunsALadderAsFrameByFrame)
{
    for (int stages = 0; stages <= 8; ++stages)
        for (const auto highpass : { false, true })
        {
            GrungeLadder together;
            together.configure (stages, highpass, 2000.0, 2.0, 80.0, rate);
            auto oneByOne = together;
            RunLengths lengths ((std::uint32_t) stages);

            for (std::uint32_t run = 0; run < 30; ++run)
            {
                auto frames = stereoNoise (run, lengths.next (maxRunFrames));
                const auto input = frames;
                together.processRun (frames);

                for (std::size_t i = 0; i < input.size(); ++i)
                    ASSERT_TRUE (areEqual (frames[i], processed (oneByOne, input[i]))) << stages << ", frame " << i;
            }
        }
}

TEST (FrameRun, ConfiguresALadderForEachFrameAsOneByOne)
{
    for (const auto highpass : { false, true })
    {
        GrungeLadder together, oneByOne;
        RunLengths lengths (4);

        for (std::uint32_t run = 0; run < 300; ++run)
        {
            const auto stages = (int) orders[(run * 7) % orders.size()];
            auto frames = stereoNoise (run, lengths.next (maxDesigns));
            const auto input = frames;
            const auto cutoffs = movingCutoffs (run + 1000, frames.size());
            std::vector<float> resonances;

            for (std::size_t i = 0; i < frames.size(); ++i)
                resonances.push_back (0.1f * (float) ((run + i) % 100));

            GrungeLadder::Series series;
            together.configureSeries (stages, highpass, cutoffs, resonances, 15.0, rate, series);
            together.processRun (series, frames);

            for (std::size_t i = 0; i < input.size(); ++i)
            {
                oneByOne.configure (stages, highpass, (double) cutoffs[i], (double) resonances[i], 15.0, rate);
                ASSERT_TRUE (areEqual (frames[i], processed (oneByOne, input[i]))) << stages << ", frame " << i;
            }

            ASSERT_EQ (together.grunge, oneByOne.grunge);
            ASSERT_TRUE (areEqual (processed (together, { 0.5, -0.5 }), processed (oneByOne, { 0.5, -0.5 })));
        }
    }
}

TEST (FrameRun, AddsAResonanceAsFrameByFrame)
{
    ResonancePeak together;
    together.design (rate, 1200.0, 0.5);
    auto oneByOne = together;
    RunLengths lengths (5);

    for (std::uint32_t run = 0; run < 100; ++run)
    {
        auto frames = stereoNoise (run, lengths.next (maxRunFrames));
        const auto input = frames;
        std::vector<float> amounts;

        for (std::size_t i = 0; i < frames.size(); ++i)
            amounts.push_back (0.01f * (float) ((run + i) % 1000));

        together.addResonance (amounts, frames);

        for (std::size_t i = 0; i < input.size(); ++i)
            ASSERT_TRUE (areEqual (frames[i], withResonance (oneByOne, amounts[i], input[i]))) << i;
    }
}

TEST (FrameRun, DesignsAResonanceForEachFrameAsOneByOne)
{
    ResonancePeak together, oneByOne;
    RunLengths lengths (6);

    for (std::uint32_t run = 0; run < 200; ++run)
    {
        auto frames = stereoNoise (run, lengths.next (maxDesigns));
        const auto input = frames;
        std::vector<float> amounts;
        std::vector<float> cutoffs;
        const auto ratio = run % 3 == 0 ? 0.9 : 1.0;

        // Now and then the same cutoff again, which is no new design.
        for (std::size_t i = 0; i < frames.size(); ++i)
        {
            amounts.push_back (0.1f * (float) ((run + i) % 100));
            cutoffs.push_back (500.0f + 10.0f * (float) ((run + i) / 3));
        }

        const auto bandwidth = run % 2 == 0 ? 0.5 : 1.25;
        ResonancePeak::Series series;
        together.designSeries (rate, cutoffs, ratio, bandwidth, series);
        together.addResonance (series, amounts, frames);

        for (std::size_t i = 0; i < input.size(); ++i)
        {
            oneByOne.design (rate, (double) cutoffs[i] * ratio, bandwidth);
            ASSERT_TRUE (areEqual (frames[i], withResonance (oneByOne, amounts[i], input[i]))) << i;
        }

        ASSERT_EQ (together.designedFrequency, oneByOne.designedFrequency);
        ASSERT_EQ (together.b0, oneByOne.b0);
    }
}

TEST (StereoPair, WorksOnBothSidesAlike)
{
    const StereoPair a (3.0, -0.5), b (-2.0, 8.0);
    EXPECT_TRUE (areEqual (a + b, { 1.0, 7.5 }));
    EXPECT_TRUE (areEqual (a - b, { 5.0, -8.5 }));
    EXPECT_TRUE (areEqual (a * b, { -6.0, -4.0 }));
    EXPECT_TRUE (areEqual (a / b, { -1.5, -0.0625 }));
    EXPECT_TRUE (areEqual (a.magnitude(), { 3.0, 0.5 }));
    EXPECT_TRUE (areEqual (StereoPair::both (0.25), { 0.25, 0.25 }));
}

TEST (StereoPair, WidensAndNarrowsRunsOfAnyLength)
{
    for (std::size_t size = 0; size < 20; ++size)
    {
        std::vector<float> left, right;

        for (std::size_t i = 0; i < size; ++i)
        {
            left.push_back (0.1f * (float) i);
            right.push_back (-0.3f * (float) i);
        }

        std::vector<StereoPair> pairs (size);
        widen (left.data(), right.data(), pairs);

        for (std::size_t i = 0; i < size; ++i)
        {
            ASSERT_TRUE (areEqual (pairs[i], { (double) left[i], (double) right[i] }));
            pairs[i] = pairs[i] * StereoPair::both (1.0 / 3.0);
        }

        // One sample behind the end must stay as it is.
        std::vector<float> narrowLeft (size + 1, 9.0f), narrowRight (size + 1, 9.0f);
        narrow (pairs, narrowLeft.data(), narrowRight.data());

        for (std::size_t i = 0; i < size; ++i)
        {
            ASSERT_EQ (narrowLeft[i], (float) ((double) left[i] * (1.0 / 3.0)));
            ASSERT_EQ (narrowRight[i], (float) ((double) right[i] * (1.0 / 3.0)));
        }

        ASSERT_EQ (narrowLeft[size], 9.0f);
        ASSERT_EQ (narrowRight[size], 9.0f);
    }
}
