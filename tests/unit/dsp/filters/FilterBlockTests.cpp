// SPDX-License-Identifier: AGPL-3.0-or-later
// Filters that process whole blocks of frames, compared with the same filters frame by frame.
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/filters/ButterworthFilter.h"
#include "dsp/filters/GrungeLadder.h"
#include "dsp/filters/ResonancePeak.h"
#include "dsp/math/Sine.h"
#include "support/Response.h"

namespace
{
constexpr double rate = 48000.0;
constexpr std::array orders { 0u, 1u, 2u, 4u, 8u };

/** Lengths from one frame to the longest block, the shortest ones most often: there the stages of a pipeline overlap least. */
class BlockLengths
{
public:
    explicit BlockLengths (std::uint32_t seed) : generator (seed) {}

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
[[nodiscard]] std::vector<double> movingCutoffs (std::uint32_t seed, std::size_t numFrames)
{
    std::vector<double> cutoffs;

    for (const auto x : response::noise (seed, numFrames))
        cutoffs.push_back (x > 0.9 ? 60000.0 : 1000.0 + 900.0 * x);

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

/** Runs a filter over frames without designing it. */
void process (ButterworthFilter& filter, StereoBlock frames)
{
    SectionCascade cascade (frames, SectionCascade::Coefficients::standing);
    filter.addTo (cascade);
    cascade.finish();
}

[[nodiscard]] StereoPair withResonance (ResonancePeak& peak, float amount, StereoPair frame)
{
    const auto saturated = [&] (double excess)
    {
        const auto x = excess * (double) amount;
        return elementary::sineWithinQuarterTurn (x < -1.5707963267948966  ? -1.5707963267948966
                                                  : x < 1.5707963267948966 ? x
                                                                           : 1.5707963267948966);
    };
    const auto peaked = processed (peak, frame);
    return { frame.left() + saturated (peaked.left() - frame.left()),
             frame.right() + saturated (peaked.right() - frame.right()) };
}
} // namespace

TEST (FilterBlock, ProcessesAFilterAsFrameByFrame)
{
    for (const auto order : orders)
        for (const auto highpass : { false, true })
        {
            ButterworthFilter together;
            together.design (order, highpass, 1500.0, rate);
            auto oneByOne = together;
            BlockLengths lengths (order + 1);

            for (std::uint32_t block = 0; block < 60; ++block)
            {
                auto frames = stereoNoise (block, lengths.next (maxBlockFrames));
                const auto input = frames;
                process (together, frames);

                for (std::size_t i = 0; i < input.size(); ++i)
                    ASSERT_TRUE (areEqual (frames[i], processed (oneByOne, input[i]))) << order << ", frame " << i;
            }
        }
}

TEST (FilterBlock, ProcessesTwoFiltersAsOneAfterTheOther)
{
    for (const auto firstOrder : orders)
        for (const auto secondOrder : orders)
        {
            ButterworthFilter first, second;
            first.design (firstOrder, true, 300.0, rate);
            second.design (secondOrder, false, 7000.0, rate);
            auto firstByHand = first, secondByHand = second;
            BlockLengths lengths (10 * firstOrder + secondOrder);

            for (std::uint32_t block = 0; block < 30; ++block)
            {
                auto frames = stereoNoise (block, lengths.next (maxBlockFrames));
                const auto input = frames;
                SectionCascade cascade (frames, SectionCascade::Coefficients::standing);
                first.addTo (cascade);
                second.addTo (cascade);
                cascade.finish();

                for (std::size_t i = 0; i < input.size(); ++i)
                    ASSERT_TRUE (areEqual (frames[i], processed (secondByHand, processed (firstByHand, input[i]))))
                        << firstOrder << " and " << secondOrder << ", frame " << i;
            }
        }
}

TEST (FilterBlock, ProcessesSamplesAsFramesThatHaveBeenConverted)
{
    using Coefficients = SectionCascade::Coefficients;

    for (const auto firstOrder : orders)
        for (const auto secondOrder : orders)
            for (const auto coefficients : { Coefficients::standing, Coefficients::perFrame })
            {
                const auto numFrames = coefficients == Coefficients::standing ? maxBlockFrames : maxBatchFrames;
                auto frames = stereoNoise (firstOrder + 10 * secondOrder, numFrames);
                std::vector<float> left, right;

                for (auto& frame : frames)
                {
                    left.push_back ((float) frame.left());
                    right.push_back ((float) frame.right());
                    frame = StereoPair::widened (left.back(), right.back());
                }

                const auto filtered = [&] (auto block)
                {
                    ButterworthFilter first, second;
                    ButterworthFilter::Series firstSeries, secondSeries;
                    const auto cutoffs = movingCutoffs (1, maxBatchFrames);
                    first.designSeries (firstOrder, true, cutoffs, 0, rate, firstSeries);
                    second.designSeries (secondOrder, false, cutoffs, 0, rate, secondSeries);

                    SectionCascade cascade (block, coefficients);
                    const auto add = [&] (ButterworthFilter& filter, const ButterworthFilter::Series& series) {
                        coefficients == Coefficients::perFrame ? filter.addTo (cascade, series)
                                                               : filter.addTo (cascade);
                    };
                    add (first, firstSeries);
                    add (second, secondSeries);
                    cascade.finish();
                };

                filtered (StereoBlock (frames));
                filtered (SampleBlock { left.data(), right.data(), left.size() });

                for (std::size_t i = 0; i < frames.size(); ++i)
                {
                    ASSERT_EQ (left[i], (float) frames[i].left()) << firstOrder << " and " << secondOrder;
                    ASSERT_EQ (right[i], (float) frames[i].right()) << firstOrder << " and " << secondOrder;
                }
            }
}

TEST (FilterBlock, LetsTheCallerChangeFramesBetweenTwoFilters)
{
    ButterworthFilter first, second;
    first.design (8, true, 300.0, rate);
    second.design (4, false, 7000.0, rate);
    auto firstByHand = first, secondByHand = second;
    auto frames = stereoNoise (1, maxBlockFrames);
    const auto input = frames;

    SectionCascade cascade (frames, SectionCascade::Coefficients::standing);
    first.addTo (cascade);

    for (auto& frame : cascade.processed())
        frame = frame * StereoPair::both (2.0);

    second.addTo (cascade);
    cascade.finish();

    for (std::size_t i = 0; i < input.size(); ++i)
    {
        const auto between = processed (firstByHand, input[i]) * StereoPair::both (2.0);
        ASSERT_TRUE (areEqual (frames[i], processed (secondByHand, between))) << i;
    }
}

TEST (FilterBlock, PutsTheFirstOrderSectionOfAnOddOrderBehindTheOthers)
{
    ButterworthFilter odd, even, one;
    odd.design (5, false, 900.0, rate);
    even.design (4, false, 900.0, rate);
    one.design (1, false, 900.0, rate);
    auto frames = stereoNoise (2, 100);
    const auto input = frames;
    process (odd, frames);

    for (std::size_t i = 0; i < input.size(); ++i)
        ASSERT_TRUE (areEqual (frames[i], processed (one, processed (even, input[i])))) << i;
}

TEST (FilterBlock, DesignsTheRestOfABatchAsAllOfItAtOnce)
{
    const auto cutoffs = movingCutoffs (3, maxBatchFrames);
    const std::vector<float> amounts (maxBatchFrames, 2.0f);
    const auto firstPart = std::span (cutoffs).first (20);

    for (const auto order : orders)
    {
        ButterworthFilter inParts, atOnce;
        ButterworthFilter::Series partSeries, series;
        inParts.designSeries (order, true, firstPart, 0, rate, partSeries);
        inParts.designSeries (order, true, cutoffs, firstPart.size(), rate, partSeries);
        atOnce.designSeries (order, true, cutoffs, 0, rate, series);

        for (std::size_t i = 0; i < order / 2; ++i)
            EXPECT_EQ (partSeries.sections[i].feedback1, series.sections[i].feedback1) << order;

        EXPECT_EQ (inParts.feedback1, atOnce.feedback1) << order;
        EXPECT_EQ (inParts.firstOrderFeedback, atOnce.firstOrderFeedback) << order;
    }

    GrungeLadder inParts, atOnce;
    GrungeLadder::Series partSeries, series;
    inParts.configureSeries (4, false, firstPart, amounts, 0, 80.0, rate, partSeries);
    inParts.configureSeries (4, false, cutoffs, amounts, firstPart.size(), 80.0, rate, partSeries);
    atOnce.configureSeries (4, false, cutoffs, amounts, 0, 80.0, rate, series);

    for (std::size_t frame = 0; frame < maxBatchFrames; ++frame)
        ASSERT_EQ (partSeries[frame].poleCoefficient, series[frame].poleCoefficient) << frame;

    ResonancePeak peakInParts, peakAtOnce;
    ResonancePeak::Series peakPartSeries, peakSeries;
    peakInParts.designSeries (rate, firstPart, 0, 0.9, 0.5, amounts, peakPartSeries);
    peakInParts.designSeries (rate, cutoffs, firstPart.size(), 0.9, 0.5, amounts, peakPartSeries);
    peakAtOnce.designSeries (rate, cutoffs, 0, 0.9, 0.5, amounts, peakSeries);

    for (std::size_t frame = 0; frame < maxBatchFrames; ++frame)
        ASSERT_EQ (peakPartSeries.b1[frame], peakSeries.b1[frame]) << frame;
}

TEST (FilterBlock, DesignsAFilterForEachFrameAsOneByOne)
{
    for (const auto highpass : { false, true })
    {
        // The order changes from block to block, so that sections come and go.
        ButterworthFilter together, oneByOne;
        BlockLengths lengths (highpass ? 1 : 2);

        for (std::uint32_t block = 0; block < 300; ++block)
        {
            const auto order = orders[(block * 7) % orders.size()];
            auto frames = stereoNoise (block, lengths.next (maxBatchFrames));
            const auto input = frames;
            const auto cutoffs = movingCutoffs (block + 1000, frames.size());
            ButterworthFilter::Series series;
            together.designSeries (order, highpass, cutoffs, 0, rate, series);
            SectionCascade cascade (frames, SectionCascade::Coefficients::perFrame);
            together.addTo (cascade, series);
            cascade.finish();

            for (std::size_t i = 0; i < input.size(); ++i)
            {
                oneByOne.design (order, highpass, cutoffs[i], rate);
                ASSERT_TRUE (areEqual (frames[i], processed (oneByOne, input[i]))) << order << ", frame " << i;
            }

            // The last design stays in force.
            ASSERT_EQ (together.limitedCutoff, oneByOne.limitedCutoff);
            ASSERT_TRUE (areEqual (processed (together, { 0.5, -0.5 }), processed (oneByOne, { 0.5, -0.5 })));
        }
    }
}

TEST (FilterBlock, DesignsTwoFiltersForEachFrameAsOneAfterTheOther)
{
    ButterworthFilter first, second, firstByHand, secondByHand;
    BlockLengths lengths (3);

    for (std::uint32_t block = 0; block < 500; ++block)
    {
        const auto firstOrder = orders[block % orders.size()];
        const auto secondOrder = orders[(block / 5) % orders.size()];
        auto frames = stereoNoise (block, lengths.next (maxBatchFrames));
        const auto input = frames;
        const auto firstCutoffs = movingCutoffs (block + 1000, frames.size());
        const auto secondCutoffs = movingCutoffs (block + 2000, frames.size());
        ButterworthFilter::Series firstSeries, secondSeries;
        first.designSeries (firstOrder, true, firstCutoffs, 0, rate, firstSeries);
        second.designSeries (secondOrder, false, secondCutoffs, 0, rate, secondSeries);
        SectionCascade cascade (frames, SectionCascade::Coefficients::perFrame);
        first.addTo (cascade, firstSeries);
        second.addTo (cascade, secondSeries);
        cascade.finish();

        for (std::size_t i = 0; i < input.size(); ++i)
        {
            firstByHand.design (firstOrder, true, firstCutoffs[i], rate);
            secondByHand.design (secondOrder, false, secondCutoffs[i], rate);
            ASSERT_TRUE (areEqual (frames[i], processed (secondByHand, processed (firstByHand, input[i]))))
                << firstOrder << " and " << secondOrder << ", frame " << i;
        }
    }
}

TEST (FilterBlock, ProcessesALadderAsFrameByFrame)
{
    for (int stages = 0; stages <= 8; ++stages)
        for (const auto highpass : { false, true })
        {
            GrungeLadder together;
            together.configure (stages, highpass, 2000.0, 2.0, 80.0, rate);
            auto oneByOne = together;
            BlockLengths lengths ((std::uint32_t) stages);

            for (std::uint32_t block = 0; block < 30; ++block)
            {
                auto frames = stereoNoise (block, lengths.next (maxBlockFrames));
                const auto input = frames;
                together.process (frames);

                for (std::size_t i = 0; i < input.size(); ++i)
                    ASSERT_TRUE (areEqual (frames[i], processed (oneByOne, input[i]))) << stages << ", frame " << i;
            }
        }
}

TEST (FilterBlock, ConfiguresALadderForEachFrameAsOneByOne)
{
    for (const auto highpass : { false, true })
    {
        GrungeLadder together, oneByOne;
        BlockLengths lengths (4);

        for (std::uint32_t block = 0; block < 300; ++block)
        {
            const auto stages = (int) orders[(block * 7) % orders.size()];
            auto frames = stereoNoise (block, lengths.next (maxBatchFrames));
            const auto input = frames;
            const auto cutoffs = movingCutoffs (block + 1000, frames.size());
            std::vector<float> resonances;

            for (std::size_t i = 0; i < frames.size(); ++i)
                resonances.push_back (0.1f * (float) ((block + i) % 100));

            GrungeLadder::Series series;
            together.configureSeries (stages, highpass, cutoffs, resonances, 0, 15.0, rate, series);
            together.process (series, frames);

            for (std::size_t i = 0; i < input.size(); ++i)
            {
                oneByOne.configure (stages, highpass, cutoffs[i], (double) resonances[i], 15.0, rate);
                ASSERT_TRUE (areEqual (frames[i], processed (oneByOne, input[i]))) << stages << ", frame " << i;
            }

            ASSERT_EQ (together.grunge, oneByOne.grunge);
            ASSERT_TRUE (areEqual (processed (together, { 0.5, -0.5 }), processed (oneByOne, { 0.5, -0.5 })));
        }
    }
}

TEST (FilterBlock, AddsAResonanceAsFrameByFrame)
{
    ResonancePeak together;
    together.design (rate, 1200.0, 0.5);
    auto oneByOne = together;
    BlockLengths lengths (5);

    for (std::uint32_t block = 0; block < 100; ++block)
    {
        auto frames = stereoNoise (block, lengths.next (maxBlockFrames));
        const auto input = frames;
        const auto amount = 0.1f * (float) (block + 1);
        together.addResonance (amount, frames);

        for (std::size_t i = 0; i < input.size(); ++i)
            ASSERT_TRUE (areEqual (frames[i], withResonance (oneByOne, amount, input[i]))) << i;
    }
}

TEST (FilterBlock, DesignsAResonanceForEachFrameAsOneByOne)
{
    ResonancePeak together, oneByOne;
    BlockLengths lengths (6);

    for (std::uint32_t block = 0; block < 200; ++block)
    {
        auto frames = stereoNoise (block, lengths.next (maxBatchFrames));
        const auto input = frames;
        std::vector<float> amounts;
        std::vector<double> cutoffs;
        const auto ratio = block % 3 == 0 ? 0.9 : 1.0;

        // Now and then the same cutoff again, which is no new design.
        for (std::size_t i = 0; i < frames.size(); ++i)
        {
            amounts.push_back (0.1f * (float) ((block + i) % 100));
            cutoffs.push_back (500.0 + 10.0 * (double) ((block + i) / 3));
        }

        const auto bandwidth = block % 2 == 0 ? 0.5 : 1.25;
        ResonancePeak::Series series;
        together.designSeries (rate, cutoffs, 0, ratio, bandwidth, amounts, series);
        together.addResonance (series, amounts, frames);

        for (std::size_t i = 0; i < input.size(); ++i)
        {
            // An amount of 0 leaves frame and section alone.
            const auto isAudible = amounts[i] > 0.0f;

            if (isAudible)
                oneByOne.design (rate, cutoffs[i] * ratio, bandwidth);

            ASSERT_TRUE (areEqual (frames[i], isAudible ? withResonance (oneByOne, amounts[i], input[i]) : input[i]))
                << i;
        }

        ASSERT_EQ (together.designedFrequency, oneByOne.designedFrequency);
        ASSERT_EQ (together.b0, oneByOne.b0);
    }
}
