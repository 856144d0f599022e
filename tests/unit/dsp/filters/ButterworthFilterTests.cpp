// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/filters/ButterworthFilter.h"

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "reference/ReferenceFilters.h"
#include "reference/ReferenceMath.h"
#include "support/Response.h"

namespace
{
constexpr double rate = 48000.0;
constexpr auto quietNaN = std::numeric_limits<double>::quiet_NaN();

/** The single-precision 0.498. */
constexpr double limit = (double) 0.498f;

// The sections run in double precision. A lowpass at 100 Hz builds up about 2e4 times its input in its delay lines. Their
// rounding error is about 2e-16 of that, or a few 1e-12 of the input.
constexpr double roundingOfTheSections = 1.0e-10;

constexpr std::size_t framesUntilSilence = 40000;

template <typename Filter>
[[nodiscard]] Filter designed (unsigned order, bool highpass, double cutoff, double atRate = rate)
{
    Filter filter;
    filter.design (order, highpass, cutoff, atRate);
    return filter;
}

/** The magnitude of a Butterworth filter. Frequencies are those of the analogue filter, tan (pi f / rate). */
[[nodiscard]] double butterworthMagnitude (unsigned order, bool highpass, double analogueRatio)
{
    const auto x = highpass ? 1.0 / analogueRatio : analogueRatio;
    return 1.0 / std::sqrt (1.0 + std::pow (x, 2.0 * (double) order));
}

[[nodiscard]] double tangentOf (double frequency) { return std::tan (std::numbers::pi * frequency / rate); }

/** The quality factor of a section, from its denominator mapped back to the analogue plane. */
template <typename Filter>
[[nodiscard]] double qOf (const Filter& filter, std::size_t section)
{
    const auto f1 = filter.feedback1[section];
    const auto f2 = filter.feedback2[section];
    return std::sqrt ((1.0 - f1 - f2) * (1.0 + f1 - f2)) / (2.0 + 2.0 * f2);
}

/** One second-order section with its own delay line: the cascade should equal a series of these. */
struct LiteralSection
{
    double w1 = 0.0, w2 = 0.0;

    [[nodiscard]] double process (double x, double a, double r, bool highpass)
    {
        const auto s = 2.0 * a * r + a * a + 1.0;
        const auto gain = (highpass ? 1.0 : a * a) / s;
        const auto w0 = w1 * (2.0 * (1.0 - a * a) / s) + (2.0 * a * r - a * a - 1.0) / s * w2 + x;
        const auto y = ((highpass ? -2.0 : 2.0) * w1 + w0 + w2) * gain;
        w2 = w1;
        w1 = w0;
        return y;
    }
};

/** The left channel of a cascade, with delay lines in the test itself. */
struct LiteralCascade
{
    std::array<LiteralSection, 4> sections;

    [[nodiscard]] double process (double x, unsigned numSections, double cutoff, bool highpass)
    {
        const auto a = reference::tangent (cutoff * 3.141592653589793 / rate);
        const auto n = (double) numSections;

        for (unsigned i = 0; i < numSections; ++i)
            x = sections[i].process (
                x, a, reference::sineWithinQuarterTurn (1.5707963267948966 / n * i + 0.7853981633974483 / n), highpass);

        return x;
    }

    void silenceFrom (std::size_t first)
    {
        for (auto i = first; i < sections.size(); ++i)
            sections[i] = {};
    }
};

template <typename ButterworthFilter>
class ButterworthFilters : public testing::Test
{
};

using ButterworthFilterTypes = testing::Types<ButterworthFilter, reference::ButterworthFilter>;
TYPED_TEST_SUITE (ButterworthFilters, ButterworthFilterTypes);
} // namespace

TYPED_TEST (ButterworthFilters, HasTheMagnitudeOfItsOrder)
{
    for (const auto order : { 2u, 4u, 8u })
        for (const auto highpass : { false, true })
            for (const auto cutoff : { 100.0, 1000.0, 12000.0, 20000.0 })
            {
                auto filter = designed<TypeParam> (order, highpass, cutoff);
                const auto impulseResponse = response::toImpulse (filter, framesUntilSilence);

                for (const auto f : { 10.0, 90.0, 500.0, 999.0, 3000.0, 12000.0, 19000.0, 23500.0 })
                {
                    const auto expected = butterworthMagnitude (order, highpass, tangentOf (f) / tangentOf (cutoff));
                    EXPECT_NEAR (response::magnitude (impulseResponse, f / rate), expected, roundingOfTheSections)
                        << "order " << order << (highpass ? " highpass at " : " lowpass at ") << cutoff << ", f " << f;
                }
            }
}

