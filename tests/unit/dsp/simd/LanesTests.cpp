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
using Limits = std::numeric_limits<float>;

/** All kinds of floats. Every pair of them is tried in every lane. */
constexpr std::array numbers { 0.0f,
                               -0.0f,
                               1.0f,
                               -1.0f,
                               0.25f,
                               3.0e38f,
                               -7.5f,
                               1.5f,
                               Limits::min(),
                               Limits::infinity(),
                               -Limits::infinity(),
                               Limits::quiet_NaN() };

/** The same bits, or two NaNs of any kind. */
[[nodiscard]] bool areSame (float a, float b)
{
    return (std::isnan (a) && std::isnan (b)) || std::bit_cast<std::uint32_t> (a) == std::bit_cast<std::uint32_t> (b);
}

template <typename OfQuads, typename OfFloats>
void expectTheSameInEachLane (OfQuads ofQuads, OfFloats ofFloats)
{
    for (std::size_t i = 0; i < numbers.size(); ++i)
        for (std::size_t j = 0; j < numbers.size(); ++j)
        {
            const auto number = [] (std::size_t k) { return numbers[k % numbers.size()]; };
            const FloatQuad::Values a { number (i), number (i + 1), number (i + 2), number (i + 3) };
            const FloatQuad::Values b { number (j), number (j + 3), number (j + 6), number (j + 9) };
            const auto result = ofQuads (FloatQuad (a), FloatQuad (b)).values();

            for (std::size_t k = 0; k < FloatQuad::size; ++k)
                ASSERT_TRUE (areSame (result[k], ofFloats (a[k], b[k])))
                    << a[k] << " and " << b[k] << ": " << result[k];
        }
}

testing::AssertionResult areEqual (StereoPair a, StereoPair b)
{
    if (a.left() == b.left() && a.right() == b.right())
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
