// SPDX-License-Identifier: AGPL-3.0-or-later
#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>
#include <juce_audio_formats/juce_audio_formats.h>

#include "module/HostProcess.h"
#include "module/ModuleUnderTest.h"
#include "support/SoundFiles.h"

namespace
{
constexpr int refused = 2;
constexpr int interrupted = 130;

juce::StringArray render (const juce::StringArray& more, const char* input = "in.wav")
{
    juce::StringArray words ("render", "--in", input, "--out", "out.wav");
    words.addArray (more);
    return words;
}

/** One line on stderr that begins with the program's name and holds the fragment; exit code 2; no new file. */
void expectRefusal (const HostProcess& host, const juce::StringArray& arguments, const char* fragment)
{
    SCOPED_TRACE (arguments.joinIntoString (" ").toStdString());
    const auto before = host.files();
    const auto result = host.run (arguments);

    EXPECT_EQ (result.exitCode, refused);
    EXPECT_EQ (result.output, "");
    EXPECT_TRUE (result.errors.startsWith ("kestrin-host: ")) << result.errors;
    EXPECT_TRUE (result.errors.contains (fragment)) << result.errors;
    EXPECT_EQ (result.errors.indexOfChar ('\n'), result.errors.length() - 1) << result.errors;
    EXPECT_EQ (host.files(), before);
}
} // namespace

TEST (HostRender, WritesAFloatFileOfTheSameLengthRateAndWidth)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 10001);
    const auto result = host.run (render ({ "--set", "lp_freq=800 Hz" }));

    ASSERT_EQ (result.exitCode, 0) << result.errors;
    EXPECT_EQ (result.errors, "") << "only a terminal shows the progress";
    EXPECT_EQ (host.files(), juce::StringArray ("in.wav", "out.wav"));

    juce::AudioFormatManager formats;
    formats.registerBasicFormats();
    const std::unique_ptr<juce::AudioFormatReader> reader (formats.createReaderFor (host.file ("out.wav")));
    ASSERT_NE (reader, nullptr);
    EXPECT_EQ (reader->lengthInSamples, 10001);
    EXPECT_EQ (reader->numChannels, 2u);
    EXPECT_EQ (reader->sampleRate, 44100.0);
    EXPECT_EQ (reader->bitsPerSample, 32u);
    EXPECT_TRUE (reader->usesFloatingPointData);
}

TEST (HostRender, EqualsTheModuleBitForBit)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 5000);
    ASSERT_EQ (host.run (render ({ "--set", "lp_freq=0.5", "--set", "lfo1T_lpf=+50", "--no-transport" })).exitCode, 0);

    ModuleUnderTest module;
    module.set ("lp_freq", 0.5f);
    module.set ("lfo1T_lpf", 0.75f);
    module.prepare (juce::AudioChannelSet::stereo(), 44100.0, 5000);
    auto expected = host.readSound ("in.wav");
    module.process (expected);

    const auto rendered = host.readSound ("out.wav");
    EXPECT_EQ (samplesOf (rendered, 0), samplesOf (expected, 0));
    EXPECT_EQ (samplesOf (rendered, 1), samplesOf (expected, 1));
}

TEST (HostRender, GivesTheSameBitsForEveryBlockSize)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 20000);
    std::vector<float> expected;

    for (const auto* blockSize : { "512", "1", "64", "random:7", "100000" })
    {
        const auto result = host.run (render ({ "--stopped", "--automate", "hp_freq@0.05=0.1,0.3=0.7,0.3=0.2", "--set",
                                                "lfo1T_lpf=+80", "--block-size", blockSize }));
        ASSERT_EQ (result.exitCode, 0) << result.errors;
        const auto rendered = samplesOf (host.readSound ("out.wav"), 1);

        if (expected.empty())
            expected = rendered;

        EXPECT_EQ (rendered, expected) << blockSize;
    }
}

TEST (HostRender, PassesAPlayingStoppedOrMissingTransportToTheModule)
{
    const HostProcess host;
    host.writeSound ("in.wav", 1, 40000);
    const juce::StringArray step ("--set", "seq1_lpf=-100", "--set", "inertia=0");
    std::vector<std::vector<float>> results;

    for (const auto& song :
         { juce::StringArray ("--tempo", "150"), juce::StringArray ("--tempo", "90"), juce::StringArray ("--stopped"),
           juce::StringArray ("--stopped", "--start-beat", "1.5"), juce::StringArray ("--no-transport") })
    {
        auto words = render (step);
        words.addArray (song);
        ASSERT_EQ (host.run (words).exitCode, 0);
        results.push_back (samplesOf (host.readSound ("out.wav"), 0));
    }

    // The first step is on in the first half of every beat: tempo and position are heard, each in another sound.
    EXPECT_NE (results[0], results[1]);
    EXPECT_NE (results[0], results[2]);
    EXPECT_NE (results[2], results[3]);

    // All steps are on without a position, which position 0 is taken for.
    EXPECT_EQ (results[4], results[2]);
}

