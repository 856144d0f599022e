// SPDX-License-Identifier: AGPL-3.0-or-later
#include "common/SettingsGuard.h"

#include <string>

#include <gtest/gtest.h>

#include "dsp/MainAudioProcessor.h"
#include "support/SettingsProbe.h"

namespace
{
std::string withValue (const std::string& value) { return settings::element ("unknown=\"" + value + "\""); }
} // namespace

TEST (SettingsGuard, LetsThroughWhatThePluginWrites)
{
    MainAudioProcessor processor;
    EXPECT_TRUE (isSafeToParse (settings::savedText (processor)));
}

TEST (SettingsGuard, LetsThroughAnyCharacterThatTheWriterEscapes)
{
    SettingsProbe probe;
    probe.extraAttributes["unknown"] = juce::String::fromUTF8 ("<&>\"' \xc3\xa9\xe2\x82\xac\xf0\x9f\x8e\xb9 = \t\n");

    const auto text = settings::savedText (probe);
    EXPECT_TRUE (isSafeToParse (text)) << text;
}

TEST (SettingsGuard, LetsThroughALongForeignValueAndSomeForeignElements)
{
    EXPECT_TRUE (isSafeToParse (withValue (std::string (1 << 20, 'x'))));
    EXPECT_TRUE (isSafeToParse ("<settings>" + settings::repeated ("<a/>", 255) + "</settings>"));
    EXPECT_TRUE (isSafeToParse ("<?xml version='1.0'?><!-- ? --><?pi?><settings><!-- < ? --><a>text</a></settings>"));
}

TEST (SettingsGuard, StopsMoreThan256Elements)
{
    EXPECT_FALSE (isSafeToParse (settings::repeated ("<a>", 257)));
    EXPECT_FALSE (isSafeToParse (settings::repeated ("< a>", 257)));
    EXPECT_FALSE (isSafeToParse (settings::repeated ("<a b='/>'>", 257)));
}

TEST (SettingsGuard, StopsMoreThan4096Attributes)
{
    EXPECT_TRUE (isSafeToParse ("<settings " + settings::repeated ("a='' ", 4096) + "/>"));
    EXPECT_FALSE (isSafeToParse ("<settings " + settings::repeated ("a='' ", 4097) + "/>"));
}

TEST (SettingsGuard, StopsReferencesThatWouldCopyTheirValueTooOften)
{
    EXPECT_TRUE (isSafeToParse (withValue (settings::repeated ("&amp;", 10000))));
    EXPECT_FALSE (isSafeToParse (withValue (settings::repeated ("&amp;", 1000000))));
}

TEST (SettingsGuard, StopsUnfinishedReferences)
{
    for (const auto* start : { "&", "&#", "&#x", "&#x1", "&amp", "&<a b=\"&#x;", "& ;", "&a b;" })
        EXPECT_FALSE (isSafeToParse (std::string ("<settings a=\"") + start)) << start;

    EXPECT_FALSE (isSafeToParse (withValue ("&" + std::string (40, 'a') + ";")));
}

TEST (SettingsGuard, StopsDocumentTypes)
{
    EXPECT_FALSE (isSafeToParse (R"(<!DOCTYPE s [<!ENTITY a "&a;">]><settings>&a;</settings>)"));
}

TEST (SettingsGuard, StopsInstructionsInsideAnElement)
{
    // The parser would begin with the instruction again and again.
    EXPECT_FALSE (isSafeToParse ("<settings><?pi?>text</settings>"));
    EXPECT_FALSE (isSafeToParse ("<?xml version='1.0'?> <settings><a/> <?pi?> <!-- --> text</settings>"));
    EXPECT_FALSE (isSafeToParse ("< settings><?pi?>text</settings>"));
}

TEST (SettingsGuard, StopsWhatIsNotUtf8)
{
    for (const auto* bytes :
         { "\xf0", "\xe2\x82", "\xc3", "\x80", "\xc0\xaf", "\xff", "\xf8\x88\x80\x80\x80", "\xc3(" })
        EXPECT_FALSE (isSafeToParse (withValue (bytes)) || isSafeToParse (bytes)) << bytes;

    EXPECT_TRUE (isSafeToParse (withValue ("\xc3\xa9\xe2\x82\xac\xf0\x9f\x8e\xb9")));
}
