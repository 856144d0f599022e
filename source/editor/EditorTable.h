// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include <juce_gui_basics/juce_gui_basics.h>

#include "editor/KestrinLookAndFeel.h"
#include "editor/Palette.h"
#include "parameters/ParameterSet.h"

/** Everything in the window: one row for each control, or for each pair of controls where two columns are alike.
    The layout is absolute and never scaled: pixels, relative to the parent. */
namespace editorTable
{
inline constexpr int labelHeight = 17;
inline constexpr int panelMargin = 10;
inline constexpr float panelCorner = 6.0f;
inline constexpr float panelWidth = 117.0f;
inline constexpr int panelHeight = 485 - panelMargin;

/** A column and half of one, in whole pixels: a knob is as wide as it is high, so these are its sizes too. */
inline constexpr int columnWidth = (int) panelWidth;
inline constexpr int half = (int) (panelWidth * 0.5f);

inline constexpr int windowHeight = 546;
inline constexpr int narrowWidth = 266;
inline constexpr int wideWidth = (int) (panelWidth + 266.0f + panelWidth + 2.0f * panelMargin);

/** Whole pixels within the parent. */
struct Area
{
    int x;
    int y;
    int width;
    int height;

    /** As JUCE's components take it. */
    [[nodiscard]] juce::Rectangle<int> toRectangle() const { return { x, y, width, height }; }
};

//======================================================================================================================
// Containers

inline constexpr int mainPanelWidth = (int) (panelWidth + 246.0f + panelWidth + 2.0f * panelMargin);

/** Has the same width in the narrow window, which clips it. */
inline constexpr Area mainPanel { 10, 37, mainPanelWidth, 477 };

/** The columns lie side by side: highpass, lowpass, and two places that the LFOs and the Frequencer share. */
[[nodiscard]] constexpr Area columnPlace (int place)
{
    return { (panelMargin + columnWidth) * place, 0, columnWidth, panelHeight };
}

inline constexpr int numFilters = 2;
inline constexpr int firstSharedPlace = numFilters;

//======================================================================================================================
// Captions

/** How a caption's text is aligned in its area. */
enum class Align
{
    left,
    centre
};

/** A label. Only the resonances' labels ever change their text. */
struct Caption
{
    /** For the first and the second of a pair of columns. */
    std::array<const char*, 2> texts;
    Area area;
    Align align = Align::centre;
};

/** A caption with the same text on both columns. */
[[nodiscard]] constexpr Caption caption (const char* text, Area area, Align align = Align::centre)
{
    return { { text, text }, area, align };
}

/** A label over the whole column. */
[[nodiscard]] constexpr Area across (int y) { return { 0, y, columnWidth, labelHeight }; }

/** A label over the left half of a column. */
[[nodiscard]] constexpr Area leftHalf (int y) { return { 0, y, half, labelHeight }; }

/** A label over the right half of a column. */
[[nodiscard]] constexpr Area rightHalf (int y) { return { half, y, half, labelHeight }; }

inline constexpr Caption linkCaption = caption ("Link", { 96, 79, 50, labelHeight });
inline constexpr Area linkToggle { 109, 95, 21, 21 };
inline constexpr const char* linkTitle = "Link frequencies";

inline constexpr std::array filterCaptions {
    Caption { { "HIGHPASS", "LOWPASS" }, across (panelMargin / 2) },
    caption ("Frequency", across (panelMargin + labelHeight + 5)),
    caption ("Resonance", across (panelMargin + 172)),
    caption ("Mode", across (panelMargin + 322)),
};

inline constexpr std::array lfoCaptions {
    Caption { { "LFO1", "LFO2" }, across (panelMargin / 2) },
    caption ("Speed", leftHalf (30)),
    caption ("Phase", rightHalf (30)),
    caption ("Shape", leftHalf (101)),
    caption ("Curve", rightHalf (101)),
    caption ("Tempo mode", across (189 - labelHeight)),
    caption ("HP freq", leftHalf (259 - labelHeight)),
    caption ("LP freq", rightHalf (259 - labelHeight)),
    caption ("HP reso", leftHalf (329 - labelHeight)),
    caption ("LP reso", rightHalf (329 - labelHeight)),
    Caption { { "LFO2 spd", "LFO1 spd" }, leftHalf (399 - labelHeight) },
};

inline constexpr std::array frequencerCaptions {
    caption ("FREQUENCER", across (panelMargin / 2)),
    // The same for either unit of the offset: the shift is always counted in the transport's beats.
    caption ("Offset (bars)", across (30)),
    caption ("Highpass", { 8, labelHeight + 130, columnWidth - 8, labelHeight }, Align::left),
    caption ("Lowpass", { 8, labelHeight + 175, columnWidth - 8, labelHeight }, Align::left),
};

//======================================================================================================================
// Knobs

/** The colours of a knob's arc. */
enum class Arc
{
    none,
    cyan,
    greenYellowRed
};

/** The colours by their positions on the knob's travel; empty for no arc. */
[[nodiscard]] inline KestrinLookAndFeel::ArcStops stopsOf (Arc arc)
{
    switch (arc)
    {
        case Arc::cyan:
            return { { 1.0f, juce::Colour { palette::arcCyan } } };
        case Arc::greenYellowRed:
            return { { 0.5f, juce::Colour { palette::arcGreen } },
                     { 0.8f, juce::Colour { palette::arcYellow } },
                     { 1.0f, juce::Colour { palette::arcRed } } };
        case Arc::none:
            break;
    }

    return {};
}

using Parameter = ParameterSet::Parameter;
using ParameterMember = Parameter* ParameterSet::*;
using LfoParameterMember = std::array<Parameter*, ParameterSet::numLfos> ParameterSet::*;
using StepParameterMember = std::array<Parameter*, ParameterSet::numSteps> ParameterSet::*;

// A control's title is what screen readers say before its value; nothing of it can be seen.

/** A knob of both filter columns: highpass, lowpass. */
struct FilterKnob
{
    std::array<ParameterMember, numFilters> parameters;
    std::array<const char*, numFilters> titles;
    Area area;
    Arc arc;
};

/** A knob of both LFO columns. */
struct LfoKnob
{
    LfoParameterMember parameters;

