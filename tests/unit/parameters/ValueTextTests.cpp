// SPDX-License-Identifier: AGPL-3.0-or-later
#include "parameters/ValueText.h"

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/MainAudioProcessor.h"
#include "reference/ReferenceParameters.h"
#include "reference/ReferenceText.h"
#include "support/CommaLocale.h"

namespace
{
using Parameter = juce::AudioParameterFloatKestrin;

constexpr auto quietNaN = std::numeric_limits<float>::quiet_NaN();
constexpr auto infinity = std::numeric_limits<float>::infinity();

struct Range
{
    float low;
    float high;
};

std::string text (int kind, Range range, float position, const std::string& unit = {})
{
    const Parameter parameter ("id", "Name", range.low, range.high, 0.5f, kind, unit);
    return parameter.formatValueText (position);
}

const Parameter* own (const juce::AudioProcessorParameter* parameter)
{
    return dynamic_cast<const Parameter*> (parameter);
}

juce::String idOf (const juce::AudioProcessorParameter* parameter)
{
    return dynamic_cast<const juce::AudioProcessorParameterWithID&> (*parameter).paramID;
}

const Parameter& named (const MainAudioProcessor& processor, const char* id)
{
    for (const auto* parameter : processor.getParameters())
        if (idOf (parameter) == id)
            return *own (parameter);

    throw std::invalid_argument (id);
}

/** Ranges that every kind is tried on: those of the list, and ones that lead into each branch of a rule. */
constexpr std::array ranges {
    Range { 20.0f, 20000.0f }, Range { 0.2f, 20.0f },       Range { 0.0f, 100.0f }, Range { -100.0f, 100.0f },
    Range { -50.0f, 50.0f },   Range { -1024.0f, 1024.0f }, Range { 0.0f, 1.0f },   Range { -1.0f, 1.0f },
    Range { -5.0f, 5.0f },     Range { 0.0f, 10.0f },       Range { -5.0f, 6.0f },  Range { 0.0f, 29.0f },
    Range { 0.0f, 29.5f },     Range { 0.0f, 2.9f },        Range { 0.0f, 3.0f },   Range { -2.0f, 2.0f },
    Range { -30.0f, 30.0f },   Range { 1.0f, 100.0f },      Range { 100.0f, 1.0f }, Range { 0.001f, 1000.0f },
    Range { 1.0e-6f, 4.0e7f }, Range { 1.0f, 1.0f },        Range { 1.0f, 0.0f },   Range { 0.5f, 20.0f },
};
} // namespace

TEST (ValueText, EqualsTheReferenceForEveryKindOnEveryRange)
{
    constexpr int numPositions = 2000;

    for (int kind = -1; kind <= 15; ++kind)
    {
        for (const auto& range : ranges)
        {
            for (const auto* unit : { "", "Hz", "a long unit of more than twenty characters" })
            {
                const Parameter parameter ("id", "Name", range.low, range.high, 0.5f, kind, unit);
                reference::ParameterInfo info;
                info.kind = kind;
                info.unit = unit;
                info.minValue = range.low;
                info.maxValue = range.high;

                for (int step = 0; step <= numPositions; ++step)
                {
                    const auto position = (float) step / (float) numPositions;

                    ASSERT_EQ (parameter.formatValueText (position), reference::formatValueText (info, position))
                        << "kind " << kind << ", " << range.low << " to " << range.high << ", at " << position;
                }
            }
        }
    }
}

TEST (ValueText, EqualsTheReferenceForEveryParameterOfTheList)
{
    const MainAudioProcessor processor;
    const auto rows = reference::parameterTable();
    constexpr int numPositions = 10007;

    for (std::size_t index = 0; index < rows.size(); ++index)
    {
        const auto* parameter = own (processor.getParameters()[(int) index]);

        for (int step = 0; parameter != nullptr && step <= numPositions; ++step)
        {
            const auto position = (float) step / (float) numPositions;

            ASSERT_EQ (parameter->formatValueText (position), reference::formatValueText (rows[index], position))
                << rows[index].id << " at " << position;
        }
    }
}

TEST (ValueText, EqualsTheReferenceOutsideZeroToOne)
{
    for (int kind = 0; kind <= 14; ++kind)
    {
        const Parameter parameter ("id", "Name", -20.0f, 40.0f, 0.5f, kind, "u");
        reference::ParameterInfo info;
        info.kind = kind;
        info.unit = "u";
        info.minValue = -20.0f;
        info.maxValue = 40.0f;

        for (const auto position : { -3.0f, -0.01f, 1.01f, 2.5f, 40.0f })
            EXPECT_EQ (parameter.formatValueText (position), reference::formatValueText (info, position))
                << "kind " << kind << " at " << position;
    }
}

