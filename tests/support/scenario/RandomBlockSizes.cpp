// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/scenario/RandomBlockSizes.h"

#include <array>

namespace scenario
{

int RandomBlockSizes::next()
{
    switch (style)
    {
        case 0:
            return 1;
        case 1:
            return 7;
        case 2:
            return 64;
        case 3:
            return 512;
        case 4:
            return dice.below (700);
        case 5:
            return dice.chance (0.3) ? 0 : 1 + dice.below (33);
        default:
            return dice.oneOf (std::array { 0, 1, 7, 64, 512 });
    }
}

} // namespace scenario
