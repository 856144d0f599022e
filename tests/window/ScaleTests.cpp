// SPDX-License-Identifier: AGPL-3.0-or-later
// The window on dense screens: drawn whole and anew in more pixels, not stretched, cropped or left small.
#include <array>
#include <cmath>

#include "WindowFixture.h"

namespace
{
ModuleWindow::Size scaled (ModuleWindow::Size size, double scale)
{
    return { (int) std::lround (size.width * scale), (int) std::lround (size.height * scale) };
}

ModuleWindow::Place scaled (ModuleWindow::Place place, double scale)
{
    return { (int) std::lround (place.x * scale), (int) std::lround (place.y * scale) };
}

/** The window's ground, which shows in its lower corners: what is not drawn yet has another colour. */
bool isDrawnToItsCorner (const juce::Image& image)
{
    constexpr int fromEdge = 3;
    constexpr juce::uint32 ground = 0xff404040;
    return image.getPixelAt (image.getWidth() - fromEdge, image.getHeight() - fromEdge).getARGB() == ground;
}

/** What a window of this size shows once it is there and has stopped to change. */
juce::Image settledPicture (ModuleWindow& window, ModuleWindow::Size size)
{
    constexpr int enoughLooks = 10;
    juce::Image latest;
    int numLooks = 0;

    const auto hasSettled = [&]
    {
        const auto now = window.picture();
        const auto isSame = now.getWidth() == size.width && now.getHeight() == size.height
                            && latest.getBounds() == now.getBounds() && picture::differingShare (latest, now) == 0.0;
        latest = now;
        numLooks = isSame ? numLooks + 1 : 0;
        return numLooks >= enoughLooks && isDrawnToItsCorner (now);
    };

    EXPECT_TRUE (window.waitUntil (hasSettled)) << "not drawn whole: " << window.heard();
    return latest;
}

/** The window as it opens, with the columns of one kind and of the other, and closed again. */
constexpr std::array stateNames { "opened", "lfos", "frequencer", "closed" };
using StatePictures = std::array<juce::Image, stateNames.size()>;

StatePictures picturesAt (double scale)
{
    struct State
    {
        ModuleWindow::Place toggle;
        ModuleWindow::Size size;
    };

    const std::array changes { State { places::showLfos, wide }, State { places::frequencer, wide },
                               State { places::frequencer, narrow } };

    // Something of everything: arcs, pointers, texts.
    ModuleWindow window ({ "--scale", std::to_string (scale), "--set", "hp_freq=0.3", "--set", "lp_reso=0.9" });
    EXPECT_TRUE (window.waitForSize (scaled (narrow, scale))) << window.heard();

    StatePictures pictures { settledPicture (window, scaled (narrow, scale)) };

    for (size_t change = 0; change < changes.size(); ++change)
    {
        const auto size = scaled (changes[change].size, scale);
        window.click (scaled (changes[change].toggle, scale));
        EXPECT_TRUE (window.waitForSize (size)) << window.heard();
        pictures[change + 1] = settledPicture (window, size);
    }

    return pictures;
}

void expectWhole (const juce::Image& small, const juce::Image& large)
{
    // Letters and edges move by fractions of a pixel, which is up to 5 in a field.
    constexpr double tolerance = 10.0;
    EXPECT_LT (picture::largestFieldDifference (small, large), tolerance);
}

/** A stretched picture has either blurred edges, a fifth as many sharp ones, or the same large dots. */
void expectSharp (const juce::Image& small, const juce::Image& large, double scale)
{
    constexpr double leastShareOfEdges = 0.9;
    constexpr double leastShareOfFinerPixels = 0.01;

    EXPECT_GT (picture::numSharpEdges (large), picture::numSharpEdges (small) * scale * leastShareOfEdges);

    // Every so many pixels one, and this one made as large as they were: the same picture if it was made so before.
    constexpr auto nearest = juce::Graphics::lowResamplingQuality;
    const auto dots = large.rescaled (small.getWidth(), small.getHeight(), nearest)
                          .rescaled (large.getWidth(), large.getHeight(), nearest);
    EXPECT_GT (picture::differingShare (large, dots), leastShareOfFinerPixels);
}

class WindowScale : public testing::TestWithParam<double>
{
protected:
    const Desktop desktop {};
};
} // namespace

TEST_P (WindowScale, DrawsTheWindowWholeAndSharpInThatManyMorePixelsBeforeAndAfterAChangeOfWidth)
{
    const auto scale = GetParam();
    const auto small = picturesAt (1.0);
    const auto large = picturesAt (scale);

    for (size_t state = 0; state < stateNames.size(); ++state)
    {
        SCOPED_TRACE (stateNames[state]);
        picture::keep (small[state], std::string ("desktop-scale100-") + stateNames[state]);
        picture::keep (large[state],
                       "desktop-scale" + std::to_string (std::lround (100.0 * scale)) + "-" + stateNames[state]);
        ASSERT_EQ (small[state].getHeight(), 546);
        ASSERT_EQ (large[state].getHeight(), (int) std::lround (546 * scale));
        expectWhole (small[state], large[state]);
        expectSharp (small[state], large[state], scale);
    }
}

INSTANTIATE_TEST_SUITE_P (DenseScreens, WindowScale, testing::Values (1.5, 2.0));
