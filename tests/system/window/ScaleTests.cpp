// SPDX-License-Identifier: AGPL-3.0-or-later
// The window on dense screens: drawn whole in more pixels, not stretched, cropped or left small.
#include <array>
#include <cmath>

#include "system/window/WindowFixture.h"

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

/** Whether a toggle carries its tick: bright strokes on the dark ground of the box. */
bool isTicked (const juce::Image& window, ModuleWindow::Place toggle, double scale)
{
    constexpr float bright = 0.5f;
    constexpr int reach = 4;
    const auto middle = scaled (toggle, scale);
    const auto box = juce::Rectangle<int> (middle.x, middle.y, 0, 0).expanded ((int) std::lround (reach * scale));

    for (int y = box.getY(); y < box.getBottom(); ++y)
        for (int x = box.getX(); x < box.getRight(); ++x)
            if (window.getPixelAt (x, y).getBrightness() > bright)
                return true;

    return false;
}

/** One state of the window, the toggle that leads to it from the one before, and what shows that it is reached. */
struct State
{
    const char* name = nullptr;
    const ModuleWindow::Place* toggle = nullptr;
    ModuleWindow::Size size;
    bool showsLfos = false;
    bool showsFrequencer = false;
};

constexpr std::array states {
    State { "opened", nullptr, narrow, false, false },
    State { "lfos", &places::showLfos, wide, true, false },
    State { "frequencer", &places::frequencer, wide, false, true },
    State { "closed", &places::frequencer, narrow, false, false },
};

using StatePictures = std::array<juce::Image, states.size()>;

StatePictures picturesAt (double scale)
{
    // Some of everything: arcs, pointers, texts.
    ModuleWindow window ({ "--scale", std::to_string (scale), "--set", "hp_freq=0.3", "--set", "lp_reso=0.9" });
    StatePictures pictures;

    for (std::size_t index = 0; index < states.size(); ++index)
    {
        const auto& state = states[index];
        const auto hasItsTicks = [&] (const juce::Image& image)
        {
            return isTicked (image, places::showLfos, scale) == state.showsLfos
                   && isTicked (image, places::frequencer, scale) == state.showsFrequencer;
        };

        if (state.toggle != nullptr)
            window.click (scaled (*state.toggle, scale));

        EXPECT_TRUE (window.waitForSize (scaled (state.size, scale))) << state.name << "\n" << window.heard();
        pictures[index] = window.settledPicture (hasItsTicks);
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

    // Shrunk and enlarged by nearest pixels: a picture that was stretched like that stays the same.
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

TEST_P (WindowScale, DrawsTheWindowWholeAndSharpBeforeAndAfterAChangeOfWidth)
{
    const auto scale = GetParam();
    const auto small = picturesAt (1.0);
    const auto large = picturesAt (scale);

    for (std::size_t index = 0; index < states.size(); ++index)
    {
        const std::string name (states[index].name);
        SCOPED_TRACE (name);
        picture::keep (large[index], "desktop-scale" + std::to_string (std::lround (100.0 * scale)) + "-" + name);
        ASSERT_EQ (small[index].getHeight(), narrow.height);
        ASSERT_EQ (large[index].getHeight(), (int) std::lround (narrow.height * scale));
        expectWhole (small[index], large[index]);
        expectSharp (small[index], large[index], scale);
    }
}

INSTANTIATE_TEST_SUITE_P (DenseScreens, WindowScale, testing::Values (1.5, 2.0));
