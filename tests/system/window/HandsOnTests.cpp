// SPDX-License-Identifier: AGPL-3.0-or-later
#include <set>

#include "system/window/WindowFixture.h"

namespace
{
class HandsOnTheWindow : public testing::Test
{
protected:
    /** Opens the columns of the Frequencer, which the window has closed at first. */
    static void openFrequencer (ModuleWindow& window)
    {
        window.click (places::frequencer);
        ASSERT_TRUE (window.waitForSize (wide)) << window.heard();
    }

    /** Types, presses return and turns a knob by the wheel: once the knob has turned, the keys have arrived too. */
    static void typeAndWaitForArrival (ModuleWindow& window, const std::string& text)
    {
        Desktop::perform ("type -- " + text);
        Desktop::perform ("key Return");
        window.at (places::hpFreq, "click 4");
        EXPECT_TRUE (window.waitUntil ([&] { return window.position ("hp_freq") > 0.01; })) << window.heard();
    }

    const Desktop desktop {};
};

/** Without a delay: two clicks are a double click if they follow each other quickly. */
constexpr auto doubleClick = "click --repeat 2 --delay 0 1";

/** Whole-range drags are 250 pixels long, fine ones 2500. */
double travel (int pixels) { return pixels / 250.0; }
double fineTravel (int pixels) { return pixels / 2500.0; }

/** Whether something else is seen, in a window of the same size. */
bool differs (const juce::Image& now, const juce::Image& before)
{
    return now.getBounds() == before.getBounds() && picture::differingShare (now, before) > 0.0;
}

/** The columns of a wide window that the toggles open. */
juce::Image columnsOf (const juce::Image& image) { return image.getClippedImage ({ 266, 0, 254, 546 }); }

/** The position of an offset: -1024 to 1024 are 0 to 1. */
double positionOfOffset (double offset) { return (offset + 1024.0) / 2048.0; }
} // namespace

TEST_F (HandsOnTheWindow, ADragTurnsAKnobInProportionToItsLength)
{
    ModuleWindow window;

    EXPECT_TRUE (window.dragUp (places::hpFreq, 50, "hp_freq", travel)) << window.heard();
    window.keepPicture ("desktop-dragged");

    const auto travelBack = [] (int pixels) { return travel (50 + pixels); };
    EXPECT_TRUE (window.dragUp (places::hpFreq, -25, "hp_freq", travelBack)) << window.heard();

    EXPECT_FALSE (window.position ("lp_freq").has_value());
    EXPECT_EQ (window.close(), 0);
}

TEST_F (HandsOnTheWindow, ADragWithAltIsTenTimesFiner)
{
    ModuleWindow window;

    Desktop::perform ("keydown alt");
    EXPECT_TRUE (window.dragUp (places::hpReso, 50, "hp_reso", fineTravel)) << window.heard();
    Desktop::perform ("keyup alt");
}

TEST_F (HandsOnTheWindow, AltPressedInTheMiddleOfADragChangesNothing)
{
    ModuleWindow window;

    window.at (places::hpFreq, "mousedown 1 keydown alt");
    window.moveTo ({ places::hpFreq.x, places::hpFreq.y - 50 });
    EXPECT_TRUE (window.waitForPosition ("hp_freq", travel (50))) << window.heard();
    Desktop::perform ("mouseup 1 keyup alt");
}

TEST_F (HandsOnTheWindow, ADoubleClickResetsAKnob)
{
    ModuleWindow window ({ "--set", "lp_reso=0.7", "--set", "lp_freq=0.4" });

    window.at (places::lpReso, doubleClick);
    EXPECT_TRUE (window.waitForPosition ("lp_reso", 0.0)) << window.heard();

    window.at (places::lpFreq, doubleClick);
    EXPECT_TRUE (window.waitForPosition ("lp_freq", 1.0)) << window.heard();
}

TEST_F (HandsOnTheWindow, AClickWithCtrlResetsAKnob)
{
    ModuleWindow window ({ "--set", "lp_reso=0.7", "--set", "lp_freq=0.4" });

    window.at (places::lpReso, "keydown ctrl click 1 keyup ctrl");
    EXPECT_TRUE (window.waitForPosition ("lp_reso", 0.0)) << window.heard();

    window.at (places::lpFreq, "keydown ctrl click 1 keyup ctrl");
    EXPECT_TRUE (window.waitForPosition ("lp_freq", 1.0)) << window.heard();
}

TEST_F (HandsOnTheWindow, TheWheelTurnsAKnobAndBack)
{
    ModuleWindow window ({ "--set", "hp_freq=0.5" });

    window.at (places::hpFreq, "click 4");
    EXPECT_TRUE (window.waitUntil ([&] { return window.position ("hp_freq") > 0.51; })) << window.heard();
    EXPECT_LT (window.position ("hp_freq"), 0.6);

    window.at (places::hpFreq, "click 5");
    EXPECT_TRUE (window.waitForPosition ("hp_freq", 0.5)) << window.heard();
}

