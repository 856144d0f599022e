// SPDX-License-Identifier: AGPL-3.0-or-later
#include <map>

#include <gtest/gtest.h>

#include "demo/DemoStems.h"
#include "host/PluginState.h"
#include "module/LoadPreset.h"
#include "module/ModuleUnderTest.h"

namespace
{
/** The lines of a written preset, read without the host's own reader. */
std::map<juce::String, juce::String> linesOf (const juce::File& file)
{
    juce::StringArray lines;
    file.readLines (lines);
    std::map<juce::String, juce::String> result;

    for (const auto& line : lines)
        if (line.contains ("=") && ! line.startsWithChar ('#'))
            result[line.upToFirstOccurrenceOf ("=", false, false).trim()] =
                line.fromFirstOccurrenceOf ("=", false, false).trim();

    return result;
}

juce::Array<juce::File> writtenPresets()
{
    return juce::File (KESTRIN_WRITTEN_PRESETS).findChildFiles (juce::File::findFiles, false, "*.txt");
}

juce::File builtPreset (const juce::String& name)
{
    return juce::File (KESTRIN_BUILT_PRESETS).getChildFile (name + ".vstpreset");
}

/** A text without the things that a person may leave out: blanks, capitals, and zeros at the end of a fraction. */
juce::String essence (const juce::String& text)
{
    const auto unit = text.trim().trimCharactersAtStart ("+-0123456789.").removeCharacters (" ").toLowerCase();
    const auto number = text.trim().upToFirstOccurrenceOf (" ", false, false);

    if (! number.containsAnyOf ("0123456789") || ! number.containsOnly ("+-0123456789."))
        return text.trim().toLowerCase();

    return juce::String (number.getDoubleValue(), 3) + unit;
}

bool isPosition (const juce::String& text) { return text.containsOnly ("0123456789."); }
} // namespace

TEST (FactoryPresets, AreBuiltOneForEveryText)
{
    const auto numBuilt =
        juce::File (KESTRIN_BUILT_PRESETS).getNumberOfChildFiles (juce::File::findFiles, "*.vstpreset");

    EXPECT_GE (numBuilt, 16);
    EXPECT_EQ (numBuilt, writtenPresets().size());

    for (const auto& file : writtenPresets())
        EXPECT_TRUE (builtPreset (linesOf (file)["name"]).existsAsFile()) << file.getFileName();
}

TEST (FactoryPresets, SayWhatToPlayAndWhatToListenForAndWhichStemOfTheDemoDoes)
{
    for (const auto& file : writtenPresets())
    {
        auto written = linesOf (file);
        EXPECT_TRUE (written["play"].isNotEmpty()) << file.getFileName();
        EXPECT_TRUE (written["listen"].isNotEmpty()) << file.getFileName();
        EXPECT_NE (demo::findStem (written["stem"].toStdString()), nullptr) << file.getFileName();
    }
}

TEST (FactoryPresets, LoadWithTheValuesOfTheirTextsAndDefaultsForTheRest)
{
    ModuleUnderTest module;

    for (const auto& file : writtenPresets())
    {
        SCOPED_TRACE (file.getFileName().toStdString());
        auto written = linesOf (file);
        juce::MemoryBlock preset;
        ASSERT_TRUE (builtPreset (written["name"]).loadFileAsData (preset));
        ASSERT_TRUE (loadPreset (module, preset));

        // As the module says, and not as the host remembers.
        const auto settings = juce::parseXML (pluginState::settingsText (pluginState::read (module.instance())));
        ASSERT_NE (settings, nullptr);

        for (const auto& parameter : module.parameters().all())
        {
            if (! settings->hasAttribute (parameter.id))
                continue;

            const auto position = (float) settings->getDoubleAttribute (parameter.id);
            const auto text = written.count (parameter.id) > 0 ? written[parameter.id] : juce::String();

            if (text.isEmpty())
                EXPECT_NEAR (position, parameter.parameter->getDefaultValue(), 0.00005f) << parameter.id;
            else if (isPosition (text))
                EXPECT_NEAR (position, text.getFloatValue(), 0.00005f) << parameter.id;
            else
                EXPECT_EQ (essence (parameter.textAt (position)), essence (text)) << parameter.id;

            written.erase (parameter.id);
        }

        for (const auto* word : { "name", "about", "play", "listen", "stem" })
            written.erase (word);

        EXPECT_TRUE (written.empty()) << "no parameter: " << written.begin()->first;
    }
}
