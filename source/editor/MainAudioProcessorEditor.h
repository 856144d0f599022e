// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>

#include <juce_audio_processors/juce_audio_processors.h>

#include "dsp/MainAudioProcessor.h"
#include "editor/EditorTable.h"
#include "editor/KestrinLookAndFeel.h"
#include "editor/ParameterSlider.h"

/** The plug-in's window: 266 or 520 by 546 pixels, and nothing in between.

    The controls write their parameters at once, and a timer of 33 ms brings every parameter's value back into its
    control without notification, so the two directions never chase each other. Beside the controls it shows the engine
    at work: a dot for each LFO, a light for each step, and lights for the filters and LFOs that are in use.

    The class has four files of its name: construction and layout (MainAudioProcessorEditor.cpp, from the rows of
    EditorTable.h), painting (...Painting.cpp), the poll (...Polling.cpp) and what the user does (...Callbacks.cpp).

    Message thread only. The engine's fields are read and written there as plain memory while the audio runs; the worst
    result is a misplaced dot. The controls are public so that tests can look at them. */
class MainAudioProcessorEditor : public juce::AudioProcessorEditor,
                                 public juce::Slider::Listener,
                                 public juce::Button::Listener,
                                 public juce::TextEditor::Listener,
                                 public juce::Timer
{
public:
    /** @param owner  outlives the window */
    explicit MainAudioProcessorEditor (MainAudioProcessor& owner);
    ~MainAudioProcessorEditor() override;

    void paint (juce::Graphics& g) override;
    void paintOverChildren (juce::Graphics& g) override;

    /** Nothing moves when the window changes its width. */
    void resized() override {}

    void sliderValueChanged (juce::Slider* slider) override;
    void buttonClicked (juce::Button* button) override;
    void textEditorReturnKeyPressed (juce::TextEditor& editor) override;
    void timerCallback() override;

    /** Brings every parameter's value into its control, without notification. */
    void refreshControls();

    /** Shows the columns that are switched on, in a window that is as wide as they need. */
    void updateWindowSize();

    /** Lets the LFOs win where both views are on, and at the first call chooses the view that the settings use. */
    void applyInitialPanels();

    /** Shows one of the two knobs in the place of the speed knob. Runs only when the window is made and when the user
        turns the tempo knob: a tempo mode set by the host turns the tempo knob alone. */
    void updateLfoSpeedControls (int lfoIndex);

    //==================================================================================================================
    /** The contents of a column: rows of EditorTable.h. */
    template <std::size_t numCaptions, std::size_t numKnobs>
    struct ColumnControls
    {
        juce::DrawableRectangle background;
        std::array<juce::Label, numCaptions> captions;
        std::array<ParameterSlider, numKnobs> knobs;
    };

    /** An LFO's column, with the dot that shows its output. */
    struct LfoControls : ColumnControls<editorTable::lfoCaptions.size(), editorTable::lfoKnobs.size()>
    {
        juce::DrawableRectangle track;
        juce::DrawableRectangle dot;

        ParameterSlider& speedKnob { knobs[editorTable::speedKnobRow] };
        ParameterSlider& divisionKnob { knobs[editorTable::divisionKnobRow] };
        ParameterSlider& tempoKnob { knobs[editorTable::tempoKnobRow] };
    };

    /** A step's row: two knobs and the light between them. */
    struct StepControls
    {
        /** Highpass, lowpass. */
        std::array<ParameterSlider, editorTable::stepKnobs.size()> knobs;
        juce::DrawableRectangle light;
    };

    using FilterControls = ColumnControls<editorTable::filterCaptions.size(), editorTable::filterKnobs.size()>;
    using FrequencerControls = ColumnControls<editorTable::frequencerCaptions.size(), editorTable::amountKnobs.size()>;

    juce::Component mainPanel, hpPanel, lpPanel;
    std::array<juce::Component, ParameterSet::numLfos> lfoPanels;

    /** Only the first two have a place in the window. The others are unused, part of the frozen layout. */
    std::array<juce::Component, 10> frequencerPanels;

    std::array<FilterControls, editorTable::numFilters> filterControls;
    ParameterSlider& hpFreqSlider { filterControls[0].knobs[editorTable::frequencyKnobRow] };
    ParameterSlider& lpFreqSlider { filterControls[1].knobs[editorTable::frequencyKnobRow] };

    /** Follows its parameter, but has no place in the window: only the host sets the inertia. */
    ParameterSlider inertiaSlider;

    juce::Label linkCaption;
    juce::ToggleButton linkToggle;

    std::array<LfoControls, ParameterSet::numLfos> lfoControls;

    juce::DrawableRectangle stepsBackground;
    std::array<StepControls, ParameterSet::numSteps> stepControls;

    FrequencerControls frequencerControls;
    juce::TextEditor offsetEditor;
    juce::TextButton randomizeButton;

    std::array<juce::Label, editorTable::switches.size()> switchCaptions;
    std::array<juce::ToggleButton, editorTable::switches.size()> switchToggles;
    juce::ToggleButton& showLfosToggle { switchToggles[0] };
    juce::ToggleButton& frequencerToggle { switchToggles[1] };
    juce::ToggleButton& ladderToggle { switchToggles[2] };

    KestrinLookAndFeel lookAndFeel;

    bool showLfos = false;
    bool showFrequencer = false;

    /** True until the newly opened window has chosen the columns that it shows. */
    bool panelsUndecided = true;
    int timerTicks = 0;

private:
    void addSwitches();
    void addMainPanel();

    /** A knob does not take the keyboard, so after a click on one JUCE looks for another component that does. Without this
        the offset field would take what is typed next, and would then no longer follow its parameter; or the link would
        answer the return key. Here the window and its panel, which enclose the knobs, take the keyboard and do nothing. */
    void preventFocusFallthrough();

    void addFilterColumns();
    void addLink();
    void addLfoColumn (int lfoIndex);
    void addStepColumn();
    void addFrequencerColumn();
    void addCaption (juce::Component& parent, juce::Label& label, const editorTable::Caption& row, int column = 0);
    void addKnob (juce::Component& parent, ParameterSlider& knob, ParameterSet::Parameter* parameter,
                  const juce::String& title, editorTable::Area area, editorTable::Arc arc);

    [[nodiscard]] bool anyLfoIsRouted() const;
    [[nodiscard]] bool anyStepIsUsed() const;

    void drawLight (juce::Graphics& g, const juce::Component& column) const;

    void refreshToggles();
    void refreshOffsetText();
    void refreshResonanceCaptions();
    void moveDot (int lfoIndex);
    void updateStepLight (int step);

    void moveLinkedFrequency (const ParameterSlider& slider, float value);
    void randomiseFrequencer();

    MainAudioProcessor& mainProcessor;
    ParameterSet& parameters { mainProcessor.parameters };

    /** True while one linked frequency moves the other, so that the other does not move the first in turn. */
    bool linkBusy = false;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (MainAudioProcessorEditor)
};
