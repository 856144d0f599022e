// SPDX-License-Identifier: AGPL-3.0-or-later
#include <array>

#include <gtest/gtest.h>

#include "host/DisplayScale.h"
#include "module/ModuleUnderTest.h"

namespace
{
struct Row
{
    const char* id;
    const char* name;

    /** With all blanks. */
    const char* defaultText;
};

constexpr std::array rows {
    Row { "hp_freq", "Highpass frequency", "20.0 Hz" }, Row { "hp_reso", "Highpass resonance", "0 %" },
    Row { "hp_mode", "Highpass mode", "12 dB/oct" },    Row { "lp_freq", "Lowpass frequency", "20 kHz" },
    Row { "lp_reso", "Lowpass resonance", "0 %" },      Row { "lp_mode", "Lowpass mode", "12 dB/oct" },
    Row { "link", "Link frequencies", "Off" },          Row { "inertia", "Inertia", "5 %" },
    Row { "lfo1_speed", "LFO 1 speed", "2.00 Hz" },     Row { "lfo1_mode", "LFO 1 mode", "16 bars" },
    Row { "lfo1_phase", "LFO 1 phase", "  0 " },        Row { "lfo1_shape", "LFO 1 shape", "Triangle" },
    Row { "lfo1_curve", "LFO 1 curve", "  0 " },        Row { "lfo1_sync", "LFO 1 sync type", "Time" },
    Row { "lfo1T_hpf", "LFO 1 > HP freq", "  0 " },     Row { "lfo1T_lpf", "LFO 1 > LP freq", "  0 " },
    Row { "lfo1T_hpr", "LFO 1 > HP reso", "  0 " },     Row { "lfo1T_lpr", "LFO 1 > LP reso", "  0 " },
    Row { "lfo1T_lfo2", "LFO 1 > LFO 2", "  0 " },      Row { "lfo2_speed", "LFO 2 speed", "2.00 Hz" },
    Row { "lfo2_mode", "LFO 2 mode", "16 bars" },       Row { "lfo2_phase", "LFO 2 phase", "  0 " },
    Row { "lfo2_shape", "LFO 2 shape", "Triangle" },    Row { "lfo2_curve", "LFO 2 curve", "  0 " },
    Row { "lfo2_sync", "LFO 2 sync type", "Time" },     Row { "lfo2T_hpf", "LFO 2 > HP freq", "  0 " },
    Row { "lfo2T_lpf", "LFO 2 > LP freq", "  0 " },     Row { "lfo2T_hpr", "LFO 2 > HP reso", "  0 " },
    Row { "lfo2T_lpr", "LFO 2 > LP reso", "  0 " },     Row { "lfo2T_lfo1", "LFO 2 > LFO 1", "  0 " },
    Row { "filtmode", "Filter mode", "Butterworth" },   Row { "seq_offs", "Sequencer offset", "  0 " },
    Row { "seq_unit", "Offset unit", "Bars" },          Row { "srnd_hpf", "HP random amount", "50 %" },
    Row { "srnd_lpf", "LP random amount", "50 %" },     Row { "seq1_hpf", "SEQ 1 > HP freq", "  0 " },
    Row { "seq1_lpf", "SEQ 1 > LP freq", "  0 " },      Row { "seq2_hpf", "SEQ 2 > HP freq", "  0 " },
    Row { "seq2_lpf", "SEQ 2 > LP freq", "  0 " },      Row { "seq3_hpf", "SEQ 3 > HP freq", "  0 " },
    Row { "seq3_lpf", "SEQ 3 > LP freq", "  0 " },      Row { "seq4_hpf", "SEQ 4 > HP freq", "  0 " },
    Row { "seq4_lpf", "SEQ 4 > LP freq", "  0 " },      Row { "seq5_hpf", "SEQ 5 > HP freq", "  0 " },
    Row { "seq5_lpf", "SEQ 5 > LP freq", "  0 " },      Row { "seq6_hpf", "SEQ 6 > HP freq", "  0 " },
    Row { "seq6_lpf", "SEQ 6 > LP freq", "  0 " },      Row { "seq7_hpf", "SEQ 7 > HP freq", "  0 " },
    Row { "seq7_lpf", "SEQ 7 > LP freq", "  0 " },      Row { "seq8_hpf", "SEQ 8 > HP freq", "  0 " },
    Row { "seq8_lpf", "SEQ 8 > LP freq", "  0 " },      Row { "seq9_hpf", "SEQ 9 > HP freq", "  0 " },
    Row { "seq9_lpf", "SEQ 9 > LP freq", "  0 " },      Row { "seq10_hpf", "SEQ 10 > HP freq", "  0 " },
    Row { "seq10_lpf", "SEQ 10 > LP freq", "  0 " },
};

juce::StringArray choicesOf (const ModuleUnderTest& module, const juce::String& id)
{
    juce::StringArray texts;
    const auto& parameter = module.parameters().find (id);

    for (const auto& choice : DisplayScale ([&parameter] (float x) { return parameter.textAt (x); }).choices())
        texts.add (choice.text);

    return texts;
}
} // namespace