    /** After "LFO 1 ". */
    const char* title;
    Area area;
    Arc arc;
};

/** A knob of every step's row. */
struct StepKnob
{
    StepParameterMember parameters;

    /** After "Step 1 ". */
    const char* title;
    int x;
};

/** A knob beside the Randomize button. */
struct AmountKnob
{
    ParameterMember parameter;
    const char* title;
    Area area;
};

/** A knob as wide as a column, centred at a height. */
[[nodiscard]] constexpr Area wideKnob (int centreY) { return { 0, centreY - half, columnWidth, columnWidth }; }

/** A knob on the left half of a column. */
[[nodiscard]] constexpr Area leftKnob (int y) { return { 0, y, half, half }; }

/** A knob on the right half of a column. */
[[nodiscard]] constexpr Area rightKnob (int y) { return { half, y, half, half }; }

inline constexpr std::array filterKnobs {
    FilterKnob { { &ParameterSet::hpFreq, &ParameterSet::lpFreq },
                 { "Highpass frequency", "Lowpass frequency" },
                 wideKnob (100),
                 Arc::cyan },
    FilterKnob { { &ParameterSet::hpReso, &ParameterSet::lpReso },
                 { "Highpass resonance", "Lowpass resonance" },
                 wideKnob (250),
                 Arc::greenYellowRed },
    FilterKnob { { &ParameterSet::hpMode, &ParameterSet::lpMode },
                 { "Highpass mode", "Lowpass mode" },
                 wideKnob (400),
                 Arc::cyan },
};

inline constexpr std::array lfoKnobs {
    LfoKnob { &ParameterSet::lfoSpeed, "speed", leftKnob (40), Arc::cyan },
    // In the place of the speed knob: one of the two shows.
    LfoKnob { &ParameterSet::lfoMode, "speed", leftKnob (40), Arc::cyan },
    LfoKnob { &ParameterSet::lfoPhase, "phase", rightKnob (40), Arc::none },
    LfoKnob { &ParameterSet::lfoShape, "shape", leftKnob (110), Arc::cyan },
    LfoKnob { &ParameterSet::lfoCurve, "curve", rightKnob (110), Arc::cyan },
    LfoKnob { &ParameterSet::lfoSync, "tempo mode", { 0, 180, columnWidth, half }, Arc::none },
    LfoKnob { &ParameterSet::lfoToHpFreq, "to highpass frequency", leftKnob (250), Arc::none },
    LfoKnob { &ParameterSet::lfoToLpFreq, "to lowpass frequency", rightKnob (250), Arc::none },
    LfoKnob { &ParameterSet::lfoToHpReso, "to highpass resonance", leftKnob (320), Arc::none },
    LfoKnob { &ParameterSet::lfoToLpReso, "to lowpass resonance", rightKnob (320), Arc::none },
    LfoKnob { &ParameterSet::lfoToOtherLfo, "to speed of the other LFO", leftKnob (390), Arc::none },
};

inline constexpr std::array stepKnobs {
    StepKnob { &ParameterSet::seqHpf, "to highpass frequency", 0 },
    StepKnob { &ParameterSet::seqLpf, "to lowpass frequency", half },
};

inline constexpr std::array amountKnobs {
    AmountKnob { &ParameterSet::srndHpf, "Highpass amount to randomize", rightKnob (130) },
    AmountKnob { &ParameterSet::srndLpf, "Lowpass amount to randomize", rightKnob (175) },
};

/** The steps' rows are closer than their knobs are high: each overlaps the next by 13 pixels. */
[[nodiscard]] constexpr int stepTop (int step) { return 45 * step; }

/** The row of a parameter's knob in its table. */
template <typename Table, typename Member>
[[nodiscard]] constexpr std::size_t rowOf (const Table& table, Member member)
{
    for (std::size_t row = 0; row < table.size(); ++row)
        if (table[row].parameters == member)
            return row;

    return table.size();
}

inline constexpr std::size_t resonanceCaptionRow = 2;
static_assert (std::string_view (filterCaptions[resonanceCaptionRow].texts[0]) == "Resonance");

inline constexpr std::size_t frequencyKnobRow = 0;
static_assert (filterKnobs[frequencyKnobRow].parameters[0] == &ParameterSet::hpFreq);

inline constexpr std::size_t speedKnobRow = rowOf (lfoKnobs, &ParameterSet::lfoSpeed);
inline constexpr std::size_t divisionKnobRow = rowOf (lfoKnobs, &ParameterSet::lfoMode);
inline constexpr std::size_t tempoKnobRow = rowOf (lfoKnobs, &ParameterSet::lfoSync);

//======================================================================================================================
// The Frequencer's field and button

inline constexpr const char* offsetTitle = "Frequencer offset";
inline constexpr Area offsetEditor { 10, 50, columnWidth - 20, labelHeight + 5 };
inline constexpr Area randomizeButton { 10, 100, 97, 28 };

//======================================================================================================================
// The switches along the lower edge

/** A toggle with its caption, which is also its title, beside it. */
struct Switch
{
    const char* text;

