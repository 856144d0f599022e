// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/simd/StereoBlock.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace
{
/** All kinds of numbers. Every pair of them is tried in every lane. */
template <typename Number, typename Limits = std::numeric_limits<Number>>
constexpr std::array numbers { Number (0.0),       Number (-0.0),        Number (1.0),       Number (-1.0),
                               Number (0.25),      Limits::max(),        Number (-7.5),      Number (1.5),
                               Limits::min(),      Limits::denorm_min(), Limits::infinity(), -Limits::infinity(),
                               Limits::quiet_NaN() };

/** The same bits, or two NaNs of any kind. */
template <typename Number>
[[nodiscard]] bool areSame (Number a, Number b)
{
    return (std::isnan (a) && std::isnan (b)) || (a == b && std::signbit (a) == std::signbit (b));
}

template <typename OfQuads, typename OfFloats>
void expectTheSameInEachLane (OfQuads ofQuads, OfFloats ofFloats)
{
    constexpr auto floats = numbers<float>;
    const auto number = [&] (std::size_t k) { return floats[k % floats.size()]; };

    for (std::size_t i = 0; i < floats.size(); ++i)
        for (std::size_t j = 0; j < floats.size(); ++j)
        {
            const FloatQuad::Values a { number (i), number (i + 1), number (i + 2), number (i + 3) };
            const FloatQuad::Values b { number (j), number (j + 3), number (j + 6), number (j + 9) };
            const auto result = ofQuads (FloatQuad (a), FloatQuad (b)).values();

            for (std::size_t k = 0; k < FloatQuad::size; ++k)
                ASSERT_TRUE (areSame (result[k], ofFloats (a[k], b[k])))
                    << a[k] << " and " << b[k] << ": " << result[k];
        }
}

template <typename OfPairs, typename OfDoubles>
void expectTheSameOnEachSide (OfPairs ofPairs, OfDoubles ofDoubles)
{
    constexpr auto doubles = numbers<double>;

    for (const auto a : doubles)
        for (const auto b : doubles)
            for (const auto c : doubles)
            {
                const auto result = ofPairs (StereoPair (a, c), StereoPair (b, a));
                ASSERT_TRUE (areSame (result.left(), ofDoubles (a, b))) << a << " and " << b << ": " << result.left();
                ASSERT_TRUE (areSame (result.right(), ofDoubles (c, a))) << c << " and " << a << ": " << result.right();
            }
}

using Patterns = std::array<std::uint64_t, 2>;

template <typename OfPairs, typename OfPatterns>
void expectTheSameBits (OfPairs ofPairs, OfPatterns ofPatterns)
{
    constexpr std::array<std::uint64_t, 6> patterns { 0, 1, 0xffffffff, 0x8000000000000000, 0x0123456789abcdef, ~0ull };

    for (const auto a : patterns)
        for (const auto b : patterns)
        {
            const auto result = ofPairs (std::bit_cast<BitPair> (Patterns { a, b }),
                                         std::bit_cast<BitPair> (Patterns { b, patterns[4] }));
            ASSERT_EQ (std::bit_cast<Patterns> (result), (Patterns { ofPatterns (a, b), ofPatterns (b, patterns[4]) }));
        }
}

testing::AssertionResult areEqual (StereoPair a, StereoPair b)
{
    if (areSame (a.left(), b.left()) && areSame (a.right(), b.right()))
        return testing::AssertionSuccess();

    return testing::AssertionFailure() << a.left() << ", " << a.right() << " is not " << b.left() << ", " << b.right();
}
} // namespace

TEST (FloatQuad, KeepsItsLanesInOrder)
{
    const FloatQuad quad (1.0f, 2.0f, 3.0f, -0.0f);
    EXPECT_EQ (quad.values(), (FloatQuad::Values { 1.0f, 2.0f, 3.0f, -0.0f }));
    EXPECT_EQ (quad.get<0>(), 1.0f);
    EXPECT_EQ (quad.get<2>(), 3.0f);
    EXPECT_EQ (quad.with<1> (9.0f).values(), (FloatQuad::Values { 1.0f, 9.0f, 3.0f, -0.0f }));
    EXPECT_EQ (FloatQuad::all (0.5f).values(), (FloatQuad::Values { 0.5f, 0.5f, 0.5f, 0.5f }));
    EXPECT_EQ (FloatQuad (quad.values()).values(), quad.values());
}