TEST (HostRender, CopiesOneChannelToTwoAndAveragesTwoToOne)
{
    const HostProcess host;
    host.writeSound ("in.wav", 1, 1000);
    ASSERT_EQ (host.run (render ({ "--set", "byps=1", "--channels", "2" })).exitCode, 0);

    const auto narrow = host.readSound ("in.wav");
    auto rendered = host.readSound ("out.wav");
    ASSERT_EQ (rendered.getNumChannels(), 2);
    EXPECT_EQ (samplesOf (rendered, 0), samplesOf (narrow, 0));
    EXPECT_EQ (samplesOf (rendered, 1), samplesOf (narrow, 0));

    host.writeSound ("in.wav", 2, 1000);
    ASSERT_EQ (host.run (render ({ "--set", "byps=1", "--channels", "1" })).exitCode, 0);

    const auto wide = host.readSound ("in.wav");
    rendered = host.readSound ("out.wav");
    ASSERT_EQ (rendered.getNumChannels(), 1);

    for (int frame = 0; frame < 1000; ++frame)
        EXPECT_EQ (rendered.getSample (0, frame), (wide.getSample (0, frame) + wide.getSample (1, frame)) * 0.5f);
}

TEST (HostRender, SavesSettingsThatItCanRead)
{
    const HostProcess host;
    host.writeSound ("in.wav", 1, 1000);

    for (const auto* name : { "end.state", "end.xml", "end.vstpreset" })
    {
        ASSERT_EQ (host.run (render ({ "--automate", "lp_freq@0=0.25", "--save-state", name })).exitCode, 0);
        const auto result = host.run ({ "state", "--show", name });

        ASSERT_EQ (result.exitCode, 0) << result.errors;
        EXPECT_TRUE (result.output.contains ("lp_freq=\"0.2500\"")) << result.output;
    }
}

TEST (HostRender, RefusesSoundFilesThatItCannotUse)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 1000);
    host.writeSound ("four.wav", 4, 1000);
    host.file ("text.wav").replaceWithText ("This is not a sound.");

    juce::MemoryBlock whole;
    ASSERT_TRUE (host.file ("in.wav").loadFileAsData (whole));
    ASSERT_TRUE (host.file ("cut.wav").replaceWithData (whole.getData(), whole.getSize() / 2));

    expectRefusal (host, render ({}, "missing.wav"), "missing.wav: there is no such file");
    expectRefusal (host, render ({}, "four.wav"), "four.wav: has 4 channels; 1 or 2 are possible");
    expectRefusal (host, render ({}, "text.wav"), "text.wav: not a WAV, AIFF, FLAC or Ogg file");
    expectRefusal (host, render ({}, "cut.wav"), "cut.wav: the file is cut short");
}

TEST (HostRender, RefusesOutputsThatCannotBeWritten)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 1000);
    ASSERT_TRUE (host.file ("folder").createDirectory());

    expectRefusal (host, { "render", "--in", "in.wav", "--out", "nowhere/out.wav" }, "nowhere");
    expectRefusal (host, { "render", "--in", "in.wav", "--out", "folder" }, "it is a folder");
    expectRefusal (host, { "render", "--in", "in.wav", "--out", "/dev/null" }, "not a plain file");
    expectRefusal (host, render ({ "--save-state", "nowhere/x.xml" }), "nowhere");
}

TEST (HostRender, RefusesUnknownParametersAndTexts)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 1000);

    expectRefusal (host, render ({ "--set", "lp_frq=0.5" }), "there is no parameter \"lp_frq\"");
    expectRefusal (host, render ({ "--set", "hp_mode=20 dB/oct" }), "\"24 dB/oct\"");
    expectRefusal (host, render ({ "--set", "hp_freq=1.5" }), "hp_freq");
    expectRefusal (host, render ({ "--set", "hp_freq" }), "not of the form id=text");
    expectRefusal (host, render ({ "--automate", "hp_freq@x=1" }), "not a time in seconds");
    expectRefusal (host, render ({ "--automate", "nothing@0=1" }), "nothing");
}