TEST (ValueText, ShowsTheDefaultOfEveryParameter)
{
    const std::vector<std::pair<const char*, const char*>> defaults {
        { "hp_freq", "20.0 Hz" },
        { "hp_reso", "0 %" },
        { "hp_mode", "12 dB/oct" },
        { "lp_freq", "20 kHz" },
        { "lp_reso", "0 %" },
        { "lp_mode", "12 dB/oct" },
        { "link", "Off" },
        { "inertia", "5 %" },
        { "lfo1_speed", "2.00 Hz" },
        { "lfo1_mode", "16 bars" },
        { "lfo1_phase", "  0 " },
        { "lfo1_shape", "Triangle" },
        { "lfo1_curve", "  0 " },
        { "lfo1_sync", "Time" },
        { "lfo1T_hpf", "  0 " },
        { "lfo1T_lpf", "  0 " },
        { "lfo1T_hpr", "  0 " },
        { "lfo1T_lpr", "  0 " },
        { "lfo1T_lfo2", "  0 " },
        { "lfo2_speed", "2.00 Hz" },
        { "lfo2_mode", "16 bars" },
        { "lfo2_phase", "  0 " },
        { "lfo2_shape", "Triangle" },
        { "lfo2_curve", "  0 " },
        { "lfo2_sync", "Time" },
        { "lfo2T_hpf", "  0 " },
        { "lfo2T_lpf", "  0 " },
        { "lfo2T_hpr", "  0 " },
        { "lfo2T_lpr", "  0 " },
        { "lfo2T_lfo1", "  0 " },
        { "filtmode", "Butterworth" },
        { "seq_offs", "  0 " },
        { "seq_unit", "Bars" },
        { "srnd_hpf", "50 %" },
        { "srnd_lpf", "50 %" },
        { "seq1_hpf", "  0 " },
        { "seq1_lpf", "  0 " },
        { "seq2_hpf", "  0 " },
        { "seq2_lpf", "  0 " },
        { "seq3_hpf", "  0 " },
        { "seq3_lpf", "  0 " },
        { "seq4_hpf", "  0 " },
        { "seq4_lpf", "  0 " },
        { "seq5_hpf", "  0 " },
        { "seq5_lpf", "  0 " },
        { "seq6_hpf", "  0 " },
        { "seq6_lpf", "  0 " },
        { "seq7_hpf", "  0 " },
        { "seq7_lpf", "  0 " },
        { "seq8_hpf", "  0 " },
        { "seq8_lpf", "  0 " },
        { "seq9_hpf", "  0 " },
        { "seq9_lpf", "  0 " },
        { "seq10_hpf", "  0 " },
        { "seq10_lpf", "  0 " },
    };

    const MainAudioProcessor processor;
    const auto& parameters = processor.getParameters();

    ASSERT_EQ (parameters.size(), (int) defaults.size());

    for (int index = 0; index < parameters.size(); ++index)
    {
        const auto& [id, shown] = defaults[(std::size_t) index];

        EXPECT_EQ (idOf (parameters[index]), id);
        EXPECT_EQ (parameters[index]->getCurrentValueAsText().toStdString(), shown) << id;
    }
}

TEST (ValueText, ShowsEveryTextOfEveryChoiceAtItsPositionAndNothingAboveTheLast)
{
    const std::vector<std::string> slopes { "bypass", "6 dB/oct", "12 dB/oct", "24 dB/oct", "48 dB/oct" };
    const std::vector<std::string> waves { "Sine", "Triangle", "Saw", "Square", "Random tri", "Brownian" };
    const std::vector<std::string> syncs { "Time", "Wobbly", "Drunk", "Tempo" };
    const std::vector<std::string> bars { "16 bars", "8 bars",   "4 bars",   "3 bars",   "2 bars",  "1.5 bars",
                                          "1 bar",   "3/4 bar",  "1/2 bar",  "2/3 bar",  "1/4 bar", "1/6 bar",
                                          "1/8 bar", "1/12 bar", "1/16 bar", "1/24 bar", "1/32 bar" };

    struct Choice
    {
        const char* id;
        const std::vector<std::string> texts;
        int steps;
    };

    const std::vector<Choice> choices {
        { "hp_mode", slopes, 10 },
        { "lp_mode", slopes, 10 },
        { "lfo1_mode", bars, 17 },
        { "lfo2_mode", bars, 17 },
        { "lfo1_shape", waves, 30 },
        { "lfo2_shape", waves, 30 },
        { "lfo1_sync", syncs, 10 },
        { "lfo2_sync", syncs, 10 },
        { "filtmode", { "Butterworth", "Grunge Ladder" }, 10 },
        { "seq_unit", { "Bars", "Seconds" }, 10 },
    };

    const MainAudioProcessor processor;

    for (const auto& choice : choices)
    {
        for (int step = 0; step < choice.steps; ++step)
        {
            const auto position = (float) step / (float) (choice.steps - 1);
            const auto shown = step < (int) choice.texts.size() ? choice.texts[(std::size_t) step] : std::string();

            EXPECT_EQ (named (processor, choice.id).formatValueText (position), shown) << choice.id << " step " << step;
        }
    }
}

