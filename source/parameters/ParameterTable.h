// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <variant>

#include "parameters/ParameterSet.h"

/** The 55 parameters, one row each, in the order in which the host sees them. The list is frozen: projects store the ids,
    the order and, for a choice, the positions that follow from its number of steps. */
namespace parameterTable
{
using Kind = ParameterSet::Parameter::ValueKind;
using Texts = std::span<const char* const>;

inline constexpr std::array slopeTexts { "bypass", "6 dB/oct", "12 dB/oct", "24 dB/oct", "48 dB/oct" };
inline constexpr std::array waveTexts { "Sine", "Triangle", "Saw", "Square", "Random tri", "Brownian" };
inline constexpr std::array syncTexts { "Time", "Wobbly", "Drunk", "Tempo" };
inline constexpr std::array filterTexts { "Butterworth", "Grunge Ladder" };
inline constexpr std::array offsetTexts { "Bars", "Seconds" };

/** A length that an LFO cycle can have in the tempo mode. */
struct Bar
{
    const char* text;
    float beats;
};

/** "2/3 bar" lasts 1.5 beats and is out of order, on purpose: projects depend on both. */
inline constexpr std::array bars {
    Bar { "16 bars", 64.0f },   Bar { "8 bars", 32.0f },
    Bar { "4 bars", 16.0f },    Bar { "3 bars", 12.0f },
    Bar { "2 bars", 8.0f },     Bar { "1.5 bars", 6.0f },
    Bar { "1 bar", 4.0f },      Bar { "3/4 bar", 3.0f },
    Bar { "1/2 bar", 2.0f },    Bar { "2/3 bar", 1.5f },
    Bar { "1/4 bar", 1.0f },    Bar { "1/6 bar", 0.6666666865348816f },
    Bar { "1/8 bar", 0.5f },    Bar { "1/12 bar", 0.3333333432674408f },
    Bar { "1/16 bar", 0.25f },  Bar { "1/24 bar", 0.1666666716337204f },
    Bar { "1/32 bar", 0.125f },
};

/** The texts alone, as a choice takes them. */
inline constexpr auto barTexts = []
{
    std::array<const char*, bars.size()> texts {};

    for (std::size_t index = 0; index < bars.size(); ++index)
        texts[index] = bars[index].text;

    return texts;
}();

/** The parameter of one LFO, the first being 0. */
struct LfoMember
{
    std::array<ParameterSet::Parameter*, ParameterSet::numLfos> ParameterSet::*parameters;
    std::size_t lfo;

    /** True for the same parameter of the same LFO. */
    [[nodiscard]] constexpr bool operator== (const LfoMember&) const = default;
};

/** The parameter of one step, the first being 0. */
struct StepMember
{
    std::array<ParameterSet::Parameter*, ParameterSet::numSteps> ParameterSet::*parameters;
    std::size_t step;

    /** True for the same parameter of the same step. */
    [[nodiscard]] constexpr bool operator== (const StepMember&) const = default;
};

/** Where ParameterSet keeps the parameter of a row. */
using Member = std::variant<ParameterSet::Parameter * ParameterSet::*, juce::AudioParameterBool * ParameterSet::*,
                            LfoMember, StepMember>;

/** Everything about one parameter. */
struct Row
{
    Member member;
    const char* id;
    const char* name;
    Kind kind;
    const char* unit;
    float minValue;
    float maxValue;

    /** Normalised, for all rows but the choices. */
    float defaultValue;

