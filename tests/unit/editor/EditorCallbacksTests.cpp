// SPDX-License-Identifier: AGPL-3.0-or-later
#include <cstdlib>

#include "unit/editor/EditorFixture.h"
#include "unit/editor/HeadlessWindow.h"

class EditorCallbacks : public EditorFixture
{
protected:
    void showLfos()
    {
        editor().showLfos = true;
        editor().showFrequencer = false;
        editor().updateWindowSize();
    }

    void showFrequencer()
    {
        editor().showLfos = false;
        editor().showFrequencer = true;
        editor().updateWindowSize();
    }

    /** As the user turns it. */
    static void turn (juce::Slider& knob, double value) { knob.setValue (value, juce::sendNotificationSync); }

    /** Drags every visible knob, and expects its parameter to move and the host to hear of it without a gesture. */
    int dragEveryKnob()
    {
        HeadlessWindow window { editor() };
        auto numDragged = 0;

        for (auto* knob : allOf<ParameterSlider> (editor()))
        {
            if (! knob->isShowing())
                continue;

            ++numDragged;
            set (knob->parameter, 0.0f);
            editor().timerCallback();
            processor.controlUpdatePending = false;
            processor.framesSinceRequest = 99;
            HeardValues heard { *knob->parameter };
            window.drag (*knob, 150);

            const auto id = knob->parameter->getParameterID();
            EXPECT_NEAR (knob->getValue(), 0.6 * knob->getMaximum(), 0.51 * knob->getInterval() + 1.0e-6) << id;
            EXPECT_EQ (knob->parameter->get(), (float) knob->getValue()) << id;
            EXPECT_FALSE (heard.values.empty()) << id;

            if (! heard.values.empty())
            {
                EXPECT_EQ (heard.values.back(), knob->parameter->get()) << id;
            }

            EXPECT_EQ (heard.gestures, 0) << id;
            EXPECT_TRUE (processor.controlUpdatePending) << id;
            EXPECT_EQ (processor.framesSinceRequest, 0) << id;
        }

        return numDragged;
    }
};

TEST_F (EditorCallbacks, WriteEveryKnobToItsParameterAndTellTheHost)
{
    EXPECT_EQ (dragEveryKnob(), 6);
    showLfos();
    EXPECT_EQ (dragEveryKnob(), 6 + 2 * 10);

    // Dragging has left both tempo knobs short of "Tempo"; with it, the division knobs appear.
    for (auto& column : editor().lfoControls)
        turn (column.tempoKnob, 3.0 / 9.0);

    EXPECT_TRUE (editor().lfoControls[1].divisionKnob.isVisible());
    EXPECT_EQ (dragEveryKnob(), 6 + 2 * 10);
    showFrequencer();
    EXPECT_EQ (dragEveryKnob(), 6 + 20 + 2);
}

TEST_F (EditorCallbacks, IgnoreAKnobWithoutAParameter)
{
    processor.controlUpdatePending = false;
    processor.framesSinceRequest = 5;
    editor().sliderValueChanged (&editor().inertiaSlider);
    EXPECT_FALSE (processor.controlUpdatePending);
    EXPECT_EQ (processor.framesSinceRequest, 5);
}

TEST_F (EditorCallbacks, SwapTheSpeedAndDivisionKnobsWithTheTempoKnob)
{
    auto& column = editor().lfoControls[1];

    for (auto index = 0; index < 4; ++index)
    {
        turn (column.tempoKnob, index / 9.0);
        EXPECT_EQ (column.divisionKnob.isVisible(), index == 3);
        EXPECT_EQ (column.speedKnob.isVisible(), index != 3);
        EXPECT_TRUE (editor().lfoControls[0].speedKnob.isVisible());
    }
}

TEST_F (EditorCallbacks, RestartTheLfoWhoseTempoKnobMoves)
{
    for (auto& lfo : processor.lfo)
    {
        lfo.referencePhase = lfo.phaseA = lfo.phaseB = lfo.phaseC = lfo.walkValue = 0.5f;
        lfo.outputSlew.current = 0.25f;
    }

    turn (editor().lfoControls[0].tempoKnob, 1.0 / 9.0);
    const auto& restarted = processor.lfo[0];
    const auto& other = processor.lfo[1];
    EXPECT_EQ (restarted.referencePhase, 0.0f);
    EXPECT_EQ (restarted.phaseA, 0.0f);
    EXPECT_EQ (restarted.phaseB, 0.0f);
    EXPECT_EQ (restarted.phaseC, 0.0f);
    EXPECT_EQ (restarted.walkValue, 0.0f);
    EXPECT_EQ (restarted.outputSlew.current, 0.25f);
    EXPECT_EQ (other.referencePhase, 0.5f);
    EXPECT_EQ (other.phaseA, 0.5f);
    EXPECT_EQ (other.walkValue, 0.5f);

    processor.lfo[0].phaseA = 0.5f;
    turn (editor().lfoControls[0].speedKnob, 0.9);
    EXPECT_EQ (processor.lfo[0].phaseA, 0.5f);
}

