// SPDX-License-Identifier: AGPL-3.0-or-later
#include <malloc.h>

#include <atomic>
#include <thread>

#include "unit/editor/EditorFixture.h"
#include "unit/editor/HeadlessWindow.h"

namespace
{
/** Runs blocks of noise through a processor on a thread of its own, as a host's audio thread does. */
class RunningAudio
{
public:
    explicit RunningAudio (MainAudioProcessor& processorToRun) : processor (processorToRun), thread ([this] { run(); })
    {
    }

    ~RunningAudio()
    {
        stopped = true;
        thread.join();
    }

    [[nodiscard]] int numBlocks() const { return blocks; }

private:
    void run()
    {
        juce::AudioBuffer<float> buffer { 2, 128 };
        juce::MidiBuffer midi;
        juce::Random noise { 1 };

        while (! stopped)
        {
            for (auto channel = 0; channel < 2; ++channel)
                for (auto frame = 0; frame < 128; ++frame)
                    buffer.setSample (channel, frame, noise.nextFloat() - 0.5f);

            processor.processBlock (buffer, midi);
            ++blocks;
            std::this_thread::yield();
        }
    }

    MainAudioProcessor& processor;
    std::atomic<bool> stopped { false };
    std::atomic<int> blocks { 0 };
    std::thread thread;
};

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
    processor.setRateAndBufferSizeDetails (48000.0, 128);
    processor.prepareToPlay (48000.0, 128);
    set (parameters.lfoToHpFreq[0], 0.8f);
    RunningAudio audio { processor };

    // The first windows fill caches: typefaces, glyphs, images.
    for (auto opening = 0; opening < 200; ++opening)
        openUseAndClose();

    const auto before = bytesInUse();

    for (auto opening = 0; opening < 200; ++opening)
        openUseAndClose();

    // The smallest block that each closing left behind would come to 3200 bytes.
    EXPECT_LT (bytesInUse(), before + 3200);
    EXPECT_GT (audio.numBlocks(), 10);
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
