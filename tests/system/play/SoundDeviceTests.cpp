// SPDX-License-Identifier: AGPL-3.0-or-later
// The program with sound devices that need no hardware.
#include <algorithm>
#include <csignal>
#include <set>
#include <tuple>

#include <gtest/gtest.h>

#include "module/ModuleUnderTest.h"
#include "support/SoundFiles.h"
#include "system/play/JackServer.h"
#include "system/play/LiveHost.h"

namespace
{
constexpr int refused = 2;

/** Of the sound; a session may hear it more than once. */
constexpr int numFrames = 20000;

/** Something moves in it, so that a frame at another place would sound otherwise. */
const juce::StringArray settings { "--set", "lp_freq=0.5", "--set", "lfo1T_lpf=+50", "--set", "seq1_lpf=-100" };

/** ALSA with these devices and no other. They take blocks as fast as they come. */
class Alsa : public testing::Test
{
protected:
    Alsa()
    {
        folder.writeSound ("in.wav", 2, numFrames);
        folder.file ("alsa.conf")
            .replaceWithText ("pcm.nothing { type null hint { show on description \"Nothing\" } }\n"
                              "pcm.tape { type file slave.pcm nothing format raw file \"tape.raw\" hint { show on "
                              "description \"Tape\" } }\n"
                              "pcm.busy { type busy hint { show on description \"Taken\" } }\n"
                              "pcm_type.busy { lib \"" KESTRIN_BUSY_DEVICE "\" open \"_snd_pcm_busy_open\" }\n");
    }

    /** Plays the file without a terminal. */
    [[nodiscard]] HostProcess::Result play (const juce::StringArray& arguments) const
    {
        juce::StringArray words ("--in", "in.wav");
        words.addArray (arguments);
        return playAnything (words);
    }

    [[nodiscard]] HostProcess::Result playAnything (const juce::StringArray& arguments) const
    {
        juce::StringArray words ("play", "--no-window");
        words.addArray (arguments);
        auto options = folder.options (words);
        options.inputFile = "/dev/null";
        options.variables.insert (options.variables.end(), variables().begin(), variables().end());
        ChildProcess process (options);
        return folder.finish (process);
    }

    [[nodiscard]] const LiveHost::Variables& variables() const { return environment; }

    /** What render makes of the same sound, with the song that play plays. */
    [[nodiscard]] juce::AudioBuffer<float> rendered (int blockSize) const
    {
        juce::StringArray words ("render", "--in", "in.wav", "--out", "rendered.wav", "--force", "--start-beat", "32");
        words.addArray (settings);
        words.addArray ({ "--block-size", juce::String (blockSize) });
        EXPECT_EQ (folder.run (words).exitCode, 0);
        return folder.readSound ("rendered.wav");
    }

    /** Our own line; a library may have words of its own. */
    [[nodiscard]] static juce::StringArray ourLines (const juce::String& errors)
    {
        auto lines = juce::StringArray::fromLines (errors.trimEnd());

        for (int index = lines.size(); --index >= 0;)
            if (! lines[index].startsWith ("kestrin-host: "))
                lines.remove (index);

        return lines;
    }

    void expectRefusal (const juce::StringArray& arguments, const juce::StringArray& fragments) const
    {
        SCOPED_TRACE (arguments.joinIntoString (" ").toStdString());
        const auto before = folder.files();
        const auto result = play (arguments);
        const auto lines = ourLines (result.errors);

        EXPECT_EQ (result.exitCode, refused);
        EXPECT_EQ (result.output, "");
        ASSERT_EQ (lines.size(), 1) << result.errors;

        for (const auto& fragment : fragments)
            EXPECT_TRUE (lines[0].contains (fragment)) << lines[0];

        EXPECT_EQ (folder.files(), before);
    }

    const HostProcess folder;

private:
    const LiveHost::Variables environment { { "ALSA_CONFIG_PATH",
                                              folder.file ("alsa.conf").getFullPathName().toStdString() },
                                            { "JACK_DEFAULT_SERVER", "kestrin-none" } };
};

void expectSameSound (const juce::AudioBuffer<float>& heard, const juce::AudioBuffer<float>& expected)
{
    ASSERT_EQ (heard.getNumChannels(), expected.getNumChannels());
    ASSERT_GE (heard.getNumSamples(), expected.getNumSamples());

    for (int channel = 0; channel < expected.getNumChannels(); ++channel)
    {
        auto samples = samplesOf (heard, channel);
        samples.resize ((std::size_t) expected.getNumSamples());
        EXPECT_EQ (samples, samplesOf (expected, channel));
    }
}

const juce::String devices ("the devices are ALSA: Nothing | ALSA: Tape | ALSA: Taken");
} // namespace

TEST_F (Alsa, ListsTheDevices)
{
    const auto result = play ({ "--list-devices" });
    EXPECT_EQ (result.exitCode, 0);
    EXPECT_EQ (result.output, "ALSA: Nothing\nALSA: Tape\nALSA: Taken\n");
}

