// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "support/scenario/Dice.h"

namespace scenario
{

/** One channel of sound, and what kind of sound it is. */
struct RandomSound
{
    std::string name;
    std::vector<float> samples;
};

/** @param strange  puts NaN and infinity among the samples */
[[nodiscard]] RandomSound drawSound (Dice& dice, int numFrames, bool strange);

} // namespace scenario
