// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "support/scenario/Dice.h"

namespace scenario
{

/** A host's way of cutting time into blocks. */
class RandomBlockSizes
{
public:
    /** @param diceToUse  must outlive it */
    explicit RandomBlockSizes (Dice& diceToUse) : dice (diceToUse), style (dice.below (7)) {}

    /** The frames of the next block; often 0. */
    [[nodiscard]] int next();

private:
    Dice& dice;
    int style;
};

} // namespace scenario