TEST (HostRender, RefusesNumbersThatMakeNoSense)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 1000);

    for (const auto* tempo : { "0", "-5", "nan", "1e9", "fast" })
        expectRefusal (host, render ({ "--tempo", tempo }), "--tempo");

    for (const auto* size : { "0", "-1", "2000000", "random", "random:", "random:x", "64x" })
        expectRefusal (host, render ({ "--block-size", size }), "--block-size");

    for (const auto* signature : { "4", "4/0", "/4", "a/b", "4/4/4" })
        expectRefusal (host, render ({ "--time-signature", signature }), "--time-signature");

    for (const auto* channels : { "0", "3", "two" })
        expectRefusal (host, render ({ "--channels", channels }), "--channels");

    expectRefusal (host, render ({ "--no-transport", "--tempo", "100" }), "--no-transport");
    expectRefusal (host, render ({ "--start-beat", "inf" }), "--start-beat");
}

TEST (HostRender, RefusesFilesThatAreNoModuleOrSettings)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 1000);
    ASSERT_TRUE (host.file ("empty.vst3").createDirectory());

    expectRefusal (host, render ({ "--plugin", "missing.vst3" }), "there is no such module");
    expectRefusal (host, render ({ "--plugin", "in.wav" }), "not a VST3 module");
    expectRefusal (host, render ({ "--plugin", "empty.vst3" }), "not a VST3 module for this system");
    expectRefusal (host, render ({ "--state", "missing.xml" }), "missing.xml: there is no such file");
    expectRefusal (host, render ({ "--state", "in.wav" }), "in.wav: holds no settings");
}

TEST (HostRender, RefusesAModuleWhoseLibraryIsDamaged)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 1000);
    const auto copy = host.file ("Kestrin Tamsile Filter.vst3");
    ASSERT_TRUE (ModuleUnderTest::file().copyDirectoryTo (copy));

    for (const auto& library : copy.findChildFiles (juce::File::findFiles, true, "*.so"))
        ASSERT_TRUE (library.replaceWithText ("This is not a library."));

    expectRefusal (host, render ({ "--plugin", "Kestrin Tamsile Filter.vst3" }), "Kestrin Tamsile Filter.vst3: ");
    expectRefusal (host, { "identity", "--plugin", "Kestrin Tamsile Filter.vst3" }, "cannot be loaded");
}

TEST (HostRender, ReplacesItsOutputsUnlessItIsForbidden)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 1000);
    const auto careful = render ({ "--save-state", "end.xml", "--no-force" });

    host.file ("out.wav").replaceWithText ("older");
    expectRefusal (host, careful, "out.wav is there already; --force replaces it");
    EXPECT_EQ (host.file ("out.wav").loadFileAsString(), "older");

    host.file ("out.wav").deleteFile();
    host.file ("end.xml").replaceWithText ("older");
    expectRefusal (host, careful, "end.xml is there already; --force replaces it");
    EXPECT_EQ (host.file ("end.xml").loadFileAsString(), "older");

    EXPECT_EQ (host.run (render ({ "--save-state", "end.xml" })).exitCode, 0);
    EXPECT_NE (host.file ("end.xml").loadFileAsString(), "older");
}

TEST (HostRender, RingsOutOnlyIfItIsAsked)
{
    const HostProcess host;
    constexpr int numFrames = 1000, halfASecond = 22050;
    host.writeSound ("in.wav", 2, numFrames);
    const juce::StringArray peak ("--stopped", "--set", "lp_freq=0.3", "--set", "lp_reso=0.9");

    ASSERT_EQ (host.run (render (peak)).exitCode, 0);
    const auto plain = samplesOf (host.readSound ("out.wav"), 0);
    ASSERT_EQ (plain.size(), (std::size_t) numFrames);

    auto words = render (peak);
    words.addArray ({ "--tail", "0.5" });
    ASSERT_EQ (host.run (words).exitCode, 0);
    const auto longer = samplesOf (host.readSound ("out.wav"), 0);
    ASSERT_EQ (longer.size(), (std::size_t) (numFrames + halfASecond));
    EXPECT_TRUE (std::equal (plain.begin(), plain.end(), longer.begin()));

    // The filter's answer to what came before: loud at first, gone in the end.
    EXPECT_GT (std::abs (longer[numFrames]) + std::abs (longer[numFrames + 1]), 1.0e-3f);
    EXPECT_LT (std::abs (longer.back()), 1.0e-6f);

    for (const auto* tail : { "-1", "nan", "1e9", "long" })
        expectRefusal (host, render ({ "--tail", tail }), "--tail");
}

