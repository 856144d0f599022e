// SPDX-License-Identifier: AGPL-3.0-or-later
#include "parameters/ParameterSet.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "dsp/MainAudioProcessor.h"
#include "parameters/ParameterTable.h"
#include "reference/ReferenceParameters.h"

namespace
{
using Parameter = ParameterSet::Parameter;

std::string number (float x)
{
    std::array<char, 64> text {};
    std::snprintf (text.data(), text.size(), "%.9g", (double) x);
    return text.data();
}

const juce::RangedAudioParameter& at (const juce::AudioProcessor& processor, int index)
{
    return dynamic_cast<const juce::RangedAudioParameter&> (*processor.getParameters()[index]);
}

/** One line of the frozen list: everything that projects, automation lanes and hosts depend on. */
std::string describe (const juce::RangedAudioParameter& parameter)
{
    const auto start = parameter.paramID.toStdString() + " | " + parameter.name.toStdString() + " | ";
    const auto* own = dynamic_cast<const Parameter*> (&parameter);

    if (own == nullptr)
        return start + "switch | default " + number (parameter.getDefaultValue());

    auto line = start + "kind " + std::to_string (own->valueKind) + " | " + number (own->minValue) + " to "
                + number (own->maxValue) + " | unit '" + own->unitText.toStdString() + "' | default "
                + number (own->defaultValue);

    if (own->valueKind == Parameter::choiceKind)
        line += " | " + std::to_string (own->stepCount) + " steps";

    for (const auto& text : own->choiceTexts)
        line += " | " + text;

    return line;
}

std::string readGolden (const char* name)
{
    std::ifstream file (std::string (KESTRIN_GOLDEN_DIR) + "/" + name);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}
} // namespace

TEST (ParameterSet, IsTheFrozenList)
{
    const MainAudioProcessor processor;
    std::string list;

    for (int index = 0; index < processor.getParameters().size(); ++index)
        list += std::to_string (index) + " | " + describe (at (processor, index)) + "\n";

    EXPECT_EQ (list, readGolden ("parameters.txt"));
}

TEST (ParameterSet, EqualsTheReferenceTable)
{
    const MainAudioProcessor processor;
    const auto wanted = reference::parameterTable();

    ASSERT_EQ (processor.getParameters().size(), (int) wanted.size());

    for (int index = 0; index < (int) wanted.size(); ++index)
    {
        const auto& row = wanted[(std::size_t) index];
        const auto& parameter = at (processor, index);

        EXPECT_EQ (parameter.paramID.toStdString(), row.id);
        EXPECT_EQ (parameter.name.toStdString(), row.name);
        EXPECT_EQ (parameter.getDefaultValue(), row.defaultPosition) << row.id;

        if (row.isBool)
        {
            EXPECT_NE (dynamic_cast<const juce::AudioParameterBool*> (&parameter), nullptr);
            continue;
        }

        const auto& own = dynamic_cast<const Parameter&> (parameter);

        EXPECT_EQ (own.valueKind, row.kind) << row.id;
        EXPECT_EQ (own.unitText.toStdString(), reference::resolvedUnit (row)) << row.id;
        EXPECT_EQ (own.minValue, row.minValue) << row.id;
        EXPECT_EQ (own.maxValue, row.maxValue) << row.id;
        EXPECT_EQ (own.get(), row.defaultPosition) << row.id;
        EXPECT_EQ (own.getChoiceTexts(), row.texts) << row.id;
        EXPECT_EQ (own.getStepCount(), row.stepCount) << row.id;
    }
}

TEST (ParameterSet, KeepsTheIndicesOfLandmarkParameters)
{
    const MainAudioProcessor processor;

    ASSERT_EQ (processor.getParameters().size(), 55);
    EXPECT_EQ (at (processor, 0).paramID, "hp_freq");
    EXPECT_EQ (at (processor, 6).paramID, "link");
    EXPECT_EQ (at (processor, 30).paramID, "filtmode");
    EXPECT_EQ (at (processor, 54).paramID, "seq10_lpf");
}

TEST (ParameterSet, GivesEachParameterAnIdOfItsOwn)
{
    const MainAudioProcessor processor;
    std::set<juce::String> ids;

    for (int index = 0; index < processor.getParameters().size(); ++index)
        ids.insert (at (processor, index).paramID);

    EXPECT_EQ (ids.size(), 55u);
}

TEST (ParameterSet, RoutesEachLfoToTheOtherAndNoneToItself)
{
    const MainAudioProcessor processor;
    std::set<juce::String> routes;

    for (int index = 0; index < processor.getParameters().size(); ++index)
        if (const auto& id = at (processor, index).paramID; id.contains ("T_lfo"))
            routes.insert (id);

    EXPECT_EQ (routes, (std::set<juce::String> { "lfo1T_lfo2", "lfo2T_lfo1" }));
}

TEST (ParameterSet, StartsWithTriangleAndSixteenBars)
{
    const MainAudioProcessor processor;

    for (const auto* shape : processor.parameters.lfoShape)
        EXPECT_EQ (shape->get(), 1.0f / 29.0f);

    for (const auto* mode : processor.parameters.lfoMode)
        EXPECT_EQ (mode->get(), 0.0f);
}

