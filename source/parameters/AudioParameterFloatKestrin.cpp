// SPDX-License-Identifier: AGPL-3.0-or-later
#include "parameters/AudioParameterFloatKestrin.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "parameters/ValueText.h"

namespace juce
{
namespace
{
using Kind = AudioParameterFloatKestrin::ValueKind;

struct KindUnit
{
    std::int32_t kind;
    const char* unit;
};

constexpr std::array kindUnits {
    KindUnit { Kind::percentKind, "%" },     KindUnit { Kind::gainKind, "dB" },
    KindUnit { Kind::highGainKind, "dB" },   KindUnit { Kind::frequencyKind, "Hz" },
    KindUnit { Kind::bandwidthKind, "oct" }, KindUnit { Kind::ratioKind, ":1" },
};

String unitOrThatOfKind (const std::string& unit, int kind)
{
    if (! unit.empty())
        return String (unit);

    for (const auto& row : kindUnits)
        if (row.kind == kind)
            return row.unit;

    return {};
}

float positionOfIndex (int index, int stepCount)
{
    return stepCount < 2 ? 0.0f : (float) index / (float) (stepCount - 1);
}

/** The host shows the whole text: cutting it to the length that a host asks for is left to the host. */
AudioParameterFloatAttributes textBy (const AudioParameterFloatKestrin& parameter)
{
    return AudioParameterFloatAttributes().withStringFromValueFunction (
        [&parameter] (float position, int) { return String (parameter.formatValueText (position)); });
}
} // namespace

AudioParameterFloatKestrin::AudioParameterFloatKestrin (const String& parameterID, const String& parameterName,
                                                        float newMinValue, float newMaxValue, float newDefaultValue,
                                                        int newValueKind, std::string unit)
    : AudioParameterFloat (ParameterID { parameterID, 0 }, parameterName, NormalisableRange<float> { 0.0f, 1.0f },
                           newDefaultValue, textBy (*this)),
      valueKind (newValueKind), minValue (newMinValue), maxValue (newMaxValue),
      unitText (unitOrThatOfKind (unit, newValueKind))
{
    startAtDefault (newDefaultValue);
}

AudioParameterFloatKestrin::AudioParameterFloatKestrin (const String& parameterID, const String& parameterName,
                                                        float newMinValue, float newMaxValue, int defaultIndex,
                                                        std::vector<std::string> newChoiceTexts, int newStepCount)
    : AudioParameterFloat (ParameterID { parameterID, 0 }, parameterName, NormalisableRange<float> { 0.0f, 1.0f },
                           positionOfIndex (defaultIndex, newStepCount), textBy (*this)),
      valueKind (choiceKind), stepCount (newStepCount), minValue (newMinValue), maxValue (newMaxValue),
      choiceTexts (std::move (newChoiceTexts))
{
    if (stepCount > 1)
        highestIndex = (float) (stepCount - 1);

    startAtDefault (positionOfIndex (defaultIndex, newStepCount));
}

void AudioParameterFloatKestrin::startAtDefault (float newDefaultValue)
{
    static_cast<AudioProcessorParameter&> (*this).setValue (newDefaultValue);
    sendValueChangedMessageToListeners (newDefaultValue);
    defaultValue = newDefaultValue;
}

int AudioParameterFloatKestrin::nearestInt (float x) noexcept
{
    if (std::isnan (x))
        return 0;

    constexpr auto beyondInt = 2147483648.0f;

    if (x >= beyondInt)
        return std::numeric_limits<int>::max();

    if (x < -beyondInt)
        return std::numeric_limits<int>::min();

    return (int) std::round (x);
}

std::string AudioParameterFloatKestrin::formatValueText (float position) const
{
    return valueText::format (*this, position);
}
} // namespace juce
