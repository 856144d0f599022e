// SPDX-License-Identifier: AGPL-3.0-or-later
#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/MainAudioProcessor.h"
#include "support/CommaLocale.h"
#include "support/RunningAudio.h"
#include "support/SettingsProbe.h"

namespace
{
/** The position of hp_freq after a load of this value. Before, it has one that no case below gives. */
float loaded (const std::string& value)
{
    SettingsProbe probe;
    static_cast<juce::AudioProcessorParameter&> (*probe.set.hpFreq).setValue (0.625f);
    settings::loadText (probe, settings::element ("hp_freq=\"" + value + "\""));
    return probe.set.hpFreq->get();
}

/** The names of the attributes behind the parameters, in the order of the text. */
std::vector<std::string> extraNames (const std::string& text)
{
    const auto element = juce::parseXML (juce::String (text));
    std::vector<std::string> names;

    for (int index = 55; index < element->getNumAttributes(); ++index)
        names.push_back (element->getAttributeName (index).toStdString());

    return names;
}

struct HostListener : juce::AudioProcessorListener
{
    void audioProcessorParameterChanged (juce::AudioProcessor*, int, float) override { ++numCalls; }
    void audioProcessorChanged (juce::AudioProcessor*, const ChangeDetails&) override { ++numCalls; }

    int numCalls = 0;
};

struct SpyParameter : juce::AudioParameterFloat
{
    SpyParameter() : AudioParameterFloat (juce::ParameterID { "spy", 0 }, "Spy", 0.0f, 1.0f, 0.5f) {}
    void valueChanged (float) override { ++numSets; }

    int numSets = 0;
};
} // namespace

TEST (SettingsState, LoadsEveryParameterThatItNames)
{
    MainAudioProcessor saver, loader;
    settings::setAll (saver, settings::distinctValues());
    settings::loadText (loader, settings::savedText (saver));

    const auto values = settings::valuesOf (loader);

    for (std::size_t index = 0; index < values.size(); ++index)
        EXPECT_NEAR ((double) values[index], (double) settings::distinctValues()[index], 0.00005) << index;
}

TEST (SettingsState, ClampsValuesToTheirPositions)
{
    EXPECT_EQ (loaded ("1.5"), 1.0f);
    EXPECT_EQ (loaded ("-0.5"), 0.0f);
    EXPECT_EQ (loaded ("1e30"), 1.0f);
    EXPECT_EQ (loaded ("inf"), 1.0f);
    EXPECT_EQ (loaded ("-inf"), 0.0f);
    EXPECT_EQ (loaded ("1e300"), 1.0f);
}

TEST (SettingsState, ReadsUnreadableNumbersAsZero)
{
    for (const auto* text : { "loud", "nan", "", "  ", "-", ".", "e5", "--1", "#", "," })
        EXPECT_EQ (loaded (text), 0.0f) << text;
}

TEST (SettingsState, ReadsTheNumberAtTheStartOfAText)
{
    EXPECT_EQ (loaded ("0.75x"), 0.75f);
    EXPECT_EQ (loaded ("  0.25  "), 0.25f);
    EXPECT_EQ (loaded ("+0.5"), 0.5f);
    EXPECT_EQ (loaded (".5"), 0.5f);
    EXPECT_EQ (loaded ("25e-2"), 0.25f);
    EXPECT_EQ (loaded ("0.5 e9"), 0.5f);
    // A comma ends the number.
    EXPECT_EQ (loaded ("0,75"), 0.0f);
}

TEST (SettingsState, ReadsExponentsOfAnyLength)
{
    EXPECT_EQ (loaded ("1e99999999999999999999"), 1.0f);
    EXPECT_EQ (loaded ("1e-99999999999999999999"), 0.0f);
    EXPECT_EQ (loaded ("-1E+99999999999999999999"), 0.0f);
    EXPECT_EQ (loaded ("5e-000000000000000000001"), 0.5f);
    EXPECT_EQ (loaded (std::string (100000, '9') + "e2147483647"), 1.0f);
}

TEST (SettingsState, LeavesMissingParametersAtTheirPresentValues)
{
    MainAudioProcessor processor;
    const auto values = settings::distinctValues();
    settings::setAll (processor, values);
    settings::loadText (processor, settings::element (R"(lp_freq="0.5")"));

    auto wanted = values;
    wanted[3] = 0.5f;
    EXPECT_EQ (settings::valuesOf (processor), wanted);
}

