// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gmock/gmock.h>

#include "unit/editor/EditorFixture.h"

namespace
{
using Lines = std::vector<std::string>;

std::string numbers (juce::Rectangle<int> area)
{
    return " (" + std::to_string (area.getX()) + ", " + std::to_string (area.getY()) + ", "
           + std::to_string (area.getWidth()) + ", " + std::to_string (area.getHeight()) + ")";
}

std::string justificationOf (const juce::Label& label)
{
    if (label.getJustificationType() == juce::Justification::centred)
        return " centred";

    return label.getJustificationType() == juce::Justification::centredLeft ? " left" : " otherwise";
}

/** The rectangle in fractions of a pixel. The bounds of its component are the whole pixels that it touches. */
std::string exactly (const juce::DrawableRectangle& rectangle)
{
    const auto shape = rectangle.getRectangle();
    const auto area = shape.getBoundingBox();
    EXPECT_EQ (rectangle.getBounds(), area.getSmallestIntegerContainer());

    char text[100] {};
    std::snprintf (text, sizeof (text), " (%g, %g, %g, %g)", (double) area.getX(), (double) area.getY(),
                   (double) area.getWidth(), (double) area.getHeight());
    return text;
}

std::string describe (const juce::Component& child)
{
    if (const auto* knob = dynamic_cast<const ParameterSlider*> (&child))
        return "knob " + knob->parameter->getParameterID().toStdString() + numbers (child.getBounds());

    if (const auto* label = dynamic_cast<const juce::Label*> (&child))
        return "\"" + label->getText().toStdString() + "\"" + numbers (child.getBounds()) + justificationOf (*label);

    if (const auto* rectangle = dynamic_cast<const juce::DrawableRectangle*> (&child))
        return "rectangle" + exactly (*rectangle);

    if (const auto* button = dynamic_cast<const juce::TextButton*> (&child))
        return "button \"" + button->getButtonText().toStdString() + "\"" + numbers (child.getBounds());

    if (dynamic_cast<const juce::ToggleButton*> (&child) != nullptr)
        return "toggle" + numbers (child.getBounds());

    if (dynamic_cast<const juce::TextEditor*> (&child) != nullptr)
        return "field" + numbers (child.getBounds());

    return "panel" + numbers (child.getBounds());
}

Lines childrenOf (const juce::Component& parent)
{
    Lines lines;

    for (const auto* child : parent.getChildren())
        lines.push_back (describe (*child));

    return lines;
}

using testing::ElementsAreArray;
} // namespace

class EditorLayout : public EditorFixture
{
};

TEST_F (EditorLayout, PutsTheMainPanelLastOnTheWindow)
{
    EXPECT_THAT (childrenOf (editor()),
                 ElementsAreArray (Lines { "\"Show LFOs\" (32, 519, 90, 21) left", "toggle (7, 519, 21, 21)",
                                           "\"Frequencer\" (159, 519, 90, 21) left", "toggle (134, 519, 21, 21)",
                                           "panel (10, 37, 500, 477)" }));
}

TEST_F (EditorLayout, PutsTheLinkOverTheFilterColumns)
{
    EXPECT_THAT (childrenOf (editor().mainPanel),
                 ElementsAreArray (Lines { "panel (0, 0, 117, 475)", "panel (127, 0, 117, 475)",
                                           "\"Link\" (96, 79, 50, 17) centred", "toggle (109, 95, 21, 21)",
                                           "panel (254, 0, 117, 475)", "panel (381, 0, 117, 475)",
                                           "panel (254, 0, 117, 475)", "panel (381, 0, 117, 475)" }));
    const auto children = editor().mainPanel.getChildren();
    EXPECT_EQ (children[0], &editor().hpPanel);
    EXPECT_EQ (children[1], &editor().lpPanel);
    EXPECT_EQ (children[4], &editor().lfoPanels[0]);
    EXPECT_EQ (children[5], &editor().lfoPanels[1]);
    EXPECT_EQ (children[6], &editor().frequencerPanels[0]);
    EXPECT_EQ (children[7], &editor().frequencerPanels[1]);
}

