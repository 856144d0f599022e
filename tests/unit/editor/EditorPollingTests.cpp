// SPDX-License-Identifier: AGPL-3.0-or-later
#include "unit/editor/EditorFixture.h"
#include "unit/editor/HeadlessWindow.h"

class EditorPolling : public EditorFixture
{
};

TEST_F (EditorPolling, BringsEveryParameterToItsControlWithinTwoPolls)
{
    auto numFollowed = 0;

    for (auto* parameter : processor.getParameters())
    {
        const auto id = dynamic_cast<juce::AudioProcessorParameterWithID*> (parameter)->getParameterID();
        const auto* knob = knobOf (editor(), parameter);

        for (const auto travel : { 0.0, 1.0, 0.4, 0.2, 0.1 })
        {
            const auto end = knob != nullptr ? knob->getMaximum() : 1.0;
            auto value = end * travel;

            if (knob != nullptr && knob->getInterval() > 0.0)
                value = knob->getInterval() * juce::roundToInt (value / knob->getInterval());

            set (parameter, (float) value);
            editor().timerCallback();
            editor().timerCallback();

            if (knob != nullptr)
                EXPECT_NEAR (knob->getValue(), value, 1.0e-7) << id;
            else if (id == "link")
                EXPECT_EQ (editor().linkToggle.getToggleState(), value >= 0.5);
            else if (id == "inertia")
                EXPECT_EQ (editor().inertiaSlider.getValue(), (double) (float) value);
            else if (id == "seq_offs")
                EXPECT_EQ (editor().offsetEditor.getText(), parameters.seqOffs->getCurrentValueAsText().trim());
            else if (id == "filtmode")
                EXPECT_EQ (editor().filterControls[0].captions[2].getText(),
                           juce::String (juce::roundToInt (9.0 * value) == 1 ? "Grunge" : "Resonance"));
            else
                EXPECT_EQ (id, juce::String ("seq_unit")) << "has no control";
        }

        ++numFollowed;
    }

    EXPECT_EQ (numFollowed, 55);
}

TEST_F (EditorPolling, NeverTellsTheHost)
{
    std::vector<std::unique_ptr<HeardValues>> heard;

    for (auto* parameter : processor.getParameters())
    {
        set (parameter, 0.3f);
        heard.push_back (std::make_unique<HeardValues> (*parameter));
    }

    processor.controlUpdatePending = false;
    editor().timerCallback();
    editor().timerCallback();

    for (const auto& parameter : heard)
        EXPECT_TRUE (parameter->values.empty());

    EXPECT_FALSE (processor.controlUpdatePending);
}

TEST_F (EditorPolling, WritesTheOffsetTrimmed)
{
    editor().timerCallback();
    EXPECT_EQ (editor().offsetEditor.getText(), juce::String ("0"));
    set (parameters.seqOffs, 1.0f);
    editor().timerCallback();
    EXPECT_EQ (editor().offsetEditor.getText(), juce::String ("+1024"));
    set (parameters.seqOffs, 0.0f);
    editor().timerCallback();
    EXPECT_EQ (editor().offsetEditor.getText(), juce::String ("-1024"));
}

TEST_F (EditorPolling, KeepsTheOffsetCaptionInBarsForEveryUnit)
{
    set (parameters.seqUnit, 1.0f / 9.0f);
    editor().timerCallback();
    EXPECT_EQ (editor().frequencerControls.captions[1].getText(), juce::String ("Offset (bars)"));
}

TEST_F (EditorPolling, NamesTheResonanceAfterTheFilterFamily)
{
    const auto expectCaption = [this] (int index, const char* text)
    {
        set (parameters.filtMode, (float) index / 9.0f);
        editor().timerCallback();

        for (const auto& column : editor().filterControls)
            EXPECT_EQ (column.captions[2].getText(), juce::String (text)) << index;
    };

    expectCaption (1, "Grunge");
    expectCaption (0, "Resonance");
    expectCaption (1, "Grunge");
    expectCaption (2, "Resonance");
}

TEST_F (EditorPolling, MovesTheDotsFromEndToEnd)
{
    // A triangle, the default: -1 at phase 0, 0 at a quarter, 1 at a half. The dot has 98 pixels of way.
    const std::array<std::pair<float, float>, 3> places { { { 0.0f, 4.0f }, { 0.25f, 53.0f }, { 0.5f, 102.0f } } };

    for (std::size_t lfo = 0; lfo < 2; ++lfo)
        for (const auto& [phase, left] : places)
        {
            processor.lfo[lfo].phaseA = phase;
            editor().timerCallback();
            const auto dot = editor().lfoControls[lfo].dot.getRectangle().getBoundingBox();
            EXPECT_EQ (dot, (juce::Rectangle<float> { left, 452.0f, 11.0f, 11.0f }));
        }
}