TEST (FloatQuad, ComputesEachLaneLikeASingleFloat)
{
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad b) { return a + b; }, [] (float a, float b) { return a + b; });
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad b) { return a - b; }, [] (float a, float b) { return a - b; });
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad b) { return a * b; }, [] (float a, float b) { return a * b; });
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad b) { return a / b; }, [] (float a, float b) { return a / b; });
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad) { return a.magnitude(); },
                             [] (float a, float) { return std::abs (a); });
}

TEST (FloatQuad, ChoosesTheSecondWhereAComparisonDoesNotHold)
{
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad b) { return lesserOf (a, b); },
                             [] (float a, float b) { return a < b ? a : b; });
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad b) { return lesserOf (a, b); },
                             [] (float a, float b) { return lesserOf (a, b); });
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad b) { return greaterOf (a, b); },
                             [] (float a, float b) { return a > b ? a : b; });
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad b) { return greaterOf (a, b); },
                             [] (float a, float b) { return greaterOf (a, b); });
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad b) { return whereGreater (a, b, b - a, a * b); },
                             [] (float a, float b) { return a > b ? b - a : a * b; });
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad b) { return whereGreater (a, b, b - a, a * b); },
                             [] (float a, float b) { return whereGreater (a, b, b - a, a * b); });
    expectTheSameInEachLane ([] (FloatQuad a, FloatQuad b) { return whereAtLeast (a, b, b - a, a * b); },
                             [] (float a, float b) { return a >= b ? b - a : a * b; });
}

TEST (FloatQuad, ConvertsItsHalvesToDoubleAndBack)
{
    const FloatQuad quad (0.1f, -0.0f, 1.0e-45f, -3.0e38f);
    EXPECT_TRUE (areEqual (quad.firstHalf(), { (double) 0.1f, -0.0 }));
    EXPECT_TRUE (areEqual (quad.secondHalf(), { (double) 1.0e-45f, (double) -3.0e38f }));
    EXPECT_EQ (FloatQuad::narrowed (quad.firstHalf(), quad.secondHalf()).values(), quad.values());
    EXPECT_EQ (FloatQuad::narrowed ({ 0.1, 1.0e300 }, { 1.0 / 3.0, -1.0e-300 }).values(),
               (FloatQuad::Values { 0.1f, std::numeric_limits<float>::infinity(), 1.0f / 3.0f, -0.0f }));
}

TEST (StereoPair, KeepsItsSidesInOrder)
{
    const StereoPair pair (3.0, -0.5);
    EXPECT_EQ (pair.left(), 3.0);
    EXPECT_EQ (pair.right(), -0.5);
    EXPECT_TRUE (areEqual (StereoPair::both (0.25), { 0.25, 0.25 }));
    EXPECT_TRUE (areEqual (StereoPair::ofBits (pair.bits()), pair));
    EXPECT_EQ (std::bit_cast<Patterns> (pair.bits()), (Patterns { 0x4008000000000000, 0xbfe0000000000000 }));
}

TEST (StereoPair, ComputesEachSideLikeASingleDouble)
{
    expectTheSameOnEachSide ([] (auto a, auto b) { return a + b; }, [] (double a, double b) { return a + b; });
    expectTheSameOnEachSide ([] (auto a, auto b) { return a - b; }, [] (double a, double b) { return a - b; });
    expectTheSameOnEachSide ([] (auto a, auto b) { return a * b; }, [] (double a, double b) { return a * b; });
    expectTheSameOnEachSide ([] (auto a, auto b) { return a / b; }, [] (double a, double b) { return a / b; });
    expectTheSameOnEachSide ([] (auto a, auto) { return a.magnitude(); },
                             [] (double a, double) { return std::abs (a); });
}

TEST (StereoPair, RoundsAProductBeforeItIsAdded)
{
    // A fused operation would give 2^-60. Volatile, so that it is the processor that computes.
    const volatile double number = 1.0 + 0x1p-30;
    const auto x = StereoPair::both (number);
    EXPECT_TRUE (areEqual (x * x + StereoPair::both (-1.0 - 0x1p-29), { 0.0, 0.0 }));
}

TEST (StereoPair, ChoosesTheSecondWhereAComparisonDoesNotHold)
{
    expectTheSameOnEachSide ([] (auto a, auto b) { return lesserOf (a, b); },
                             [] (double a, double b) { return a < b ? a : b; });
    expectTheSameOnEachSide ([] (auto a, auto b) { return greaterOf (a, b); },
                             [] (double a, double b) { return a > b ? a : b; });
    expectTheSameOnEachSide ([] (auto a, auto b) { return whereGreater (a, b, b - a, a * b); },
                             [] (double a, double b) { return a > b ? b - a : a * b; });
    expectTheSameOnEachSide ([] (auto a, auto b) { return whereAtLeast (a, b, b - a, a * b); },
                             [] (double a, double b) { return a >= b ? b - a : a * b; });
}