TEST_F (Alsa, RecordsWhatRenderGivesBitForBit)
{
    for (const auto blockSize : { 64, 512, 1024 })
    {
        juce::StringArray words ("--record", "heard.wav", "--seconds", "1", "--device", "Nothing");
        words.addArray (settings);
        words.addArray ({ "--block-size", juce::String (blockSize) });
        const auto result = play (words);

        ASSERT_EQ (result.exitCode, 0) << result.errors;
        EXPECT_EQ (folder.readSound ("heard.wav").getNumSamples(), 44100);
        expectSameSound (folder.readSound ("heard.wav"), rendered (blockSize));
    }
}

TEST_F (Alsa, SendsToTheDeviceWhatItRecords)
{
    const auto result =
        play ({ "--record", "heard.wav", "--seconds", "0.3", "--device", "tape", "--set", "lp_reso=0.2" });
    ASSERT_EQ (result.exitCode, 0) << result.errors;
    const auto heard = folder.readSound ("heard.wav");

    juce::MemoryBlock tape;
    ASSERT_TRUE (folder.file ("tape.raw").loadFileAsData (tape));
    const auto* const samples = static_cast<const float*> (tape.getData());
    const auto numFrames = (int) (tape.getSize() / sizeof (float) / 2);
    std::vector<float> left;

    for (int frame = 0; frame < numFrames; ++frame)
        left.push_back (samples[2 * frame]);

    // Before the first block the device was given silence, and after the last one, too.
    const auto expected = samplesOf (heard, 0);
    EXPECT_NE (std::search (left.begin(), left.end(), expected.begin(), expected.end()), left.end());
}

TEST_F (Alsa, ResamplesASoundThatHasAnotherRateThanTheDevice)
{
    const auto result = play ({ "--record", "heard.wav", "--seconds", "1", "--rate", "96000", "--device", "Nothing" });
    ASSERT_EQ (result.exitCode, 0) << result.errors;
    EXPECT_TRUE (result.output.contains ("96000 Hz from 44100 Hz")) << result.output;
    EXPECT_EQ (folder.readSound ("heard.wav").getNumSamples(), 96000);
}

TEST_F (Alsa, PlaysTheLoopOfItsOwnOrAStemOfIt)
{
    std::set<std::vector<float>> sounds;

    for (const auto& stem : { juce::StringArray(), juce::StringArray ("--stem", "drums"),
                              juce::StringArray ("--stem", "chords"), juce::StringArray ("--stem", "bass") })
    {
        juce::StringArray words ("--record", "heard.wav", "--seconds", "0.2", "--device", "Nothing");
        words.addArray (stem);
        const auto result = playAnything (words);
        ASSERT_EQ (result.exitCode, 0) << result.errors;
        sounds.insert (samplesOf (folder.readSound ("heard.wav"), 0));
    }

    EXPECT_EQ (sounds.size(), 4u);
    const auto both = play ({ "--stem", "drums" });
    EXPECT_EQ (both.exitCode, refused);
    EXPECT_TRUE (both.errors.contains ("excludes")) << both.errors;
}

TEST_F (Alsa, PrintsPlainLinesWithoutATerminal)
{
    const auto result = play ({ "--seconds", "1", "--device", "Nothing" });
    ASSERT_EQ (result.exitCode, 0) << result.errors;
    EXPECT_FALSE (result.output.containsAnyOf ("\r\033")) << result.output;
    EXPECT_TRUE (result.output.contains ("ALSA: Nothing, 44100 Hz, blocks of 512 frames\n")) << result.output;
    EXPECT_TRUE (result.output.contains ("dropouts 0\n")) << result.output;
}

TEST_F (Alsa, RefusesWhatADeviceCannotDoInOneLineThatNamesTheDevices)
{
    expectRefusal ({ "--device", "speaker" }, { "there is no \"speaker\"", devices });
    expectRefusal ({ "--device", "T" }, { "\"T\" may be more than one", devices });
    expectRefusal ({ "--device", "Taken" }, { "ALSA: Taken cannot be opened: it is busy, or not there", devices });
    expectRefusal ({ "--device", "Nothing", "--rate", "12345" }, { "--rate", "takes 12000 or 16000 Hz", devices });
    expectRefusal ({ "--device", "Nothing", "--block-size", "500" },
                   { "--block-size", "takes 480 or 512 frames", devices });
}

TEST_F (Alsa, RefusesFilesAndNamesThatItCannotUse)
{
    const juce::StringArray toNothing ("--device", "Nothing", "--seconds", "0.1");

    for (const auto& [option, value, fragment] :
         { std::tuple ("--record", "nowhere/heard.wav", "nowhere"),
           std::tuple ("--save-state", "nowhere/x.xml", "nowhere"),
           std::tuple ("--preset", "No Such", "there is no factory preset \"No Such\"; there are "),
           std::tuple ("--preset", "missing.vstpreset", "missing.vstpreset: there is no such file"),
           std::tuple ("--set", "nix=1", "there is no parameter") })
    {
        auto words = toNothing;
        words.addArray ({ option, value });
        expectRefusal (words, { fragment });
    }
}