TYPED_TEST (ButterworthFilters, IsThreeDecibelsDownAtItsCutoff)
{
    for (const auto order : { 2u, 4u, 8u })
        for (const auto highpass : { false, true })
            for (const auto cutoff : { 100.0, 440.0, 5000.0, 23000.0 })
            {
                auto filter = designed<TypeParam> (order, highpass, cutoff);
                const auto impulseResponse = response::toImpulse (filter, framesUntilSilence);
                EXPECT_NEAR (response::magnitude (impulseResponse, cutoff / rate), std::sqrt (0.5),
                             roundingOfTheSections)
                    << order << " at " << cutoff;
            }
}

TYPED_TEST (ButterworthFilters, OrdersItsSectionsByFallingQ)
{
    const std::array<std::vector<double>, 3> table {
        { { 0.7071 }, { 1.3066, 0.5412 }, { 2.5629, 0.9000, 0.6013, 0.5098 } }
    };

    for (std::size_t row = 0; row < table.size(); ++row)
        for (const auto highpass : { false, true })
            for (const auto cutoff : { 50.0, 1000.0, 15000.0 })
            {
                const auto filter = designed<TypeParam> (2u << row, highpass, cutoff);
                const auto n = (double) table[row].size();
                ASSERT_EQ (filter.numSections, table[row].size());

                for (std::size_t i = 0; i < table[row].size(); ++i)
                {
                    // The four digits of the table, and the sine that they come from.
                    EXPECT_NEAR (qOf (filter, i), table[row][i], 5.0e-5);
                    EXPECT_NEAR (qOf (filter, i),
                                 0.5 / std::sin (std::numbers::pi * (2.0 * (double) i + 1.0) / (4.0 * n)), 1.0e-9);
                }
            }
}

TYPED_TEST (ButterworthFilters, ChangesNothingAtOrderZero)
{
    for (const auto highpass : { false, true })
    {
        auto filter = designed<TypeParam> (0, highpass, 1000.0);

        for (const auto x : { 0.0, 1.0, -0.3, 1.0e30, 5.0e-324 })
        {
            auto left = x;
            auto right = -x;
            filter.process (left, right);
            EXPECT_EQ (left, x);
            EXPECT_EQ (right, -x);
        }
    }
}

// The first-order section takes its cutoff as it is, without the tangent: its -3 dB point lies below it, the more so the
// higher it is.
TYPED_TEST (ButterworthFilters, DoesNotPrewarpAtOrderOne)
{
    for (const auto cutoff : { 30.0, 1000.0, 12000.0, 40000.0 })
    {
        auto lowpass = designed<TypeParam> (1, false, cutoff);
        auto highpass = designed<TypeParam> (1, true, cutoff);
        const auto low = response::toImpulse (lowpass, framesUntilSilence);
        const auto high = response::toImpulse (highpass, framesUntilSilence);

        for (const auto f : { 10.0, 1000.0, 7000.0, 20000.0 })
        {
            const auto x = tangentOf (f) / (std::numbers::pi * cutoff / rate);
            EXPECT_NEAR (response::magnitude (low, f / rate), butterworthMagnitude (1, false, x), 1.0e-12);
            EXPECT_NEAR (response::magnitude (high, f / rate), butterworthMagnitude (1, true, x), 1.0e-12);
        }
    }
}

TYPED_TEST (ButterworthFilters, MakesTheFirstOrderHighpassTheComplementOfTheLowpass)
{
    auto lowpass = designed<TypeParam> (1, false, 700.0);
    auto highpass = designed<TypeParam> (1, true, 700.0);

    for (const auto x : response::noise (1, 1000))
    {
        auto lowLeft = x, lowRight = 0.5 * x, highLeft = x, highRight = 0.5 * x;
        lowpass.process (lowLeft, lowRight);
        highpass.process (highLeft, highRight);
        ASSERT_EQ (highLeft, x - lowLeft);
        ASSERT_EQ (highRight, 0.5 * x - lowRight);
    }
}