TEST_F (EditorLayout, NeverAddsTheSpareFrequencerPanels)
{
    for (std::size_t panel = 2; panel < 10; ++panel)
    {
        EXPECT_EQ (editor().frequencerPanels[panel].getParentComponent(), nullptr);
        EXPECT_EQ (editor().frequencerPanels[panel].getNumChildComponents(), 0);
    }
}

TEST_F (EditorLayout, FillsTheHighpassColumn)
{
    EXPECT_THAT (
        childrenOf (editor().hpPanel),
        ElementsAreArray (Lines { "rectangle (0, 0, 117, 475)", "\"HIGHPASS\" (0, 5, 117, 17) centred",
                                  "\"Frequency\" (0, 32, 117, 17) centred", "\"Resonance\" (0, 182, 117, 17) centred",
                                  "\"Mode\" (0, 332, 117, 17) centred", "knob hp_freq (0, 42, 117, 117)",
                                  "knob hp_reso (0, 192, 117, 117)", "knob hp_mode (0, 342, 117, 117)" }));
}

TEST_F (EditorLayout, FillsTheLowpassColumn)
{
    EXPECT_THAT (
        childrenOf (editor().lpPanel),
        ElementsAreArray (Lines { "rectangle (0, 0, 117, 475)", "\"LOWPASS\" (0, 5, 117, 17) centred",
                                  "\"Frequency\" (0, 32, 117, 17) centred", "\"Resonance\" (0, 182, 117, 17) centred",
                                  "\"Mode\" (0, 332, 117, 17) centred", "knob lp_freq (0, 42, 117, 117)",
                                  "knob lp_reso (0, 192, 117, 117)", "knob lp_mode (0, 342, 117, 117)" }));
}

TEST_F (EditorLayout, FillsTheFirstLfoColumnWithTheDotLast)
{
    EXPECT_THAT (childrenOf (editor().lfoPanels[0]),
                 ElementsAreArray (Lines { "rectangle (0, 0, 117, 475)",
                                           "\"LFO1\" (0, 5, 117, 17) centred",
                                           "\"Speed\" (0, 30, 58, 17) centred",
                                           "\"Phase\" (58, 30, 58, 17) centred",
                                           "\"Shape\" (0, 101, 58, 17) centred",
                                           "\"Curve\" (58, 101, 58, 17) centred",
                                           "\"Tempo mode\" (0, 172, 117, 17) centred",
                                           "\"HP freq\" (0, 242, 58, 17) centred",
                                           "\"LP freq\" (58, 242, 58, 17) centred",
                                           "\"HP reso\" (0, 312, 58, 17) centred",
                                           "\"LP reso\" (58, 312, 58, 17) centred",
                                           "\"LFO2 spd\" (0, 382, 58, 17) centred",
                                           "knob lfo1_speed (0, 40, 58, 58)",
                                           "knob lfo1_mode (0, 40, 58, 58)",
                                           "knob lfo1_phase (58, 40, 58, 58)",
                                           "knob lfo1_shape (0, 110, 58, 58)",
                                           "knob lfo1_curve (58, 110, 58, 58)",
                                           "knob lfo1_sync (0, 180, 117, 58)",
                                           "knob lfo1T_hpf (0, 250, 58, 58)",
                                           "knob lfo1T_lpf (58, 250, 58, 58)",
                                           "knob lfo1T_hpr (0, 320, 58, 58)",
                                           "knob lfo1T_lpr (58, 320, 58, 58)",
                                           "knob lfo1T_lfo2 (0, 390, 58, 58)",
                                           "rectangle (2, 450, 113, 15)",
                                           "rectangle (4, 452, 11, 11)" }));
}

