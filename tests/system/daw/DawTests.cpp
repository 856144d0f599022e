// SPDX-License-Identifier: AGPL-3.0-or-later
#include <cmath>

#include <gtest/gtest.h>

#include "host/HostError.h"
#include "host/PluginState.h"
#include "support/SoundFiles.h"
#include "system/daw/Ardour.h"
#include "system/daw/ReferenceSong.h"

namespace
{
namespace Index = reference::Index;

constexpr int numFrames = 2 * (int) Ardour::sampleRate;

juce::AudioBuffer<float> makeNoise (int numChannels = 2)
{
    juce::Random random (1);
    juce::AudioBuffer<float> sound (numChannels, numFrames);

    for (int frame = 0; frame < numFrames; ++frame)
        for (int channel = 0; channel < numChannels; ++channel)
            sound.setSample (channel, frame, random.nextFloat() - 0.5f);

    return sound;
}

Ardour::Song songOf (std::vector<std::pair<int, float>> positions)
{
    Ardour::Song song;
    song.sound = makeNoise();
    song.positions = std::move (positions);
    return song;
}

const std::vector<std::pair<int, float>> darkAndResonant { { Index::hpFreq, 0.2f },
                                                           { Index::hpReso, 0.6f },
                                                           { Index::lpFreq, 0.55f },
                                                           { Index::lpReso, 0.7f },
                                                           { Index::lpMode, 0.3333f } };

//======================================================================================================================
// Measurements of a sound

int numDiffering (const juce::AudioBuffer<float>& one, const juce::AudioBuffer<float>& other, int otherStart = 0)
{
    int number = 0;

    for (int frame = 0; frame < one.getNumSamples(); ++frame)
        for (int channel = 0; channel < one.getNumChannels(); ++channel)
            if (! juce::exactlyEqual (one.getSample (channel, frame), other.getSample (channel, otherStart + frame)))
                ++number;

    return number;
}

double levelDb (const juce::AudioBuffer<float>& sound, int channel)
{
    return juce::Decibels::gainToDecibels ((double) sound.getRMSLevel (channel, 0, sound.getNumSamples()));
}

/** The level of the differences from frame to frame: high frequencies count most. */
double brightnessDb (const juce::AudioBuffer<float>& sound, int channel)
{
    juce::AudioBuffer<float> steps (1, sound.getNumSamples() - 1);

    for (int frame = 0; frame < steps.getNumSamples(); ++frame)
        steps.setSample (0, frame, sound.getSample (channel, frame + 1) - sound.getSample (channel, frame));

    return levelDb (steps, 0);
}

/** Equal bits prove nothing if the sound is silent or has not been filtered. */
void expectFilteredNoise (const juce::AudioBuffer<float>& heard)
{
    const auto noise = makeNoise();
    ASSERT_EQ (heard.getNumChannels(), 2);
    ASSERT_EQ (heard.getNumSamples(), numFrames);

    for (int channel = 0; channel < 2; ++channel)
    {
        EXPECT_GT (levelDb (heard, channel), -60.0);
        EXPECT_LT (brightnessDb (heard, channel), brightnessDb (noise, channel) - 6.0);
    }

    EXPECT_GT (numDiffering (heard, noise), numFrames);
}

void expectTheReferenceEnginesBits (const Ardour::Song& song, const juce::AudioBuffer<float>& heard)
{
    const auto match = ReferenceSong (song).bestMatch (heard);
    EXPECT_EQ (match.numSame, heard.getNumSamples())
        << "at best, with " << match.framesBefore << " frames before the sound";
}

//======================================================================================================================
/** The settings text in a preset, without date, user and host. */
juce::String lastingSettings (const juce::MemoryBlock& preset)
{
    juce::String text;
    const auto bytes = std::string (static_cast<const char*> (preset.getData()), preset.getSize());
    const auto begin = bytes.find ("<settings "), end = bytes.find ("/>", begin);

    if (begin == std::string::npos || end == std::string::npos)
        return {};

    for (const auto& word : juce::StringArray::fromTokens (juce::String (bytes.substr (begin, end - begin)), " ", "\""))
        if (! word.startsWith ("date_modified=") && ! word.startsWith ("username=") && ! word.startsWith ("daw="))
            text << word << "\n";

    return text;
}

std::string settingOf (const juce::String& settings, const std::string& id)
{
    return settings.fromFirstOccurrenceOf ("\n" + juce::String (id) + "=\"", false, false)
        .upToFirstOccurrenceOf ("\"", false, false)
        .toStdString();
}
} // namespace