TEST (SettingsState, SetsParametersAgainThatTheSettingsDoNotName)
{
    SettingsProbe probe;
    auto* spy = new SpyParameter();
    probe.addParameter (spy);
    settings::loadText (probe, settings::element (R"(hp_freq="0.5")"));

    EXPECT_EQ (spy->numSets, 1);
    EXPECT_EQ (spy->get(), 0.5f);
}

TEST (SettingsState, DoesNotTellTheHostWhatItHasLoaded)
{
    MainAudioProcessor processor;
    HostListener host;
    processor.addListener (&host);
    settings::loadText (processor, settings::element (R"(hp_freq="0.5" link="1.0")"));
    processor.removeListener (&host);

    EXPECT_EQ (host.numCalls, 0);
}

TEST (SettingsState, MatchesParameterNamesCaseSensitively)
{
    SettingsProbe probe;
    settings::loadText (probe, settings::element (R"(HP_FREQ="0.5" LFO1T_hpf="0.9")"));

    EXPECT_EQ (probe.set.hpFreq->get(), 0.0f);
    EXPECT_EQ (probe.set.lfoToHpFreq[0]->get(), 0.5f);
    EXPECT_EQ (probe.extraAttributes["HP_FREQ"], "0.5");
}

TEST (SettingsState, AcceptsItsTagInAnyCase)
{
    SettingsProbe probe;
    settings::loadText (probe, R"(<SETTINGS hp_freq="0.25"/>)");
    EXPECT_EQ (probe.set.hpFreq->get(), 0.25f);

    settings::loadText (probe, R"(<Settings hp_freq="0.5"/>)");
    EXPECT_EQ (probe.set.hpFreq->get(), 0.5f);
}

TEST (SettingsState, RefusesAnyOtherTag)
{
    SettingsProbe probe;
    probe.extraAttributes["kept"] = "yes";

    for (const auto* tag : { "setting", "settings2", "preset", "x-settings" })
        settings::loadText (probe, "<" + std::string (tag) + R"( hp_freq="0.5"/>)");

    EXPECT_EQ (probe.set.hpFreq->get(), 0.0f);
    EXPECT_EQ (probe.extraAttributes["kept"], "yes");
}

TEST (SettingsState, NeedsNoXmlDeclaration)
{
    SettingsProbe probe;
    settings::loadText (probe, R"(  <settings hp_freq='0.5'></settings>)");
    EXPECT_EQ (probe.set.hpFreq->get(), 0.5f);
}

TEST (SettingsState, IgnoresElementsAndTextInside)
{
    SettingsProbe probe;
    settings::loadText (
        probe, R"(<settings hp_freq="0.5">words &amp; more<hp_freq>0.9</hp_freq><settings hp_freq="0.1"/></settings>)");

    EXPECT_EQ (probe.set.hpFreq->get(), 0.5f);
    EXPECT_EQ (probe.extraAttributes.size(), 1u);
}

TEST (SettingsState, TakesTheFirstOfRepeatedParametersAndTheLastOfOtherRepeatedNames)
{
    SettingsProbe probe;
    settings::loadText (probe, settings::element (R"(hp_freq="0.25" other="1" hp_freq="0.75" other="2")"));

    EXPECT_EQ (probe.set.hpFreq->get(), 0.25f);
    EXPECT_EQ (settings::attribute (settings::savedText (probe), "other"), "2");
    EXPECT_EQ (settings::attribute (settings::savedText (probe), "hp_freq"), "0.2500");
}

TEST (SettingsState, KeepsUnknownAttributesInSortedOrderForTheNextSave)
{
    MainAudioProcessor processor;
    settings::loadText (processor,
                        settings::element (R"(zebra="1" hp_freq="0.5" ant="2" lynx="&lt;&quot;&gt;" Zebu="4")"));

    const auto text = settings::savedText (processor);

    EXPECT_EQ (extraNames (text), (std::vector<std::string> { "Zebu", "ant", "date_modified", "daw", "lynx", "plugin",
                                                              "pluginversion", "samplerate", "username", "zebra" }));
    EXPECT_EQ (settings::attribute (text, "lynx"), "&lt;&quot;&gt;");

    // And on to the one after that.
    MainAudioProcessor next;
    settings::loadText (next, text);
    EXPECT_EQ (settings::attribute (settings::savedText (next), "zebra"), "1");
}

