// SPDX-License-Identifier: AGPL-3.0-or-later
#include <malloc.h>

#include "support/RunningAudio.h"
#include "unit/editor/EditorFixture.h"
#include "unit/editor/HeadlessWindow.h"

namespace
{
std::size_t bytesInUse() { return ::mallinfo2().uordblks; }
} // namespace

class EditorLifetime : public EditorFixture
{
protected:
    void openUseAndClose()
    {
        const std::unique_ptr<juce::AudioProcessorEditor> window { processor.createEditor() };
        auto* opened = dynamic_cast<MainAudioProcessorEditor*> (window.get());
        ASSERT_NE (opened, nullptr);
        opened->timerCallback();
        opened->showLfosToggle.setToggleState (true, juce::sendNotificationSync);
        opened->hpFreqSlider.setValue (0.5, juce::sendNotificationSync);
        opened->timerCallback();
        HeadlessWindow::deliverMessages();
    }
};

TEST_F (EditorLifetime, OpensAndCloses200TimesWhileTheAudioRuns)
{
    set (parameters.lfoToHpFreq[0], 0.8f);
    const RunningAudio audio { processor };

    // The first windows fill caches: typefaces, glyphs, images.
    for (auto opening = 0; opening < 200; ++opening)
        openUseAndClose();

    const auto before = bytesInUse();

    for (auto opening = 0; opening < 200; ++opening)
        openUseAndClose();

    // The smallest block that each closing left behind would come to 3200 bytes.
    EXPECT_LT (bytesInUse(), before + 3200);
    EXPECT_TRUE (audio.hasPlayed (10));
}

TEST_F (EditorLifetime, LetsTheHostAutomateAfterItCloses)
{
    openUseAndClose();
    EXPECT_EQ (processor.getActiveEditor(), nullptr);

    // Listeners left behind would be called here.
    for (auto* parameter : processor.getParameters())
        parameter->setValueNotifyingHost (0.25f);
}

TEST_F (EditorLifetime, ServesTwoInstancesAtOnce)
{
    MainAudioProcessor other;
    const std::unique_ptr<juce::AudioProcessorEditor> otherWindow { other.createEditor() };
    editor().hpFreqSlider.setValue (0.75, juce::sendNotificationSync);
    otherWindow->repaint();
    EXPECT_EQ (parameters.hpFreq->get(), 0.75f);
    EXPECT_EQ (other.parameters.hpFreq->get(), 0.0f);
}

TEST_F (EditorLifetime, FollowsALoadedState)
{
    set (parameters.hpFreq, 0.625f);
    set (parameters.seqOffs, 0.75f);
    juce::MemoryBlock state;
    processor.getStateInformation (state);
    set (parameters.hpFreq, 0.0f);
    set (parameters.seqOffs, 0.5f);
    editor().timerCallback();
    processor.setStateInformation (state.getData(), (int) state.getSize());
    editor().timerCallback();
    EXPECT_EQ (editor().hpFreqSlider.getValue(), 0.625);
    EXPECT_EQ (editor().offsetEditor.getText(), juce::String ("+512"));
}
