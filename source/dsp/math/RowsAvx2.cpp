// SPDX-License-Identifier: AGPL-3.0-or-later
// Compiled for AVX2. Nothing is called here that another file compiles too for every processor: the linker keeps one of both.
#include "dsp/math/RowsAvx2.h"

#include <cstddef>

#include "dsp/math/HyperbolicSine.h"
#include "dsp/math/Sine.h"
#include "dsp/math/Tangent.h"
#include "dsp/simd/Avx2Lanes.h"

namespace
{
/** Replaces each value by its function, four at a time. */
template <typename Function>
void inQuads (double* values, std::size_t size, Function function) noexcept
{
    const auto* const end = values + size;

    for (; values + DoubleQuad::size <= end; values += DoubleQuad::size)
        function (DoubleQuad::load (values)).store (values);

    if (values == end)
        return;

    double rest[DoubleQuad::size] = {};
    const auto numLeft = (std::size_t) (end - values);

    for (std::size_t i = 0; i < numLeft; ++i)
        rest[i] = values[i];

    function (DoubleQuad::load (rest)).store (rest);

    for (std::size_t i = 0; i < numLeft; ++i)
        values[i] = rest[i];
}
} // namespace

namespace avx2
{

void tangents (std::span<double> values) noexcept
{
    inQuads (values.data(), values.size(), [] (DoubleQuad x) { return elementary::tangent (x); });
}

void sines (std::span<double> values) noexcept
{
    inQuads (values.data(), values.size(), [] (DoubleQuad x) { return elementary::sine (x); });
}

void cosines (std::span<double> values) noexcept
{
    inQuads (values.data(), values.size(), [] (DoubleQuad x) { return elementary::cosine (x); });
}

void hyperbolicSines (std::span<double> values) noexcept
{
    inQuads (values.data(), values.size(), [] (DoubleQuad x) { return elementary::hyperbolicSine (x); });
}

void sinesWithinQuarterTurn (std::span<StereoPair> values) noexcept
{
    inQuads (reinterpret_cast<double*> (values.data()), 2 * values.size(),
             [] (DoubleQuad x) { return elementary::sineWithinQuarterTurn (x); });
}

} // namespace avx2
