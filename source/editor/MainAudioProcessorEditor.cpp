// SPDX-License-Identifier: AGPL-3.0-or-later
#include "editor/MainAudioProcessorEditor.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace table = editorTable;

namespace
{
constexpr int pollMilliseconds = 33;

/** Choice indices of an LFO's sync type at which the division knob shows. The second has no text: only a host can set it. */
constexpr int tempoIndex = 3;
constexpr int beyondTempoIndex = 4;

void addShape (juce::Component& parent, juce::DrawableRectangle& rectangle, const table::Shape& shape,
               juce::Rectangle<float> area)
{
    rectangle.setRectangle (area);
    rectangle.setCornerSize ({ shape.cornerSize, shape.cornerSize });
    rectangle.setFill (juce::Colour { shape.fill });

    if (shape.strokeFill != table::noStroke)
        rectangle.setStrokeFill (juce::Colour { shape.strokeFill });

    rectangle.setAccessible (false);
    parent.addAndMakeVisible (rectangle);
}

void setCaption (juce::Label& label, const char* text, table::Area area, table::Align align)
{
    label.setText (text, juce::dontSendNotification);
    label.setJustificationType (align == table::Align::left ? juce::Justification::centredLeft
                                                            : juce::Justification::centred);
    label.setBounds (area.toRectangle());

    // The control has a title: a screen reader that stopped here, too, would say everything twice.
    label.setAccessible (false);
}

/** True if a parameter differs from its default by more than a touch. */
bool isUsed (const ParameterSet::Parameter* parameter)
{
    constexpr float touch = 0.01f;
    return std::abs (parameter->get() - parameter->defaultValue) > touch;
}
} // namespace

MainAudioProcessorEditor::MainAudioProcessorEditor (MainAudioProcessor& owner)
    : juce::AudioProcessorEditor (owner), mainProcessor (owner)
{
    updateWindowSize();

    addSwitches();
    addMainPanel();
    preventFocusFallthrough();

    for (auto lfo = 0; lfo < ParameterSet::numLfos; ++lfo)
        updateLfoSpeedControls (lfo);

    setLookAndFeel (&lookAndFeel);
    updateWindowSize();
    startTimer (pollMilliseconds);
}

MainAudioProcessorEditor::~MainAudioProcessorEditor()
{
    stopTimer();
    setLookAndFeel (nullptr);
}

//======================================================================================================================
void MainAudioProcessorEditor::addSwitches()
{
    for (std::size_t i = 0; i < table::switches.size(); ++i)
    {
        const auto& row = table::switches[i];
        setCaption (switchCaptions[i], row.text, row.captionArea(), table::Align::left);
        switchToggles[i].setTitle (row.text);
        switchToggles[i].setBounds (row.toggleArea().toRectangle());
        switchToggles[i].addListener (this);

        if (row.shown)
        {
            addAndMakeVisible (switchCaptions[i]);
            addAndMakeVisible (switchToggles[i]);
        }
    }
}

void MainAudioProcessorEditor::addMainPanel()
{
    mainPanel.setBounds (table::mainPanel.toRectangle());

    // The link overlaps both filter columns, so it is added over them.
    addFilterColumns();
    addLink();

    for (auto lfo = 0; lfo < ParameterSet::numLfos; ++lfo)
        addLfoColumn (lfo);

    addStepColumn();
    addFrequencerColumn();
    addAndMakeVisible (mainPanel);
}

void MainAudioProcessorEditor::preventFocusFallthrough()
{
    setWantsKeyboardFocus (true);
    mainPanel.setWantsKeyboardFocus (true);
}

void MainAudioProcessorEditor::addFilterColumns()
{
    const std::array<juce::Component*, table::numFilters> panels { &hpPanel, &lpPanel };

    for (auto column = 0; column < table::numFilters; ++column)
    {
        const auto index = (std::size_t) column;
        auto& panel = *panels[index];
        auto& controls = filterControls[index];

        panel.setBounds (table::columnPlace (column).toRectangle());
        addShape (panel, controls.background, table::columnBackground, table::columnBackgroundArea());

        for (std::size_t i = 0; i < table::filterCaptions.size(); ++i)
            addCaption (panel, controls.captions[i], table::filterCaptions[i], column);

        for (std::size_t i = 0; i < table::filterKnobs.size(); ++i)
            addKnob (panel, controls.knobs[i], parameters.*table::filterKnobs[i].parameters[index],
                     table::filterKnobs[i].titles[index], table::filterKnobs[i].area, table::filterKnobs[i].arc);

        mainPanel.addAndMakeVisible (panel);
    }
}

void MainAudioProcessorEditor::addLink()
{
    addCaption (mainPanel, linkCaption, table::linkCaption);
    linkToggle.setTitle (table::linkTitle);
    linkToggle.setBounds (table::linkToggle.toRectangle());
    linkToggle.addListener (this);
    mainPanel.addAndMakeVisible (linkToggle);
}

void MainAudioProcessorEditor::addLfoColumn (int lfoIndex)
{
    const auto index = (std::size_t) lfoIndex;
    auto& panel = lfoPanels[index];
    auto& controls = lfoControls[index];

    panel.setBounds (table::columnPlace (table::firstSharedPlace + lfoIndex).toRectangle());
    addShape (panel, controls.background, table::columnBackground, table::columnBackgroundArea());

    for (std::size_t i = 0; i < table::lfoCaptions.size(); ++i)
        addCaption (panel, controls.captions[i], table::lfoCaptions[i], lfoIndex);

    for (std::size_t i = 0; i < table::lfoKnobs.size(); ++i)
        addKnob (panel, controls.knobs[i], (parameters.*table::lfoKnobs[i].parameters)[index],
                 "LFO " + juce::String (lfoIndex + 1) + " " + table::lfoKnobs[i].title, table::lfoKnobs[i].area,
                 table::lfoKnobs[i].arc);

    addShape (panel, controls.track, table::track, table::trackArea());
    addShape (panel, controls.dot, table::dot, table::dotArea (-1.0f));
    mainPanel.addAndMakeVisible (panel);
}

