// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/DisplayScale.h"

#include <cmath>

#include <gtest/gtest.h>

#include "host/HostError.h"
#include "host/ValueResolver.h"
#include "module/ModuleUnderTest.h"

namespace
{
float resolve (const ModuleUnderTest& module, const char* id, const char* text)
{
    return valueResolver::resolve (module.parameters().find (id), text);
}

std::string refusal (const ModuleUnderTest& module, const char* id, const char* text)
{
    try
    {
        resolve (module, id, text);
    }
    catch (const HostError& error)
    {
        return error.what();
    }

    return "taken";
}

/** Where 20 Hz to 20 kHz have a frequency. */
double positionOfHz (double hertz) { return std::log (hertz / 20.0) / std::log (1000.0); }
} // namespace

TEST (DisplayScale, TellsWordsFromNumbers)
{
    const DisplayScale words ([] (float x) { return juce::String (x < 0.5f ? "Off" : "On"); });
    const DisplayScale numbers ([] (float x) { return juce::String (std::lround (x * 100.0f)) + " %"; });

    EXPECT_TRUE (words.isChoice());
    EXPECT_FALSE (numbers.isChoice());
    EXPECT_TRUE (numbers.choices().empty());
}

TEST (DisplayScale, FindsTheExactPositionsBehindTexts)
{
    // Three texts on a scale of ten steps; nothing above them.
    const DisplayScale scale (
        [] (float x)
        {
            const juce::StringArray texts ("one", "two", "three");
            return texts[(int) std::lround (x * 9.0f)];
        });

    const auto choices = scale.choices();
    ASSERT_EQ (choices.size(), 3u);
    EXPECT_EQ (choices[0].position, 0.0f);
    EXPECT_EQ (choices[1].position, 1.0f / 9.0f);
    EXPECT_EQ (choices[2].position, 2.0f / 9.0f);
}

TEST (ValueResolver, TakesPlainNumbersAsPositions)
{
    const ModuleUnderTest module;

    EXPECT_EQ (resolve (module, "lp_freq", "0.25"), 0.25f);
    EXPECT_EQ (resolve (module, "lp_reso", "1"), 1.0f);
    EXPECT_EQ (resolve (module, "lfo1T_hpf", "0"), 0.0f);
}

TEST (ValueResolver, TakesChoicesByTheirTexts)
{
    const ModuleUnderTest module;

    EXPECT_EQ (resolve (module, "hp_mode", "24 dB/oct"), 3.0f / 9.0f);
    EXPECT_EQ (resolve (module, "hp_mode", "BYPASS"), 0.0f);
    EXPECT_EQ (resolve (module, "lfo1_shape", "Random tri"), 4.0f / 29.0f);
    EXPECT_EQ (resolve (module, "lfo1_mode", "2/3 bar"), 9.0f / 16.0f);
    EXPECT_EQ (resolve (module, "link", "on"), 1.0f);
}

TEST (ValueResolver, TakesFrequenciesFinerThanTheModuleShowsThem)
{
    const ModuleUnderTest module;

    // The edges between two texts lie where the module rounds; what is left is the rounding of a float.
    constexpr double tolerance = 2.0e-6;

    for (const auto hertz : { 20.0, 25.5, 29.97, 440.0, 999.0, 1000.0, 1234.0, 18999.0, 19400.0, 20000.0 })
        EXPECT_NEAR (resolve (module, "lp_freq", (juce::String (hertz) + " Hz").toRawUTF8()), positionOfHz (hertz),
                     tolerance)
            << hertz;

    EXPECT_NEAR (resolve (module, "lp_freq", "1.2 kHz"), positionOfHz (1200.0), tolerance);
}

TEST (ValueResolver, TakesPercentAndSignedNumbers)
{
    const ModuleUnderTest module;

    EXPECT_EQ (resolve (module, "lp_reso", "30 %"), 0.3f);
    EXPECT_FLOAT_EQ (resolve (module, "lp_reso", "33.3%"), 0.333f);
    EXPECT_EQ (resolve (module, "lfo1T_hpf", "+50"), 0.75f);
    EXPECT_EQ (resolve (module, "lfo1T_hpf", "-100"), 0.0f);
    EXPECT_EQ (resolve (module, "seq_offs", "+16"), 0.5078125f);
}

TEST (ValueResolver, TakesTheWordsForLongPeriods)
{
    const ModuleUnderTest module;
    EXPECT_EQ (module.textAt ("lfo1_speed", resolve (module, "lfo1_speed", "4 sec")), "4 sec");
    EXPECT_NEAR (resolve (module, "lfo1_speed", "2 Hz"), 0.5, 2.0e-6);
}

TEST (ValueResolver, ListsTheChoicesWhenNoTextMatches)
{
    const ModuleUnderTest module;
    EXPECT_EQ (refusal (module, "filtmode", "Ladder"),
               "filtmode: \"Ladder\" is neither a position from 0 to 1 nor one of \"Butterworth\", \"Grunge Ladder\"");
}

TEST (ValueResolver, NamesTheRangeWhenItRefusesANumber)
{
    const ModuleUnderTest module;

    for (const auto* text : { "30 kHz", "10 Hz", "1.5", "440", "loud", "nan", "inf", "0.5.5", "" })
        EXPECT_EQ (refusal (module, "lp_freq", text),
                   std::string ("lp_freq: \"") + text
                       + "\" is neither a position from 0 to 1 nor a value from 20.0 Hz to 20 kHz");
}

TEST (ParameterList, SuggestsTheNearestIdForAMisspeltOne)
{
    const ModuleUnderTest module;

    try
    {
        FAIL() << "found " << module.parameters().find ("lp_frq").id;
    }
    catch (const HostError& error)
    {
        EXPECT_STREQ (error.what(), "there is no parameter \"lp_frq\"; did you mean lp_freq?");
    }
}
