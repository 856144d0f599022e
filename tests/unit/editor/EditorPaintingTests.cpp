// SPDX-License-Identifier: AGPL-3.0-or-later
#include "unit/editor/EditorFixture.h"

class EditorPainting : public EditorFixture
{
protected:
    static constexpr juce::uint32 lightColour = 0xff98d800;

    juce::Image look() { return picture (editor()); }

    static juce::uint32 at (const juce::Image& image, int x, int y) { return image.getPixelAt (x, y).getARGB(); }

    /** True if there is a light of 9 by 9 pixels at a place of the window, with its glow around it. */
    static bool hasLight (const juce::Image& image, int x, int y = 46)
    {
        for (auto row = 0; row < 9; ++row)
            for (auto column = 0; column < 9; ++column)
                if (at (image, x + column, y + row) != lightColour)
                    return false;

        const auto glow = image.getPixelAt (x - 2, y + 4);
        return glow.getGreen() > glow.getRed() + 10 && glow.getRed() > glow.getBlue();
    }

    /** The columns of pixels between which something stands out from a line's background. */
    static std::pair<int, int> extent (const juce::Image& image, juce::Rectangle<int> area, juce::uint32 background)
    {
        std::pair<int, int> found { area.getRight(), area.getX() };

        for (auto y = area.getY(); y < area.getBottom(); ++y)
            for (auto x = area.getX(); x < area.getRight(); ++x)
                if (at (image, x, y) != background)
                    found = { std::min (found.first, x), std::max (found.second, x) };

        return found;
    }
};

TEST_F (EditorPainting, HasABlackHeaderOnADarkBody)
{
    const auto image = look();
    EXPECT_EQ (at (image, 0, 0), 0xff000000u);
    EXPECT_EQ (at (image, 265, 21), 0xff000000u);
    EXPECT_EQ (at (image, 0, 22), 0xff404040u);
    EXPECT_EQ (at (image, 265, 545), 0xff404040u);
}

TEST_F (EditorPainting, CentresTitleAndVersionSlightlyToTheRight)
{
    for (const auto wide : { false, true })
    {
        editor().showLfos = wide;
        editor().updateWindowSize();
        const auto width = editor().getWidth();
        const auto image = look();
        const auto title = extent (image, { 0, 0, width, 20 }, 0xff000000);
        const auto version = extent (image, { 0, 24, width, 12 }, 0xff404040);
        EXPECT_NEAR ((title.first + title.second) * 0.5, (7 + width) * 0.5, 2.0);
        EXPECT_NEAR ((version.first + version.second) * 0.5, (7 + width) * 0.5, 2.0);
        EXPECT_GT (title.second - title.first, 150);
        EXPECT_GT (version.second - version.first, 150);

        // With room to both sides: nothing is cut.
        EXPECT_GT (title.first, 8);
        EXPECT_LT (title.second, width - 1);
    }
}

TEST_F (EditorPainting, WritesGreyInTheHeaderAndBlackBelow)
{
    const auto image = look();
    auto brightest = 0;
    auto darkest = 255;

    for (auto x = 0; x < 266; ++x)
        for (auto y = 0; y < 36; ++y)
        {
            const auto level = (int) image.getPixelAt (x, y).getRed();

            if (y < 20)
                brightest = std::max (brightest, level);

            if (y > 23)
                darkest = std::min (darkest, level);
        }

    EXPECT_NEAR (brightest, 0xa0, 4);
    EXPECT_LT (darkest, 0x18);
}

TEST_F (EditorPainting, LightsTheFiltersThatAreNotBypassed)
{
    struct Case
    {
        float highpass;
        float lowpass;
    };

    for (const auto& modes : { Case { 0.0f, 0.0f }, Case { 0.0f, 1.0f / 9.0f }, Case { 4.0f / 9.0f, 0.0f },
                               Case { 2.0f / 9.0f, 2.0f / 9.0f } })
    {
        set (parameters.hpMode, modes.highpass);
        set (parameters.lpMode, modes.lowpass);
        const auto image = look();
        EXPECT_EQ (hasLight (image, 19), modes.highpass > 0.0f);
        EXPECT_EQ (hasLight (image, 146), modes.lowpass > 0.0f);
    }
}

TEST_F (EditorPainting, LightsVisibleLfosWhileTheEngineIsAwake)
{
    editor().showLfos = true;
    editor().updateWindowSize();
    processor.controlUpdatePending = true;
    EXPECT_TRUE (hasLight (look(), 273));
    EXPECT_TRUE (hasLight (look(), 400));

    processor.controlUpdatePending = false;
    EXPECT_FALSE (hasLight (look(), 273));
    EXPECT_FALSE (hasLight (look(), 400));

    processor.controlUpdatePending = true;
    editor().showLfos = false;
    editor().showFrequencer = true;
    editor().updateWindowSize();
    EXPECT_FALSE (hasLight (look(), 273));
    EXPECT_FALSE (hasLight (look(), 400));
}

TEST_F (EditorPainting, ClipsTheWideMainPanelInTheNarrowWindow)
{
    const auto image = look();
    EXPECT_EQ (image.getWidth(), 266);
    EXPECT_GT (editor().mainPanel.getRight(), editor().getWidth());

    // Nothing but the body right of the lowpass column.
    for (auto y = 40; y < 510; ++y)
        EXPECT_EQ (at (image, 260, y), 0xff404040u);
}

TEST_F (EditorPainting, IsSharpAtEveryScale)
{
    for (const auto scale : { 1.0f, 1.5f, 2.0f })
    {
        const auto image = picture (editor(), scale);
        EXPECT_EQ (image.getWidth(), juce::roundToInt (266.0f * scale));
        EXPECT_EQ (image.getHeight(), juce::roundToInt (546.0f * scale));

        // The header's lower edge, one physical pixel above and below.
        const auto edge = juce::roundToInt (22.0f * scale);
        EXPECT_EQ (at (image, 1, edge - 1), 0xff000000u);
        EXPECT_EQ (at (image, 1, edge), 0xff404040u);
    }
}
