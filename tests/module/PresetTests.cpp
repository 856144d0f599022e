// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/PresetFile.h"

#include <cstring>

#include <gtest/gtest.h>

#include "host/HostError.h"
#include "host/PluginState.h"
#include "module/HostProcess.h"
#include "module/LoadPreset.h"
#include "module/ModuleUnderTest.h"

namespace
{
const char* const tide = "# a comment\n"
                         "name = Slow Tide\n"
                         "about = A slow sweep under pads.\n"
                         "play = Pads = chords # and strings\n"
                         "listen = How it closes.\n"
                         "stem = chords\n"
                         "\n"
                         "lp_freq = 0.5\n"
                         "hp_mode = 24 dB/oct\n"
                         "lfo1T_lpf = +50\n";

juce::String refusal (const juce::String& text)
{
    const HostProcess host;
    const ModuleUnderTest module;
    host.file ("wrong.txt").replaceWithText (text);

    try
    {
        [[maybe_unused]] const auto written = presetFile::parse (module, host.file ("wrong.txt"));
    }
    catch (const HostError& error)
    {
        return juce::String (error.what()).fromFirstOccurrenceOf ("wrong.txt", true, false);
    }

    return "taken";
}
} // namespace

TEST (Presets, LoadWithTheirValuesAndDefaultsForTheRest)
{
    const HostProcess host;
    host.file ("tide.txt").replaceWithText (tide);
    ModuleUnderTest maker, user;
    user.set ("lp_reso", 0.9f);
    user.deliverParameters();

    const auto bytes = presetFile::build (maker, presetFile::parse (maker, host.file ("tide.txt")));
    ASSERT_TRUE (loadPreset (user, bytes));

    const auto settings = juce::parseXML (pluginState::settingsText (pluginState::read (user.instance())));
    ASSERT_NE (settings, nullptr);
    EXPECT_EQ (settings->getStringAttribute ("lp_freq"), "0.5000");
    EXPECT_EQ (settings->getStringAttribute ("hp_mode"), "0.3333");
    EXPECT_EQ (settings->getStringAttribute ("lfo1T_lpf"), "0.7500");
    EXPECT_EQ (settings->getStringAttribute ("lp_reso"), "0.0000");
    EXPECT_EQ (settings->getStringAttribute ("inertia"), "0.0500");
}

TEST (Presets, DoNotNameTheMachineTheyWereMadeOn)
{
    const HostProcess host;
    host.file ("tide.txt").replaceWithText (tide);
    ModuleUnderTest maker;
    const auto bytes = presetFile::build (maker, presetFile::parse (maker, host.file ("tide.txt")));
    const auto text = pluginState::settingsText (presetFile::componentBlock (bytes, {}));

    EXPECT_TRUE (text.contains ("lp_freq"));

    for (const auto* name : { "username", "daw", "date_modified", "samplerate" })
        EXPECT_FALSE (text.contains (name)) << name;
}

TEST (Presets, KeepTheirDescriptions)
{
    const HostProcess host;
    host.file ("tide.txt").replaceWithText (tide);
    const ModuleUnderTest module;
    const auto written = presetFile::parse (module, host.file ("tide.txt"));

    EXPECT_EQ (written.name, "Slow Tide");
    EXPECT_EQ (written.about, "A slow sweep under pads.");
    EXPECT_EQ (written.play, "Pads = chords # and strings");
    EXPECT_EQ (written.listen, "How it closes.");
    EXPECT_EQ (written.stem, "chords");
}

TEST (Presets, AreWrittenUnderTheirNames)
{
    const HostProcess host;
    host.file ("tide.txt").replaceWithText (tide);
    const auto result = host.run ({ "preset", "tide.txt", "--out-dir", "made/here" });

    EXPECT_EQ (result.exitCode, 0) << result.errors;
    EXPECT_TRUE (host.file ("made/here/Slow Tide.vstpreset").existsAsFile());
}

