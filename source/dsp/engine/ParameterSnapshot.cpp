// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/engine/ParameterSnapshot.h"

#include <algorithm>
#include <cmath>

#include "dsp/modulation/LfoGenerator.h"

namespace
{
using Parameter = ParameterSet::Parameter;

/** A routing depth up to here counts as none. No float lies between this one and 0.01, so that the comparison is that with
    0.01. */
constexpr float routingDeadBand = 0.01f;

[[nodiscard]] float bipolar (const Parameter& parameter) noexcept { return parameter.get() * 2.0f - 1.0f; }

[[nodiscard]] ParameterSnapshot::Slope slopeOf (const Parameter& mode) noexcept
{
    // By choice index; whatever lies above the texts is a bypass like index 0.
    static constexpr std::array<ParameterSnapshot::Slope, 5> slopes {
        { { 0, 3.0f }, { 1, 2.0f }, { 2, 1.25f }, { 4, 0.707f }, { 8, 0.5f } }
    };

    const auto index = (std::size_t) mode.getChoiceIndex();
    return slopes[index < slopes.size() ? index : 0];
}

[[nodiscard]] int shapeOf (const Parameter& shape) noexcept
{
    constexpr auto firstUnnamedSine = 8;
    const auto index = shape.getChoiceIndex();
    return index < firstUnnamedSine ? index : LfoGenerator::sine;
}

[[nodiscard]] ParameterSnapshot::Lfo lfoOf (const ParameterSet& parameters, std::size_t i,
                                            std::span<const float> barLengths) noexcept
{
    const auto other = (i + 1) % ParameterSet::numLfos;
    const auto depthOfOther = bipolar (*parameters.lfoToOtherLfo[other]);

    return { .sync = parameters.lfoSync[i]->getChoiceIndex(),
             .shape = shapeOf (*parameters.lfoShape[i]),
             .beats = barLengths[(std::size_t) parameters.lfoMode[i]->getChoiceIndex()],
             .speed = parameters.lfoSpeed[i]->get(),
             .phase = parameters.lfoPhase[i]->get(),
             .bend = (float) ((double) bipolar (*parameters.lfoCurve[i]) * 1.7),
             .depths = { bipolar (*parameters.lfoToHpFreq[i]), bipolar (*parameters.lfoToLpFreq[i]),
                         bipolar (*parameters.lfoToHpReso[i]), bipolar (*parameters.lfoToLpReso[i]) },
             .depthOfOther = depthOfOther,
             .isMovedByOther = std::abs (depthOfOther) > routingDeadBand };
}

[[nodiscard]] frequencer::Pattern patternOf (const ParameterSet& parameters) noexcept
{
    frequencer::Offsets offsets;

    for (std::size_t j = 0; j < frequencer::numSteps; ++j)
    {
        offsets.highpass[j] = parameters.seqHpf[j]->get();
        offsets.lowpass[j] = parameters.seqLpf[j]->get();
    }

    return frequencer::Pattern (offsets);
}

[[nodiscard]] float shiftOf (const Parameter& offset) noexcept
{
    return (offset.maxValue - offset.minValue) * offset.get() + offset.minValue;
}

[[nodiscard]] bool isActive (const ParameterSnapshot::Lfo& lfo) noexcept
{
    return std::ranges::any_of (lfo.depths.values(), [] (float depth) { return std::abs (depth) > routingDeadBand; });
}
} // namespace

ParameterSnapshot::Family familyOf (const Parameter& filtMode) noexcept
{
    switch (filtMode.getChoiceIndex())
    {
        case 0:
            return ParameterSnapshot::Family::butterworth;
        case 1:
            return ParameterSnapshot::Family::ladder;
        default:
            return ParameterSnapshot::Family::none;
    }
}

ParameterSnapshot::ParameterSnapshot (const ParameterSet& parameters, std::span<const float> barLengths) noexcept
    : changeCount (parameters.getChangeCount()), family (familyOf (*parameters.filtMode)),
      highpass (slopeOf (*parameters.hpMode)),
      lowpass (slopeOf (*parameters.lpMode)), baseTargets { parameters.hpFreq->get(), parameters.lpFreq->get(),
                                                            parameters.hpReso->get(), parameters.lpReso->get() },
      lfo { lfoOf (parameters, 0, barLengths), lfoOf (parameters, 1, barLengths) },
      shiftBeats (shiftOf (*parameters.seqOffs)), pattern (patternOf (parameters)),
      active (pattern.isActive() || isActive (lfo[0]) || isActive (lfo[1])),
      followsBars (LfoGenerator::isReserved (lfo[0].shape) || LfoGenerator::isReserved (lfo[1].shape))
{
}
