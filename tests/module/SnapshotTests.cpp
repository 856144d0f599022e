// SPDX-License-Identifier: AGPL-3.0-or-later
#include <set>

#include <gtest/gtest.h>
#include <juce_gui_basics/juce_gui_basics.h>

#include "ModuleUnderTest.h"

namespace
{
juce::File snapshot (const char* ending)
{
    return ModuleUnderTest::file()
        .getChildFile ("Contents/Resources/Snapshots")
        .getChildFile (juce::String ("ABCDEF019182FAEB4B74726E546D7338") + ending);
}

/** An image that only a PNG decoder makes of the file; none if it is anything else. */
juce::Image readPng (const juce::File& file)
{
    juce::FileInputStream stream (file);
    return stream.openedOk() ? juce::PNGImageFormat().decodeImage (stream) : juce::Image();
}

/** Which the smoothed edges of letters and knobs bring about by the dozen. */
size_t numColours (const juce::Image& image)
{
    std::set<juce::uint32> colours;

    for (int y = 0; y < image.getHeight(); ++y)
        for (int x = 0; x < image.getWidth(); ++x)
            colours.insert (image.getPixelAt (x, y).getARGB());

    return colours.size();
}
} // namespace

TEST (Snapshots, ShowTheWideWindowAtOneAndAtTwoPixelsPerPoint)
{
    const auto plain = readPng (snapshot ("_snapshot.png"));
    const auto fine = readPng (snapshot ("_snapshot_2.0x.png"));

    EXPECT_EQ (plain.getBounds(), juce::Rectangle<int> (520, 546));
    EXPECT_EQ (fine.getBounds(), juce::Rectangle<int> (1040, 1092));
    EXPECT_GT (numColours (plain), 100u);
    EXPECT_GT (numColours (fine), 100u);
}

TEST (Snapshots, AreListedInTheModulesDescription)
{
    const auto text = ModuleUnderTest::file().getChildFile ("Contents/Resources/moduleinfo.json").loadFileAsString();

    for (const auto* ending : { "_snapshot.png", "_snapshot_2.0x.png" })
        EXPECT_TRUE (text.contains ("\"Contents/Resources/Snapshots/" + snapshot (ending).getFileName() + "\""))
            << text;
}
