// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/scenario/Playback.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace scenario
{

bool isSameSample (float a, float b)
{
    if (std::isnan (a) || std::isnan (b))
        return std::isnan (a) && std::isnan (b);

    return std::bit_cast<std::uint32_t> (a) == std::bit_cast<std::uint32_t> (b);
}

int firstDifference (const Output& a, const Output& b)
{
    for (std::size_t n = 0; n < a.left.size(); ++n)
    {
        if (! isSameSample (a.left[n], b.left[n]))
            return (int) n;

        if (! a.right.empty() && ! isSameSample (a.right[n], b.right[n]))
            return (int) n;
    }

    return -1;
}

} // namespace scenario
