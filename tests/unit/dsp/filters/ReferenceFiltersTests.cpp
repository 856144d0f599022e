// SPDX-License-Identifier: AGPL-3.0-or-later
// The filters compared with those of the reference engine, bit for bit. Built twice: with the processor's lanes,
// and with plain ones.
#include <array>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/filters/ButterworthFilter.h"
#include "dsp/filters/GrungeLadder.h"
#include "dsp/filters/ResonancePeak.h"
#include "dsp/simd/StereoBlock.h"
#include "reference/ReferenceFilters.h"
#include "support/Response.h"

namespace
{
constexpr double rate = 44100.0;
constexpr std::size_t numBatches = 40;

/** The frames of a batch, 1 to maxBatchFrames of them, and a cutoff and an amount for each. */
struct Batch
{
    explicit Batch (std::size_t number)
        : size (1 + number * 37 % maxBatchFrames), left (response::noise ((std::uint32_t) number, size)),
          right (response::noise ((std::uint32_t) number + 1000, size))
    {
        for (std::size_t i = 0; i < size; ++i)
        {
            frames.emplace_back (left[i], right[i]);
            cutoffs.push_back (700.0 + 650.0 * left[i] + (i % 50 == 49 ? 50000.0 : 0.0));
            amounts.push_back (5.0f + 5.0f * (float) right[i]);
        }
    }

    std::size_t size;
    std::vector<double> left, right;
    std::vector<StereoPair> frames;
    std::vector<double> cutoffs;
    std::vector<float> amounts;
};

/** Sends each frame of the batch through the reference filter, redesigned, and compares the results. */
template <typename Redesign, typename Filter>
void expectSameBits (Batch& batch, Filter& byReference, Redesign redesign)
{
    for (std::size_t i = 0; i < batch.size; ++i)
    {
        redesign (i);
        byReference.process (batch.left[i], batch.right[i]);
        ASSERT_EQ (batch.frames[i].left(), batch.left[i]) << "frame " << i;
        ASSERT_EQ (batch.frames[i].right(), batch.right[i]) << "frame " << i;
    }
}
} // namespace

TEST (ReferenceFilters, AgreeWithTheButterworthFilterInEveryBitOfEveryOrder)
{
    for (const bool isHighpass : { true, false })
    {
        for (const auto order : { 0u, 1u, 2u, 4u, 8u })
        {
            SCOPED_TRACE (order);
            ButterworthFilter filter;
            reference::ButterworthFilter byReference;

            for (std::size_t number = 0; number < numBatches; ++number)
            {
                Batch batch (number);
                ButterworthFilter::Series series;
                filter.designSeries (order, isHighpass, batch.cutoffs, 0, rate, series);
                SectionCascade cascade (batch.frames, SectionCascade::Coefficients::perFrame);
                filter.addTo (cascade, series);
                cascade.finish();
                expectSameBits (batch, byReference,
                                [&] (std::size_t i)
                                { byReference.design (order, isHighpass, batch.cutoffs[i], rate); });
            }
        }
    }
}

TEST (ReferenceFilters, AgreeWithTheLadderInEveryBitOfEveryLength)
{
    for (const bool isHighpass : { true, false })
    {
        for (int stages = 0; stages <= 8; ++stages)
        {
            SCOPED_TRACE (stages);
            GrungeLadder filter;
            reference::GrungeLadder byReference;

            for (std::size_t number = 0; number < numBatches; ++number)
            {
                Batch batch (number);
                GrungeLadder::Series series;
                filter.configureSeries (stages, isHighpass, batch.cutoffs, batch.amounts, 0, 15.0, rate, series);
                filter.process (series, batch.frames);
                expectSameBits (batch, byReference,
                                [&] (std::size_t i) {
                                    byReference.configure (stages, isHighpass, batch.cutoffs[i],
                                                           (double) batch.amounts[i], 15.0, rate);
                                });
            }
        }
    }
}

TEST (ReferenceFilters, AgreeWithTheResonancePeakInEveryBit)
{
    ResonancePeak filter;
    reference::ResonancePeak byReference;

    for (std::size_t number = 0; number < numBatches; ++number)
    {
        Batch batch (number);

        for (std::size_t i = 0; i < batch.size; ++i)
        {
            auto left = batch.left[i];
            auto right = batch.right[i];
            filter.design (rate, batch.cutoffs[i], 0.707);
            filter.process (left, right);
            batch.frames[i] = StereoPair (left, right);
        }

        expectSameBits (batch, byReference,
                        [&] (std::size_t i) { byReference.design (rate, batch.cutoffs[i], 0.707); });
    }
}
