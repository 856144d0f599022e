// SPDX-License-Identifier: AGPL-3.0-or-later
// A host's audio thread beside its message thread. The thread sanitizer finds the races; without it the
// tests still show that nothing crashes and that the sound is finite.
#include <memory>

#include <gtest/gtest.h>

#include "editor/MainAudioProcessorEditor.h"
#include "support/RunningAudio.h"

namespace
{
constexpr int enoughRounds = 100;
constexpr int enoughBlocks = 200;

template <typename Round>
void repeatBeside (const RunningAudio& audio, Round round)
{
    for (int number = 0; number < enoughRounds || ! audio.hasPlayed (enoughBlocks); ++number)
        round (number);
}

/** Both LFOs and the Frequencer at work, so that every field that the window reads is written all the time. */
void setMoving (MainAudioProcessor& processor)
{
    auto& parameters = processor.parameters;
    const auto set = [] (juce::AudioProcessorParameter* parameter, float value) { parameter->setValue (value); };

    set (parameters.lfoToHpFreq[0], 0.8f);
    set (parameters.lfoToHpFreq[1], 0.3f);
    set (parameters.seqHpf[0], 0.9f);
    set (parameters.seqLpf[3], 0.1f);
}

class Threads : public testing::Test
{
protected:
    Threads() { setMoving (processor); }

    MainAudioProcessor processor;
};
} // namespace

TEST_F (Threads, LetTheWindowPollWhileAudioRuns)
{
    MainAudioProcessorEditor editor (processor);
    const RunningAudio audio (processor);

    repeatBeside (audio,
                  [&] (int number)
                  {
                      auto& toggle = number % 2 == 0 ? editor.showLfosToggle : editor.frequencerToggle;
                      toggle.setToggleState (! toggle.getToggleState(), juce::sendNotificationSync);
                      editor.timerCallback();
                  });
}

TEST_F (Threads, LetTheWindowPollWhileTheHostAutomatesEverything)
{
    MainAudioProcessorEditor editor (processor);
    const RunningAudio audio (processor, true);
    repeatBeside (audio, [&] (int) { editor.timerCallback(); });
}

TEST_F (Threads, LetEveryKnobMoveWhileAudioRuns)
{
    MainAudioProcessorEditor editor (processor);
    const RunningAudio audio (processor);

    const auto moveAll = [] (auto& self, juce::Component& parent, double value) -> void
    {
        for (auto* const child : parent.getChildren())
        {
            if (auto* const knob = dynamic_cast<juce::Slider*> (child))
                knob->setValue (value, juce::sendNotificationSync);

            self (self, *child, value);
        }
    };

    repeatBeside (audio,
                  [&] (int number)
                  {
                      moveAll (moveAll, editor, (number % 11) / 10.0);
                      editor.timerCallback();
                  });
}

TEST_F (Threads, LetStatesBeSavedAndLoadedWhileAudioRuns)
{
    juce::MemoryBlock block;
    processor.getStateInformation (block);
    const RunningAudio audio (processor);

    repeatBeside (audio,
                  [&] (int)
                  {
                      processor.setStateInformation (block.getData(), (int) block.getSize());
                      processor.getStateInformation (block);
                  });
}

TEST_F (Threads, LetInstancesRunBesideEachOther)
{
    MainAudioProcessor other;
    setMoving (other);

    const RunningAudio audio (processor, true), otherAudio (other, true);
    repeatBeside (otherAudio, [&] (int) { const auto third = std::make_unique<MainAudioProcessor>(); });
}
