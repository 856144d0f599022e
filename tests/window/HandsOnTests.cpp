// SPDX-License-Identifier: AGPL-3.0-or-later
#include <set>

#include "WindowFixture.h"

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

    const Desktop desktop {};
};

/** Whole-range drags are 250 pixels long, fine ones 2500. */
double travel (int pixels) { return pixels / 250.0; }
double fineTravel (int pixels) { return pixels / 2500.0; }

/** The position that stands for an offset: -1024 to 1024 are 0 to 1. */
double positionOfOffset (double offset) { return (offset + 1024.0) / 2048.0; }
} // namespace

TEST_F (HandsOnTheWindow, ADragTurnsAKnobByTheWayOfThePointer)
{
    ModuleWindow window;

    window.dragUp (places::hpFreq, 50);
    EXPECT_TRUE (window.waitForPosition ("hp_freq", travel (50))) << window.heard();
    window.keepPicture ("desktop-dragged");

    window.dragUp (places::hpFreq, -25);
    EXPECT_TRUE (window.waitForPosition ("hp_freq", travel (25))) << window.heard();

    EXPECT_FALSE (window.position ("lp_freq").has_value());
    EXPECT_EQ (window.close(), 0);
}

TEST_F (HandsOnTheWindow, ADragWithAltIsTenTimesFiner)
{
    ModuleWindow window;

    Desktop::perform ("keydown alt");
    window.dragUp (places::hpReso, 50);
    Desktop::perform ("keyup alt");
    EXPECT_TRUE (window.waitForPosition ("hp_reso", fineTravel (50))) << window.heard();
}

TEST_F (HandsOnTheWindow, AltPressedInTheMiddleOfADragChangesNothing)
{
    ModuleWindow window;

    window.at (places::hpFreq, "mousedown 1");
    Desktop::perform ("keydown alt");
    window.at ({ places::hpFreq.x, places::hpFreq.y - 50 }, "mouseup 1");
    Desktop::perform ("keyup alt");
    EXPECT_TRUE (window.waitForPosition ("hp_freq", travel (50))) << window.heard();
}

TEST_F (HandsOnTheWindow, ADoubleClickResetsAKnob)
{
    ModuleWindow window ({ "--set", "lp_reso=0.7", "--set", "lp_freq=0.4" });

    window.at (places::lpReso, "click --repeat 2 --delay 40 1");
    EXPECT_TRUE (window.waitForPosition ("lp_reso", 0.0)) << window.heard();

    window.at (places::lpFreq, "click --repeat 2 --delay 40 1");
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

TEST_F (HandsOnTheWindow, TheOffsetIsTypedAndTakenWithReturn)
{
    ModuleWindow window;
    openFrequencer (window);

    for (const auto offset : { 12, -300 })
    {
        window.at (places::offsetField, "click 1 key ctrl+a type -- " + std::to_string (offset));
        EXPECT_FALSE (window.position ("seq_offs") == positionOfOffset (offset));
        Desktop::perform ("key Return");
        EXPECT_TRUE (window.waitForPosition ("seq_offs", positionOfOffset (offset))) << window.heard();
        window.keepPicture ("desktop-offset" + std::to_string (offset));
    }
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

TEST_F (HandsOnTheWindow, OneKindOfColumnsTakesThePlaceOfTheOther)
{
    ModuleWindow window;
    const auto differs = [&] (const juce::Image& before)
    {
        const auto now = window.picture();
        return now.getBounds() == before.getBounds() && picture::differingShare (now, before) > 0.01;
    };
    const auto isDrawn = [&] { return window.picture().getWidth() == wide.width; };

    window.click (places::showLfos);
    ASSERT_TRUE (window.waitForSize (wide) && window.waitUntil (isDrawn)) << window.heard();
    const auto lfos = window.picture();

    window.click (places::frequencer);
    EXPECT_TRUE (window.waitUntil ([&] { return differs (lfos); }));
    EXPECT_EQ (window.size(), wide);

    // Its columns are the ones that are open: its toggle closes the window.
    window.click (places::frequencer);
    EXPECT_TRUE (window.waitForSize (narrow)) << window.heard();
}
