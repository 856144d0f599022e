// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <map>

#include <juce_gui_basics/juce_gui_basics.h>

/** The face of the window: the shaded rotary knob with its scale, its coloured arc and its pointer, the plain button,
    and the height of the labels. Everything else is as LookAndFeel_V4 draws it. Message thread only. */
class KestrinLookAndFeel : public juce::LookAndFeel_V4
{
public:
    /** Colours of a knob's arc: each is used up to its position, 0 to 1, on the knob's travel. */
    using ArcStops = std::map<float, juce::Colour>;

    /** Also makes the window's typeface the default of the process. */
    KestrinLookAndFeel();
    ~KestrinLookAndFeel() override = default;

    /** Gives a knob an arc. A knob that has one already keeps it; a knob without stops draws none. */
    void setRangeColours (juce::Slider& slider, ArcStops stops);

    void drawButtonBackground (juce::Graphics& g, juce::Button& button, const juce::Colour& colour, bool highlighted,
                               bool down) override;
    juce::Font getTextButtonFont (juce::TextButton& button, int buttonHeight) override;
    void drawButtonText (juce::Graphics& g, juce::TextButton& button, bool highlighted, bool down) override;

    juce::Font getLabelFont (juce::Label& label) override;

    void drawRotarySlider (juce::Graphics& g, int x, int y, int width, int height, float sliderPos, float startAngle,
                           float endAngle, juce::Slider& slider) override;

private:
    struct Knob;
    enum class TickPass;

    void drawRotaryTicks (juce::Graphics& g, const Knob& knob, const juce::Slider& slider, TickPass pass) const;
    void drawArc (juce::Graphics& g, const Knob& knob, const juce::Slider& slider) const;
    static void drawRing (juce::Graphics& g, const Knob& knob);
    static void drawBody (juce::Graphics& g, const Knob& knob);
    static void drawPointer (juce::Graphics& g, const Knob& knob);

    std::map<const juce::Slider*, ArcStops> rangeColours;
    float labelFontHeight = 18.0f;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (KestrinLookAndFeel)
};