TEST (ValueText, IsEmptyForAChoiceAboveTheLastText)
{
    const MainAudioProcessor processor;

    EXPECT_EQ (named (processor, "hp_mode").formatValueText (0.5f), "");
    EXPECT_EQ (named (processor, "lfo1_shape").formatValueText (1.0f), "");
}

TEST (ValueText, SaysSoWhenAChoiceHasNoTexts)
{
    const Parameter none ("id", "Name", 0.0f, 1.0f, 0, {}, 10);
    EXPECT_EQ (none.formatValueText (0.5f), "Modes not set!");
}

TEST (ValueText, ShowsTheFirstTextOfAChoiceWithoutSteps)
{
    const Parameter one ("id", "Name", 0.0f, 1.0f, 0, { "only", "never" }, 1);
    EXPECT_EQ (one.formatValueText (1.0f), "only");
}

TEST (ValueText, ShowsABipolarValueWithItsSignAndZeroWithTwoBlanks)
{
    const Range range { -100.0f, 100.0f };

    EXPECT_EQ (text (11, range, 0.5f), "  0 ");
    EXPECT_EQ (text (11, range, 0.501f), "  0 ");
    EXPECT_EQ (text (11, range, 0.75f), "+50 ");
    EXPECT_EQ (text (11, range, 1.0f), "+100 ");
    EXPECT_EQ (text (11, range, 0.0f), "-100 ");
    EXPECT_EQ (text (11, range, 0.4f), "-20 ");
}

TEST (ValueText, ShowsANarrowBipolarRangeWithOneDecimal)
{
    const Range range { -5.0f, 5.0f };

    EXPECT_EQ (text (11, range, 0.5f), "  0.0 ");
    EXPECT_EQ (text (11, range, 0.5099f), "  0.0 ");
    EXPECT_EQ (text (11, range, 0.4901f), "  0.0 ");
    EXPECT_EQ (text (11, range, 0.511f), "+0.1 ");
    EXPECT_EQ (text (11, range, 0.489f), "-0.1 ");
    EXPECT_EQ (text (11, range, 1.0f), "+5.0 ");
    // A range of exactly 11 is wide.
    EXPECT_EQ (text (11, { -5.0f, 6.0f }, 1.0f), "+6 ");
}

TEST (ValueText, RoundsPercent)
{
    EXPECT_EQ (text (2, { 0.0f, 100.0f }, 0.004f), "0 %");
    EXPECT_EQ (text (2, { 0.0f, 100.0f }, 0.006f), "1 %");
    EXPECT_EQ (text (2, { 0.0f, 100.0f }, 0.125f), "13 %");
    EXPECT_EQ (text (2, { 0.0f, 100.0f }, 1.0f), "100 %");
}

TEST (ValueText, ChangesTheFrequencyFormatExactlyAtItsLimits)
{
    EXPECT_EQ (valueText::frequency (19000.0, "Hz"), "19.0 kHz");
    EXPECT_EQ (valueText::frequency (std::nextafter (19000.0, 20000.0), "Hz"), "19 kHz");
    EXPECT_EQ (valueText::frequency (1000.0, "Hz"), "1000 Hz");
    EXPECT_EQ (valueText::frequency (std::nextafter (1000.0, 2000.0), "Hz"), "1.0 kHz");
    EXPECT_EQ (valueText::frequency (30.0, "Hz"), "30 Hz");
    EXPECT_EQ (valueText::frequency (std::nextafter (30.0, 0.0), "Hz"), "30.0 Hz");
    EXPECT_EQ (valueText::frequency (3.0, "Hz"), "3.0 Hz");
    EXPECT_EQ (valueText::frequency (std::nextafter (3.0, 0.0), "Hz"), "3.00 Hz");
    EXPECT_EQ (valueText::frequency (0.3, "Hz"), "0.30 Hz");
    EXPECT_EQ (valueText::frequency (std::nextafter (0.3, 0.0), "Hz"), "3 sec");
    EXPECT_EQ (valueText::frequency (0.0, "Hz"), "0 Hz");
    EXPECT_EQ (valueText::frequency (20000.0, "Hz"), "20 kHz");
}

