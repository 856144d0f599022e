// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gtest/gtest.h>

#include "module/HostProcess.h"

namespace
{
constexpr int refused = 2;
constexpr int interrupted = 130;

juce::StringArray renderInto (const char* folder, const juce::StringArray& inputs, const juce::StringArray& more = {})
{
    juce::StringArray words ("render", "--out-dir", folder, "--set", "lfo1T_lpf=+50", "--in");
    words.addArray (inputs);
    words.addArray (more);
    return words;
}

juce::MemoryBlock bytesOf (const juce::File& file)
{
    juce::MemoryBlock bytes;
    file.loadFileAsData (bytes);
    return bytes;
}
} // namespace

TEST (HostRenderMany, GivesEachFileTheBytesThatItHasByItself)
{
    const HostProcess host;
    const juce::StringArray names ("one", "two", "three", "four");

    for (int i = 0; i < names.size(); ++i)
        host.writeSound (names[i] + ".wav", 1 + i % 2, 3000 * (i + 1));

    const auto many =
        host.run (renderInto ("out", { "one.wav", "two.wav", "three.wav", "four.wav" }, { "--jobs", "3" }));
    ASSERT_EQ (many.exitCode, 0) << many.errors;
    EXPECT_EQ (many.errors, "");

    for (const auto& name : names)
    {
        const auto single =
            host.run ({ "render", "--in", name + ".wav", "--out", "single.wav", "--force", "--set", "lfo1T_lpf=+50" });
        ASSERT_EQ (single.exitCode, 0) << single.errors;
        EXPECT_EQ (bytesOf (host.file ("out/" + name + ".wav")), bytesOf (host.file ("single.wav"))) << name;
    }
}

TEST (HostRenderMany, WritesTheFormatThatIsAskedFor)
{
    const HostProcess host;
    host.writeSound ("one.wav", 2, 1000);
    host.writeSound ("two.wav", 1, 1000);

    ASSERT_EQ (host.run (renderInto ("out", { "one.wav", "two.wav" }, { "--format", "flac" })).exitCode, 0);
    EXPECT_EQ (host.files(), juce::StringArray ("one.wav", "out", "out/one.flac", "out/two.flac", "two.wav"));
    EXPECT_EQ (host.readSound ("out/one.flac").getNumSamples(), 1000);
}

TEST (HostRenderMany, RendersTheOthersWhenAFileFailsAndNamesItAtTheEnd)
{
    const HostProcess host;
    host.writeSound ("good.wav", 2, 1000);
    host.writeSound ("last.wav", 2, 1000);
    host.file ("text.wav").replaceWithText ("This is not a sound.");

    const auto result = host.run (renderInto ("out", { "good.wav", "text.wav", "missing.wav", "last.wav" }));
    EXPECT_EQ (result.exitCode, refused);
    EXPECT_TRUE (host.file ("out/good.wav").existsAsFile());
    EXPECT_TRUE (host.file ("out/last.wav").existsAsFile());

    const auto lines = juce::StringArray::fromLines (result.errors.trimEnd());
    ASSERT_EQ (lines.size(), 3) << result.errors;
    EXPECT_TRUE (lines[0].contains ("text.wav: not a WAV")) << lines[0];
    EXPECT_TRUE (lines[1].contains ("missing.wav: there is no such file")) << lines[1];
    EXPECT_EQ (lines[2], "kestrin-host: 2 of 4 files could not be rendered: text.wav, missing.wav");
}

TEST (HostRenderMany, ReplacesNothingUnlessItIsTold)
{
    const HostProcess host;
    host.writeSound ("one.wav", 1, 1000);
    host.writeSound ("two.wav", 1, 1000);
    ASSERT_TRUE (host.file ("out").createDirectory());
    ASSERT_TRUE (host.file ("out/one.wav").replaceWithText ("older"));

    const auto careful = host.run (renderInto ("out", { "one.wav", "two.wav" }));
    EXPECT_EQ (careful.exitCode, refused);
    EXPECT_TRUE (careful.errors.contains ("one.wav is there already; --force replaces it")) << careful.errors;
    EXPECT_EQ (host.file ("out/one.wav").loadFileAsString(), "older");
    EXPECT_TRUE (host.file ("out/two.wav").existsAsFile());

    const auto forced = host.run (renderInto ("out", { "one.wav", "two.wav" }, { "--force" }));
    EXPECT_EQ (forced.exitCode, 0) << forced.errors;
    EXPECT_EQ (host.readSound ("out/one.wav").getNumSamples(), 1000);
}