//======================================================================================================================
class FrequencyLink : public EditorCallbacks
{
protected:
    void start (float highpass, float lowpass)
    {
        set (parameters.hpFreq, highpass);
        set (parameters.lpFreq, lowpass);
        editor().timerCallback();
    }

    void clickLink() { editor().linkToggle.triggerClick(), HeadlessWindow::deliverMessages(); }
};

TEST_F (FrequencyLink, MovesTheOtherKnobByTheSameDistance)
{
    start (0.25f, 0.5f);
    clickLink();
    EXPECT_TRUE (parameters.link->get());
    EXPECT_EQ (processor.freqLinkOffset, -100.0f);

    // The first move captures the distance with the moved knob already moved: the other stands still.
    turn (editor().hpFreqSlider, 0.375);
    EXPECT_EQ (processor.freqLinkOffset, 0.125f);
    EXPECT_EQ (parameters.lpFreq->get(), 0.5f);

    turn (editor().hpFreqSlider, 0.5);
    EXPECT_EQ (parameters.lpFreq->get(), 0.625f);

    // The knob itself follows at the next poll.
    EXPECT_EQ (editor().lpFreqSlider.getValue(), 0.5);
    editor().timerCallback();
    EXPECT_EQ (editor().lpFreqSlider.getValue(), 0.625);

    turn (editor().lpFreqSlider, 0.25);
    EXPECT_EQ (parameters.hpFreq->get(), 0.125f);
}

TEST_F (FrequencyLink, CapturesAgainAfterRelease)
{
    start (0.25f, 0.5f);
    clickLink();
    turn (editor().hpFreqSlider, 0.25 + 0.125);
    clickLink();
    EXPECT_FALSE (parameters.link->get());
    EXPECT_EQ (processor.freqLinkOffset, -100.0f);

    turn (editor().hpFreqSlider, 0.125);
    turn (editor().lpFreqSlider, 0.75);
    EXPECT_EQ (parameters.hpFreq->get(), 0.125f);

    clickLink();
    turn (editor().lpFreqSlider, 0.875);
    EXPECT_EQ (processor.freqLinkOffset, 0.75f);
    EXPECT_EQ (parameters.hpFreq->get(), 0.125f);
    turn (editor().lpFreqSlider, 0.9375);
    EXPECT_EQ (parameters.hpFreq->get(), 0.1875f);
}

TEST_F (FrequencyLink, CapturesOnAnyKnobButFollowsOnlyFrequencyKnobs)
{
    start (0.25f, 0.5f);
    clickLink();
    HeardValues highpass { *parameters.hpFreq };
    HeardValues lowpass { *parameters.lpFreq };
    turn (*knobOf (editor(), parameters.hpReso), 0.5);
    EXPECT_EQ (processor.freqLinkOffset, 0.25f);
    EXPECT_TRUE (highpass.values.empty());
    EXPECT_TRUE (lowpass.values.empty());
}

TEST_F (FrequencyLink, TellsTheHostTheUnclampedValueButStoresTheClampedOne)
{
    start (0.25f, 0.75f);
    clickLink();
    processor.freqLinkOffset = 0.5f;
    HeardValues lowpass { *parameters.lpFreq };
    turn (editor().hpFreqSlider, 0.75);
    ASSERT_EQ (lowpass.values.size(), 1u);
    EXPECT_EQ (lowpass.values[0], 1.25f);
    EXPECT_EQ (parameters.lpFreq->get(), 1.0f);

    HeardValues highpass { *parameters.hpFreq };
    turn (editor().lpFreqSlider, 0.25);
    ASSERT_EQ (highpass.values.size(), 1u);
    EXPECT_EQ (highpass.values[0], -0.25f);
    EXPECT_EQ (parameters.hpFreq->get(), 0.0f);
}

