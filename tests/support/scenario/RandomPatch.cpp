// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/scenario/RandomPatch.h"

#include <algorithm>

namespace scenario
{
namespace Index = reference::Index;
using reference::choiceIndexOf;
using reference::parameterTable;
using reference::positionOfChoice;

RandomPatch::Theme RandomPatch::drawTheme() { return static_cast<Theme> (dice.below (8)); }

const char* RandomPatch::nameOf (Theme theme)
{
    static constexpr const char* names[] = { "asleep", "still",    "one LFO",    "LFOs",
                                             "steps",  "reserved", "everything", "wild" };
    return names[(int) theme];
}

std::array<float, Index::count> RandomPatch::draw (Theme theme)
{
    std::array<float, Index::count> positions {};

    for (int i = 0; i < Index::count; ++i)
        positions[(std::size_t) i] = theme == Theme::wild ? legal (i, dice.position()) : drawFor (i);

    const auto centre = [&] (int index) { positions[(std::size_t) index] = 0.5f; };
    const bool withLfos = theme == Theme::oneLfo || theme == Theme::lfos || theme == Theme::reserved
                          || theme == Theme::everything || theme == Theme::wild;
    const bool withSteps = theme == Theme::steps || theme == Theme::everything || theme == Theme::wild;

    for (int lfo = 0; lfo < 2; ++lfo)
    {
        const bool silenced = ! withLfos || (theme == Theme::oneLfo && lfo == 1);

        for (int route : { Index::lfoToHpf (lfo), Index::lfoToLpf (lfo), Index::lfoToHpr (lfo), Index::lfoToLpr (lfo) })
            if (silenced)
                centre (route);

        if (silenced && dice.chance (0.5))
            centre (Index::lfoToOther (lfo));

        if (theme == Theme::reserved && (lfo == 0 || dice.chance (0.5)))
            positions[(std::size_t) Index::lfoShape (lfo)] = positionOfChoice (6 + dice.below (2), 30);
    }

    for (int step = 0; step < 10; ++step)
    {
        if (! withSteps)
        {
            centre (Index::seqHpf (step));
            centre (Index::seqLpf (step));
        }
    }

    // Within a few milliseconds of everything's rest, which is at 0 before the first block.
    if (theme == Theme::asleep)
    {
        for (int index : { Index::hpFreq, Index::lpFreq, Index::hpReso, Index::lpReso })
            positions[(std::size_t) index] = dice.chance (0.4) ? 0.0f : 0.001f * dice.position();
    }

    return positions;
}

float RandomPatch::drawFor (int index)
{
    const reference::ParameterInfo& info = parameterTable()[(std::size_t) index];

    if (info.isBool)
        return dice.chance (0.5) ? 1.0f : 0.0f;

    if (info.kind == reference::choiceKind)
        return legal (index, drawChoice (info));

    if (index >= Index::seqHpf (0))
        return drawStep();

    if (index == Index::hpFreq || index == Index::lpFreq)
        return drawWithEnds (0.1, 0.1);

    if (index == Index::hpReso || index == Index::lpReso)
        return drawWithEnds (0.3, 0.15);

    if (info.kind == 11)
        return drawBipolar();

    return drawWithEnds (0.1, 0.1);
}

float RandomPatch::nudge (int index, float position, double farthest)
{
    const float moved = position + (float) dice.between (-farthest, farthest);
    return legal (index, std::clamp (moved, 0.0f, 1.0f));
}

float RandomPatch::drawWithEnds (double atZero, double atOne)
{
    const double which = dice.unit();

    if (which < atZero)
        return 0.0f;

    return which < atZero + atOne ? 1.0f : dice.position();
}

float RandomPatch::drawBipolar()
{
    const double which = dice.unit();

    if (which < 0.35)
        return 0.5f;

    if (which < 0.45) // around the dead band of plus or minus 0.01 in depth, and the curve's of 0.01 in exponent
        return (float) dice.between (0.4940, 0.5060);

    if (which < 0.50)
        return dice.oneOf (std::array { 0.495f, 0.505f, 0.4949999f, 0.5050001f });

    if (which < 0.60)
        return dice.chance (0.5) ? 1.0f : 0.0f;

    return dice.position();
}

float RandomPatch::drawStep()
{
    const double which = dice.unit();

    if (which < 0.6)
        return 0.5f;

    if (which < 0.7)
        return (float) dice.between (0.4980, 0.5020);

    if (which < 0.75)
        return dice.oneOf (std::array { 0.499f, 0.501f, 0.4989999f, 0.5010001f });

    if (which < 0.80)
        return dice.chance (0.5) ? 1.0f : 0.0f;

    return dice.position();
}

float RandomPatch::drawChoice (const reference::ParameterInfo& info)
{
    const double which = dice.unit();
    const int numTexts = (int) info.texts.size();

    if (which < 0.85)
        return positionOfChoice (dice.below (numTexts), info.stepCount);

    if (which < 0.95)
        return positionOfChoice (dice.below (info.stepCount), info.stepCount);

    return dice.position();
}

// Replaces the walking shape where it is not wanted.
float RandomPatch::legal (int index, float position) const
{
    if (options.brownian || (index != Index::lfoShape (0) && index != Index::lfoShape (1)))
        return position;

    const auto& info = parameterTable()[(std::size_t) index];
    return choiceIndexOf (info, position) == 5 ? positionOfChoice (4, info.stepCount) : position;
}

} // namespace scenario