TEST (StereoPair, TellsWhetherEitherSideIsAtLeastAnother)
{
    constexpr auto nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE (isAnyAtLeast (StereoPair (2.0, 1.0), StereoPair (2.0, 3.0)));
    EXPECT_TRUE (isAnyAtLeast (StereoPair (1.0, 3.0), StereoPair (2.0, 3.0)));
    EXPECT_TRUE (isAnyAtLeast (StereoPair (nan, 0.0), StereoPair (2.0, -0.0)));
    EXPECT_FALSE (isAnyAtLeast (StereoPair (1.0, 2.0), StereoPair (2.0, 3.0)));
    EXPECT_FALSE (isAnyAtLeast (StereoPair (nan, 1.0), StereoPair (0.0, nan)));
}

TEST (StereoPair, ConvertsToFloatAndBackLikeASingleDouble)
{
    for (const auto a : numbers<double>)
        for (const auto b : { 1.0 + 0x1p-24, -1.0 - 0x3p-24, 0x1.8p-149, 0.1 })
        {
            float left = 0, right = 0;
            StereoPair (a, b).narrowTo (left, right);
            ASSERT_TRUE (areSame (left, (float) a)) << a;
            ASSERT_TRUE (areSame (right, (float) b)) << b;

            const auto wide = StereoPair::widened (left, right);
            ASSERT_TRUE (areSame (wide.left(), (double) left)) << a;
            ASSERT_TRUE (areSame (wide.right(), (double) right)) << b;
        }
}

TEST (BitPair, ComputesEachSideLikeASinglePattern)
{
    using Bits = std::uint64_t;
    EXPECT_EQ (std::bit_cast<Patterns> (BitPair::both (0x123456789abcdef0)),
               (Patterns { 0x123456789abcdef0, 0x123456789abcdef0 }));
    expectTheSameBits ([] (BitPair a, BitPair b) { return a + b; }, [] (Bits a, Bits b) { return a + b; });
    expectTheSameBits ([] (BitPair a, BitPair b) { return a - b; }, [] (Bits a, Bits b) { return a - b; });
    expectTheSameBits ([] (BitPair a, BitPair b) { return a & b; }, [] (Bits a, Bits b) { return a & b; });
    expectTheSameBits ([] (BitPair a, BitPair b) { return a | b; }, [] (Bits a, Bits b) { return a | b; });
    expectTheSameBits ([] (BitPair a, BitPair b) { return a ^ b; }, [] (Bits a, Bits b) { return a ^ b; });

    for (const auto count : { 0, 1, 31, 32, 47, 63 })
    {
        expectTheSameBits ([=] (BitPair a, BitPair) { return a << count; }, [=] (Bits a, Bits) { return a << count; });
        expectTheSameBits ([=] (BitPair a, BitPair) { return a >> count; }, [=] (Bits a, Bits) { return a >> count; });
    }
}

TEST (BitPair, LooksUpAnEntryForEachSide)
{
    std::array<std::uint64_t, 300> table;

    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = ~(std::uint64_t) i;

    for (std::size_t i = 0; i < table.size(); ++i)
    {
        const Patterns index { i, table.size() - 1 - i };
        ASSERT_EQ (std::bit_cast<Patterns> (lookUp (table, std::bit_cast<BitPair> (index))),
                   (Patterns { ~index[0], ~index[1] }));
    }
}

TEST (StereoBlock, ConvertsBlocksOfAnyLength)
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
        widen ({ left.data(), right.data(), size }, pairs);

        for (std::size_t i = 0; i < size; ++i)
        {
            ASSERT_TRUE (areEqual (pairs[i], { (double) left[i], (double) right[i] }));
            pairs[i] = pairs[i] * StereoPair::both (1.0 / 3.0);
        }

        // The sample behind the end must stay as it is.
        std::vector<float> narrowLeft (size + 1, 9.0f), narrowRight (size + 1, 9.0f);
        narrow (pairs, { narrowLeft.data(), narrowRight.data(), size });

        for (std::size_t i = 0; i < size; ++i)
        {
            ASSERT_EQ (narrowLeft[i], (float) ((double) left[i] * (1.0 / 3.0)));
            ASSERT_EQ (narrowRight[i], (float) ((double) right[i] * (1.0 / 3.0)));
        }

        ASSERT_EQ (narrowLeft[size], 9.0f);
        ASSERT_EQ (narrowRight[size], 9.0f);
    }
}
