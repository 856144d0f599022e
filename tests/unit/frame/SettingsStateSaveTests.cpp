// SPDX-License-Identifier: AGPL-3.0-or-later
#include <ctime>
#include <fstream>
#include <limits>
#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "dsp/MainAudioProcessor.h"
#include "frame/HostPath.h"
#include "support/CommaLocale.h"
#include "support/PretendedHostPath.h"
#include "support/SettingsProbe.h"

namespace
{
std::string goldenText()
{
    std::ifstream file (std::string (KESTRIN_GOLDEN_DIR) + "/settings.xml");
    std::string line;
    std::getline (file, line);
    return line;
}

std::string withoutDate (const std::string& text) { return settings::pinned (text, "date_modified", "now"); }

std::string savedSampleRate (double sampleRate)
{
    MainAudioProcessor processor;
    processor.setRateAndBufferSizeDetails (sampleRate, 512);
    return settings::attribute (settings::savedText (processor), "samplerate");
}

/** A parameter without an id of its own, as a processor may have beside the others. */
struct NamelessParameter : juce::AudioProcessorParameter
{
    float getValue() const override { return 0.3f; }
    void setValue (float) override { ++numSets; }
    float getDefaultValue() const override { return 0.0f; }
    juce::String getName (int) const override { return "Nameless"; }
    juce::String getLabel() const override { return {}; }
    float getValueForText (const juce::String&) const override { return 0.0f; }

    int numSets = 0;
};
} // namespace

TEST (SettingsState, WritesItsTextIntoALittleEndianBlockThatEndsInZero)
{
    MainAudioProcessor processor;
    const auto block = settings::savedBlock (processor);
    const auto byte = [&block] (std::size_t index) { return (unsigned) (unsigned char) block[index]; };

    ASSERT_GT (block.size(), 9u);
    EXPECT_EQ (block.substr (0, 4), "VC2!");
    EXPECT_EQ (byte (4) | byte (5) << 8 | byte (6) << 16 | byte (7) << 24, block.size() - 9);
    EXPECT_EQ (byte (block.size() - 1), 0u);
    EXPECT_EQ (block.find ('\0', 8), block.size() - 1);
}

TEST (SettingsState, WritesTheGoldenText)
{
    MainAudioProcessor processor;
    settings::setAll (processor, settings::distinctValues());
    processor.setRateAndBufferSizeDetails (44100.0, 512);

    auto text = settings::savedText (processor);
    text = settings::pinned (text, "date_modified", "2024-10-27T12:37:24Z");
    text = settings::pinned (text, "daw", "Studio/App/app");
    text = settings::pinned (text, "username", "alice");

    EXPECT_EQ (text, goldenText());
}

TEST (SettingsState, NamesPluginVersionUserAndHost)
{
    MainAudioProcessor processor;
    const auto text = settings::savedText (processor);
    const auto host = juce::File::getSpecialLocation (juce::File::hostApplicationPath).getFullPathName();

    EXPECT_EQ (settings::attribute (text, "plugin"), "Kestrin Tamsile Filter");
    EXPECT_EQ (settings::attribute (text, "pluginversion"), "235");
    EXPECT_EQ (settings::attribute (text, "username"), juce::SystemStats::getLogonName().toStdString());
    EXPECT_EQ (settings::attribute (text, "daw"), hostTail (host.toStdString()));
    EXPECT_FALSE (settings::attribute (text, "daw").empty());
}

TEST (SettingsState, WritesAnEmptyAttributeForAHostPathWithoutADirectory)
{
    // Linux names no program without its folder; the root has as empty a tail as a bare name.
    constexpr auto* root = "/";
    ASSERT_EQ (hostTail (root), hostTail ("app"));

    SettingsProbe probe;
    const PretendedHostPath hostPath (root);
    const auto text = settings::savedText (probe);
    EXPECT_EQ (settings::attribute (text, "daw"), "") << text;
}

