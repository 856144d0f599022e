// SPDX-License-Identifier: AGPL-3.0-or-later
// What the gallery says of the presets in figures, and what the manual promises of them.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <map>
#include <numbers>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>

#include "gallery/PresetSession.h"
#include "gallery/SoundFigures.h"

namespace
{
demo::Loop silence (double rate, double seconds)
{
    const std::vector<float> channel ((std::size_t) (rate * seconds));
    return { rate, channel, channel };
}

demo::Loop sine (double rate, double hertz, double level)
{
    auto loop = silence (rate, 4.0);

    for (std::size_t i = 0; i < loop.left.size(); ++i)
        loop.left[i] = (float) (level * std::sin (2.0 * std::numbers::pi * hertz * (double) i / rate));

    return loop;
}

/** The block of bytes inside a built preset. */
std::string stateIn (const juce::File& preset)
{
    std::ifstream file (preset.getFullPathName().toStdString(), std::ios::binary);
    const std::string bytes { std::istreambuf_iterator<char> (file), {} };
    return bytes.substr (std::min (bytes.find ("VC2!"), bytes.size()));
}
juce::String valueOf (const juce::File& written, const juce::String& key)
{
    juce::StringArray lines;
    written.readLines (lines);

    for (const auto& line : lines)
        if (line.upToFirstOccurrenceOf ("=", false, false).trim() == key)
            return line.fromFirstOccurrenceOf ("=", false, false).trim();

    return {};
}
} // namespace

// The standard's own example: a sine of 997 Hz at full scale on one side is -3.01 LUFS.
TEST (SoundFigures, GiveTheLoudnessThatTheStandardStatesAtEveryRate)
{
    for (const auto rate : { 44100.0, 48000.0, 96000.0 })
        EXPECT_NEAR (soundFigures::loudness (sine (rate, 997.0, 1.0)), -3.01, 0.02) << rate;
}

TEST (SoundFigures, CountTheLowestOctaveLessAndThePresenceMore)
{
    const auto reference = soundFigures::loudness (sine (48000.0, 997.0, 0.5));
    EXPECT_LT (soundFigures::loudness (sine (48000.0, 25.0, 0.5)), reference - 9.0);
    EXPECT_NEAR (soundFigures::loudness (sine (48000.0, 8000.0, 0.5)), reference + 3.3, 0.2);
}

TEST (SoundFigures, GiveThePeakInDecibelsOfFullScale)
{
    EXPECT_NEAR (soundFigures::peakDb (sine (44100.0, 997.0, 0.5)), -6.02, 0.01);
    EXPECT_LT (soundFigures::peakDb (silence (44100.0, 1.0)), -200.0);
}

TEST (SoundFigures, TellASteadyGainFromAMovingOne)
{
    const auto before = demo::render (*demo::findStem ("noise"));
    auto halved = before, wavering = before;

    for (std::size_t i = 0; i < before.left.size(); ++i)
        for (const auto channel : { &demo::Loop::left, &demo::Loop::right })
        {
            (halved.*channel)[i] *= 0.5f;
            (wavering.*channel)[i] *= i / 22050 % 2 == 0 ? 0.5f : 2.0f;
        }

    EXPECT_NEAR (soundFigures::compare (before, halved).changeDb, 6.02, 0.01);
    EXPECT_NEAR (soundFigures::compare (before, halved).motionDb, 0.0, 0.01);
    EXPECT_NEAR (soundFigures::compare (before, wavering).changeDb, 0.0, 0.2);
    EXPECT_NEAR (soundFigures::compare (before, wavering).motionDb, 6.02, 0.3);
}

TEST (PresetSession, LeavesTheSoundAloneWhereNothingIsFiltered)
{
    const auto loop = demo::render (demo::stems().front());
    const auto played =
        presetSession::play (stateIn (juce::File (KESTRIN_BUILT_PRESETS "/Starting Point.vstpreset")), loop);

    EXPECT_EQ (played.sound.left, loop.left);
    EXPECT_EQ (played.sound.right, loop.right);
}

//======================================================================================================================
/** The presets over one of the stems that they are judged on, which peak at -6 dBFS. */
class FactoryPresetLevels : public testing::TestWithParam<std::size_t>
{
};

TEST_P (FactoryPresetLevels, AreAtMostSixDecibelsLouderThanTheirSoundAndStayBelowFullScale)
{
    std::map<std::string_view, demo::Loop> loops;

    for (const auto& stem : demo::stems())
        loops[stem.name] = demo::render (stem);

    for (const auto& written :
         juce::File (KESTRIN_WRITTEN_PRESETS).findChildFiles (juce::File::findFiles, false, "*.txt"))
    {
        const auto name = valueOf (written, "name");
        const auto* const suited = demo::findStem (valueOf (written, "stem").toStdString());
        ASSERT_NE (suited, nullptr) << name;

        const auto& stem = *demo::stemsToJudgeOn (*suited)[GetParam()];
        const auto& before = loops[stem.name];
        const auto state = stateIn (juce::File (KESTRIN_BUILT_PRESETS).getChildFile (name + ".vstpreset"));
        const auto after = presetSession::play (state, before).sound;
        EXPECT_LT (soundFigures::peakDb (after), 0.0) << name << " over " << stem.name;
        EXPECT_LT (soundFigures::loudness (after) - soundFigures::loudness (before), 6.0)
            << name << " over " << stem.name;
    }
}

INSTANTIATE_TEST_SUITE_P (OverTheStemThatSuitsAndTwoOthers, FactoryPresetLevels, testing::Values (0u, 1u, 2u));