TEST_F (EditorLayout, FillsTheSecondLfoColumnWithTheDotLast)
{
    EXPECT_THAT (childrenOf (editor().lfoPanels[1]),
                 ElementsAreArray (Lines { "rectangle (0, 0, 117, 475)",
                                           "\"LFO2\" (0, 5, 117, 17) centred",
                                           "\"Speed\" (0, 30, 58, 17) centred",
                                           "\"Phase\" (58, 30, 58, 17) centred",
                                           "\"Shape\" (0, 101, 58, 17) centred",
                                           "\"Curve\" (58, 101, 58, 17) centred",
                                           "\"Tempo mode\" (0, 172, 117, 17) centred",
                                           "\"HP freq\" (0, 242, 58, 17) centred",
                                           "\"LP freq\" (58, 242, 58, 17) centred",
                                           "\"HP reso\" (0, 312, 58, 17) centred",
                                           "\"LP reso\" (58, 312, 58, 17) centred",
                                           "\"LFO1 spd\" (0, 382, 58, 17) centred",
                                           "knob lfo2_speed (0, 40, 58, 58)",
                                           "knob lfo2_mode (0, 40, 58, 58)",
                                           "knob lfo2_phase (58, 40, 58, 58)",
                                           "knob lfo2_shape (0, 110, 58, 58)",
                                           "knob lfo2_curve (58, 110, 58, 58)",
                                           "knob lfo2_sync (0, 180, 117, 58)",
                                           "knob lfo2T_hpf (0, 250, 58, 58)",
                                           "knob lfo2T_lpf (58, 250, 58, 58)",
                                           "knob lfo2T_hpr (0, 320, 58, 58)",
                                           "knob lfo2T_lpr (58, 320, 58, 58)",
                                           "knob lfo2T_lfo1 (0, 390, 58, 58)",
                                           "rectangle (2, 450, 113, 15)",
                                           "rectangle (4, 452, 11, 11)" }));
}

TEST_F (EditorLayout, FillsTheStepsWithEachLightOverItsKnobs)
{
    EXPECT_THAT (
        childrenOf (editor().frequencerPanels[0]),
        ElementsAreArray (Lines {
            "rectangle (0, 0, 117, 475)",  "knob seq1_hpf (0, 0, 58, 58)",    "knob seq1_lpf (58, 0, 58, 58)",
            "rectangle (53.5, 27, 9, 9)",  "knob seq2_hpf (0, 45, 58, 58)",   "knob seq2_lpf (58, 45, 58, 58)",
            "rectangle (53.5, 72, 9, 9)",  "knob seq3_hpf (0, 90, 58, 58)",   "knob seq3_lpf (58, 90, 58, 58)",
            "rectangle (53.5, 117, 9, 9)", "knob seq4_hpf (0, 135, 58, 58)",  "knob seq4_lpf (58, 135, 58, 58)",
            "rectangle (53.5, 162, 9, 9)", "knob seq5_hpf (0, 180, 58, 58)",  "knob seq5_lpf (58, 180, 58, 58)",
            "rectangle (53.5, 207, 9, 9)", "knob seq6_hpf (0, 225, 58, 58)",  "knob seq6_lpf (58, 225, 58, 58)",
            "rectangle (53.5, 252, 9, 9)", "knob seq7_hpf (0, 270, 58, 58)",  "knob seq7_lpf (58, 270, 58, 58)",
            "rectangle (53.5, 297, 9, 9)", "knob seq8_hpf (0, 315, 58, 58)",  "knob seq8_lpf (58, 315, 58, 58)",
            "rectangle (53.5, 342, 9, 9)", "knob seq9_hpf (0, 360, 58, 58)",  "knob seq9_lpf (58, 360, 58, 58)",
            "rectangle (53.5, 387, 9, 9)", "knob seq10_hpf (0, 405, 58, 58)", "knob seq10_lpf (58, 405, 58, 58)",
            "rectangle (53.5, 432, 9, 9)" }));
}

TEST_F (EditorLayout, FillsTheFrequencersSecondColumn)
{
    EXPECT_THAT (childrenOf (editor().frequencerPanels[1]),
                 ElementsAreArray (Lines { "rectangle (0, 0, 117, 475)", "\"FREQUENCER\" (0, 5, 117, 17) centred",
                                           "\"Offset (bars)\" (0, 30, 117, 17) centred",
                                           "\"Highpass\" (8, 147, 109, 17) left", "\"Lowpass\" (8, 192, 109, 17) left",
                                           "field (10, 50, 97, 22)", "button \"Randomize\" (10, 100, 97, 28)",
                                           "knob srnd_hpf (58, 130, 58, 58)", "knob srnd_lpf (58, 175, 58, 58)" }));
}