TYPED_TEST (ButterworthFilters, GivesSilenceAsAFirstOrderLowpassAtZeroAndAllAsAHighpass)
{
    auto lowpass = designed<TypeParam> (1, false, 0.0);
    auto highpass = designed<TypeParam> (1, true, 0.0);

    for (const auto x : response::noise (2, 1000))
    {
        auto lowLeft = x, lowRight = x, highLeft = x, highRight = x;
        lowpass.process (lowLeft, lowRight);
        highpass.process (highLeft, highRight);
        ASSERT_EQ (lowLeft, 0.0);
        ASSERT_EQ (lowRight, 0.0);
        ASSERT_EQ (highLeft, x);
        ASSERT_EQ (highRight, x);
    }
}

TYPED_TEST (ButterworthFilters, HoldsItsLastOutputAsAFirstOrderLowpassAtZero)
{
    auto filter = designed<TypeParam> (1, false, 1000.0);
    response::toNoise (filter, 3, 50);
    auto left = 0.25, right = 0.25;
    filter.process (left, right);
    filter.design (1, false, 0.0, rate);

    for (const auto y : response::toSilence (filter, 3))
        EXPECT_TRUE (y == left || y == right);

    EXPECT_NE (left, 0.0);
}

TYPED_TEST (ButterworthFilters, KeepsTheDelayLinesOfLiveSectionsWhenTheOrderFalls)
{
    auto filter = designed<TypeParam> (8, false, 900.0);
    LiteralCascade literal;
    const auto input = response::noise (4, 600);

    for (std::size_t i = 0; i < input.size(); ++i)
    {
        const auto numSections = i < 200 || i >= 400 ? 4u : 2u;
        const auto cutoff = 900.0 + (double) i;
        filter.design (2 * numSections, false, cutoff, rate);

        // Falling out of use silences the last two sections; the first two never notice.
        if (numSections == 2)
            literal.silenceFrom (2);

        auto left = input[i];
        auto right = 0.0;
        filter.process (left, right);
        ASSERT_EQ (left, literal.process (input[i], numSections, cutoff, false)) << "frame " << i;
    }
}

TYPED_TEST (ButterworthFilters, EqualsItsSectionsInEveryBit)
{
    for (const auto highpass : { false, true })
        for (const auto numSections : { 1u, 2u, 4u })
            for (const auto cutoff : { 20.0, 777.7, 23000.0 })
            {
                auto filter = designed<TypeParam> (2 * numSections, highpass, cutoff);
                LiteralCascade literal;

                for (const auto x : response::noise (5, 500))
                {
                    auto left = x, right = -x;
                    filter.process (left, right);
                    ASSERT_EQ (left, literal.process (x, numSections, cutoff, highpass));
                    ASSERT_EQ (right, -left);
                }
            }
}

TYPED_TEST (ButterworthFilters, BringsSectionsBackFromSilence)
{
    for (const auto detour : { 0u, 1u })
    {
        auto filter = designed<TypeParam> (8, false, 500.0);
        response::toNoise (filter, 6, 300);
        filter.design (detour, false, 500.0, rate);
        filter.design (8, false, 500.0, rate);

        for (const auto y : response::toSilence (filter, 100))
            ASSERT_EQ (y, 0.0);
    }
}

TYPED_TEST (ButterworthFilters, KeepsRingingThroughAChangeOfCutoffRateAndKind)
{
    auto filter = designed<TypeParam> (4, false, 500.0);
    response::toNoise (filter, 7, 300);
    filter.design (4, true, 5000.0, 96000.0);
    EXPECT_NE (response::toSilence (filter, 1).front(), 0.0);
}

TYPED_TEST (ButterworthFilters, KeepsTheFirstOrderSectionsStateThroughEveryDesign)
{
    auto filter = designed<TypeParam> (1, false, 300.0);
    response::toNoise (filter, 8, 200);
    auto untouched = filter;

    for (const auto order : { 2u, 8u, 0u, 4u })
    {
        filter.design (order, true, 2000.0, rate);
        response::toNoise (filter, 9, 50);
    }

    filter.design (1, false, 300.0, rate);
    EXPECT_EQ (response::toNoise (filter, 10, 200), response::toNoise (untouched, 10, 200));
}