TEST (ParameterSet, NamesEachParameterByItsId)
{
    const MainAudioProcessor processor;
    const auto& set = processor.parameters;

    const std::array<std::pair<const Parameter*, const char*>, 12> single { {
        { set.hpFreq, "hp_freq" },
        { set.hpReso, "hp_reso" },
        { set.hpMode, "hp_mode" },
        { set.lpFreq, "lp_freq" },
        { set.lpReso, "lp_reso" },
        { set.lpMode, "lp_mode" },
        { set.inertia, "inertia" },
        { set.filtMode, "filtmode" },
        { set.seqOffs, "seq_offs" },
        { set.seqUnit, "seq_unit" },
        { set.srndHpf, "srnd_hpf" },
        { set.srndLpf, "srnd_lpf" },
    } };

    for (const auto& [parameter, id] : single)
        EXPECT_EQ (parameter->paramID, id);

    EXPECT_EQ (set.link->paramID, "link");

    for (std::size_t lfo = 0; lfo < ParameterSet::numLfos; ++lfo)
    {
        const auto start = "lfo" + juce::String (lfo + 1);
        const auto other = juce::String (2 - lfo);

        EXPECT_EQ (set.lfoSpeed[lfo]->paramID, start + "_speed");
        EXPECT_EQ (set.lfoMode[lfo]->paramID, start + "_mode");
        EXPECT_EQ (set.lfoPhase[lfo]->paramID, start + "_phase");
        EXPECT_EQ (set.lfoShape[lfo]->paramID, start + "_shape");
        EXPECT_EQ (set.lfoCurve[lfo]->paramID, start + "_curve");
        EXPECT_EQ (set.lfoSync[lfo]->paramID, start + "_sync");
        EXPECT_EQ (set.lfoToHpFreq[lfo]->paramID, start + "T_hpf");
        EXPECT_EQ (set.lfoToLpFreq[lfo]->paramID, start + "T_lpf");
        EXPECT_EQ (set.lfoToHpReso[lfo]->paramID, start + "T_hpr");
        EXPECT_EQ (set.lfoToLpReso[lfo]->paramID, start + "T_lpr");
        EXPECT_EQ (set.lfoToOtherLfo[lfo]->paramID, start + "T_lfo" + other);
    }

    for (std::size_t step = 0; step < ParameterSet::numSteps; ++step)
    {
        const auto start = "seq" + juce::String (step + 1);

        EXPECT_EQ (set.seqHpf[step]->paramID, start + "_hpf");
        EXPECT_EQ (set.seqLpf[step]->paramID, start + "_lpf");
    }
}

TEST (ParameterTable, KeepsTheOddTwoThirdsOfABarThatProjectsDependOn)
{
    EXPECT_STREQ (parameterTable::bars[9].text, "2/3 bar");
    EXPECT_EQ (parameterTable::bars[9].beats, 1.5f);
    EXPECT_STREQ (parameterTable::bars[8].text, "1/2 bar");
    EXPECT_EQ (parameterTable::bars[8].beats, 2.0f);
}

TEST (ParameterSet, CountsEverySettingOfEveryParameterButTheLink)
{
    MainAudioProcessor processor;
    const auto& set = processor.parameters;

    for (auto* parameter : processor.getParameters())
    {
        const auto before = set.getChangeCount();
        parameter->setValue (0.25f);

        EXPECT_EQ (set.getChangeCount() - before, parameter == set.link ? 0u : 1u) << parameter->getName (40);
    }
}

TEST (ParameterSet, HasCountedASettingBeforeListenersHear)
{
    // When a listener hears, both the value and the count have changed.
    struct Listener : juce::AudioProcessorParameter::Listener
    {
        explicit Listener (MainAudioProcessor& p) : processor (p), before (p.parameters.getChangeCount()) {}

        void parameterValueChanged (int, float) override
        {
            seen = processor.parameters.hpFreq->get();
            hasMoved = processor.parameters.getChangeCount() != before;
        }

        void parameterGestureChanged (int, bool) override {}

        MainAudioProcessor& processor;
        std::uint32_t before;
        float seen = 0.0f;
        bool hasMoved = false;
    };

    MainAudioProcessor processor;
    Listener listener (processor);
    processor.parameters.hpFreq->addListener (&listener);
    processor.parameters.hpFreq->setValueNotifyingHost (0.75f);
    processor.parameters.hpFreq->removeListener (&listener);

    EXPECT_EQ (listener.seen, 0.75f);
    EXPECT_TRUE (listener.hasMoved);
}

TEST (ParameterTable, PairsEachCycleLengthWithItsText)
{
    const MainAudioProcessor processor;
    constexpr std::array lengths { 64.0, 32.0,
                                   16.0, 12.0,
                                   8.0,  6.0,
                                   4.0,  3.0,
                                   2.0,  1.5,
                                   1.0,  0.6666666865348816,
                                   0.5,  0.3333333432674408,
                                   0.25, 0.1666666716337204,
                                   0.125 };

    ASSERT_EQ (processor.barLengths.size(), lengths.size());
    EXPECT_EQ (processor.barLabels, processor.parameters.lfoMode[0]->choiceTexts);

    for (std::size_t index = 0; index < lengths.size(); ++index)
        EXPECT_EQ ((double) processor.barLengths[index], lengths[index]);
}