TEST (HostRenderMany, RefusesInputsThatWouldBecomeOneFileBeforeItRendersAny)
{
    const HostProcess host;
    host.writeSound ("one.wav", 1, 1000);
    host.writeSound ("song.wav", 1, 1000);
    host.writeSound ("Song.aiff", 1, 1000);

    const auto result = host.run (renderInto ("out", { "one.wav", "song.wav", "Song.aiff" }));
    EXPECT_EQ (result.exitCode, refused);
    EXPECT_TRUE (result.errors.startsWith ("kestrin-host: song.wav and Song.aiff would both become ")) << result.errors;
    EXPECT_FALSE (host.file ("out").exists());
}

TEST (HostRenderMany, SaysOnceWhatIsWrongWithTheSettings)
{
    const HostProcess host;
    host.writeSound ("one.wav", 1, 1000);
    host.writeSound ("two.wav", 1, 1000);

    const auto result = host.run (renderInto ("out", { "one.wav", "two.wav" }, { "--set", "lp_frq=0.5" }));
    EXPECT_EQ (result.exitCode, refused);
    EXPECT_EQ (juce::StringArray::fromLines (result.errors.trimEnd()).size(), 1) << result.errors;
    EXPECT_FALSE (host.file ("out").exists());
}

TEST (HostRenderMany, LeavesWholeFilesOnlyWhenItIsInterrupted)
{
    const HostProcess host;
    host.writeSound ("short.wav", 1, 100);

    // Minutes of work at one frame per block: the interrupt falls into the middle of it.
    for (const auto* name : { "long.wav", "longer.wav", "last.wav" })
        host.writeSound (name, 2, 44100 * 120);

    const auto isInTheMiddle = [&host]
    {
        const auto hidden = host.file ("out").findChildFiles (juce::File::findFiles, false, ".*.partial");
        return host.file ("out/short.wav").existsAsFile() && hidden.size() == 2;
    };
    const auto result = host.runAndInterrupt (renderInto ("out", { "short.wav", "long.wav", "longer.wav", "last.wav" },
                                                          { "--jobs", "2", "--block-size", "1" }),
                                              isInTheMiddle);

    EXPECT_EQ (result.exitCode, interrupted);
    EXPECT_EQ (result.errors, "kestrin-host: interrupted after 1 of 4 files; nothing was written of the others\n");
    EXPECT_EQ (host.files(),
               juce::StringArray ("last.wav", "long.wav", "longer.wav", "out", "out/short.wav", "short.wav"));
}

TEST (HostRenderMany, RefusesOptionsThatDoNotGoTogether)
{
    const HostProcess host;
    host.writeSound ("one.wav", 1, 1000);

    for (const auto& words :
         { juce::StringArray ("--out", "out.wav", "--out-dir", "out"),
           juce::StringArray ("--out", "out.wav", "--jobs", "2"),
           juce::StringArray ("--out", "out.wav", "--format", "flac"),
           juce::StringArray ("--out-dir", "out", "--jobs", "0"),
           juce::StringArray ("--out-dir", "out", "--format", "mp3"),
           juce::StringArray ("--out-dir", "out", "--save-state", "x"),
           juce::StringArray ("--out-dir", "out", "--format", "flac", "--bits", "32"), juce::StringArray() })
    {
        juce::StringArray all ("render", "--in", "one.wav");
        all.addArray (words);
        const auto result = host.run (all);
        EXPECT_EQ (result.exitCode, refused) << words.joinIntoString (" ");
        EXPECT_TRUE (result.errors.startsWith ("kestrin-host: ")) << result.errors;
        EXPECT_EQ (host.files(), juce::StringArray ("one.wav")) << words.joinIntoString (" ");
    }

    EXPECT_EQ (host.run ({ "render", "--in", "one.wav", "one.wav", "--out", "out.wav" }).exitCode, refused);
}
