// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/simd/FloatQuad.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace
{
using Limits = std::numeric_limits<float>;

/** All kinds of floats: each meets each in each place. */
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

/** The same bits, but that any two values that are no numbers are the same. */
[[nodiscard]] bool areSame (float a, float b)
{
    return (std::isnan (a) && std::isnan (b)) || std::bit_cast<std::uint32_t> (a) == std::bit_cast<std::uint32_t> (b);
}

template <typename OfQuads, typename OfFloats>
void expectTheSameInEachPlace (OfQuads ofQuads, OfFloats ofFloats)
{
    for (size_t i = 0; i < numbers.size(); ++i)
        for (size_t j = 0; j < numbers.size(); ++j)
        {
            const auto number = [] (size_t k) { return numbers[k % numbers.size()]; };
            const FloatQuad::Values a { number (i), number (i + 1), number (i + 2), number (i + 3) };
            const FloatQuad::Values b { number (j), number (j + 3), number (j + 6), number (j + 9) };
            const auto result = ofQuads (FloatQuad (a), FloatQuad (b)).values();

            for (size_t k = 0; k < FloatQuad::size; ++k)
                ASSERT_TRUE (areSame (result[k], ofFloats (a[k], b[k])))
                    << a[k] << " and " << b[k] << ": " << result[k];
        }
}
} // namespace

TEST (FloatQuad, KeepsItsFourInTheirPlaces)
{
    const FloatQuad quad (1.0f, 2.0f, 3.0f, -0.0f);
    EXPECT_EQ (quad.values(), (FloatQuad::Values { 1.0f, 2.0f, 3.0f, -0.0f }));
    EXPECT_EQ (quad.first(), 1.0f);
    EXPECT_EQ (quad.withFirst (9.0f).values(), (FloatQuad::Values { 9.0f, 2.0f, 3.0f, -0.0f }));
    EXPECT_EQ (FloatQuad::all (0.5f).values(), (FloatQuad::Values { 0.5f, 0.5f, 0.5f, 0.5f }));
    EXPECT_EQ (FloatQuad (quad.values()).values(), quad.values());
}

TEST (FloatQuad, ComputesEachAsOneFloatIsComputed)
{
    expectTheSameInEachPlace ([] (FloatQuad a, FloatQuad b) { return a + b; }, [] (float a, float b) { return a + b; });
    expectTheSameInEachPlace ([] (FloatQuad a, FloatQuad b) { return a - b; }, [] (float a, float b) { return a - b; });
    expectTheSameInEachPlace ([] (FloatQuad a, FloatQuad b) { return a * b; }, [] (float a, float b) { return a * b; });
    expectTheSameInEachPlace ([] (FloatQuad a, FloatQuad b) { return a / b; }, [] (float a, float b) { return a / b; });
    expectTheSameInEachPlace ([] (FloatQuad a, FloatQuad) { return a.magnitude(); },
                              [] (float a, float) { return std::abs (a); });
}

TEST (FloatQuad, ChoosesTheSecondWhereAComparisonDoesNotHold)
{
    expectTheSameInEachPlace ([] (FloatQuad a, FloatQuad b) { return lesserOf (a, b); },
                              [] (float a, float b) { return a < b ? a : b; });
    expectTheSameInEachPlace ([] (FloatQuad a, FloatQuad b) { return greaterOf (a, b); },
                              [] (float a, float b) { return a > b ? a : b; });
    expectTheSameInEachPlace ([] (FloatQuad a, FloatQuad b) { return whereGreater (a, b, b - a, a * b); },
                              [] (float a, float b) { return a > b ? b - a : a * b; });
    expectTheSameInEachPlace ([] (FloatQuad a, FloatQuad b) { return whereAtLeast (a, b, b - a, a * b); },
                              [] (float a, float b) { return a >= b ? b - a : a * b; });
}