TEST_F (HandsOnTheWindow, RandomizeMovesAllTwentySteps)
{
    ModuleWindow window ({ "--set", "srnd_hpf=1", "--set", "srnd_lpf=0.5" });
    openFrequencer (window);
    window.click (places::randomize);

    const auto name = [] (int step, const char* filter) { return "seq" + std::to_string (step) + "_" + filter; };
    ASSERT_TRUE (window.waitUntil ([&] { return window.position (name (10, "lpf")).has_value(); })) << window.heard();

    std::set<double> highpass, lowpass;

    for (int step = 1; step <= 10; ++step)
    {
        ASSERT_TRUE (window.position (name (step, "hpf")).has_value()) << step;
        ASSERT_TRUE (window.position (name (step, "lpf")).has_value()) << step;
        highpass.insert (*window.position (name (step, "hpf")));
        lowpass.insert (*window.position (name (step, "lpf")));
        EXPECT_NEAR (*window.position (name (step, "lpf")), 0.5, 0.25);
    }

    // Ten of 32768 possible draws.
    EXPECT_GT (highpass.size(), 8u);
    EXPECT_GT (lowpass.size(), 8u);
    EXPECT_GT (*highpass.rbegin() - *highpass.begin(), 0.25);
    window.keepPicture ("desktop-randomized");
}

TEST_F (HandsOnTheWindow, ReturnStoresTheTypedOffset)
{
    ModuleWindow window;
    openFrequencer (window);

    for (const auto offset : { 12, -300 })
    {
        window.clickToType (places::offsetField);
        const auto before = window.picture();
        Desktop::perform ("key ctrl+a type -- " + std::to_string (offset));
        EXPECT_TRUE (window.waitUntil ([&] { return differs (window.picture(), before); }));
        EXPECT_FALSE (window.position ("seq_offs") == positionOfOffset (offset));
        Desktop::perform ("key Return");
        EXPECT_TRUE (window.waitForPosition ("seq_offs", positionOfOffset (offset))) << window.heard();
        window.keepPicture ("desktop-offset" + std::to_string (offset));
    }

    // With return the field has let go of the keyboard.
    typeAndWaitForArrival (window, "77");
    EXPECT_NEAR (*window.position ("seq_offs"), positionOfOffset (-300), 1.0e-6) << window.heard();
}

TEST_F (HandsOnTheWindow, KeysReachTheOffsetFieldOnlyAfterAClickOnIt)
{
    ModuleWindow window;
    openFrequencer (window);
    window.clickToType (places::hpReso);
    const auto before = window.settledPicture();

    typeAndWaitForArrival (window, "77");
    EXPECT_FALSE (window.position ("seq_offs").has_value()) << window.heard();
    EXPECT_FALSE (window.position ("link").has_value()) << window.heard();

    const auto after = window.settledPicture();
    EXPECT_FALSE (differs (columnsOf (after), columnsOf (before)));
}

TEST_F (HandsOnTheWindow, AClickElsewhereDiscardsTheTypedOffset)
{
    ModuleWindow window;
    openFrequencer (window);
    const auto before = window.settledPicture();

    window.clickToType (places::offsetField);
    Desktop::perform ("key ctrl+a type -- 77");
    EXPECT_TRUE (window.waitUntil ([&] { return differs (window.picture(), before); }));

    window.click (places::hpReso);
    EXPECT_TRUE (window.waitUntil ([&] { return ! differs (window.picture(), before); }));
    EXPECT_FALSE (window.position ("seq_offs").has_value()) << window.heard();
}

TEST_F (HandsOnTheWindow, TheTogglesOpenAndCloseTheColumns)
{
    ModuleWindow window;
    EXPECT_EQ (window.size(), narrow);
    window.keepPicture ("desktop-narrow");

    window.click (places::showLfos);
    EXPECT_TRUE (window.waitForSize (wide)) << window.heard();
    window.click (places::showLfos);
    EXPECT_TRUE (window.waitForSize (narrow)) << window.heard();

    window.click (places::frequencer);
    EXPECT_TRUE (window.waitForSize (wide)) << window.heard();
    window.click (places::frequencer);
    EXPECT_TRUE (window.waitForSize (narrow)) << window.heard();
}

TEST_F (HandsOnTheWindow, LfoAndFrequencerColumnsReplaceEachOther)
{
    ModuleWindow window;

    window.click (places::showLfos);
    ASSERT_TRUE (window.waitForSize (wide)) << window.heard();
    const auto lfos = window.settledPicture();
    picture::keep (lfos, "desktop-lfos");

    window.click (places::frequencer);
    EXPECT_TRUE (window.waitUntil ([&] { return differs (window.picture(), lfos); }));
    EXPECT_EQ (window.size(), wide);
    window.keepPicture ("desktop-frequencer");

    // Its columns are the ones that are open: its toggle closes the window.
    window.click (places::frequencer);
    EXPECT_TRUE (window.waitForSize (narrow)) << window.heard();
}