TEST (SettingsState, WritesTheMomentOfSavingInUtc)
{
    MainAudioProcessor processor;
    const auto before = std::time (nullptr);
    const auto text = settings::attribute (settings::savedText (processor), "date_modified");
    const auto after = std::time (nullptr);

    EXPECT_TRUE (std::regex_match (text, std::regex (R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ)"))) << text;

    std::tm fields {};
    ASSERT_NE (::strptime (text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &fields), nullptr);
    const auto saved = ::timegm (&fields);
    EXPECT_GE (saved, before);
    EXPECT_LE (saved, after);
}

TEST (SettingsState, WritesTheHostsSampleRateInWholeHertz)
{
    MainAudioProcessor processor;

    EXPECT_EQ (settings::attribute (settings::savedText (processor), "samplerate"), "0");
    EXPECT_EQ (savedSampleRate (44100.0), "44100");
    EXPECT_EQ (savedSampleRate (48000.9), "48000");
    // The host's own rate, also where the engine would not take it over.
    EXPECT_EQ (savedSampleRate (500.0), "500");
}

TEST (SettingsState, WritesZeroForASampleRateThatNoIntHolds)
{
    using Limits = std::numeric_limits<double>;

    for (const auto rate :
         { Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 1.0e12, -1.0e12, 2147483648.0 })
        EXPECT_EQ (savedSampleRate (rate), "0") << rate;

    EXPECT_EQ (savedSampleRate (2147483647.0), "2147483647");
}

TEST (SettingsState, WritesTheSwitchAsZeroOrOne)
{
    MainAudioProcessor processor;
    EXPECT_EQ (settings::attribute (settings::savedText (processor), "link"), "0.0000");

    processor.parameters.link->setValueNotifyingHost (1.0f);
    EXPECT_EQ (settings::attribute (settings::savedText (processor), "link"), "1.0000");
}

TEST (SettingsState, RoundsValuesToFourDecimals)
{
    MainAudioProcessor processor;
    auto& parameter = static_cast<juce::AudioProcessorParameter&> (*processor.parameters.hpFreq);

    for (const auto& [value, text] : { std::pair { 0.0f, "0.0000" },
                                       { 1.0f, "1.0000" },
                                       { 1.0f / 3.0f, "0.3333" },
                                       { 2.0f / 3.0f, "0.6667" },
                                       { 0.00004f, "0.0000" },
                                       { 0.00006f, "0.0001" },
                                       { 0.99996f, "1.0000" },
                                       { 0.03125f, "0.0312" } }) // exactly between two: to the even digit
    {
        parameter.setValue (value);
        EXPECT_EQ (settings::attribute (settings::savedText (processor), "hp_freq"), text);
    }
}

TEST (SettingsState, LeavesOutParametersWithoutAnId)
{
    SettingsProbe probe;
    auto* nameless = new NamelessParameter();
    probe.addParameter (nameless);

    const auto text = settings::savedText (probe);
    settings::loadText (probe, text);

    EXPECT_EQ (text.find ("0.3000"), std::string::npos);
    EXPECT_EQ (nameless->numSets, 0);
}

TEST (SettingsState, SavesTheSameTextAgainAfterALoad)
{
    MainAudioProcessor first, second;
    settings::setAll (first, settings::distinctValues());

    const auto saved = settings::savedText (first);
    settings::loadText (second, saved);
    EXPECT_EQ (withoutDate (settings::savedText (second)), withoutDate (saved));

    settings::loadText (first, saved);
    EXPECT_EQ (withoutDate (settings::savedText (first)), withoutDate (saved));
    EXPECT_EQ (withoutDate (settings::savedText (first)), withoutDate (saved));
}

TEST (SettingsState, RestoresTenThousandRandomStatesWithinHalfADigit)
{
    constexpr juce::int64 seed = 20240615;
    constexpr double halfADigit = 0.00005;
    // The value read back is rounded to the nearest float once more.
    constexpr double floatRounding = 3.0e-8;

    MainAudioProcessor first, second;
    juce::Random random (seed);

    for (int round = 0; round < 10000; ++round)
    {
        std::vector<float> values;

        for (int index = 0; index < 55; ++index)
            values.push_back (index == 6 ? (float) random.nextInt (2) : random.nextFloat());

        settings::setAll (first, values);
        settings::loadBlock (second, settings::savedBlock (first));
        const auto restored = settings::valuesOf (second);

        for (std::size_t index = 0; index < values.size(); ++index)
            ASSERT_NEAR ((double) restored[index], (double) values[index], halfADigit + floatRounding)
                << "seed " << seed << ", round " << round << ", parameter " << index;

        if (round % 100 == 0)
        {
            ASSERT_EQ (withoutDate (settings::savedText (second)), withoutDate (settings::savedText (first)));
        }
    }
}

TEST (SettingsState, WritesADecimalPointInAnyLocaleOfTheHost)
{
    MainAudioProcessor processor;
    settings::setAll (processor, settings::distinctValues());
    processor.setRateAndBufferSizeDetails (192000.0, 512);

    const auto usual = withoutDate (settings::savedText (processor));
    const CommaLocale comma;
    ASSERT_EQ (std::to_string (0.5), "0,500000");
    const auto inTheCommaLocale = settings::savedText (processor);

    EXPECT_EQ (withoutDate (inTheCommaLocale), usual);
    EXPECT_EQ (settings::attribute (inTheCommaLocale, "samplerate"), "192000");

    MainAudioProcessor other;
    settings::loadText (other, inTheCommaLocale);
    EXPECT_EQ (withoutDate (settings::savedText (other)), withoutDate (settings::pinned (usual, "samplerate", "0")));
    EXPECT_NEAR ((double) other.parameters.lpFreq->get(), 4.0 / 56.0, 0.00005);
}
