// SPDX-License-Identifier: AGPL-3.0-or-later
#include <cstdio>
#include <thread>

#include <gtest/gtest.h>

#include "host/HostError.h"
#include "support/Desktop.h"
#include "support/Picture.h"
#include "system/daw/Ardour.h"

namespace
{
constexpr int narrow = 266, wide = 520, height = 546;

/** Ardour makes the narrow window as wide as its own bar, and the module's title is in the middle of that. */
constexpr int titleHeight = 36;

/** The place of "Show LFOs". */
constexpr int toggleX = 17, toggleY = 529;

/** Ardour takes a few seconds to start; on a busy machine, many. */
constexpr std::chrono::seconds startPatience { 60 };

/** Ardour with its windows, ended with this object. */
class OpenArdour
{
public:
    OpenArdour (Ardour& ardour, double scaleToUse) : scale (scaleToUse), process (ardour.withWindows (scale))
    {
        const auto deadline = std::chrono::steady_clock::now() + startPatience;

        while (window == 0)
        {
            if (std::chrono::steady_clock::now() > deadline)
                throw HostError ("Ardour shows no window of the plug-in");

            findWindow();
        }
    }

    /** The module's part of the window: below Ardour's own bar, from the left. Invalid if the window is no such size. */
    [[nodiscard]] juce::Image modulePicture (int width) const
    {
        const auto whole = picture::fromScreen (display.picture (window));
        const auto wanted = juce::Rectangle<int> (juce::roundToInt (width * scale), juce::roundToInt (height * scale));

        return whole.isValid() && whole.getWidth() >= wanted.getWidth() && whole.getHeight() > wanted.getHeight()
                   ? whole.getClippedImage (wanted.withY (whole.getHeight() - wanted.getHeight())).createCopy()
                   : juce::Image();
    }

    /** Looks until the module's part is as expected.
        @returns the share of pixels that differed at last */
    [[nodiscard]] double differenceFrom (const juce::Image& expected, int width) const
    {
        const auto deadline = std::chrono::steady_clock::now() + patience;
        double share = 1.0;

        while (share > 0.001 && std::chrono::steady_clock::now() < deadline)
        {
            std::this_thread::sleep_for (std::chrono::milliseconds (50));
            const auto seen = modulePicture (width);
            share = seen.getBounds() == expected.getBounds()
                        ? picture::differingShare (withoutTitle (seen, width), withoutTitle (expected, width))
                        : 1.0;
        }

        return share;
    }

    void clickToggle() const
    {
        const auto whole = display.picture (window);
        const auto x = juce::roundToInt (toggleX * scale);
        const auto y = whole.height - juce::roundToInt ((height - toggleY) * scale);
        Desktop::perform ("mousemove --window " + std::to_string (window) + " " + std::to_string (x) + " "
                          + std::to_string (y) + " click 1");
    }

private:
    [[nodiscard]] juce::Image withoutTitle (const juce::Image& image, int width) const
    {
        const auto top = width == narrow ? juce::roundToInt (titleHeight * scale) : 0;
        return image.getClippedImage (image.getBounds().withTrimmedTop (top));
    }

    void findWindow()
    {
        if (auto* const search =
                popen ("xdotool search --onlyvisible --name 'Kestrin Tamsile Filter' 2>/dev/null", "r"))
        {
            if (std::fscanf (search, "%lu", &window) != 1)
                window = 0;

            pclose (search);
        }

        std::this_thread::sleep_for (std::chrono::milliseconds (100));
    }

    XDisplay display;
    double scale;
    ChildProcess process;
    XDisplay::WindowId window = 0;
};

juce::Image pictureFromHost (const Ardour& ardour, double scale, const juce::StringArray& columns)
{
    juce::StringArray arguments ("window", "--out", "host.png", "--scale", juce::String (scale));
    arguments.addArray (columns);
    ardour.runHost (arguments);
    return juce::PNGImageFormat::loadFrom (ardour.file ("host.png"));
}
} // namespace

class InArdoursWindow : public testing::TestWithParam<double>
{
};

TEST_P (InArdoursWindow, LooksAsInTheOfflineHostBeforeAndAfterAChangeOfWidth)
{
    const auto scale = GetParam();
    const auto name = "daw-" + std::to_string (juce::roundToInt (scale * 100.0));
    Ardour ardour;
    Ardour::Song song;
    song.sound.setSize (2, 48000);
    song.sound.clear();
    ardour.make (song);

    const auto narrowPicture = pictureFromHost (ardour, scale, {});
    const auto widePicture = pictureFromHost (ardour, scale, { "--show", "lfos" });
    ASSERT_EQ (narrowPicture.getWidth(), juce::roundToInt (narrow * scale));
    ASSERT_EQ (widePicture.getWidth(), juce::roundToInt (wide * scale));

    const Desktop desktop;
    const OpenArdour open (ardour, scale);
    EXPECT_LT (open.differenceFrom (narrowPicture, narrow), 0.001);
    picture::keep (open.modulePicture (narrow), name + "-narrow");

    open.clickToggle();
    EXPECT_LT (open.differenceFrom (widePicture, wide), 0.001);
    picture::keep (open.modulePicture (wide), name + "-wide");

    open.clickToggle();
    EXPECT_LT (open.differenceFrom (narrowPicture, narrow), 0.001);
    picture::keep (open.modulePicture (narrow), name + "-narrow-again");
}

INSTANTIATE_TEST_SUITE_P (Scales, InArdoursWindow, testing::Values (1.0, 1.5, 2.0));