TEST (ModuleParameters, AreTheFiftyFiveInOrderFollowedByTheBypass)
{
    const ModuleUnderTest module;
    const auto& list = module.parameters().all();

    ASSERT_EQ (list.size(), rows.size() + 1);

    for (std::size_t index = 0; index < rows.size(); ++index)
    {
        EXPECT_EQ (list[index].id, rows[index].id) << index;
        EXPECT_EQ (list[index].name(), rows[index].name) << index;
    }

    constexpr juce::uint32 bypassNumber = 0x62797073;
    EXPECT_EQ (list.back().number, bypassNumber);
    EXPECT_EQ (list.back().id, "byps");
    EXPECT_EQ (list.back().name(), "Bypass");
}

TEST (ModuleParameters, ShowTheirDefaultsInTheirOwnWords)
{
    const ModuleUnderTest module;

    for (const auto& row : rows)
    {
        const auto& parameter = module.parameters().find (row.id);
        EXPECT_EQ (parameter.textAt (parameter.parameter->getDefaultValue()), row.defaultText) << row.id;
        EXPECT_EQ (parameter.parameter->getValue(), parameter.parameter->getDefaultValue()) << row.id;
    }
}

TEST (ModuleParameters, StoreChoicesAsFractionsOfTheirSteps)
{
    const ModuleUnderTest module;
    const auto defaultOf = [&module] (const char* id)
    { return module.parameters().find (id).parameter->getDefaultValue(); };

    EXPECT_EQ (defaultOf ("hp_mode"), 2.0f / 9.0f);
    EXPECT_EQ (defaultOf ("lfo2_shape"), 1.0f / 29.0f);
    EXPECT_EQ (module.textAt ("hp_mode", 0.5f), "");
    EXPECT_EQ (module.textAt ("lfo1_shape", 1.0f), "");
    EXPECT_EQ (module.textAt ("lfo1_mode", 1.0f), "1/32 bar");
}

TEST (ModuleParameters, OfferTheirChoicesByText)
{
    const ModuleUnderTest module;

    for (const auto* id : { "hp_mode", "lp_mode" })
        EXPECT_EQ (choicesOf (module, id),
                   juce::StringArray ("bypass", "6 dB/oct", "12 dB/oct", "24 dB/oct", "48 dB/oct"));

    for (const auto* id : { "lfo1_shape", "lfo2_shape" })
        EXPECT_EQ (choicesOf (module, id),
                   juce::StringArray ("Sine", "Triangle", "Saw", "Square", "Random tri", "Brownian"));

    for (const auto* id : { "lfo1_sync", "lfo2_sync" })
        EXPECT_EQ (choicesOf (module, id), juce::StringArray ("Time", "Wobbly", "Drunk", "Tempo"));

    for (const auto* id : { "lfo1_mode", "lfo2_mode" })
        EXPECT_EQ (choicesOf (module, id),
                   juce::StringArray ("16 bars", "8 bars", "4 bars", "3 bars", "2 bars", "1.5 bars", "1 bar", "3/4 bar",
                                      "1/2 bar", "2/3 bar", "1/4 bar", "1/6 bar", "1/8 bar", "1/12 bar", "1/16 bar",
                                      "1/24 bar", "1/32 bar"));

    EXPECT_EQ (choicesOf (module, "filtmode"), juce::StringArray ("Butterworth", "Grunge Ladder"));
    EXPECT_EQ (choicesOf (module, "seq_unit"), juce::StringArray ("Bars", "Seconds"));
    EXPECT_EQ (choicesOf (module, "link"), juce::StringArray ("Off", "On"));
}

TEST (ModuleParameters, KeepLeadingAndTrailingBlanksInTheirTexts)
{
    const ModuleUnderTest module;

    EXPECT_EQ (module.textAt ("lfo1_curve", 0.75f), "+50 ");
    EXPECT_EQ (module.textAt ("lfo1_curve", 0.501f), "  0 ");
    EXPECT_EQ (module.textAt ("lfo1_phase", 0.0f), "-50 ");
    EXPECT_EQ (module.textAt ("seq_offs", 1.0f), "+1024 ");
}

TEST (ModuleParameters, TakeTypedTextAsANormalisedPosition)
{
    const ModuleUnderTest module;
    const auto* frequency = module.parameters().find ("lp_freq").parameter;

    EXPECT_EQ (frequency->getValueForText ("0.25"), 0.25f);
    EXPECT_EQ (frequency->getValueForText ("440 Hz"), 1.0f);
}

TEST (ModuleParameters, AreContinuousForTheHostEvenAsChoices)
{
    const ModuleUnderTest module;

    for (const auto& parameter : module.parameters().all())
        if (parameter.id != "link" && parameter.id != "byps")
        {
            EXPECT_FALSE (parameter.parameter->isDiscrete()) << parameter.id;
            EXPECT_TRUE (parameter.parameter->isAutomatable()) << parameter.id;
        }
}