TEST_F (EditorPolling, ShowsTheDotsWhileTheEngineIsAwake)
{
    for (const auto awake : { true, false, true })
    {
        processor.controlUpdatePending = awake;
        editor().timerCallback();

        for (const auto& column : editor().lfoControls)
            EXPECT_EQ (column.dot.isVisible(), awake);
    }
}

TEST_F (EditorPolling, LightsActiveStepsWhileTheFrequencerShows)
{
    processor.stepLit = { true, false, true, true, false, false, true, false, true, true };
    processor.framesSinceRequest = 0;

    for (const auto shown : { false, true, false })
    {
        editor().showFrequencer = shown;
        editor().timerCallback();

        for (std::size_t step = 0; step < 10; ++step)
            EXPECT_EQ (editor().stepControls[step].light.isVisible(), shown && processor.stepLit[step]) << step;
    }
}

TEST_F (EditorPolling, TurnsStepLightsOffAFifthOfASecondAfterTheLastRequest)
{
    editor().showFrequencer = true;
    processor.stepLit.fill (true);

    const auto litAt = [this] (int frames)
    {
        processor.framesSinceRequest = frames;
        editor().timerCallback();
        return editor().stepControls[9].light.isVisible();
    };

    // Nobody has told a sample rate yet: 96 kHz are assumed.
    EXPECT_TRUE (litAt (19199));
    EXPECT_FALSE (litAt (19200));

    processor.setRateAndBufferSizeDetails (44100.0, 512);
    EXPECT_TRUE (litAt (8819));
    EXPECT_FALSE (litAt (8820));
    EXPECT_EQ (processor.hostSampleRate, 44100.0);

    // An implausible rate leaves the last one.
    processor.setRateAndBufferSizeDetails (999.0, 512);
    EXPECT_TRUE (litAt (8819));
    EXPECT_FALSE (litAt (8820));
}

TEST_F (EditorPolling, LeavesTheSampleRateAloneWhileNoStepIsLit)
{
    processor.setRateAndBufferSizeDetails (44100.0, 512);
    editor().showFrequencer = true;
    editor().timerCallback();
    EXPECT_EQ (processor.hostSampleRate, 96000.0);
}

TEST_F (EditorPolling, PrefersTheLfosWhenBothViewsAreOn)
{
    editor().showLfos = true;
    editor().showFrequencer = true;
    editor().timerCallback();
    EXPECT_TRUE (editor().showLfos);
    EXPECT_FALSE (editor().showFrequencer);
}

TEST_F (EditorPolling, KeepsTheOldSpeedKnobVisibleWhenTheHostChangesTheTempoMode)
{
    editor().timerCallback();
    set (parameters.lfoSync[0], 3.0f / 9.0f);
    editor().timerCallback();
    editor().timerCallback();

    EXPECT_EQ (editor().lfoControls[0].tempoKnob.getValue(), 3.0 / 9.0);
    EXPECT_TRUE (editor().lfoControls[0].speedKnob.isVisible());
    EXPECT_FALSE (editor().lfoControls[0].divisionKnob.isVisible());

    closeEditor();
    EXPECT_FALSE (editor().lfoControls[0].speedKnob.isVisible());
    EXPECT_TRUE (editor().lfoControls[0].divisionKnob.isVisible());
}

//======================================================================================================================
namespace
{
/** Stands in for a cached picture of the window, and counts how often all of it is to be repainted. */
class RepaintCounter : public juce::CachedComponentImage
{
public:
    explicit RepaintCounter (int& counterToRaise) : counter (counterToRaise) {}

    void paint (juce::Graphics&) override {}
    bool invalidate (const juce::Rectangle<int>&) override { return true; }
    void releaseResources() override {}

    bool invalidateAll() override
    {
        ++counter;
        return true;
    }

private:
    int& counter;
};
} // namespace

TEST_F (EditorPolling, RepaintsTheWholeWindowAtTheFirstPollAndEvery4096th)
{
    auto numRepaints = 0;
    editor().setVisible (true);
    editor().setCachedComponentImage (new RepaintCounter { numRepaints });
    numRepaints = 0;

    editor().timerCallback();
    EXPECT_EQ (numRepaints, 1);

    for (auto poll = 0; poll < 100; ++poll)
        editor().timerCallback();

    EXPECT_EQ (numRepaints, 1);

    editor().timerTicks = 4095;
    editor().timerCallback();
    EXPECT_EQ (numRepaints, 1);
    editor().timerCallback();
    EXPECT_EQ (numRepaints, 2);
    EXPECT_EQ (editor().timerTicks, 4097);

    // Its end is one more repaint, which has to be counted while the counter is there.
    closeEditor();
}