    /** The column above it. */
    int place;
    bool shown;

    /** Of the box to click on. */
    [[nodiscard]] constexpr Area toggleArea() const { return { left() - 3, top, 21, 21 }; }

    /** Of the text to its right. */
    [[nodiscard]] constexpr Area captionArea() const { return { left() + 22, top, 90, 21 }; }

private:
    static constexpr int top = windowHeight - labelHeight - panelMargin;

    [[nodiscard]] constexpr int left() const { return panelMargin + place * (columnWidth + panelMargin); }
};

inline constexpr std::array switches {
    Switch { "Show LFOs", 0, true },
    Switch { "Frequencer", 1, true },
    // Made, but not part of the window: only the host chooses the filter family.
    Switch { "Ladder", 2, false },
};

//======================================================================================================================
// Drawables. Their lines stay at thickness 0 and so have no visible effect.

/** The look of a rectangle that is drawn. */
struct Shape
{
    float cornerSize;
    palette::Argb fill;
    palette::Argb strokeFill;
};

inline constexpr palette::Argb noStroke = 0;
inline constexpr Shape columnBackground { panelCorner, palette::column, noStroke };
inline constexpr Shape track { 0.0f, palette::track, palette::trackStroke };
inline constexpr Shape dot { 3.0f, palette::dot, noStroke };
inline constexpr Shape stepLight { 0.0f, palette::light, palette::stepLightStroke };

/** The whole column. */
[[nodiscard]] inline juce::Rectangle<float> columnBackgroundArea() { return { 0.0f, 0.0f, panelWidth, panelHeight }; }

/** The bar at the foot of an LFO's column, along which its dot moves. */
[[nodiscard]] inline juce::Rectangle<float> trackArea()
{
    return { 2.0f, panelHeight - panelMargin - 15, panelWidth - 4.0f, 15.0f };
}

/** @param value  the LFO's output, -1 to 1 from end to end of the track */
[[nodiscard]] inline juce::Rectangle<float> dotArea (float value)
{
    return { (panelWidth - 19.0f) * ((value + 1.0f) * 0.5f) + 4.0f, panelHeight - panelMargin - 13, 11.0f, 11.0f };
}

/** Between the two knobs of a step, over their inner corners. */
[[nodiscard]] inline juce::Rectangle<float> stepLightArea (int step)
{
    return { panelWidth * 0.5f - 5.0f, (float) (stepTop (step) + 27), 9.0f, 9.0f };
}
} // namespace editorTable
