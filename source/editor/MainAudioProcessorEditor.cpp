// SPDX-License-Identifier: AGPL-3.0-or-later
#include "editor/MainAudioProcessorEditor.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

using namespace editorTable;

namespace
{
constexpr int pollMilliseconds = 33;

/** Choice indices of an LFO's sync type at which the division knob shows. The second has no text: only a host can set it. */
constexpr int tempoIndex = 3;
constexpr int beyondTempoIndex = 4;

void addShape (juce::Component& parent, juce::DrawableRectangle& rectangle, const Shape& shape,
               juce::Rectangle<float> area)
{
    rectangle.setRectangle (area);
    rectangle.setCornerSize ({ shape.cornerSize, shape.cornerSize });
    rectangle.setFill (juce::Colour { shape.fill });

    if (shape.strokeFill != noStroke)
        rectangle.setStrokeFill (juce::Colour { shape.strokeFill });

    parent.addAndMakeVisible (rectangle);
}

void setCaption (juce::Label& label, const char* text, Area area, Align align)
{
    label.setText (text, juce::dontSendNotification);
    label.setJustificationType (align == Align::left ? juce::Justification::centredLeft : juce::Justification::centred);
    label.setBounds (area.toRectangle());
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
    for (std::size_t i = 0; i < switches.size(); ++i)
    {
        const auto& row = switches[i];
        setCaption (switchCaptions[i], row.text, row.captionArea(), Align::left);
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
    mainPanel.setBounds (editorTable::mainPanel.toRectangle());

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
    const std::array<juce::Component*, numFilters> panels { &hpPanel, &lpPanel };

    for (auto column = 0; column < numFilters; ++column)
    {
        const auto index = (std::size_t) column;
        auto& panel = *panels[index];
        auto& controls = filterControls[index];

        panel.setBounds (columnPlace (column).toRectangle());
        addShape (panel, controls.background, columnBackground, columnBackgroundArea());

        for (std::size_t i = 0; i < filterCaptions.size(); ++i)
            addCaption (panel, controls.captions[i], filterCaptions[i], column);

        for (std::size_t i = 0; i < filterKnobs.size(); ++i)
            addKnob (panel, controls.knobs[i], parameters.*filterKnobs[i].parameters[index], filterKnobs[i].area,
                     filterKnobs[i].arc);

        mainPanel.addAndMakeVisible (panel);
    }
}

void MainAudioProcessorEditor::addLink()
{
    addCaption (mainPanel, linkCaption, editorTable::linkCaption);
    linkToggle.setBounds (editorTable::linkToggle.toRectangle());
    linkToggle.addListener (this);
    mainPanel.addAndMakeVisible (linkToggle);
}

void MainAudioProcessorEditor::addLfoColumn (int lfoIndex)
{
    const auto index = (std::size_t) lfoIndex;
    auto& panel = lfoPanels[index];
    auto& controls = lfoControls[index];

    panel.setBounds (columnPlace (firstSharedPlace + lfoIndex).toRectangle());
    addShape (panel, controls.background, columnBackground, columnBackgroundArea());

    for (std::size_t i = 0; i < lfoCaptions.size(); ++i)
        addCaption (panel, controls.captions[i], lfoCaptions[i], lfoIndex);

    for (std::size_t i = 0; i < lfoKnobs.size(); ++i)
        addKnob (panel, controls.knobs[i], (parameters.*lfoKnobs[i].parameters)[index], lfoKnobs[i].area,
                 lfoKnobs[i].arc);

    addShape (panel, controls.track, track, trackArea());
    addShape (panel, controls.dot, dot, dotArea (-1.0f));
    mainPanel.addAndMakeVisible (panel);
}

void MainAudioProcessorEditor::addStepColumn()
{
    auto& panel = frequencerPanels[0];
    panel.setBounds (columnPlace (firstSharedPlace).toRectangle());
    addShape (panel, stepsBackground, columnBackground, columnBackgroundArea());

    for (auto step = 0; step < ParameterSet::numSteps; ++step)
    {
        const auto index = (std::size_t) step;
        auto& controls = stepControls[index];

        for (std::size_t i = 0; i < stepKnobs.size(); ++i)
            addKnob (panel, controls.knobs[i], (parameters.*stepKnobs[i].parameters)[index],
                     { stepKnobs[i].x, stepTop (step), half, half }, Arc::none);

        addShape (panel, controls.light, stepLight, stepLightArea (step));
    }

    mainPanel.addAndMakeVisible (panel);
}

void MainAudioProcessorEditor::addFrequencerColumn()
{
    auto& panel = frequencerPanels[1];
    panel.setBounds (columnPlace (firstSharedPlace + 1).toRectangle());
    addShape (panel, frequencerControls.background, columnBackground, columnBackgroundArea());

    for (std::size_t i = 0; i < frequencerCaptions.size(); ++i)
        addCaption (panel, frequencerControls.captions[i], frequencerCaptions[i]);

    offsetEditor.setText ({}, false);
    offsetEditor.setMultiLine (false, false);
    offsetEditor.setReturnKeyStartsNewLine (false);
    offsetEditor.setInputRestrictions (7, "1234567890.+-");
    offsetEditor.setJustification (juce::Justification::left | juce::Justification::top);
    offsetEditor.setBounds (editorTable::offsetEditor.toRectangle());
    offsetEditor.addListener (this);
    panel.addAndMakeVisible (offsetEditor);

    randomizeButton.setButtonText ("Randomize");
    randomizeButton.setBounds (editorTable::randomizeButton.toRectangle());
    randomizeButton.addListener (this);
    panel.addAndMakeVisible (randomizeButton);

    for (std::size_t i = 0; i < amountKnobs.size(); ++i)
        addKnob (panel, frequencerControls.knobs[i], parameters.*amountKnobs[i].parameter, amountKnobs[i].area,
                 Arc::none);

    mainPanel.addAndMakeVisible (panel);
}

void MainAudioProcessorEditor::addCaption (juce::Component& parent, juce::Label& label, const Caption& row, int column)
{
    setCaption (label, row.texts[(std::size_t) column], row.area, row.align);
    parent.addAndMakeVisible (label);
}

void MainAudioProcessorEditor::addKnob (juce::Component& parent, ParameterSlider& knob,
                                        ParameterSet::Parameter* parameter, Area area, Arc arc)
{
    knob.bindToParameter (parameter);
    knob.addListener (this);
    knob.setBounds (area.toRectangle());

    if (arc != Arc::none)
        lookAndFeel.setRangeColours (knob, stopsOf (arc));

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

    setBounds (getX(), getY(), showLfos || showFrequencer ? wideWidth : narrowWidth, windowHeight);
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