TEST (ValueText, ShowsASlowLfoByItsPeriod)
{
    // About 0.2 Hz: the float exponential ends just below or just above a period of 5 seconds.
    const auto hertz = (double) std::exp (std::log (0.2f));

    EXPECT_EQ (text (6, { 0.2f, 20.0f }, 0.0f), 1.0 / hertz < 5.0 ? "4 sec" : "5 sec");
    EXPECT_EQ (text (6, { 0.001f, 20.0f }, 0.0f), "16 minutes");
}

TEST (ValueText, FormatsTheRemainingKinds)
{
    EXPECT_EQ (text (3, { 0.0f, 10.0f }, 0.0f), "OFF");
    EXPECT_EQ (text (3, { 0.0f, 10.0f }, 0.5f), "+1.2 ");
    EXPECT_EQ (text (4, { 0.0f, 1.0f }, 0.0f), "OFF");
    EXPECT_EQ (text (4, { 0.0f, 1.0f }, 1.0f), "+10.0 dB");
    EXPECT_EQ (text (5, { 0.0f, 1.0f }, 1.0f), "+18.1 dB");
    EXPECT_EQ (text (5, { 0.0f, 1.0f }, 0.5f), "+0.0 dB");
    EXPECT_EQ (text (7, { 1.0f, 100.0f }, 0.0f), "1.00 ");
    EXPECT_EQ (text (7, { 1.0f, 100.0f }, 0.5f), "10.0 ");
    EXPECT_EQ (text (7, { 1.0f, 100.0f }, 1.0f), "100 ");
    EXPECT_EQ (text (8, { 0.0f, 15.0f }, 0.0f), "+0.0 ");
    EXPECT_EQ (text (8, { 0.0f, 15.0f }, 1.0f), "+15.0 ");
    EXPECT_EQ (text (9, { 0.1f, 5.0f }, 0.0f), "0.1 oct");
    EXPECT_EQ (text (9, { 0.1f, 5.0f }, 1.0f), "5.0 oct");
    EXPECT_EQ (text (12, { 1.0f, 0.0f }, 1.0f), "0.0:1");
    EXPECT_EQ (text (12, { 1.0f, 20.0f }, 0.0f), "1.0:1");
    EXPECT_EQ (text (12, { 1.0f, 20.0f }, 1.0f), "20:1");
    EXPECT_EQ (text (13, { 0.0025f, 100.0f }, 0.0f), "2 ms");
    EXPECT_EQ (text (13, { 60.0f, 4000.0f }, 1.0f), "1 hour");
}

TEST (ValueText, GivesAnExponentialNumberFewerPlacesFromThreeAndFromThirtyOn)
{
    EXPECT_EQ (text (7, { 2.0f, 300.0f }, 0.0f), "2.00 ");
    EXPECT_EQ (text (7, { 3.0f, 300.0f }, 0.0f), "3.0 ");
    EXPECT_EQ (text (7, { 30.0f, 300.0f }, 0.0f), "30 ");
}

TEST (ValueText, FormatsUnknownKindsAsALinearNumber)
{
    EXPECT_EQ (text (0, { 0.0f, 1.0f }, 0.25f), "0.2 ");
    EXPECT_EQ (text (1, { 0.0f, 1.0f }, 0.75f), "0.8 ");
    EXPECT_EQ (text (0, { 0.0f, 1.0f }, 7.0f), "1.0 ");
    EXPECT_EQ (text (0, { 0.0f, 1.0f }, -7.0f), "0.0 ");
    EXPECT_EQ (text (1, { 0.0f, 10.0f }, 0.5f), "5 ");
    EXPECT_EQ (text (1, { -10.0f, 10.0f }, 1.0f), "+10 ");
    EXPECT_EQ (text (14, { 0.0f, 30.0f }, 0.5f), "15 ");
    EXPECT_EQ (text (14, { 0.0f, 29.0f }, 0.5f), "14.5 ");
    EXPECT_EQ (text (14, { -29.0f, 29.0f }, 1.0f), "+29.0 ");
    EXPECT_EQ (text (14, { 0.0f, 2.9f }, 1.0f), "2.90 ");
    EXPECT_EQ (text (14, { -2.0f, 2.0f }, 0.0f), "-2.00 ");
    EXPECT_EQ (text (14, { 0.0f, 3.0f }, 1.0f), "3.0 ");
}