TEST (HostRender, WritesSamplesOf24BitsAsTheyAre)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 5000);

    // Every second sample of these has its lowest bit set: steps of 24 bits that 16 bits don't have.
    auto steps = host.readSound ("in.wav");

    for (int channel = 0; channel < 2; ++channel)
        for (int frame = 0; frame < 5000; ++frame)
            steps.setSample (channel, frame, steps.getSample (channel, frame) + (float) (frame % 2) / (1 << 23));

    writeSound (host.file ("in.wav"), Encoding::wav24, steps);
    ASSERT_EQ (samplesOf (host.readSound ("in.wav"), 1), samplesOf (steps, 1));

    for (const auto* output : { "out.flac", "out.wav" })
    {
        const auto result =
            host.run ({ "render", "--in", "in.wav", "--out", output, "--bits", "24", "--set", "byps=1" });
        ASSERT_EQ (result.exitCode, 0) << result.errors;

        const AudioSource source (host.file (output), 0);
        EXPECT_EQ (source.sampleRate(), 44100.0);
        EXPECT_EQ (samplesOf (host.readSound (output), 0), samplesOf (steps, 0)) << output;
        EXPECT_EQ (samplesOf (host.readSound (output), 1), samplesOf (steps, 1)) << output;
    }
}

TEST (HostRender, RoundsTo24BitsWithoutDither)
{
    const HostProcess host;
    host.writeSound ("in.wav", 1, 5000);
    ASSERT_EQ (host.run (render ({ "--set", "lp_freq=0.5" })).exitCode, 0);
    ASSERT_EQ (host.run ({ "render", "--in", "in.wav", "--out", "out.flac", "--set", "lp_freq=0.5" }).exitCode, 0);

    const auto exact = samplesOf (host.readSound ("out.wav"), 0), rounded = samplesOf (host.readSound ("out.flac"), 0);
    ASSERT_EQ (exact.size(), rounded.size());

    for (std::size_t i = 0; i < exact.size(); ++i)
        ASSERT_EQ (std::rint ((double) exact[i] * (1 << 23)), (double) rounded[i] * (1 << 23)) << i;
}

TEST (HostRender, SaysHowManySamplesItClips)
{
    const HostProcess host;
    juce::AudioBuffer<float> sound (1, 100);
    sound.clear();
    sound.setSample (0, 10, 1.5f);
    sound.setSample (0, 20, -1.25f);
    sound.setSample (0, 30, 1.0f);
    writeSound (host.file ("in.wav"), Encoding::wavFloat, sound);

    const auto result = host.run ({ "render", "--in", "in.wav", "--out", "out.flac", "--set", "byps=1" });
    EXPECT_EQ (result.exitCode, 0);
    EXPECT_TRUE (result.errors.contains ("out.flac: 2 samples over full scale were clipped")) << result.errors;

    const auto written = host.readSound ("out.flac");
    EXPECT_EQ (written.getSample (0, 10), 1.0f - 1.0f / (1 << 23));
    EXPECT_EQ (written.getSample (0, 20), -1.0f);
    EXPECT_EQ (written.getSample (0, 30), 1.0f - 1.0f / (1 << 23));

    EXPECT_EQ (host.run ({ "render", "--in", "in.wav", "--out", "out.wav", "--set", "byps=1" }).errors, "");
}

TEST (HostRender, ReadsFlacAndOgg)
{
    const HostProcess host;
    host.writeSound ("in.wav", 2, 30000);
    const auto sound = host.readSound ("in.wav");
    writeSound (host.file ("in.flac"), Encoding::flac24, sound);
    writeOgg (host.file ("in.ogg"), sound);

    ASSERT_EQ (host.run (render ({ "--set", "byps=1" }, "in.flac")).exitCode, 0);
    EXPECT_EQ (samplesOf (host.readSound ("out.wav"), 1), samplesOf (sound, 1));

    // Ogg keeps noise only nearly as it is: what was lost is the smaller part.
    ASSERT_EQ (host.run (render ({ "--set", "byps=1" }, "in.ogg")).exitCode, 0);
    const auto decoded = host.readSound ("out.wav");
    ASSERT_EQ (decoded.getNumSamples(), sound.getNumSamples());
    double signal = 0.0, lost = 0.0;

    for (int frame = 0; frame < sound.getNumSamples(); ++frame)
    {
        signal += std::pow ((double) sound.getSample (1, frame), 2.0);
        lost += std::pow ((double) (sound.getSample (1, frame) - decoded.getSample (1, frame)), 2.0);
    }

    EXPECT_LT (lost, 0.5 * signal);
}

