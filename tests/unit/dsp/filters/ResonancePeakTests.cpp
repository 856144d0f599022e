// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/filters/ResonancePeak.h"

#include <cmath>
#include <complex>
#include <numbers>

#include <gtest/gtest.h>

#include "reference/ReferenceFilters.h"
#include "support/Response.h"

namespace
{
constexpr double rate = 48000.0;

template <typename Filter>
[[nodiscard]] Filter designed (double frequency, double bandwidth, double atRate = rate)
{
    Filter peak;
    peak.design (atRate, frequency, bandwidth);
    return peak;
}

/** The magnitude of the analogue peaking section of +20 dB that the digital one is mapped from. */
[[nodiscard]] double peakMagnitude (double f, double centre, double bandwidth)
{
    const auto w = 2.0 * std::numbers::pi * centre / rate;
    const auto inverseQ = 2.0 * std::sinh ((double) 0.3465735912322998f * bandwidth * w / std::sin (w));
    const auto gain = std::sqrt (10.0);
    const auto x = std::tan (std::numbers::pi * f / rate) / std::tan (std::numbers::pi * centre / rate);
    return std::abs (std::complex<double> (1.0 - x * x, x * gain * inverseQ)
                     / std::complex<double> (1.0 - x * x, x / gain * inverseQ));
}

/** Where between the two frequencies the magnitude passes +10 dB, half of the peak in decibels. */
[[nodiscard]] double halfGainFrequency (const std::vector<double>& impulseResponse, double inside, double outside)
{
    for (int i = 0; i < 40; ++i)
    {
        const auto middle = 0.5 * (inside + outside);
        (response::magnitude (impulseResponse, middle / rate) > std::sqrt (10.0) ? inside : outside) = middle;
    }

    return inside;
}

template <typename ResonancePeak>
class ResonancePeaks : public testing::Test
{
};

using ResonancePeakTypes = testing::Types<ResonancePeak, reference::ResonancePeak>;
TYPED_TEST_SUITE (ResonancePeaks, ResonancePeakTypes);
} // namespace

TYPED_TEST (ResonancePeaks, HasTheMagnitudeOfAPeakingSection)
{
    for (const auto centre : { 200.0, 1000.0, 9000.0, 20000.0 })
        for (const auto bandwidth : { 0.5, (double) 0.707f, 1.25, 2.0, 3.0 })
        {
            auto peak = designed<TypeParam> (centre, bandwidth);
            const auto impulseResponse = response::toImpulse (peak, 40000);

            // The tolerance covers the rounding of a section of gain 10 in double precision.
            for (const auto f : { 20.0, 190.0, 700.0, 1000.0, 5000.0, 12000.0, 23000.0 })
                EXPECT_NEAR (response::magnitude (impulseResponse, f / rate), peakMagnitude (f, centre, bandwidth),
                             1.0e-9)
                    << centre << ' ' << bandwidth << ' ' << f;
        }
}

TYPED_TEST (ResonancePeaks, RaisesItsCentreByTwentyDecibelsAndLeavesTheEnds)
{
    for (const auto centre : { 100.0, 1000.0, 15000.0 })
    {
        auto peak = designed<TypeParam> (centre, 1.25);
        const auto impulseResponse = response::toImpulse (peak, 40000);
        EXPECT_NEAR (response::magnitude (impulseResponse, centre / rate), 10.0, 1.0e-9);
        EXPECT_NEAR (response::magnitude (impulseResponse, 0.0), 1.0, 1.0e-9);
        EXPECT_NEAR (response::magnitude (impulseResponse, 0.5), 1.0, 1.0e-9);
    }
}