    /** For choices only. Where there are more steps than texts, the rest is room for later texts. */
    Texts texts {};
    int stepCount = 0;
    int defaultIndex = 0;
};

/** A row over a range of hertz, shown as frequency or as period. */
[[nodiscard]] constexpr Row frequency (Member member, const char* id, const char* name, float minHz, float maxHz,
                                       float position)
{
    return { member, id, name, Kind::frequencyKind, "Hz", minHz, maxHz, position };
}

/** A row from 0 to 100 %. */
[[nodiscard]] constexpr Row percent (Member member, const char* id, const char* name, float position)
{
    return { member, id, name, Kind::percentKind, "%", 0.0f, 100.0f, position };
}

/** A row from -range to range that rests in the middle. */
[[nodiscard]] constexpr Row bipolar (Member member, const char* id, const char* name, float range)
{
    return { member, id, name, Kind::bipolarKind, "", -range, range, 0.5f };
}

/** A row with a choice of texts, which have the lowest of stepCount positions. */
[[nodiscard]] constexpr Row choice (Member member, const char* id, const char* name, Texts texts, int stepCount,
                                    int defaultIndex)
{
    return { member, id, name, Kind::choiceKind, "", 0.0f, 1.0f, 0.0f, texts, stepCount, defaultIndex };
}

/** A row that is on or off, and starts off. */
[[nodiscard]] constexpr Row onOff (Member member, const char* id, const char* name)
{
    return { member, id, name, Kind::switchKind, "", 0.0f, 1.0f, 0.0f };
}

/** A short name for the rows below. */
using Set = ParameterSet;

inline constexpr std::array rows {
    frequency (&Set::hpFreq, "hp_freq", "Highpass frequency", 20.0f, 20000.0f, 0.0f),
    percent (&Set::hpReso, "hp_reso", "Highpass resonance", 0.0f),
    choice (&Set::hpMode, "hp_mode", "Highpass mode", slopeTexts, 10, 2),
    frequency (&Set::lpFreq, "lp_freq", "Lowpass frequency", 20.0f, 20000.0f, 1.0f),
    percent (&Set::lpReso, "lp_reso", "Lowpass resonance", 0.0f),
    choice (&Set::lpMode, "lp_mode", "Lowpass mode", slopeTexts, 10, 2),
    onOff (&Set::link, "link", "Link frequencies"),
    percent (&Set::inertia, "inertia", "Inertia", 0.05f),

    frequency (LfoMember { &Set::lfoSpeed, 0 }, "lfo1_speed", "LFO 1 speed", 0.2f, 20.0f, 0.5f),
    choice (LfoMember { &Set::lfoMode, 0 }, "lfo1_mode", "LFO 1 mode", barTexts, 17, 0),
    bipolar (LfoMember { &Set::lfoPhase, 0 }, "lfo1_phase", "LFO 1 phase", 50.0f),
    choice (LfoMember { &Set::lfoShape, 0 }, "lfo1_shape", "LFO 1 shape", waveTexts, 30, 1),
    bipolar (LfoMember { &Set::lfoCurve, 0 }, "lfo1_curve", "LFO 1 curve", 100.0f),
    choice (LfoMember { &Set::lfoSync, 0 }, "lfo1_sync", "LFO 1 sync type", syncTexts, 10, 0),
    bipolar (LfoMember { &Set::lfoToHpFreq, 0 }, "lfo1T_hpf", "LFO 1 > HP freq", 100.0f),
    bipolar (LfoMember { &Set::lfoToLpFreq, 0 }, "lfo1T_lpf", "LFO 1 > LP freq", 100.0f),
    bipolar (LfoMember { &Set::lfoToHpReso, 0 }, "lfo1T_hpr", "LFO 1 > HP reso", 100.0f),
    bipolar (LfoMember { &Set::lfoToLpReso, 0 }, "lfo1T_lpr", "LFO 1 > LP reso", 100.0f),
    bipolar (LfoMember { &Set::lfoToOtherLfo, 0 }, "lfo1T_lfo2", "LFO 1 > LFO 2", 100.0f),

    frequency (LfoMember { &Set::lfoSpeed, 1 }, "lfo2_speed", "LFO 2 speed", 0.2f, 20.0f, 0.5f),
    choice (LfoMember { &Set::lfoMode, 1 }, "lfo2_mode", "LFO 2 mode", barTexts, 17, 0),
    bipolar (LfoMember { &Set::lfoPhase, 1 }, "lfo2_phase", "LFO 2 phase", 50.0f),
    choice (LfoMember { &Set::lfoShape, 1 }, "lfo2_shape", "LFO 2 shape", waveTexts, 30, 1),
    bipolar (LfoMember { &Set::lfoCurve, 1 }, "lfo2_curve", "LFO 2 curve", 100.0f),
    choice (LfoMember { &Set::lfoSync, 1 }, "lfo2_sync", "LFO 2 sync type", syncTexts, 10, 0),
    bipolar (LfoMember { &Set::lfoToHpFreq, 1 }, "lfo2T_hpf", "LFO 2 > HP freq", 100.0f),
    bipolar (LfoMember { &Set::lfoToLpFreq, 1 }, "lfo2T_lpf", "LFO 2 > LP freq", 100.0f),
    bipolar (LfoMember { &Set::lfoToHpReso, 1 }, "lfo2T_hpr", "LFO 2 > HP reso", 100.0f),
    bipolar (LfoMember { &Set::lfoToLpReso, 1 }, "lfo2T_lpr", "LFO 2 > LP reso", 100.0f),
    bipolar (LfoMember { &Set::lfoToOtherLfo, 1 }, "lfo2T_lfo1", "LFO 2 > LFO 1", 100.0f),

    choice (&Set::filtMode, "filtmode", "Filter mode", filterTexts, 10, 0),
    bipolar (&Set::seqOffs, "seq_offs", "Sequencer offset", 1024.0f),
    choice (&Set::seqUnit, "seq_unit", "Offset unit", offsetTexts, 10, 0),
    percent (&Set::srndHpf, "srnd_hpf", "HP random amount", 0.5f),
    percent (&Set::srndLpf, "srnd_lpf", "LP random amount", 0.5f),

    bipolar (StepMember { &Set::seqHpf, 0 }, "seq1_hpf", "SEQ 1 > HP freq", 100.0f),
    bipolar (StepMember { &Set::seqLpf, 0 }, "seq1_lpf", "SEQ 1 > LP freq", 100.0f),
    bipolar (StepMember { &Set::seqHpf, 1 }, "seq2_hpf", "SEQ 2 > HP freq", 100.0f),
    bipolar (StepMember { &Set::seqLpf, 1 }, "seq2_lpf", "SEQ 2 > LP freq", 100.0f),
    bipolar (StepMember { &Set::seqHpf, 2 }, "seq3_hpf", "SEQ 3 > HP freq", 100.0f),
    bipolar (StepMember { &Set::seqLpf, 2 }, "seq3_lpf", "SEQ 3 > LP freq", 100.0f),
    bipolar (StepMember { &Set::seqHpf, 3 }, "seq4_hpf", "SEQ 4 > HP freq", 100.0f),
    bipolar (StepMember { &Set::seqLpf, 3 }, "seq4_lpf", "SEQ 4 > LP freq", 100.0f),
    bipolar (StepMember { &Set::seqHpf, 4 }, "seq5_hpf", "SEQ 5 > HP freq", 100.0f),
    bipolar (StepMember { &Set::seqLpf, 4 }, "seq5_lpf", "SEQ 5 > LP freq", 100.0f),
    bipolar (StepMember { &Set::seqHpf, 5 }, "seq6_hpf", "SEQ 6 > HP freq", 100.0f),
    bipolar (StepMember { &Set::seqLpf, 5 }, "seq6_lpf", "SEQ 6 > LP freq", 100.0f),
    bipolar (StepMember { &Set::seqHpf, 6 }, "seq7_hpf", "SEQ 7 > HP freq", 100.0f),
    bipolar (StepMember { &Set::seqLpf, 6 }, "seq7_lpf", "SEQ 7 > LP freq", 100.0f),
    bipolar (StepMember { &Set::seqHpf, 7 }, "seq8_hpf", "SEQ 8 > HP freq", 100.0f),
    bipolar (StepMember { &Set::seqLpf, 7 }, "seq8_lpf", "SEQ 8 > LP freq", 100.0f),
    bipolar (StepMember { &Set::seqHpf, 8 }, "seq9_hpf", "SEQ 9 > HP freq", 100.0f),
    bipolar (StepMember { &Set::seqLpf, 8 }, "seq9_lpf", "SEQ 9 > LP freq", 100.0f),
    bipolar (StepMember { &Set::seqHpf, 9 }, "seq10_hpf", "SEQ 10 > HP freq", 100.0f),
    bipolar (StepMember { &Set::seqLpf, 9 }, "seq10_lpf", "SEQ 10 > LP freq", 100.0f),
};

static_assert (rows.size() == 55);

/** True if no two rows have the same member or the same id. As there are as many rows as members, each member has a row. */
[[nodiscard]] constexpr bool areAllDifferent (std::span<const Row> list)
{
    for (std::size_t i = 0; i < list.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (list[i].member == list[j].member || std::string_view (list[i].id) == list[j].id)
                return false;

    return true;
}

static_assert (areAllDifferent (rows));
} // namespace parameterTable