TEST_F (Alsa, SaysHowToPlayWithoutADisplay)
{
    auto options = folder.options ({ "play", "--in", "in.wav", "--device", "Nothing" });
    options.inputFile = "/dev/null";
    options.variables.insert (options.variables.end(), variables().begin(), variables().end());
    options.variables.push_back ({ "DISPLAY", "" });
    ChildProcess process (options);
    const auto result = folder.finish (process);

    EXPECT_EQ (result.exitCode, refused);
    ASSERT_EQ (ourLines (result.errors).size(), 1) << result.errors;
    EXPECT_TRUE (result.errors.contains ("--no-window plays without it")) << result.errors;
}

TEST_F (Alsa, LeavesAnOrdinaryTerminalEvenWhenItCrashes)
{
    LiveHost live (folder, { "--no-window", "--in", "in.wav", "--device", "Nothing" }, variables());
    ASSERT_TRUE (live.waitForStatus ("playing")) << live.errors();
    EXPECT_FALSE (live.terminalIsOrdinary());
    live.signal (SIGSEGV);

    EXPECT_EQ (live.end(), 128 + SIGSEGV);
    EXPECT_TRUE (live.terminalIsOrdinary());
}

//======================================================================================================================
namespace
{
class Jack : public Alsa
{
protected:
    /** A session at a terminal, in real time, that records. */
    [[nodiscard]] std::unique_ptr<LiveHost> start (const juce::StringArray& arguments = {}) const
    {
        juce::StringArray words ("--no-window", "--in", "in.wav", "--record", "heard.wav");
        words.addArray (settings);
        words.addArray (arguments);
        return std::make_unique<LiveHost> (folder, words,
                                           LiveHost::Variables { { "JACK_DEFAULT_SERVER", server.name() } });
    }

    JackServer server;
};
} // namespace

TEST_F (Jack, RecordsWhatRenderGivesBitForBit)
{
    const auto live = start ({ "--seconds", "1" });
    ASSERT_EQ (live->end(), 0) << live->errors();
    EXPECT_EQ (folder.readSound ("heard.wav").getNumSamples(), JackServer::sampleRate);
    expectSameSound (folder.readSound ("heard.wav"), rendered (JackServer::blockSize));
}

TEST_F (Jack, RefusesARateAndABlockSizeThatTheServerDoesNotRunAt)
{
    for (const auto& [option, value, fragment] :
         { std::tuple ("--rate", "48000", "JACK: system takes 44100 Hz"),
           std::tuple ("--block-size", "512", "JACK: system takes 256 frames") })
    {
        const auto live = start ({ "--device", "JACK", option, value });
        EXPECT_EQ (live->end(), refused);
        ASSERT_EQ (ourLines (live->errors()).size(), 1) << live->errors();
        EXPECT_TRUE (live->errors().contains (fragment)) << live->errors();
    }
}

TEST_F (Jack, KeepsTheRecordingAndSaysSoWhenTheServerGoes)
{
    const auto live = start();
    ASSERT_TRUE (live->waitForSound (numFrames)) << live->errors();
    server.stop();

    EXPECT_EQ (live->end(), refused);
    ASSERT_EQ (ourLines (live->errors()).size(), 1) << live->errors();
    EXPECT_TRUE (live->errors().contains ("JACK: system has gone")) << live->errors();
    EXPECT_TRUE (live->terminalIsOrdinary());
    expectSameSound (folder.readSound ("heard.wav"), rendered (JackServer::blockSize));
}

TEST_F (Jack, CountsTheDropoutsOfAProgramThatIsHeldUp)
{
    const auto live = start();
    ASSERT_TRUE (live->waitUntil ([&] { return live->dropouts() >= 0; })) << live->errors();
    const auto before = live->dropouts();

    // Eight blocks long, again and again until it has hit.
    EXPECT_TRUE (live->waitUntil (
        [&]
        {
            live->signal (SIGSTOP);
            juce::Thread::sleep (50);
            live->signal (SIGCONT);
            return live->dropouts() > before;
        }))
        << live->status();

    live->press ("q");
    EXPECT_EQ (live->end(), 0) << live->errors();
}

TEST_F (Jack, EndsInGoodOrderWithCtrlCAndWithASignalOfTheSystem)
{
    for (const auto number : { SIGINT, SIGTERM, SIGHUP })
    {
        const auto live = start ({ "--save-state", "end.xml" });
        ASSERT_TRUE (live->waitForSound (numFrames)) << live->errors();
        EXPECT_FALSE (live->terminalIsOrdinary());
        live->signal (number);

        EXPECT_EQ (live->end(), 0) << live->errors();
        EXPECT_TRUE (live->terminalIsOrdinary());
        EXPECT_TRUE (folder.file ("end.xml").loadFileAsString().contains ("lp_freq=\"0.5000\""));
        expectSameSound (folder.readSound ("heard.wav"), rendered (JackServer::blockSize));
        folder.file ("heard.wav").deleteFile();
    }
}