//======================================================================================================================
/** One Ardour for all tests: the scan is done once, every test makes a session of its own. */
class InArdour : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        try
        {
            shared = std::make_unique<Ardour>();
        }
        catch (const HostError& error)
        {
            problem = error.what();
        }
    }

    static void TearDownTestSuite() { shared.reset(); }

    void SetUp() override { ASSERT_NE (shared, nullptr) << problem; }

    static Ardour& ardour() { return *shared; }

    static juce::AudioBuffer<float> makeAndRender (const Ardour::Song& song)
    {
        ardour().make (song);
        return ardour().render();
    }

    /** The same sound through kestrin-host: the settings are those that Ardour has saved, silence comes before. */
    static juce::AudioBuffer<float> renderInHost (const Ardour::Song& song, int framesBefore,
                                                  const juce::StringArray& automation)
    {
        juce::AudioBuffer<float> whole (2, framesBefore + numFrames);
        whole.clear();

        for (int channel = 0; channel < 2; ++channel)
            whole.copyFrom (channel, framesBefore, song.sound, channel, 0, numFrames);

        ardour().writeSound (ardour().file ("whole.wav"), whole);
        const auto preset = ardour().savedPreset();
        ardour().file ("saved.vstpreset").replaceWithData (preset.getData(), preset.getSize());

        juce::StringArray arguments ("render", "--in", "whole.wav", "--out", "host.wav", "--state", "saved.vstpreset");

        for (const auto& lane : automation)
            arguments.addArray (juce::StringArray ("--automate", lane));

        ardour().runHost (arguments);
        return readSound (ardour().file ("host.wav"));
    }

private:
    static inline std::unique_ptr<Ardour> shared;
    static inline std::string problem;
};

TEST_F (InArdour, IsFoundByTheScanAsAStereoFilter)
{
    const auto found = ardour().scanResult();

    for (const auto* part : { "name=\"Kestrin Tamsile Filter\"", "vendor=\"Kestrin\"", "category=\"Fx|Filter\"",
                              "uid=\"ABCDEF019182FAEB4B74726E546D7338\"", "version=\"1.0.0\"", "n_inputs=\"2\"",
                              "n_outputs=\"2\"", "n_midi_inputs=\"0\"", "n_midi_outputs=\"0\"" })
        EXPECT_TRUE (found.contains (part)) << part << " in " << found;
}

TEST_F (InArdour, ShowsAllParametersInOrderWithTheirNamesAndDefaults)
{
    ardour().make (songOf ({}));
    const auto lines = ardour().reopen();
    const auto table = reference::parameterTable();
    ASSERT_EQ (lines.size(), Index::count + 1);

    for (int index = 0; index < Index::count; ++index)
    {
        const auto words = juce::StringArray::fromTokens (lines[index], "\t", "");
        const auto& expected = table[(std::size_t) index];
        EXPECT_EQ (words[1].toStdString(), expected.name);
        EXPECT_EQ (words[2].getFloatValue(), 0.0f) << expected.name;
        EXPECT_EQ (words[3].getFloatValue(), 1.0f) << expected.name;
        EXPECT_EQ (words[4].getFloatValue(), expected.defaultPosition) << expected.name;
    }

    EXPECT_TRUE (lines[Index::count].startsWith (juce::String (Index::count) + "\tBypass\t0\t1\t0\t0"))
        << lines[Index::count];
}

// If Ardour changed the sound by itself, every other test would have to allow for it.
TEST_F (InArdour, HearsASoundUnchangedWithoutThePlugin)
{
    auto song = songOf ({});
    song.withPlugin = false;
    EXPECT_EQ (numDiffering (makeAndRender (song), song.sound), 0);
}

TEST_F (InArdour, HearsASoundUnchangedWhileThePluginIsBypassed)
{
    auto song = songOf (darkAndResonant);
    song.bypassed = true;
    EXPECT_EQ (numDiffering (makeAndRender (song), song.sound), 0);
}

TEST_F (InArdour, FiltersWithTheBitsOfTheReferenceEngineAndTheOfflineHost)
{
    const auto song = songOf (darkAndResonant);
    const auto heard = makeAndRender (song);
    expectFilteredNoise (heard);

    const auto match = ReferenceSong (song).bestMatch (heard);
    ASSERT_EQ (match.numSame, numFrames) << "at best, with " << match.framesBefore << " frames before the sound";
    EXPECT_EQ (numDiffering (heard, renderInHost (song, match.framesBefore, {}), match.framesBefore), 0);
}