TEST (SettingsState, ForgetsUnknownAttributesThatTheNextLoadDoesNotHave)
{
    MainAudioProcessor processor;
    settings::loadText (processor, settings::element (R"(zebra="1")"));
    settings::loadText (processor, settings::element (R"(lynx="2")"));

    const auto text = settings::savedText (processor);
    EXPECT_EQ (settings::attribute (text, "zebra"), "(none)");
    EXPECT_EQ (settings::attribute (text, "lynx"), "2");
}

TEST (SettingsState, DropsUnknownAttributesWithoutAValue)
{
    MainAudioProcessor processor;
    settings::loadText (processor, settings::element (R"(zebra="" lynx="2")"));

    const auto text = settings::savedText (processor);
    EXPECT_EQ (settings::attribute (text, "zebra"), "(none)");
    EXPECT_EQ (settings::attribute (text, "lynx"), "2");
}

TEST (SettingsState, WritesTheHostAgainAfterLoadingAnEmptyOne)
{
    SettingsProbe probe;
    const auto saved = settings::savedText (probe);

    settings::loadText (probe, settings::pinned (saved, "daw", ""));
    EXPECT_EQ (probe.extraAttributes.count ("daw"), 0u);
    EXPECT_EQ (settings::attribute (settings::savedText (probe), "daw"), settings::attribute (saved, "daw"));
}

TEST (SettingsState, IgnoresInformativeAttributesAndWritesThemAgain)
{
    MainAudioProcessor processor;
    settings::loadText (processor, settings::element (R"(hp_freq="0.5" plugin="Another" pluginversion="9999"
        date_modified="never" daw="nowhere" samplerate="12" username="nobody")"));

    EXPECT_EQ (processor.parameters.hpFreq->get(), 0.5f);
    EXPECT_EQ (processor.hostSampleRate, 96000.0);

    const auto text = settings::savedText (processor);
    EXPECT_EQ (settings::attribute (text, "plugin"), "Kestrin Tamsile Filter");
    EXPECT_EQ (settings::attribute (text, "pluginversion"), "235");
    EXPECT_EQ (settings::attribute (text, "samplerate"), "0");

    for (const auto* stale : { "never", "nowhere", "nobody" })
        EXPECT_EQ (text.find (stale), std::string::npos);
}

TEST (SettingsState, KeepsTheLoadedValuesOfParametersOnlyUntilTheNextSave)
{
    SettingsProbe probe;
    settings::loadText (probe, settings::element (R"(hp_freq="0.5")"));
    EXPECT_EQ (probe.extraAttributes["hp_freq"], "0.5");

    static_cast<juce::AudioProcessorParameter&> (*probe.set.hpFreq).setValue (0.75f);
    EXPECT_EQ (settings::attribute (settings::savedText (probe), "hp_freq"), "0.7500");
    EXPECT_EQ (probe.extraAttributes.count ("hp_freq"), 0u);
}

TEST (SettingsState, RequestsAnUpdateAfterEveryGoodOrBadLoad)
{
    MainAudioProcessor processor;

    for (const auto& block : { settings::blockOf (settings::element (R"(hp_freq="0.5")")), std::string ("VC2!"),
                               std::string (8, 'x'), settings::blockOf ("not settings"), std::string() })
    {
        processor.controlUpdatePending = false;
        processor.framesSinceRequest = 77;
        settings::loadBlock (processor, block);

        EXPECT_TRUE (processor.controlUpdatePending);
        EXPECT_EQ (processor.framesSinceRequest, 0);
    }
}

TEST (SettingsState, ReadsADecimalPointInAnyLocaleOfTheHost)
{
    const CommaLocale comma;

    EXPECT_EQ (loaded ("0.75"), 0.75f);
    EXPECT_EQ (loaded ("0,75"), 0.0f);
    EXPECT_EQ (loaded ("2.5e-1"), 0.25f);
}

TEST (SettingsState, SavesAndLoadsWhileAudioRuns)
{
    MainAudioProcessor processor, source;
    settings::setAll (source, settings::distinctValues());
    const std::array blocks { settings::savedBlock (source), settings::savedBlock (processor) };
    const RunningAudio audio (processor);

    for (int round = 0; round < 500 || ! audio.hasPlayed (50); ++round)
    {
        settings::loadBlock (processor, blocks[(std::size_t) round % 2]);
        const auto saved = settings::savedText (processor);
        ASSERT_EQ (settings::attribute (saved, "hp_freq"), round % 2 == 0 ? "0.0179" : "0.0000");
    }
}