TEST (Presets, ReportFileAndLineOfAnError)
{
    const juce::String head ("name = Name\nabout = Purpose\n");

    EXPECT_EQ (refusal (head + "lp_freq = 0.5\nlp_frq = 1\n"),
               "wrong.txt:4: there is no parameter \"lp_frq\"; did you mean lp_freq?");
    EXPECT_TRUE (refusal (head + "lp_freq = 1.5\n").startsWith ("wrong.txt:3: lp_freq: \"1.5\""));
    EXPECT_TRUE (refusal (head + "\nfiltmode = Comb\n").startsWith ("wrong.txt:4: filtmode: \"Comb\""));
    EXPECT_TRUE (refusal (head + "lp_freq\n").startsWith ("wrong.txt:3: \"lp_freq\" is not of the form"));
    EXPECT_EQ (refusal (head + "lp_freq = 0.1\nlp_freq = 0.2\n"), "wrong.txt:4: lp_freq is set a second time");
    EXPECT_EQ (refusal (head + "\nlisten = a\nname = Other\n"), "wrong.txt:5: name is set a second time");
    EXPECT_EQ (refusal ("name = Name\nlp_freq = 0.1\n"), "wrong.txt:2: a preset has a line: about = ...");
    EXPECT_EQ (refusal ("# nothing\n\nabout = Purpose\n"), "wrong.txt:3: a preset has a line: name = ...");
    EXPECT_EQ (refusal (""), "wrong.txt:1: a preset has a line: name = ...");
}

TEST (Presets, AreNotWrittenAtAllIfOneIsWrong)
{
    const HostProcess host;
    host.file ("a.txt").replaceWithText (tide);
    host.file ("b.txt").replaceWithText ("name = Name\nabout = Purpose\nlp_freq = 2\n");
    const auto result = host.run ({ "preset", "a.txt", "b.txt", "--out-dir", "made" });

    EXPECT_EQ (result.exitCode, 2);
    EXPECT_TRUE (result.errors.contains ("b.txt:3: lp_freq")) << result.errors;
    EXPECT_EQ (host.files(), juce::StringArray ("a.txt", "b.txt"));
}

TEST (Presets, AreNotWrittenOverOneAnother)
{
    const HostProcess host;
    host.file ("a.txt").replaceWithText (tide);
    host.file ("b.txt").replaceWithText ("name = SLOW TIDE\nabout = Another one.\n");
    const auto result = host.run ({ "preset", "a.txt", "b.txt", "--out-dir", "made" });

    EXPECT_EQ (result.exitCode, 2);
    EXPECT_TRUE (result.errors.contains ("b.txt: another preset is called \"Slow Tide\", too")) << result.errors;
    EXPECT_EQ (host.files(), juce::StringArray ("a.txt", "b.txt"));
}

TEST (Presets, AreRefusedWhenTruncated)
{
    ModuleUnderTest module;
    const auto whole = presetFile::fromBlock (module.instance(), pluginState::read (module.instance()));

    std::size_t numRefused = 0;

    for (std::size_t size = 0; size < whole.getSize(); size += 7)
    {
        const juce::MemoryBlock cut (whole.getData(), size);

        if (! presetFile::isPreset (cut))
            continue;

        EXPECT_THROW ([[maybe_unused]] const auto block = presetFile::componentBlock (cut, {}), HostError) << size;
        ++numRefused;
    }

    // A file that is too short for a header is not taken for a preset at all.
    EXPECT_GT (numRefused, whole.getSize() / 7 - 10);
}

TEST (Presets, AreRefusedAsDamagedXml)
{
    ModuleUnderTest module;
    const juce::TemporaryFile file (".xml");

    // An invalid byte, a truncated character, too deep a nesting, and an instruction that the XML parser never leaves.
    for (const auto& text :
         { juce::MemoryBlock ("<settings a=\"\xff\"/>", 17), juce::MemoryBlock ("<settings/>\xf0", 12),
           juce::MemoryBlock (juce::String::repeatedString ("<settings>", 100000).toRawUTF8(), 1000000),
           juce::MemoryBlock ("<settings><?pi?>text</settings>", 31) })
    {
        ASSERT_TRUE (file.getFile().replaceWithData (text.getData(), text.getSize()));
        EXPECT_THROW (pluginState::loadFile (module.instance(), file.getFile()), HostError)
            << text.toString().substring (0, 40);
    }
}

TEST (Presets, AreRefusedWhenTheirTextIsNotUtf8)
{
    const ModuleUnderTest module;
    const juce::TemporaryFile file (".txt");

    for (const auto* text : { "name = a\nabout = b\nseq2_lpf = -1\xce",
                              "name = a\nabout = b\nseq2_lpf = -1\xce\nlp_reso = 0.5\n", "\xff\xfen", "\xf0" })
    {
        ASSERT_TRUE (file.getFile().replaceWithText (""));
        ASSERT_TRUE (file.getFile().appendData (text, std::strlen (text)));
        EXPECT_THROW ([[maybe_unused]] const auto written = presetFile::parse (module, file.getFile()), HostError)
            << text;
    }
}