TEST_F (FrequencyLink, TreatsAnOffsetOfMinusNinetyAsNotCaptured)
{
    start (0.25f, 0.5f);
    clickLink();
    processor.freqLinkOffset = -90.0f;
    turn (editor().hpFreqSlider, 0.125);
    EXPECT_EQ (processor.freqLinkOffset, 0.375f);

    processor.freqLinkOffset = -89.5f;
    turn (editor().hpFreqSlider, 0.25);
    EXPECT_EQ (processor.freqLinkOffset, -89.5f);
}

TEST_F (FrequencyLink, FollowsTheToggleAndTellsTheHost)
{
    HeardValues heard { *parameters.link };
    processor.controlUpdatePending = false;
    clickLink();
    clickLink();
    EXPECT_EQ (heard.values, (std::vector<float> { 1.0f, 0.0f }));
    EXPECT_EQ (heard.gestures, 0);
    EXPECT_FALSE (processor.controlUpdatePending);

    // Switched on by the host, it acts once the poll has turned the toggle.
    start (0.25f, 0.5f);
    set (parameters.link, 1.0f);
    turn (editor().hpFreqSlider, 0.3);
    EXPECT_EQ (processor.freqLinkOffset, -100.0f);
    editor().timerCallback();
    turn (editor().hpFreqSlider, 0.25);
    EXPECT_EQ (processor.freqLinkOffset, 0.25f);
}

TEST_F (FrequencyLink, KeepsItsOffsetWhenTheWindowCloses)
{
    start (0.25f, 0.5f);
    clickLink();
    turn (editor().hpFreqSlider, 0.125);
    EXPECT_EQ (processor.freqLinkOffset, 0.375f);
    closeEditor();
    editor().timerCallback();
    turn (editor().hpFreqSlider, 0.25);
    EXPECT_EQ (processor.freqLinkOffset, 0.375f);
    EXPECT_EQ (parameters.lpFreq->get(), 0.625f);
}

//======================================================================================================================
class Randomize : public EditorCallbacks, private juce::AudioProcessorListener
{
protected:
    static constexpr unsigned seed = 20;

    /** The formula of a draw, from a generator that gives 0 to 2^31 - 1 or 0 to 32767. */
    static float draw()
    {
        const auto wide = (unsigned) std::rand();
        const auto number = RAND_MAX == 32767 ? wide : wide >> 16;
        return (float) number * 3.0518509e-05f - 0.5f;
    }

    void click()
    {
        editor().randomizeButton.triggerClick();
        HeadlessWindow::deliverMessages();
    }

    void expectSteps (bool linked, float highpassAmount, float lowpassAmount)
    {
        set (parameters.link, linked ? 1.0f : 0.0f);
        set (parameters.srndHpf, highpassAmount);
        set (parameters.srndLpf, lowpassAmount);
        editor();
        changed.clear();
        processor.addListener (this);
        std::srand (seed);
        click();
        processor.removeListener (this);

        std::srand (seed);
        static_cast<void> (std::rand());

        for (std::size_t step = 0; step < 10; ++step)
        {
            const auto a = draw();
            const auto b = linked ? a : draw();
            EXPECT_EQ (parameters.seqHpf[step]->get(), highpassAmount * a + 0.5f);
            EXPECT_EQ (parameters.seqLpf[step]->get(), lowpassAmount * b + 0.5f);
            EXPECT_GE (a, -0.5f);
            EXPECT_LE (a, 0.5f);
        }

        // Both of each step, in order: the parameters 35 to 54.
        std::vector<int> order (20);

        for (auto i = 0; i < 20; ++i)
            order[(std::size_t) i] = 35 + i;

        EXPECT_EQ (changed, order);
    }

    std::vector<int> changed;

private:
    void audioProcessorParameterChanged (juce::AudioProcessor*, int index, float) override
    {
        changed.push_back (index);
    }
    void audioProcessorChanged (juce::AudioProcessor*, const ChangeDetails&) override {}
};

TEST_F (Randomize, DrawsTwicePerUnlinkedStep) { expectSteps (false, 1.0f, 0.75f); }

TEST_F (Randomize, DrawsOncePerLinkedStep) { expectSteps (true, 1.0f, 0.75f); }

TEST_F (Randomize, CentresAllStepsWhenBothAmountsAreZero)
{
    expectSteps (false, 0.0f, 0.0f);

    for (std::size_t step = 0; step < 10; ++step)
    {
        EXPECT_EQ (parameters.seqHpf[step]->get(), 0.5f);
        EXPECT_EQ (parameters.seqLpf[step]->get(), 0.5f);
    }
}

