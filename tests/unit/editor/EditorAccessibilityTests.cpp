// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gmock/gmock.h>

#include "unit/editor/EditorFixture.h"

namespace
{
using Lines = std::vector<std::string>;

/** Title and value as a screen reader says them. */
std::string spoken (juce::Component& control)
{
    const auto handler = control.createAccessibilityHandler();
    const auto* value = handler->getValueInterface();
    const auto* text = handler->getTextInterface();
    const auto said = value != nullptr  ? value->getCurrentValueAsString()
                      : text != nullptr ? text->getAllText()
                                        : juce::String();
    // The texts of numbers are padded with blanks, which nobody hears.
    return (handler->getTitle() + (said.isEmpty() ? "" : ", ") + said.trim()).toStdString();
}

/** What a reader finds within a component: everything that shows, has a role and is not left out. */
Lines spokenWithin (juce::Component& parent)
{
    Lines found;

    for (auto* child : parent.getChildren())
    {
        if (! child->isVisible() || ! child->isAccessible())
            continue;

        const auto role = child->createAccessibilityHandler()->getRole();

        if (role == juce::AccessibilityRole::ignored)
            continue;

        if (role != juce::AccessibilityRole::unspecified)
            found.push_back (spoken (*child));
        else
            for (auto& deeper : spokenWithin (*child))
                found.push_back (deeper);
    }

    return found;
}

Lines joined (Lines first, const Lines& second)
{
    first.insert (first.end(), second.begin(), second.end());
    return first;
}

const Lines switches { "Show LFOs, Off", "Frequencer, Off" };
const Lines filters {
    "Highpass frequency, 20.0 Hz", "Highpass resonance, 0 %", "Highpass mode, 12 dB/oct", "Lowpass frequency, 20 kHz",
    "Lowpass resonance, 0 %",      "Lowpass mode, 12 dB/oct", "Link frequencies, Off",
};

Lines lfo (const std::string& name, const std::string& speed, const std::string& tempoMode)
{
    return { name + " speed, " + speed,          name + " phase, 0",
             name + " shape, Triangle",          name + " curve, 0",
             name + " tempo mode, " + tempoMode, name + " to highpass frequency, 0",
             name + " to lowpass frequency, 0",  name + " to highpass resonance, 0",
             name + " to lowpass resonance, 0",  name + " to speed of the other LFO, 0" };
}
} // namespace

class EditorAccessibility : public EditorFixture
{
protected:
    /** After a poll, which brings the values into the controls. */
    Lines spokenInTheWindow()
    {
        editor().timerCallback();
        return spokenWithin (editor());
    }

    void press (juce::Button& toggle) { toggle.setToggleState (true, juce::sendNotificationSync); }
};

TEST_F (EditorAccessibility, SaysTitleAndValueOfEveryControlOfTheNarrowWindow)
{
    EXPECT_THAT (spokenInTheWindow(), testing::ElementsAreArray (joined (switches, filters)));
}

TEST_F (EditorAccessibility, SaysTitleAndValueOfEveryControlOfTheLfos)
{
    constexpr float tempo = 3.0f / 9.0f, twoBars = 4.0f / 16.0f;
    set (parameters.lfoSync[0], tempo);
    set (parameters.lfoMode[0], twoBars);
    press (editor().showLfosToggle);

    auto expected = joined ({ "Show LFOs, On", "Frequencer, Off" }, filters);
    expected = joined (expected, lfo ("LFO 1", "2 bars", "Tempo"));
    expected = joined (expected, lfo ("LFO 2", "2.00 Hz", "Time"));
    EXPECT_THAT (spokenInTheWindow(), testing::ElementsAreArray (expected));
}

TEST_F (EditorAccessibility, SaysTitleAndValueOfEveryControlOfTheFrequencer)
{
    set (parameters.seqHpf[9], 0.75f);
    press (editor().frequencerToggle);

    auto expected = joined ({ "Show LFOs, Off", "Frequencer, On" }, filters);

    for (int step = 1; step <= 10; ++step)
    {
        const auto name = "Step " + std::to_string (step);
        expected.push_back (name + " to highpass frequency, " + (step == 10 ? "+50" : "0"));
        expected.push_back (name + " to lowpass frequency, 0");
    }

    expected = joined (expected, { "Frequencer offset, 0", "Randomize", "Highpass amount to randomize, 50 %",
                                   "Lowpass amount to randomize, 50 %" });
    EXPECT_THAT (spokenInTheWindow(), testing::ElementsAreArray (expected));
}

TEST_F (EditorAccessibility, LeavesCaptionsAndDecorationsOut)
{
    for (auto* label : allOf<juce::Label> (editor()))
        EXPECT_TRUE (! label->isAccessible()
                     || label->createAccessibilityHandler()->getRole() == juce::AccessibilityRole::ignored)
            << label->getText();

    for (auto* shape : allOf<juce::DrawableRectangle> (editor()))
        EXPECT_FALSE (shape->isAccessible());
}

TEST_F (EditorAccessibility, MovesTheParameterThatAReaderSets)
{
    const auto handler = editor().hpFreqSlider.createAccessibilityHandler();
    handler->getValueInterface()->setValue (0.5);
    EXPECT_EQ (parameters.hpFreq->get(), 0.5f);
}