TYPED_TEST (ButterworthFilters, LimitsTheCutoffOfItsSectionsJustBelowHalfTheRate)
{
    for (const auto highpass : { false, true })
        for (const auto cutoff : { 0.5 * rate, 0.75 * rate, rate, 1.0e9 })
        {
            auto atLimit = designed<TypeParam> (4, highpass, limit * rate);
            auto above = designed<TypeParam> (4, highpass, cutoff);
            EXPECT_EQ (above.limitedCutoff, limit * rate);
            EXPECT_EQ (response::toNoise (above, 11, 200), response::toNoise (atLimit, 11, 200));
        }

    EXPECT_EQ (designed<TypeParam> (2, false, 0.4979 * rate).limitedCutoff, 0.4979 * rate);
}

TYPED_TEST (ButterworthFilters, DoesNotLimitTheCutoffAtOrderOne)
{
    auto previous = 1.0;

    for (const auto cutoff : { 0.498 * rate, 0.5 * rate, 0.75 * rate, 2.0 * rate, 1000.0 * rate })
    {
        const auto filter = designed<TypeParam> (1, false, cutoff);
        EXPECT_LT (filter.firstOrderFeedback, previous);
        EXPECT_GT (filter.firstOrderFeedback, -1.0);
        previous = filter.firstOrderFeedback;
    }

    EXPECT_NEAR (designed<TypeParam> (1, false, 1.0e12).firstOrderFeedback, -1.0, 1.0e-6);
}

TYPED_TEST (ButterworthFilters, TreatsBothChannelsAlikeAndApart)
{
    for (const auto order : { 1u, 2u, 8u })
    {
        auto both = designed<TypeParam> (order, true, 400.0);
        auto leftOnly = both;
        auto rightOnly = both;
        const auto lefts = response::noise (12, 300);
        const auto rights = response::noise (13, 300);

        for (std::size_t i = 0; i < lefts.size(); ++i)
        {
            auto left = lefts[i], right = rights[i], l = lefts[i], r = rights[i], silentL = 0.0, silentR = 0.0;
            both.process (left, right);
            leftOnly.process (l, silentR);
            rightOnly.process (silentL, r);
            ASSERT_EQ (left, l);
            ASSERT_EQ (right, r);
            ASSERT_EQ (silentL, 0.0);
            ASSERT_EQ (silentR, 0.0);
        }
    }
}

TYPED_TEST (ButterworthFilters, GivesTheSameHoweverOftenItIsDesignedAgain)
{
    for (const auto order : { 0u, 1u, 2u, 4u, 8u })
    {
        auto once = designed<TypeParam> (order, false, 1234.5);
        auto always = once;

        for (const auto x : response::noise (14, 300))
        {
            auto left = x, right = x, l = x, r = x;
            once.process (left, right);
            always.design (order, false, 1234.5, rate);
            always.process (l, r);
            ASSERT_EQ (left, l);
            ASSERT_EQ (right, r);
        }
    }
}

TYPED_TEST (ButterworthFilters, StaysFiniteAtEveryCutoffAndRate)
{
    for (const auto atRate : { 999.1, 8000.0, 22050.0, 192000.0, 1.0e10 })
        for (const auto cutoff : { 0.0, 1.0e-3, 20.0, 20000.0, 1.0e15 })
            for (const auto order : { 1u, 2u, 4u, 8u })
                for (const auto highpass : { false, true })
                {
                    auto filter = designed<TypeParam> (order, highpass, cutoff, atRate);

                    for (const auto y : response::toNoise (filter, 15, 500))
                        ASSERT_LT (std::abs (y), 100.0) << order << ' ' << cutoff << ' ' << atRate;
                }
}

TYPED_TEST (ButterworthFilters, StaysNaNAfterANaNCutoffUntilItsSectionsAreCleared)
{
    auto filter = designed<TypeParam> (4, false, quietNaN);
    EXPECT_TRUE (std::isnan (filter.limitedCutoff));
    response::toNoise (filter, 16, 10);

    filter.design (4, false, 1000.0, rate);
    EXPECT_TRUE (std::isnan (response::toSilence (filter, 1).front()));

    filter.design (0, false, 1000.0, rate);
    filter.design (4, false, 1000.0, rate);
    auto fresh = designed<TypeParam> (4, false, 1000.0);
    EXPECT_EQ (response::toNoise (filter, 17, 100), response::toNoise (fresh, 17, 100));
}