TEST_F (Randomize, CentresAllLinkedStepsWhenBothAmountsAreZero) { expectSteps (true, 0.0f, 0.0f); }

TEST_F (Randomize, MovesLinkedStepsInTheSameDirection)
{
    expectSteps (true, 1.0f, 0.5f);

    for (std::size_t step = 0; step < 10; ++step)
        EXPECT_NEAR (parameters.seqHpf[step]->get() - 0.5f, 2.0f * (parameters.seqLpf[step]->get() - 0.5f), 1.0e-6f);
}

TEST_F (Randomize, SpreadsOverTheWholeRange)
{
    set (parameters.srndHpf, 1.0f);
    editor();
    std::srand (seed);
    auto lowest = 1.0f;
    auto highest = 0.0f;

    for (auto round = 0; round < 50; ++round)
    {
        click();

        for (const auto* step : parameters.seqHpf)
        {
            lowest = std::min (lowest, step->get());
            highest = std::max (highest, step->get());
        }
    }

    EXPECT_LT (lowest, 0.02f);
    EXPECT_GT (highest, 0.98f);
}

//======================================================================================================================
class OffsetField : public EditorCallbacks
{
protected:
    void SetUp() override
    {
        showFrequencer();
        window = std::make_unique<HeadlessWindow> (editor());
        editor().timerCallback();
    }

    void TearDown() override
    {
        window.reset();
        closeEditor();
    }

    juce::TextEditor& field() { return editor().offsetEditor; }

    void focusAndType (const juce::String& text)
    {
        window->click (field());
        ASSERT_TRUE (field().hasKeyboardFocus (false));
        field().selectAll();
        window->type (text);
    }

    void expectStored (const juce::String& typed, float value)
    {
        focusAndType (typed);
        HeardValues heard { *parameters.seqOffs };
        window->typeReturn();
        EXPECT_EQ (parameters.seqOffs->get(), juce::jlimit (0.0f, 1.0f, value)) << typed;
        EXPECT_EQ (heard.values, std::vector<float> { value }) << typed;
        EXPECT_FALSE (field().hasKeyboardFocus (true)) << typed;
    }

    std::unique_ptr<HeadlessWindow> window;
};

TEST_F (OffsetField, StoresANumberAtReturnAndDropsTheFocus)
{
    expectStored ("12.5", (12.5f + 1024.0f) / 2048.0f);
    EXPECT_FALSE (field().isFocusContainer());
    editor().timerCallback();
    EXPECT_EQ (field().getText(), juce::String ("+13"));

    expectStored ("-512", 0.25f);
    expectStored ("+256", 0.625f);
    expectStored ("0", 0.5f);
}

TEST_F (OffsetField, StoresUnreadableTextAsZeroAndClampsOffsetsBeyondTheRange)
{
    set (parameters.seqOffs, 0.1f);
    expectStored ("+-.", 0.5f);
    set (parameters.seqOffs, 0.1f);
    expectStored ("--5", 0.5f);
    expectStored ("9999", (9999.0f + 1024.0f) / 2048.0f);
    expectStored ("-9999", (-9999.0f + 1024.0f) / 2048.0f);
}

TEST_F (OffsetField, StoresAnEmptyTextAsZero)
{
    set (parameters.seqOffs, 0.1f);
    window->click (field());
    field().clear();
    window->typeReturn();
    EXPECT_EQ (parameters.seqOffs->get(), 0.5f);
}

TEST_F (OffsetField, AcceptsOnlyNumericCharactersAndAtMostSeven)
{
    focusAndType ("1a2b3c");
    EXPECT_EQ (field().getText(), juce::String ("123"));
    focusAndType ("123456789");
    EXPECT_EQ (field().getText(), juce::String ("1234567"));
}

TEST_F (OffsetField, IsNotOverwrittenWhileItHasTheFocus)
{
    focusAndType ("77");
    set (parameters.seqOffs, 0.75f);
    editor().timerCallback();
    EXPECT_EQ (field().getText(), juce::String ("77"));

    juce::Component::unfocusAllComponents();
    editor().timerCallback();
    EXPECT_EQ (field().getText(), juce::String ("+512"));
}

TEST_F (OffsetField, CommitsOnlyOnReturn)
{
    focusAndType ("77");
    juce::Component::unfocusAllComponents();
    EXPECT_EQ (parameters.seqOffs->get(), 0.5f);
    editor().timerCallback();
    EXPECT_EQ (field().getText(), juce::String ("0"));
}

