// SPDX-License-Identifier: AGPL-3.0-or-later
#include <functional>

#include "unit/editor/EditorFixture.h"
#include "unit/editor/HeadlessWindow.h"

class ParameterSliderRange : public EditorFixture
{
protected:
    void expectRange (const ParameterSet::Parameter* parameter, double end, double interval)
    {
        const auto* knob = knobOf (editor(), parameter);
        ASSERT_NE (knob, nullptr);
        EXPECT_EQ (knob->getMinimum(), 0.0);
        EXPECT_EQ (knob->getMaximum(), end);
        EXPECT_EQ (knob->getInterval(), interval);
    }
};

TEST_F (ParameterSliderRange, EndsAtTheLastTextOfAChoice)
{
    expectRange (parameters.hpMode, 4.0 / 9.0, 4.0 / 9.0 / 4.0);
    expectRange (parameters.lpMode, 4.0 / 9.0, 4.0 / 9.0 / 4.0);

    for (std::size_t lfo = 0; lfo < 2; ++lfo)
    {
        expectRange (parameters.lfoMode[lfo], 1.0, 1.0 / 16.0);
        expectRange (parameters.lfoShape[lfo], 5.0 / 29.0, 5.0 / 29.0 / 5.0);
        expectRange (parameters.lfoSync[lfo], 3.0 / 9.0, 3.0 / 9.0 / 3.0);
    }
}

TEST_F (ParameterSliderRange, RunsFromZeroToOneWithoutStepsForContinuousParameters)
{
    auto numContinuous = 0;

    for (const auto* knob : allOf<ParameterSlider> (editor()))
    {
        if (knob->parameter->valueKind == ParameterSet::Parameter::choiceKind)
            continue;

        ++numContinuous;
        expectRange (knob->parameter, 1.0, 0.0);
    }

    EXPECT_EQ (numContinuous, 50 - 8);
}

TEST_F (ParameterSliderRange, UsesTheStepsOfAParameterThatIsNoChoice)
{
    juce::AudioParameterFloatKestrin parameter { "p", "P", 0.0f, 4.0f, 0.5f, 1, {} };
    const auto intervalAt = [&parameter] (int steps)
    {
        parameter.stepCount = steps;
        ParameterSlider knob;
        knob.bindToParameter (&parameter);
        EXPECT_EQ (knob.getMaximum(), 1.0);
        return knob.getInterval();
    };

    EXPECT_EQ (intervalAt (5), 0.25);
    EXPECT_EQ (intervalAt (1), 0.0);
    EXPECT_EQ (intervalAt (0), 0.0);
}

TEST_F (ParameterSliderRange, SnapsToTheStoredPositionsOfEveryChoice)
{
    struct Choice
    {
        ParameterSet::Parameter* parameter;
        int numTexts;
        int stepCount;
    };

    for (const auto& choice : { Choice { parameters.hpMode, 5, 10 }, Choice { parameters.lpMode, 5, 10 },
                                Choice { parameters.lfoMode[0], 17, 17 }, Choice { parameters.lfoMode[1], 17, 17 },
                                Choice { parameters.lfoShape[0], 6, 30 }, Choice { parameters.lfoShape[1], 6, 30 },
                                Choice { parameters.lfoSync[0], 4, 10 }, Choice { parameters.lfoSync[1], 4, 10 } })
    {
        auto* knob = knobOf (editor(), choice.parameter);

        for (auto index = 0; index < choice.numTexts; ++index)
        {
            // From a little beside the position, as a hand leaves it.
            knob->setValue ((index + 0.2) / (choice.stepCount - 1), juce::dontSendNotification);
            EXPECT_EQ ((float) knob->getValue(), (float) index / (float) (choice.stepCount - 1))
                << choice.parameter->getParameterID() << " " << index;
            EXPECT_EQ (choice.parameter->getChoiceIndexForValue ((float) knob->getValue()), index);
            EXPECT_EQ (knob->getTextFromValue (knob->getValue()),
                       juce::String (choice.parameter->choiceTexts[(std::size_t) index]));
        }
    }
}

TEST_F (ParameterSliderRange, StopsAtItsEndForAPositionBeyondTheTexts)
{
    set (parameters.lfoSync[0], 0.5f);
    editor().timerCallback();
    EXPECT_EQ (parameters.lfoSync[0]->get(), 0.5f);
    EXPECT_EQ (knobOf (editor(), parameters.lfoSync[0])->getValue(), 3.0 / 9.0);
}

//======================================================================================================================
class ParameterSliderFace : public EditorFixture
{
};

TEST_F (ParameterSliderFace, ShowsTheParametersOwnText)
{
    editor().timerCallback();
    const std::array<std::pair<ParameterSet::Parameter*, const char*>, 6> expected {
        { { parameters.hpFreq, "20.0 Hz" },
          { parameters.lpFreq, "20 kHz" },
          { parameters.lfoShape[0], "Triangle" },
          { parameters.lfoMode[1], "16 bars" },
          { parameters.srndHpf, "50 %" },
          { parameters.hpMode, "12 dB/oct" } }
    };

    for (const auto& [parameter, text] : expected)
    {
        auto* knob = knobOf (editor(), parameter);
        const auto boxes = allOf<juce::Label> (*knob);
        ASSERT_EQ (boxes.size(), 1u);
        EXPECT_EQ (boxes[0]->getText(), juce::String (text));
    }
}

