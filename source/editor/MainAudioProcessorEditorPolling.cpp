// SPDX-License-Identifier: AGPL-3.0-or-later
#include <cstddef>

#include "common/PendingX11Events.h"
#include "editor/MainAudioProcessorEditor.h"

namespace
{
/** Nothing is compared first: a control ignores a value that it already has. */
void refresh (ParameterSlider& knob, const ParameterSet::Parameter& parameter)
{
    knob.setValue ((double) parameter.get(), juce::dontSendNotification);
}

void refresh (ParameterSlider& knob) { refresh (knob, *knob.parameter); }

/** How long the steps' lights stay on after the engine was last woken. */
constexpr double lightSeconds = 0.2;

/** The whole window is repainted at the first poll and then about every 135 seconds. */
constexpr int repaintMask = 0xfff;
} // namespace

void MainAudioProcessorEditor::timerCallback()
{
    refreshControls();

    for (auto lfo = 0; lfo < ParameterSet::numLfos; ++lfo)
        moveDot (lfo);

    for (auto step = 0; step < ParameterSet::numSteps; ++step)
        updateStepLight (step);

    ++timerTicks;

    if ((timerTicks & repaintMask) == 1)
        repaint();

    // Last of all: an event may close this window.
    pendingX11Events::handle();
}

void MainAudioProcessorEditor::refreshControls()
{
    for (auto& column : filterControls)
        for (auto& knob : column.knobs)
            refresh (knob);

    refresh (inertiaSlider, *parameters.inertia);
    refreshToggles();
    refreshOffsetText();

    for (auto& knob : frequencerControls.knobs)
        refresh (knob);

    for (auto& column : lfoControls)
        for (auto& knob : column.knobs)
            refresh (knob);

    for (auto& step : stepControls)
        for (auto& knob : step.knobs)
            refresh (knob);

    refreshResonanceCaptions();
}

void MainAudioProcessorEditor::refreshToggles()
{
    linkToggle.setToggleState (parameters.link->get(), juce::dontSendNotification);
    showLfosToggle.setToggleState (showLfos, juce::dontSendNotification);
    frequencerToggle.setToggleState (showFrequencer, juce::dontSendNotification);
}

void MainAudioProcessorEditor::refreshOffsetText()
{
    // Not while somebody types into it.
    if (! offsetEditor.hasKeyboardFocus (false))
        offsetEditor.setText (parameters.seqOffs->getCurrentValueAsText().trim(), false);
}

void MainAudioProcessorEditor::refreshResonanceCaptions()
{
    constexpr int ladderIndex = 1;
    const auto* text = parameters.filtMode->getChoiceIndex() == ladderIndex ? "Grunge" : "Resonance";

    for (auto& column : filterControls)
        column.captions[editorTable::resonanceCaptionRow].setText (text, juce::dontSendNotification);
}

void MainAudioProcessorEditor::moveDot (int lfoIndex)
{
    const auto index = (std::size_t) lfoIndex;
    auto& dotShape = lfoControls[index].dot;
    const juce::Parallelogram<float> place { editorTable::dotArea (mainProcessor.lfo[index].render()) };

    if (dotShape.getRectangle() != place)
        dotShape.setRectangle (place);

    dotShape.setVisible (mainProcessor.controlUpdatePending);
}

void MainAudioProcessorEditor::updateStepLight (int step)
{
    applyInitialPanels();

    const auto index = (std::size_t) step;
    auto lit = showFrequencer && mainProcessor.stepLit[index];

    if (lit)
    {
        // While the engine sleeps nothing moves the lights, so they go out soon after it has fallen asleep.
        mainProcessor.refreshHostSampleRate();
        lit = mainProcessor.processingRate() * lightSeconds > mainProcessor.framesSinceRequest;
    }

    stepControls[index].light.setVisible (lit);
}