TEST (HostRender, ReportsItsProgressInPercentIfItIsAsked)
{
    const HostProcess host;
    host.writeSound ("in.wav", 1, 5120);
    const auto lines = juce::StringArray::fromLines (host.run (render ({ "--report-progress" })).output.trimEnd());

    // Ten blocks.
    ASSERT_EQ (lines.size(), 10);
    EXPECT_EQ (lines[0], "10 %");
    EXPECT_EQ (lines[9], "100 %");
}

TEST (HostRender, KeepsAnOlderFileWhenItRefuses)
{
    const HostProcess host;
    host.file ("out.wav").replaceWithText ("older");
    expectRefusal (host, render ({}, "missing.wav"), "missing.wav");
    EXPECT_EQ (host.file ("out.wav").loadFileAsString(), "older");
}

TEST (HostRender, LeavesNothingBehindWhenItIsInterrupted)
{
    const HostProcess host;

    // Minutes of work at one frame per block: the interrupt falls into the middle of it.
    host.writeSound ("in.wav", 2, 44100 * 120);
    host.file ("out.wav").replaceWithText ("older");

    const auto isWriting = [&host]
    { return host.files().joinIntoString (" ").contains (".partial") && host.files().size() == 3; };
    const auto result = host.runAndInterrupt (render ({ "--block-size", "1", "--set", "lfo1T_lpf=+50" }), isWriting);

    EXPECT_EQ (result.exitCode, interrupted) << result.errors;
    EXPECT_EQ (result.errors, "kestrin-host: interrupted, nothing was written\n");
    EXPECT_EQ (host.files(), juce::StringArray ("in.wav", "out.wav"));
    EXPECT_EQ (host.file ("out.wav").loadFileAsString(), "older");
}

TEST (HostCommandLine, ExplainsItselfOnRequest)
{
    const HostProcess host;

    for (const auto* command : { "render", "play", "parameters", "identity", "state", "preset", "window" })
    {
        const auto result = host.run ({ command, "--help" });
        EXPECT_EQ (result.exitCode, 0);
        EXPECT_TRUE (result.output.contains ("--plugin")) << command;
    }

    EXPECT_TRUE (host.run ({ "--help" }).output.contains ("Exit codes"));
}

TEST (HostCommandLine, RefusesUnknownCommandsAndOptions)
{
    const HostProcess host;

    expectRefusal (host, {}, "name a command");
    expectRefusal (host, { "sing" }, "name a command: render, ");
    expectRefusal (host, { "rendre", "--in", "x" }, "\"rendre\" is no command: did you mean \"render\"?");
    expectRefusal (host, { "render" }, "--in is required");
    expectRefusal (host, { "parameters", "--loud" }, "--loud");
    expectRefusal (host, { "parameters", "--json", "--markdown" }, "excludes");
    expectRefusal (host, { "window" }, "give --out for a picture, or --keep-open");
    expectRefusal (host, { "window", "--keep-open", "--out", "window.png" }, "excludes");
    expectRefusal (host, { "window", "--report-changes", "--out", "window.png" }, "requires --keep-open");
}

TEST (HostCommandLine, ListsParametersAsTableMarkdownAndJson)
{
    const HostProcess host;
    const auto table = host.run ({ "parameters", "--set", "lp_freq=440 Hz" });
    EXPECT_TRUE (table.output.contains ("lp_freq     Lowpass frequency     20 kHz        440 Hz")) << table.output;

    const auto page = host.run ({ "parameters", "--markdown" });
    EXPECT_TRUE (
        page.output.contains ("| 3 | `hp_mode` | Highpass mode | 12 dB/oct | 0.2222 | bypass (0.0000), "
                              "6 dB/oct (0.1111), 12 dB/oct (0.2222), 24 dB/oct (0.3333), 48 dB/oct (0.4444) |"));
    EXPECT_FALSE (page.output.contains ("byps"));

    const auto list = juce::JSON::parse (host.run ({ "parameters", "--json" }).output);
    ASSERT_EQ (list.size(), 56);
    EXPECT_EQ (list[30]["id"].toString(), "filtmode");
    EXPECT_EQ (list[30]["choices"][1]["text"].toString(), "Grunge Ladder");
}

TEST (HostCommandLine, GivesTheIdentityAsJson)
{
    const HostProcess host;
    const auto identity = juce::JSON::parse (host.run ({ "identity", "--json" }).output);

    EXPECT_EQ (identity["vendor"].toString(), "Kestrin");
    EXPECT_EQ (identity["classes"].size(), 3);
}