TEST_F (ParameterSliderFace, KeepsAReadOnlyTextBoxBelowEveryKnob)
{
    for (auto* knob : allOf<ParameterSlider> (editor()))
    {
        EXPECT_EQ (knob->getSliderStyle(), juce::Slider::RotaryVerticalDrag);
        EXPECT_EQ (knob->getTextBoxPosition(), juce::Slider::TextBoxBelow);
        EXPECT_EQ (knob->getTextBoxWidth(), 100);
        EXPECT_EQ (knob->getTextBoxHeight(), 20);
        EXPECT_FALSE (knob->isTextBoxEditable());

        auto* box = allOf<juce::Label> (*knob)[0];
        EXPECT_FALSE (box->isEditable());
        EXPECT_EQ (box->getHeight(), 20);
        EXPECT_EQ (box->getBottom(), knob->getHeight());
        EXPECT_EQ (box->findColour (juce::Label::textColourId).getARGB(), 0xff909090u);
        EXPECT_TRUE (box->findColour (juce::Label::outlineColourId).isTransparent());
    }
}

//======================================================================================================================
class ParameterSliderMouse : public EditorFixture
{
protected:
    ParameterSlider& hpFreq() { return editor().hpFreqSlider; }

    void start (float value)
    {
        set (parameters.hpFreq, value);
        editor().timerCallback();
    }

    static constexpr double tolerance = 1.0e-6;
};

TEST_F (ParameterSliderMouse, TravelsItsRangeIn250Pixels)
{
    HeadlessWindow window { editor() };
    start (0.25f);
    window.drag (hpFreq(), 25);
    EXPECT_NEAR (hpFreq().getValue(), 0.35, tolerance);
    EXPECT_NEAR ((double) parameters.hpFreq->get(), 0.35, tolerance);

    window.drag (hpFreq(), -50);
    EXPECT_NEAR (hpFreq().getValue(), 0.15, tolerance);
}

TEST_F (ParameterSliderMouse, IsTenTimesFinerWithAltAtTheStartOfADrag)
{
    HeadlessWindow window { editor() };
    start (0.25f);
    window.drag (hpFreq(), 25, juce::ModifierKeys::altModifier, juce::ModifierKeys::altModifier);
    EXPECT_NEAR (hpFreq().getValue(), 0.26, tolerance);
}

TEST_F (ParameterSliderMouse, KeepsItsGearingWhenAltComesOrGoesDuringADrag)
{
    HeadlessWindow window { editor() };
    start (0.25f);
    window.drag (hpFreq(), 25, {}, juce::ModifierKeys::altModifier);
    EXPECT_NEAR (hpFreq().getValue(), 0.35, tolerance);

    start (0.25f);
    window.drag (hpFreq(), 25, juce::ModifierKeys::altModifier, {});
    EXPECT_NEAR (hpFreq().getValue(), 0.26, tolerance);

    // The next drag starts again.
    window.drag (hpFreq(), 25);
    EXPECT_NEAR (hpFreq().getValue(), 0.36, tolerance);
}

TEST_F (ParameterSliderMouse, ResetsByDoubleClickAndByClickWithCtrl)
{
    HeadlessWindow window { editor() };
    auto& lpFreq = editor().lpFreqSlider;

    for (const auto withCtrl : { false, true })
    {
        set (parameters.lpFreq, 0.25f);
        editor().timerCallback();
        HeardValues heard { *parameters.lpFreq };

        if (withCtrl)
            window.click (lpFreq, juce::ModifierKeys::ctrlModifier);
        else
            window.doubleClick (lpFreq);

        EXPECT_EQ (lpFreq.getValue(), 1.0);
        EXPECT_EQ (parameters.lpFreq->get(), 1.0f);
        ASSERT_FALSE (heard.values.empty());
        EXPECT_EQ (heard.values.back(), 1.0f);
    }
}

TEST_F (ParameterSliderMouse, ResetsEveryKnobToItsParametersDefault)
{
    for (auto* knob : allOf<ParameterSlider> (editor()))
    {
        EXPECT_TRUE (knob->isDoubleClickReturnEnabled());
        EXPECT_EQ (knob->getDoubleClickReturnValue(), (double) knob->parameter->defaultValue);
    }
}

TEST_F (ParameterSliderMouse, FollowsTheWheel)
{
    HeadlessWindow window { editor() };
    start (0.5f);
    window.wheel (hpFreq(), 0.2f);
    const auto up = parameters.hpFreq->get();
    EXPECT_GT (up, 0.5f);
    window.wheel (hpFreq(), -0.2f);
    EXPECT_LT (parameters.hpFreq->get(), up);
}

TEST_F (ParameterSliderMouse, CannotBeTypedInto)
{
    set (parameters.seqHpf[0], 0.9f);
    HeadlessWindow window { editor() };
    auto numTried = 0;

    for (auto* knob : allOf<ParameterSlider> (editor()))
    {
        if (! knob->isShowing())
            continue;

        auto* box = allOf<juce::Label> (*knob)[0];
        window.click (*box);
        EXPECT_TRUE (allOf<juce::TextEditor> (*box).empty()) << knob->parameter->getParameterID();
        window.doubleClick (*box);
        EXPECT_TRUE (allOf<juce::TextEditor> (*box).empty()) << knob->parameter->getParameterID();
        ++numTried;
    }

    EXPECT_EQ (numTried, 6 + 22);
}

TEST_F (ParameterSliderMouse, SnapsAChoiceWhileItIsDragged)
{
    HeadlessWindow window { editor() };
    set (parameters.hpMode, 0.0f);
    editor().timerCallback();
    auto* knob = knobOf (editor(), parameters.hpMode);

    // A quarter of the travel is one position.
    window.drag (*knob, 63);
    EXPECT_EQ (parameters.hpMode->getChoiceIndex(), 1);
    EXPECT_EQ (parameters.hpMode->get(), 1.0f / 9.0f);
    window.drag (*knob, 250);
    EXPECT_EQ (parameters.hpMode->getChoiceIndex(), 4);
}
