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
    std::size_t i = 0;

    for (; i + DoubleQuad::size <= size; i += DoubleQuad::size)
        function (DoubleQuad::load (values + i)).store (values + i);

    if (i == size)
        return;

    double rest[DoubleQuad::size] = {};

    for (auto j = i; j < size; ++j)
        rest[j - i] = values[j];

    function (DoubleQuad::load (rest)).store (rest);

    for (auto j = i; j < size; ++j)
        values[j] = rest[j - i];
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