TEST_F (OffsetField, GainsFocusOnClickAndLosesItOnAClickElsewhere)
{
    auto& knob = *knobOf (editor(), parameters.hpReso);
    EXPECT_FALSE (field().hasKeyboardFocus (true));

    window->click (knob);
    EXPECT_FALSE (field().hasKeyboardFocus (true));

    focusAndType ("77");
    window->click (knob);
    EXPECT_FALSE (field().hasKeyboardFocus (true));
    EXPECT_EQ (parameters.seqOffs->get(), 0.5f);

    editor().timerCallback();
    EXPECT_EQ (field().getText(), juce::String ("0"));
}

TEST_F (OffsetField, TogglesNothingOnReturnAfterAClickOnAKnob)
{
    window->click (*knobOf (editor(), parameters.hpReso));
    window->typeReturn();
    EXPECT_FALSE (parameters.link->get());

    editor().frequencerToggle.triggerClick();
    HeadlessWindow::deliverMessages();
    window->click (*knobOf (editor(), parameters.hpReso));
    window->typeReturn();
    EXPECT_FALSE (parameters.link->get());
}

//======================================================================================================================
class ViewSwitches : public EditorCallbacks
{
protected:
    static void click (juce::ToggleButton& toggle)
    {
        toggle.triggerClick();
        HeadlessWindow::deliverMessages();
    }

    void expectView (bool lfos, bool frequencer)
    {
        editor().timerCallback();
        EXPECT_EQ (editor().lfoPanels[0].isVisible(), lfos);
        EXPECT_EQ (editor().lfoPanels[1].isVisible(), lfos);
        EXPECT_EQ (editor().frequencerPanels[0].isVisible(), frequencer);
        EXPECT_EQ (editor().frequencerPanels[9].isVisible(), frequencer);
        EXPECT_EQ (editor().showLfosToggle.getToggleState(), lfos);
        EXPECT_EQ (editor().frequencerToggle.getToggleState(), frequencer);
        EXPECT_EQ (editor().getWidth(), lfos || frequencer ? 520 : 266);
        EXPECT_EQ (editor().getHeight(), 546);
    }
};

TEST_F (ViewSwitches, OpenCloseAndReplaceEachOther)
{
    click (editor().showLfosToggle);
    expectView (true, false);
    click (editor().frequencerToggle);

    // The window stays wide at once; the other toggle goes off at the next poll.
    EXPECT_EQ (editor().getWidth(), 520);
    EXPECT_TRUE (editor().showLfosToggle.getToggleState());
    expectView (false, true);

    click (editor().showLfosToggle);
    expectView (true, false);
    click (editor().showLfosToggle);
    expectView (false, false);
    click (editor().frequencerToggle);
    expectView (false, true);
    click (editor().frequencerToggle);
    expectView (false, false);
}

TEST_F (ViewSwitches, WorkUnderThePointer)
{
    HeadlessWindow window { editor() };
    window.click (editor().showLfosToggle);
    expectView (true, false);
    window.click (editor().frequencerToggle);
    expectView (false, true);
    window.click (editor().linkToggle);
    EXPECT_TRUE (parameters.link->get());
    std::srand (1);
    window.click (editor().randomizeButton);
    EXPECT_NE (parameters.seqHpf[0]->get(), 0.5f);
}

TEST_F (ViewSwitches, MoveNothingElse)
{
    const auto boundsOfAll = [this]
    {
        std::vector<juce::Rectangle<int>> all;

        for (const auto* component : allOf<juce::Component> (editor()))
            all.push_back (component->getBounds());

        return all;
    };

    editor().timerCallback();
    const auto before = boundsOfAll();
    click (editor().showLfosToggle);
    EXPECT_EQ (boundsOfAll(), before);
}

TEST_F (ViewSwitches, ToggleTheFilterFamilyByTheHiddenSwitch)
{
    HeardValues heard { *parameters.filtMode };
    editor().buttonClicked (&editor().ladderToggle);
    EXPECT_EQ (parameters.filtMode->getChoiceIndex(), 1);
    editor().buttonClicked (&editor().ladderToggle);
    EXPECT_EQ (parameters.filtMode->getChoiceIndex(), 0);
    EXPECT_EQ (heard.values, (std::vector<float> { 0.1f, 0.0f }));
}