// The bandwidth lies between the two +10 dB points. It is exact where the mapping bends nothing: at low frequencies.
TYPED_TEST (ResonancePeaks, IsAsManyOctavesWideAsAsked)
{
    for (const auto bandwidth : { 0.5, 1.25, 2.0 })
    {
        constexpr auto centre = 100.0;
        auto peak = designed<TypeParam> (centre, bandwidth);
        const auto impulseResponse = response::toImpulse (peak, 30000);
        const auto upper = halfGainFrequency (impulseResponse, centre, 1000.0);
        const auto lower = halfGainFrequency (impulseResponse, centre, 10.0);
        EXPECT_NEAR (std::log2 (upper / lower), bandwidth, 0.001);
    }
}

TYPED_TEST (ResonancePeaks, LeavesTheFrameAndItselfAloneBeforeTheFirstDesign)
{
    TypeParam peak;

    for (const auto x : response::noise (1, 100))
    {
        auto left = x, right = -x;
        peak.process (left, right);
        ASSERT_EQ (left, x);
        ASSERT_EQ (right, -x);
    }

    peak.design (rate, 1000.0, 1.0);
    auto fresh = designed<TypeParam> (1000.0, 1.0);
    EXPECT_EQ (response::toNoise (peak, 2, 100), response::toNoise (fresh, 2, 100));
}

TYPED_TEST (ResonancePeaks, DoesNothingWhenDesignedWithTheSameAgain)
{
    auto peak = designed<TypeParam> (1000.0, 1.0);
    peak.b0 = 123.0;
    peak.design (rate, 1000.0, 1.0);
    EXPECT_EQ (peak.b0, 123.0);
}

TYPED_TEST (ResonancePeaks, RecomputesEverythingWhenOneArgumentDiffers)
{
    struct Arguments
    {
        double rate, frequency, bandwidth;
    };

    for (const auto& changed :
         { Arguments { rate, 1000.0, 1.25 }, Arguments { rate, 1000.5, 1.0 }, Arguments { 44100.0, 1000.0, 1.0 } })
    {
        auto peak = designed<TypeParam> (1000.0, 1.0);
        peak.b0 = peak.b1 = peak.b2 = peak.a0 = peak.a1 = peak.a2 = 123.0;
        peak.design (changed.rate, changed.frequency, changed.bandwidth);

        auto fresh = designed<TypeParam> (changed.frequency, changed.bandwidth, changed.rate);
        EXPECT_EQ (response::toNoise (peak, 3, 50), response::toNoise (fresh, 3, 50));
        EXPECT_EQ (peak.designedBandwidth, changed.bandwidth);
    }
}

TYPED_TEST (ResonancePeaks, KeepsRingingThroughADesign)
{
    auto peak = designed<TypeParam> (1000.0, 0.5);
    response::toNoise (peak, 4, 100);
    peak.design (rate, 1100.0, 0.5);
    EXPECT_NE (response::toSilence (peak, 1).front(), 0.0);
}

TYPED_TEST (ResonancePeaks, TreatsBothChannelsAlikeAndApart)
{
    auto both = designed<TypeParam> (3000.0, 2.0);
    auto leftOnly = both;
    const auto lefts = response::noise (5, 300);
    const auto rights = response::noise (6, 300);
    auto swapped = both;

    for (std::size_t i = 0; i < lefts.size(); ++i)
    {
        auto left = lefts[i], right = rights[i], l = lefts[i], r = rights[i], alone = lefts[i], silent = 0.0;
        both.process (left, right);
        swapped.process (r, l);
        leftOnly.process (alone, silent);
        ASSERT_EQ (left, alone);
        ASSERT_EQ (silent, 0.0);
        ASSERT_EQ (left, l);
        ASSERT_EQ (right, r);
    }
}

TYPED_TEST (ResonancePeaks, TakesEveryFrequencyWithoutFault)
{
    for (const auto frequency : { 0.0, 24000.0, 48000.0, 1.0e9, 1.0e300 })
    {
        auto peak = designed<TypeParam> (frequency, 1.25);
        response::toNoise (peak, 7, 100);
        EXPECT_TRUE (peak.designed);
        EXPECT_EQ (peak.designedFrequency, frequency);
    }
}
