// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/math/Rows.h"

#include <cstddef>

#include "dsp/math/HyperbolicSine.h"
#include "dsp/math/RowsAvx2.h"
#include "dsp/math/Sine.h"
#include "dsp/math/Tangent.h"
#include "dsp/simd/Avx2.h"

namespace
{
/** Replaces each value by its function, two at a time.
    @param function  of a double and of a StereoPair, with the same bits */
template <typename Function>
void inPairs (std::span<double> values, Function function) noexcept
{
    std::size_t i = 0;

    for (; i + 2 <= values.size(); i += 2)
    {
        const auto results = function (StereoPair (values[i], values[i + 1]));
        values[i] = results.left();
        values[i + 1] = results.right();
    }

    if (i < values.size())
        values[i] = function (values[i]);
}
} // namespace

namespace elementary
{

void tangents (std::span<double> values) noexcept
{
    if constexpr (avx2::isBuilt)
        if (avx2::isThere)
            return avx2::tangents (values);

    inPairs (values, [] (auto x) { return tangent (x); });
}

void sines (std::span<double> values) noexcept
{
    if constexpr (avx2::isBuilt)
        if (avx2::isThere)
            return avx2::sines (values);

    inPairs (values, [] (auto x) { return sine (x); });
}

void cosines (std::span<double> values) noexcept
{
    if constexpr (avx2::isBuilt)
        if (avx2::isThere)
            return avx2::cosines (values);

    inPairs (values, [] (auto x) { return cosine (x); });
}

void hyperbolicSines (std::span<double> values) noexcept
{
    if constexpr (avx2::isBuilt)
        if (avx2::isThere)
            return avx2::hyperbolicSines (values);

    inPairs (values, [] (auto x) { return hyperbolicSine (x); });
}

void sinesWithinQuarterTurn (std::span<StereoPair> values) noexcept
{
    if constexpr (avx2::isBuilt)
        if (avx2::isThere)
            return avx2::sinesWithinQuarterTurn (values);

    for (auto& x : values)
        x = sineWithinQuarterTurn (x);
}

} // namespace elementary