void MainAudioProcessorEditor::addStepColumn()
{
    auto& panel = frequencerPanels[0];
    panel.setBounds (table::columnPlace (table::firstSharedPlace).toRectangle());
    addShape (panel, stepsBackground, table::columnBackground, table::columnBackgroundArea());

    for (auto step = 0; step < ParameterSet::numSteps; ++step)
    {
        const auto index = (std::size_t) step;
        auto& controls = stepControls[index];

        for (std::size_t i = 0; i < table::stepKnobs.size(); ++i)
            addKnob (panel, controls.knobs[i], (parameters.*table::stepKnobs[i].parameters)[index],
                     "Step " + juce::String (step + 1) + " " + table::stepKnobs[i].title,
                     { table::stepKnobs[i].x, table::stepTop (step), table::half, table::half }, table::Arc::none);

        addShape (panel, controls.light, table::stepLight, table::stepLightArea (step));
    }

    mainPanel.addAndMakeVisible (panel);
}

void MainAudioProcessorEditor::addFrequencerColumn()
{
    auto& panel = frequencerPanels[1];
    panel.setBounds (table::columnPlace (table::firstSharedPlace + 1).toRectangle());
    addShape (panel, frequencerControls.background, table::columnBackground, table::columnBackgroundArea());

    for (std::size_t i = 0; i < table::frequencerCaptions.size(); ++i)
        addCaption (panel, frequencerControls.captions[i], table::frequencerCaptions[i]);

    offsetEditor.setTitle (table::offsetTitle);
    offsetEditor.setText ({}, false);
    offsetEditor.setMultiLine (false, false);
    offsetEditor.setReturnKeyStartsNewLine (false);
    offsetEditor.setInputRestrictions (7, "1234567890.+-");
    offsetEditor.setJustification (juce::Justification::left | juce::Justification::top);
    offsetEditor.setBounds (table::offsetEditor.toRectangle());
    offsetEditor.addListener (this);
    panel.addAndMakeVisible (offsetEditor);

    randomizeButton.setButtonText ("Randomize");
    randomizeButton.setBounds (table::randomizeButton.toRectangle());
    randomizeButton.addListener (this);
    panel.addAndMakeVisible (randomizeButton);

    for (std::size_t i = 0; i < table::amountKnobs.size(); ++i)
        addKnob (panel, frequencerControls.knobs[i], parameters.*table::amountKnobs[i].parameter,
                 table::amountKnobs[i].title, table::amountKnobs[i].area, table::Arc::none);

    mainPanel.addAndMakeVisible (panel);
}

void MainAudioProcessorEditor::addCaption (juce::Component& parent, juce::Label& label, const table::Caption& row,
                                           int column)
{
    setCaption (label, row.texts[(std::size_t) column], row.area, row.align);
    parent.addAndMakeVisible (label);
}

void MainAudioProcessorEditor::addKnob (juce::Component& parent, ParameterSlider& knob,
                                        ParameterSet::Parameter* parameter, const juce::String& title, table::Area area,
                                        table::Arc arc)
{
    knob.bindToParameter (parameter);
    knob.setTitle (title);
    knob.addListener (this);
    knob.setBounds (area.toRectangle());

    if (arc != table::Arc::none)
        lookAndFeel.setRangeColours (knob, table::stopsOf (arc));

    parent.addAndMakeVisible (knob);
}

//======================================================================================================================
void MainAudioProcessorEditor::updateWindowSize()
{
    applyInitialPanels();

    for (auto& panel : lfoPanels)
        panel.setVisible (showLfos);

    for (auto& panel : frequencerPanels)
        panel.setVisible (showFrequencer);

    setBounds (getX(), getY(), showLfos || showFrequencer ? table::wideWidth : table::narrowWidth, table::windowHeight);
}

void MainAudioProcessorEditor::applyInitialPanels()
{
    if (showLfos)
        showFrequencer = false;

    if (! panelsUndecided)
        return;

    panelsUndecided = false;
    showLfos = anyLfoIsRouted();
    showFrequencer = ! showLfos && anyStepIsUsed();
}

bool MainAudioProcessorEditor::anyLfoIsRouted() const
{
    for (std::size_t lfo = 0; lfo < ParameterSet::numLfos; ++lfo)
        if (isUsed (parameters.lfoToHpFreq[lfo]) || isUsed (parameters.lfoToLpFreq[lfo])
            || isUsed (parameters.lfoToHpReso[lfo]) || isUsed (parameters.lfoToLpReso[lfo])
            || isUsed (parameters.lfoToOtherLfo[lfo]))
            return true;

    return false;
}

bool MainAudioProcessorEditor::anyStepIsUsed() const
{
    return std::any_of (parameters.seqHpf.begin(), parameters.seqHpf.end(), isUsed)
           || std::any_of (parameters.seqLpf.begin(), parameters.seqLpf.end(), isUsed);
}

void MainAudioProcessorEditor::updateLfoSpeedControls (int lfoIndex)
{
    const auto index = (std::size_t) lfoIndex;
    const auto sync = parameters.lfoSync[index]->getChoiceIndex();
    const auto followsTempo = sync == tempoIndex || sync == beyondTempoIndex;

    lfoControls[index].speedKnob.setVisible (! followsTempo);
    lfoControls[index].divisionKnob.setVisible (followsTempo);
}