TEST_F (EditorLayout, HidesTheLadderSwitchAndTheInertiaKnob)
{
    EXPECT_EQ (describe (editor().switchCaptions[2]), "\"Ladder\" (286, 519, 90, 21) left");
    EXPECT_EQ (describe (editor().ladderToggle), "toggle (261, 519, 21, 21)");
    EXPECT_EQ (editor().switchCaptions[2].getParentComponent(), nullptr);
    EXPECT_EQ (editor().ladderToggle.getParentComponent(), nullptr);
    EXPECT_EQ (editor().inertiaSlider.getParentComponent(), nullptr);
    EXPECT_EQ (editor().inertiaSlider.parameter, nullptr);
    EXPECT_TRUE (editor().inertiaSlider.getBounds().isEmpty());
}

TEST_F (EditorLayout, HasNoTooltipsComboBoxesOrFurtherKnobs)
{
    EXPECT_TRUE (allOf<juce::ComboBox> (editor()).empty());
    EXPECT_EQ (allOf<ParameterSlider> (editor()).size(), 50u);
    EXPECT_EQ (allOf<juce::ToggleButton> (editor()).size(), 3u);

    for (auto* tooltip : allOf<juce::SettableTooltipClient> (editor()))
        EXPECT_TRUE (tooltip->getTooltip().isEmpty());
}

TEST_F (EditorLayout, ConfiguresTheOffsetField)
{
    auto& field = editor().offsetEditor;
    EXPECT_FALSE (field.isMultiLine());
    EXPECT_FALSE (field.getReturnKeyStartsNewLine());
    EXPECT_EQ (field.getJustificationType().getFlags(), 9);
    EXPECT_EQ (field.getText(), juce::String {});
}

TEST_F (EditorLayout, ColoursTheDrawables)
{
    const auto expectColours = [] (const juce::DrawableRectangle& rectangle, float corner, juce::uint32 fill)
    {
        EXPECT_EQ (rectangle.getCornerSize(), (juce::Point<float> { corner, corner }));
        EXPECT_EQ (rectangle.getFill().colour.getARGB(), fill);
        EXPECT_EQ (rectangle.getStrokeType().getStrokeThickness(), 0.0f);
    };

    for (const auto& column : editor().filterControls)
        expectColours (column.background, 6.0f, 0xff303030);

    for (const auto& column : editor().lfoControls)
    {
        expectColours (column.background, 6.0f, 0xff303030);
        expectColours (column.track, 0.0f, 0xff202020);
        expectColours (column.dot, 3.0f, 0xff505050);
        EXPECT_EQ (column.track.getStrokeFill().colour.getARGB(), 0xffd0d0d0u);
    }

    expectColours (editor().stepsBackground, 6.0f, 0xff303030);
    expectColours (editor().frequencerControls.background, 6.0f, 0xff303030);

    for (const auto& step : editor().stepControls)
    {
        expectColours (step.light, 0.0f, 0xff98d800);
        EXPECT_EQ (step.light.getStrokeFill().colour.getARGB(), 0xff4e6e00u);
    }
}

//======================================================================================================================
class EditorOpening : public EditorFixture
{
protected:
    void expectView (bool lfos, bool frequencer)
    {
        EXPECT_EQ (editor().showLfos, lfos);
        EXPECT_EQ (editor().showFrequencer, frequencer);

        for (const auto& panel : editor().lfoPanels)
            EXPECT_EQ (panel.isVisible(), lfos);

        for (const auto& panel : editor().frequencerPanels)
            EXPECT_EQ (panel.isVisible(), frequencer);

        EXPECT_EQ (editor().getWidth(), lfos || frequencer ? 520 : 266);
        EXPECT_EQ (editor().getHeight(), 546);
    }
};

