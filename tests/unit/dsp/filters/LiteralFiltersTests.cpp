// SPDX-License-Identifier: AGPL-3.0-or-later
// The filters beside those of the second engine, in every bit. Built twice: with left and right in one register, and apart as
// on a processor without SSE2.
#include <array>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/filters/ButterworthFilter.h"
#include "dsp/filters/GrungeLadder.h"
#include "dsp/filters/ResonancePeak.h"
#include "dsp/simd/FrameRun.h"
#include "reference/ReferenceFilters.h"
#include "support/Response.h"

namespace
{
constexpr double rate = 44100.0;
constexpr std::size_t numRuns = 40;

/** Frames and cutoffs of one stretch, between 1 frame and the longest stretch with a design for each. */
struct Stretch
{
    explicit Stretch (std::size_t number)
        : size (1 + number * 37 % maxDesigns), left (response::noise ((std::uint32_t) number, size)),
          right (response::noise ((std::uint32_t) number + 1000, size))
    {
        for (std::size_t i = 0; i < size; ++i)
        {
            frames.emplace_back (left[i], right[i]);
            cutoffs.push_back (700.0f + 650.0f * (float) left[i] + (i % 50 == 49 ? 50000.0f : 0.0f));
            amounts.push_back (5.0f + 5.0f * (float) right[i]);
        }
    }

    std::size_t size;
    std::vector<double> left, right;
    std::vector<StereoPair> frames;
    std::vector<float> cutoffs, amounts;
};

/** Sends each frame of the stretch through the literal filter, redesigned, and compares it with what stands there. */
template <typename Redesign, typename Filter>
void expectSameBits (Stretch& stretch, Filter& literal, Redesign redesign)
{
    for (std::size_t i = 0; i < stretch.size; ++i)
    {
        redesign (i);
        literal.process (stretch.left[i], stretch.right[i]);
        ASSERT_EQ (stretch.frames[i].left(), stretch.left[i]) << "frame " << i;
        ASSERT_EQ (stretch.frames[i].right(), stretch.right[i]) << "frame " << i;
    }
}
} // namespace

TEST (LiteralFilters, AgreeWithTheButterworthFilterInEveryBitOfEveryOrder)
{
    for (const bool isHighpass : { true, false })
    {
        for (const auto order : { 0u, 1u, 2u, 4u, 8u })
        {
            SCOPED_TRACE (order);
            ButterworthFilter ours;
            reference::ButterworthFilter literal;

            for (std::size_t number = 0; number < numRuns; ++number)
            {
                Stretch stretch (number);
                ButterworthFilter::Series series;
                ours.designSeries (order, isHighpass, stretch.cutoffs, rate, series);
                ours.processRun (series, stretch.frames);
                expectSameBits (stretch, literal,
                                [&] (std::size_t i)
                                { literal.design (order, isHighpass, (double) stretch.cutoffs[i], rate); });
            }
        }
    }
}

TEST (LiteralFilters, AgreeWithTheLadderInEveryBitOfEveryLength)
{
    for (const bool isHighpass : { true, false })
    {
        for (int stages = 0; stages <= 8; ++stages)
        {
            SCOPED_TRACE (stages);
            GrungeLadder ours;
            reference::GrungeLadder literal;

            for (std::size_t number = 0; number < numRuns; ++number)
            {
                Stretch stretch (number);
                GrungeLadder::Series series;
                ours.configureSeries (stages, isHighpass, stretch.cutoffs, stretch.amounts, 15.0, rate, series);
                ours.processRun (series, stretch.frames);
                expectSameBits (stretch, literal,
                                [&] (std::size_t i) {
                                    literal.configure (stages, isHighpass, (double) stretch.cutoffs[i],
                                                       (double) stretch.amounts[i], 15.0, rate);
                                });
            }
        }
    }
}

TEST (LiteralFilters, AgreeWithTheResonancePeakInEveryBit)
{
    ResonancePeak ours;
    reference::ResonancePeak literal;

    for (std::size_t number = 0; number < numRuns; ++number)
    {
        Stretch stretch (number);

        for (std::size_t i = 0; i < stretch.size; ++i)
        {
            auto left = stretch.left[i];
            auto right = stretch.right[i];
            ours.design (rate, (double) stretch.cutoffs[i], 0.707);
            ours.process (left, right);
            stretch.frames[i] = StereoPair (left, right);
        }

        expectSameBits (stretch, literal,
                        [&] (std::size_t i) { literal.design (rate, (double) stretch.cutoffs[i], 0.707); });
    }
}
