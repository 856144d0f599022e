// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <span>

#include "dsp/simd/Lanes.h"

namespace elementary
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

} // namespace elementary