TEST_F (EditorOpening, ShowsTheFiltersAloneAtTheDefaults) { expectView (false, false); }

TEST_F (EditorOpening, ShowsTheLfosForAnyRouteInUse)
{
    for (std::size_t lfo = 0; lfo < 2; ++lfo)
        for (auto* route : { parameters.lfoToHpFreq[lfo], parameters.lfoToLpFreq[lfo], parameters.lfoToHpReso[lfo],
                             parameters.lfoToLpReso[lfo], parameters.lfoToOtherLfo[lfo] })
        {
            set (route, 0.4f);
            expectView (true, false);
            closeEditor();
            set (route, 0.5f);
        }
}

TEST_F (EditorOpening, ShowsTheFrequencerForAnyStepInUse)
{
    for (std::size_t step = 0; step < 10; ++step)
        for (auto* offset : { parameters.seqHpf[step], parameters.seqLpf[step] })
        {
            set (offset, 0.6f);
            expectView (false, true);
            closeEditor();
            set (offset, 0.5f);
        }
}

TEST_F (EditorOpening, PrefersTheLfosToTheFrequencer)
{
    set (parameters.lfoToLpReso[1], 0.9f);
    set (parameters.seqLpf[3], 0.1f);
    expectView (true, false);
}

TEST_F (EditorOpening, TreatsValuesWithinOnePercentOfTheDefaultAsUnused)
{
    set (parameters.lfoToHpFreq[0], 0.509f);
    set (parameters.seqHpf[0], 0.491f);
    expectView (false, false);

    closeEditor();
    set (parameters.seqHpf[0], 0.489f);
    expectView (false, true);

    closeEditor();
    set (parameters.lfoToHpFreq[0], 0.511f);
    expectView (true, false);
}

TEST_F (EditorOpening, IgnoresAllOtherParameters)
{
    for (auto* parameter : { parameters.hpFreq, parameters.lfoSpeed[0], parameters.lfoSync[1], parameters.lfoCurve[0],
                             parameters.srndHpf, parameters.seqOffs, parameters.inertia })
        set (parameter, 0.9f);

    expectView (false, false);
}

TEST_F (EditorOpening, ChoosesItsViewOncePerWindow)
{
    set (parameters.seqHpf[0], 0.9f);
    expectView (false, true);
    set (parameters.seqHpf[0], 0.5f);
    editor().timerCallback();
    expectView (false, true);

    closeEditor();
    expectView (false, false);
}

TEST_F (EditorOpening, CannotBeResized) { EXPECT_FALSE (editor().isResizable()); }

TEST_F (EditorOpening, KeepsItsPositionWhenItChangesSize)
{
    editor().setTopLeftPosition (31, 17);
    editor().showLfos = true;
    editor().updateWindowSize();
    EXPECT_EQ (editor().getBounds(), (juce::Rectangle<int> { 31, 17, 520, 546 }));
}

TEST_F (EditorOpening, ShowsTheDivisionKnobAtTempoAndOnePositionBeyond)
{
    for (auto index = 0; index < 10; ++index)
    {
        set (parameters.lfoSync[0], (float) index / 9.0f);
        const auto tempo = index == 3 || index == 4;
        EXPECT_EQ (editor().lfoControls[0].divisionKnob.isVisible(), tempo) << index;
        EXPECT_EQ (editor().lfoControls[0].speedKnob.isVisible(), ! tempo) << index;
        EXPECT_TRUE (editor().lfoControls[1].speedKnob.isVisible());
        closeEditor();
    }
}

TEST_F (EditorOpening, IsCreatedByTheProcessor)
{
    const std::unique_ptr<juce::AudioProcessorEditor> made { processor.createEditor() };
    EXPECT_NE (dynamic_cast<MainAudioProcessorEditor*> (made.get()), nullptr);
    EXPECT_TRUE (processor.hasEditor());
}

TEST_F (EditorOpening, StartsPollingEvery33Milliseconds) { EXPECT_EQ (editor().getTimerInterval(), 33); }