TEST_F (InArdour, MovesFreeLfosWithTheBitsOfTheReferenceEngine)
{
    const auto song = songOf ({ { Index::hpFreq, 0.2f },
                                { Index::lpFreq, 0.6f },
                                { Index::lpReso, 0.5f },
                                { Index::lfoToLpf (0), 0.8f },
                                { Index::lfoToHpf (1), 0.3f } });
    const auto heard = makeAndRender (song);
    expectFilteredNoise (heard);
    expectTheReferenceEnginesBits (song, heard);
}

TEST_F (InArdour, MovesALadderByStepsAndTempoWithTheBitsOfTheReferenceEngine)
{
    const auto song = songOf ({ { Index::filtMode, 0.1111f },
                                { Index::lpFreq, 0.5f },
                                { Index::lpReso, 0.8f },
                                { Index::seqHpf (0), 0.7f },
                                { Index::seqLpf (1), 0.2f },
                                { Index::lfoSync (0), 0.3333f },
                                { Index::lfoMode (0), 0.625f },
                                { Index::lfoToLpf (0), 0.9f } });
    const auto heard = makeAndRender (song);
    expectFilteredNoise (heard);
    expectTheReferenceEnginesBits (song, heard);
}

TEST_F (InArdour, FollowsAutomationWithTheBitsOfTheReferenceEngineAndTheOfflineHost)
{
    auto song = songOf ({ { Index::hpReso, 0.3f }, { Index::lpFreq, 0.3f }, { Index::lpMode, 0.2222f } });
    song.lanes = { { Index::lpFreq, { { 0, 0.3 }, { 5000, 0.3 }, { 20000, 0.6 }, { 40000, 0.6 }, { 41000, 0.2 } } },
                   { Index::lpMode, { { 0, 0.2222 }, { 5000, 0.2222 }, { 60000, 0.4444 } } } };

    const auto heard = makeAndRender (song);
    expectFilteredNoise (heard);
    const auto match = ReferenceSong (song).bestMatch (heard);
    ASSERT_EQ (match.numSame, numFrames) << "at best, with " << match.framesBefore << " frames before the sound";

    // The same lanes for kestrin-host: a jump at the beginning of every block.
    juce::StringArray lanes;

    for (const auto& [index, lane] : song.lanes)
    {
        juce::StringArray points;
        auto before = (float) lane.front().position;

        for (const auto& [first, length] : match.alignment.rollingBlocks (numFrames))
        {
            const auto seconds = juce::String ((match.framesBefore + first) / Ardour::sampleRate, 9);
            const auto position = ReferenceSong::positionAtEnd (lane, first + length);
            points.add (seconds + "=" + juce::String (before, 9));
            points.add (seconds + "=" + juce::String (position, 9));
            before = position;
        }

        lanes.add (juce::String (reference::parameterTable()[(std::size_t) index].id) + "@"
                   + points.joinIntoString (","));
    }

    EXPECT_EQ (numDiffering (heard, renderInHost (song, match.framesBefore, lanes), match.framesBefore), 0);
}

TEST_F (InArdour, ReopensAndSavesASessionUnchanged)
{
    std::vector<std::pair<int, float>> positions;

    for (int index = 0; index < Index::count; ++index)
        if (index != Index::link)
            positions.push_back ({ index, (float) (index + 1) / 64.0f });

    ardour().make (songOf (positions));
    const auto saved = ardour().savedPreset();
    const auto lines = ardour().reopen();
    const auto savedAgain = ardour().savedPreset();
    const auto settings = lastingSettings (saved);

    for (const auto& [index, position] : positions)
    {
        const auto text = juce::String (position, 4);
        EXPECT_EQ (settingOf (settings, reference::parameterTable()[(std::size_t) index].id), text.toStdString());
        EXPECT_EQ (juce::StringArray::fromTokens (lines[index], "\t", "")[5].getFloatValue(), text.getFloatValue())
            << lines[index];
    }

    EXPECT_EQ (lastingSettings (savedAgain), settings);
    EXPECT_EQ (savedAgain.getSize(), saved.getSize());
}

TEST_F (InArdour, SoundsTheSameAfterASessionIsReopenedAndSaved)
{
    const auto song = songOf (darkAndResonant);
    ardour().make (song);
    [[maybe_unused]] const auto lines = ardour().reopen();
    expectTheReferenceEnginesBits (song, ardour().render());
}

// Ardour leaves the plug-in its two channels on a mono track, and gives it silence for the second.
TEST_F (InArdour, FiltersAMonoTrackWithTheBitsOfTheReferenceEngineGivenASilentRight)
{
    auto song = songOf (darkAndResonant);
    song.sound = makeNoise (1);
    const auto heard = makeAndRender (song);

    song.sound.setSize (2, numFrames, true, true);
    expectTheReferenceEnginesBits (song, heard);
    EXPECT_GT (levelDb (heard, 0), -60.0);
}
