// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gtest/gtest.h>
#include <juce_gui_basics/juce_gui_basics.h>

#include "module/Colours.h"
#include "module/ModuleUnderTest.h"

namespace
{
juce::File snapshot (const char* ending)
{
    return ModuleUnderTest::file()
        .getChildFile ("Contents/Resources/Snapshots")
        .getChildFile (juce::String ("ABCDEF019182FAEB4B74726E546D7338") + ending);
}

/** The image of a PNG file; none if the file is anything else. */
juce::Image readPng (const juce::File& file)
{
    juce::FileInputStream stream (file);
    return stream.openedOk() ? juce::PNGImageFormat().decodeImage (stream) : juce::Image();
}
} // namespace

TEST (Snapshots, ShowTheWideWindowAtScalesOneAndTwo)
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
