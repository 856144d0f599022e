// SPDX-License-Identifier: AGPL-3.0-or-later
#include "editor/ParameterSlider.h"

#include "editor/Palette.h"

namespace
{
/** Pixels of travel for the whole range. Fine drags, with alt held when the drag begins, are ten times slower. */
constexpr int dragPixels = 250;
constexpr int fineDragPixels = 2500;

constexpr int textBoxWidth = 100;
constexpr int textBoxHeight = 20;
} // namespace

ParameterSlider::ParameterSlider() { setSliderStyle (RotaryVerticalDrag); }

void ParameterSlider::bindToParameter (juce::AudioParameterFloatKestrin* newParameter)
{
    parameter = newParameter;

    textFromValueFunction = [this] (double value) { return juce::String (parameter->formatValueText ((float) value)); };

    setRangeOfParameter();

    setTextBoxStyle (TextBoxBelow, true, textBoxWidth, textBoxHeight);
    setColour (textBoxOutlineColourId, juce::Colours::transparentBlack);
    setColour (textBoxTextColourId, juce::Colour { palette::knobText });

    // Velocity mode stays off, and no key may switch it on: alt, ctrl and cmd have other meanings on these knobs.
    setVelocityModeParameters (0.05, 1, 0.1, false, juce::ModifierKeys::ctrlAltCommandModifiers);
    setVelocityBasedMode (false);

    // Decided once per drag: a knob that changed its gearing under the hand would jump.
    onDragStart = [this]
    { setMouseDragSensitivity (juce::ModifierKeys::currentModifiers.isAltDown() ? fineDragPixels : dragPixels); };

    setDoubleClickReturnValue (true, (double) parameter->defaultValue, juce::ModifierKeys::ctrlModifier);
}

void ParameterSlider::setRangeOfParameter()
{
    const auto lastStep = parameter->getStepCount() - 1;

    if (parameter->valueKind == juce::AudioParameterFloatKestrin::choiceKind)
    {
        // A choice has more positions than texts. The knob's travel ends at the last one that has a text.
        const auto lastText = (double) parameter->choiceTexts.size() - 1.0;
        const auto end = lastText / lastStep;
        setRange (0.0, end, end / lastText);
    }
    else if (lastStep > 0)
    {
        setRange (0.0, 1.0, 1.0 / lastStep);
    }
    else
    {
        setRange (0.0, 1.0, 0.0);
    }
}
