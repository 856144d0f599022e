// SPDX-License-Identifier: AGPL-3.0-or-later
#include <cstddef>
#include <cstdlib>

#include "editor/MainAudioProcessorEditor.h"

namespace
{
/** Writes a value and tells the host. The host hears the number as it was written, even where the parameter limits it, and
    without a gesture around it. */
void writeAndTell (juce::AudioProcessorParameter& parameter, float value)
{
    parameter.setValue (value);
    parameter.sendValueChangedMessageToListeners (value);
}

/** freqLinkOffset while the knobs are not linked, and the mark at or below which it counts as not captured. */
constexpr float noLinkOffset = -100.0f;
constexpr float capturedAbove = -90.0f;

/** The largest draw that the formula below expects. */
constexpr int largestDraw = 32767;

constexpr int surplusBits()
{
    auto bits = 0;

    for (auto largest = RAND_MAX; largest > largestDraw; largest >>= 1)
        ++bits;

    return bits;
}

/** -0.5 to 0.5. The standard library's random numbers have a larger range on some platforms than on others, so only their
    15 highest bits are used: 0 to 32767 everywhere. */
float randomOffset()
{
    const auto draw = (float) (std::rand() >> surplusBits());
    return draw * 3.0518509e-05f - 0.5f;
}
} // namespace

void MainAudioProcessorEditor::sliderValueChanged (juce::Slider* slider)
{
    auto* knob = dynamic_cast<ParameterSlider*> (slider);

    if (knob == nullptr || knob->parameter == nullptr)
        return;

    const auto value = (float) knob->getValue();
    writeAndTell (*knob->parameter, value);

    for (auto lfo = 0; lfo < ParameterSet::numLfos; ++lfo)
    {
        if (knob == &lfoControls[(std::size_t) lfo].tempoKnob)
        {
            updateLfoSpeedControls (lfo);
            mainProcessor.lfo[(std::size_t) lfo].reset();
        }
    }

    if (! linkBusy && linkToggle.getToggleState())
        moveLinkedFrequency (*knob, value);

    mainProcessor.requestControlUpdate();
}

void MainAudioProcessorEditor::moveLinkedFrequency (const ParameterSlider& slider, float value)
{
    const juce::ScopedValueSetter<bool> guard { linkBusy, true, false };
    auto& offset = mainProcessor.freqLinkOffset;

    // Any knob captures the distance. If it is a frequency knob, it has moved already, so the other one does not jump.
    if (offset <= capturedAbove)
        offset = (float) (lpFreqSlider.getValue() - hpFreqSlider.getValue());

    // Not limited here: the parameter limits what it keeps. The other knob catches up at the next poll.
    if (&slider == &hpFreqSlider)
        writeAndTell (*parameters.lpFreq, value + offset);
    else if (&slider == &lpFreqSlider)
        writeAndTell (*parameters.hpFreq, value - offset);
}

//======================================================================================================================
void MainAudioProcessorEditor::buttonClicked (juce::Button* button)
{
    const auto state = button->getToggleState();

    if (button == &linkToggle)
    {
        writeAndTell (*parameters.link, state ? 1.0f : 0.0f);

        if (! state)
            mainProcessor.freqLinkOffset = noLinkOffset;
    }
    else if (button == &randomizeButton)
    {
        randomiseFrequencer();
    }
    else if (button == &showLfosToggle)
    {
        showFrequencer = false;
        showLfos = state;
        updateWindowSize();
    }
    else if (button == &frequencerToggle)
    {
        showLfos = false;
        showFrequencer = state;
        updateWindowSize();
    }
    else if (button == &ladderToggle)
    {
        // 0.1 is nearest to the second of ten positions.
        parameters.filtMode->setValueNotifyingHost (parameters.filtMode->getChoiceIndex() == 1 ? 0.0f : 0.1f);
    }
}

void MainAudioProcessorEditor::randomiseFrequencer()
{
    // The first draw is dropped: the sequence after a given seed depends on it.
    static_cast<void> (std::rand());

    const auto linked = parameters.link->get();

    for (std::size_t step = 0; step < ParameterSet::numSteps; ++step)
    {
        const auto highpassDraw = randomOffset();
        const auto lowpassDraw = linked ? highpassDraw : randomOffset();
        const auto highpass = parameters.srndHpf->get() * highpassDraw + 0.5f;
        const auto lowpass = parameters.srndLpf->get() * lowpassDraw + 0.5f;

        writeAndTell (*parameters.seqHpf[step], highpass);
        writeAndTell (*parameters.seqLpf[step], lowpass);
    }
}

void MainAudioProcessorEditor::textEditorReturnKeyPressed (juce::TextEditor& editor)
{
    juce::Component::unfocusAllComponents();
    editor.setFocusContainerType (juce::Component::FocusContainerType::none);

    auto& offset = *parameters.seqOffs;
    const auto typed = (float) editor.getText().getDoubleValue();
    writeAndTell (offset, (typed - offset.minValue) / (offset.maxValue - offset.minValue));
}