TEST (ValueText, KeepsTheSignOfANumberThatRoundsToZeroAsPrintfDoes)
{
    EXPECT_EQ (text (8, { 0.0f, 15.0f }, -0.001f), "-0.0 ");
    EXPECT_EQ (text (14, { -2.0f, 2.0f }, 0.5f), "+0.00 ");
}

TEST (ValueText, KeepsALongUnitWhole)
{
    EXPECT_EQ (text (2, { 0.0f, 100.0f }, 0.5f, std::string (1000, 'u')), "50 " + std::string (1000, 'u'));
}

TEST (ValueText, StaysShortForNaNInfinityAndHugePositions)
{
    for (int kind = 0; kind <= 14; ++kind)
        for (const auto& range : ranges)
            for (const auto position : { quietNaN, infinity, -infinity, 1.0e38f, -1.0e38f })
                EXPECT_LT (text (kind, range, position).size(), 500u) << "kind " << kind << " at " << position;
}

TEST (ValueText, UsesADecimalPointInAnyLocaleOfTheHost)
{
    const MainAudioProcessor processor;
    std::vector<std::string> inTheCLocale, inTheCommaLocale;

    const auto collect = [&processor] (std::vector<std::string>& texts)
    {
        for (const auto* parameter : processor.getParameters())
            for (int step = 0; step <= 100; ++step)
                texts.push_back (parameter->getText ((float) step / 100.0f, 100).toStdString());

        for (int kind = 0; kind <= 14; ++kind)
            for (const auto& range : ranges)
                texts.push_back (text (kind, range, 0.3f));
    };

    collect (inTheCLocale);

    {
        const CommaLocale comma;
        std::array<char, 16> proof {};
        std::snprintf (proof.data(), proof.size(), "%.1f", 0.5);
        ASSERT_STREQ (proof.data(), "0,5");

        collect (inTheCommaLocale);
    }

    EXPECT_EQ (inTheCLocale, inTheCommaLocale);
}

TEST (FormatDuration, FloorsToTheLargestUnit)
{
    EXPECT_EQ (formatDuration (330.0), "5 minutes");
    EXPECT_EQ (formatDuration (4.99), "4 sec");
    EXPECT_EQ (formatDuration (119.999), "1 minute");
    EXPECT_EQ (formatDuration (0.0999), "99 ms");
}

TEST (FormatDuration, HasASingularForExactlyOne)
{
    const std::vector<std::pair<double, std::array<const char*, 2>>> units {
        { 31536000.0, { "1 year", "2 years" } }, { 2592000.0, { "1 month", "2 months" } },
        { 86400.0, { "1 day", "2 days" } },      { 3600.0, { "1 hour", "2 hours" } },
        { 60.0, { "1 minute", "2 minutes" } },   { 1.0, { "1 sec", "2 sec" } },
        { 0.001, { "1 ms", "2 ms" } },           { 0.000001, { "1 micros", "2 micros" } },
    };

    for (const auto& [seconds, words] : units)
    {
        EXPECT_EQ (formatDuration (seconds), words[0]);
        EXPECT_EQ (formatDuration (seconds * 2.0), words[1]);
        EXPECT_EQ (formatDuration (seconds * 1.9), words[0]);
    }
}

TEST (FormatDuration, IsEmptyBelowAMicrosecondAndForNaNAndInfinity)
{
    for (const auto seconds : { 0.0, 0.0000009, (double) quietNaN, (double) infinity, -(double) infinity })
        EXPECT_EQ (formatDuration (seconds), "");
}

TEST (FormatDuration, EqualsTheReferenceOverTheWholeScale)
{
    for (int step = 0; step <= 20000; ++step)
    {
        const auto seconds = std::pow (10.0, (double) step / 1000.0 - 9.0);
        ASSERT_EQ (formatDuration (seconds), reference::formatDuration (seconds)) << seconds;
    }
}
