// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>

#include "reference/ReferenceEngine.h"
#include "support/scenario/Dice.h"
#include "support/scenario/Scenario.h"

namespace scenario
{

/** Positions of the 55 parameters, weighted towards what people and hosts do and towards the edges. */
class RandomPatch
{
public:
    /** Both must outlive it. */
    RandomPatch (Dice& diceToUse, const Options& optionsToUse) : dice (diceToUse), options (optionsToUse) {}

    /** What moves the filters. */
    enum class Theme
    {
        asleep, // nothing modulates, and everything starts next to its target
        still,  // nothing modulates
        oneLfo,
        lfos,
        steps,
        reserved, // one LFO or both on the shapes that have no name
        everything,
        wild, // every position uniform
    };

    [[nodiscard]] Theme drawTheme();
    [[nodiscard]] static const char* nameOf (Theme theme);

    /** A position for every parameter. */
    [[nodiscard]] std::array<float, reference::Index::count> draw (Theme theme);

    /** A new position for one parameter, as the patch itself would draw it. */
    [[nodiscard]] float drawFor (int index);

    /** A small move from the present position, as automation makes it. */
    [[nodiscard]] float nudge (int index, float position, double farthest);

private:
    float drawWithEnds (double atZero, double atOne);
    float drawBipolar();
    float drawStep();
    float drawChoice (const reference::ParameterInfo& info);
    [[nodiscard]] float legal (int index, float position) const;

    Dice& dice;
    const Options& options;
};

} // namespace scenario
