// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gtest/gtest.h>
#include <juce_gui_basics/juce_gui_basics.h>

#include "module/Colours.h"
#include "module/HostProcess.h"

namespace
{
juce::Image pictureOfWindow (const HostProcess& host, const juce::StringArray& more)
{
    juce::StringArray words ("window", "--out", "window.png");
    words.addArray (more);
    const auto result = host.run (words);

    EXPECT_EQ (result.exitCode, 0) << result.errors;
    EXPECT_EQ (host.files(), juce::StringArray ("window.png"));
    return juce::ImageFileFormat::loadFrom (host.file ("window.png"));
}
} // namespace

TEST (ModuleWindow, IsDrawnInAHost)
{
    const HostProcess host;
    EXPECT_GT (numColours (pictureOfWindow (host, {})), 20u);
}

TEST (ModuleWindow, GrowsWithTheScaleThatTheHostAnnounces)
{
    const HostProcess host;
    const auto plain = pictureOfWindow (host, {});
    ASSERT_TRUE (plain.isValid());

    for (const auto scale : { 1.5, 2.0 })
    {
        const auto scaled = pictureOfWindow (host, { "--scale", juce::String (scale) });
        EXPECT_EQ (scaled.getWidth(), juce::roundToInt (plain.getWidth() * scale));
        EXPECT_EQ (scaled.getHeight(), juce::roundToInt (plain.getHeight() * scale));
    }
}

TEST (ModuleWindow, ShowsTheSettings)
{
    const HostProcess host;
    const auto before = pictureOfWindow (host, {});
    const auto after = pictureOfWindow (host, { "--set", "hp_freq=0.7", "--set", "lp_reso=0.8" });
    ASSERT_EQ (before.getBounds(), after.getBounds());

    auto differs = false;

    for (int y = 0; y < before.getHeight(); ++y)
        for (int x = 0; x < before.getWidth(); ++x)
            differs = differs || before.getPixelAt (x, y) != after.getPixelAt (x, y);

    EXPECT_TRUE (differs);
}
