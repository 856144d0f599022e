// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <span>

#include "parameters/AudioParameterFloatKestrin.h"

/** The 55 parameters, one row each, in the order in which the host sees them. The list is frozen: projects store the ids,
    the order and, for a choice, the positions that follow from its number of steps. */
namespace parameterTable
{
using Kind = juce::AudioParameterFloatKestrin::ValueKind;
using Texts = std::span<const char* const>;

inline constexpr std::array slopeTexts { "bypass", "6 dB/oct", "12 dB/oct", "24 dB/oct", "48 dB/oct" };
inline constexpr std::array waveTexts { "Sine", "Triangle", "Saw", "Square", "Random tri", "Brownian" };
inline constexpr std::array syncTexts { "Time", "Wobbly", "Drunk", "Tempo" };
inline constexpr std::array filterTexts { "Butterworth", "Grunge Ladder" };
inline constexpr std::array offsetTexts { "Bars", "Seconds" };
inline constexpr std::array barTexts { "16 bars", "8 bars",   "4 bars",   "3 bars",   "2 bars",  "1.5 bars",
                                       "1 bar",   "3/4 bar",  "1/2 bar",  "2/3 bar",  "1/4 bar", "1/6 bar",
                                       "1/8 bar", "1/12 bar", "1/16 bar", "1/24 bar", "1/32 bar" };

/** The length of one LFO cycle in beats, for each of barTexts. "2/3 bar" is out of line and out of order: projects depend
    on it as it stands. */
inline constexpr std::array<float, barTexts.size()> barLengths { 64.0f, 32.0f,
                                                                 16.0f, 12.0f,
                                                                 8.0f,  6.0f,
                                                                 4.0f,  3.0f,
                                                                 2.0f,  1.5f,
                                                                 1.0f,  0.6666666865348816f,
                                                                 0.5f,  0.3333333432674408f,
                                                                 0.25f, 0.1666666716337204f,
                                                                 0.125f };

/** Everything about one parameter. */
struct Row
{
    const char* id;
    const char* name;
    int kind;
    const char* unit;
    float minValue;
    float maxValue;

    /** Normalised, for all rows but the choices. */
    float defaultValue;

    /** Of the choices only. There are more steps than texts wherever room is left for later texts. */
    Texts texts {};
    int stepCount = 0;
    int defaultIndex = 0;
};

/** A row over a range of hertz, shown as frequency or as period. */
[[nodiscard]] constexpr Row frequency (const char* id, const char* name, float minHz, float maxHz, float position)
{
    return { id, name, Kind::frequencyKind, "Hz", minHz, maxHz, position };
}

/** A row from 0 to 100 %. */
[[nodiscard]] constexpr Row percent (const char* id, const char* name, float position)
{
    return { id, name, Kind::percentKind, "%", 0.0f, 100.0f, position };
}

/** A row from -range to range that rests in the middle. */
[[nodiscard]] constexpr Row bipolar (const char* id, const char* name, float range)
{
    return { id, name, Kind::bipolarKind, "", -range, range, 0.5f };
}

/** A row of texts on the lowest of stepCount positions. */
[[nodiscard]] constexpr Row choice (const char* id, const char* name, Texts texts, int stepCount, int defaultIndex)
{
    return { id, name, Kind::choiceKind, "", 0.0f, 1.0f, 0.0f, texts, stepCount, defaultIndex };
}

/** The one switch of the list, which is JUCE's own kind of parameter. */
inline constexpr int switchKind = 0;

/** A row that is on or off, and starts off. */
[[nodiscard]] constexpr Row onOff (const char* id, const char* name)
{
    return { id, name, switchKind, "", 0.0f, 1.0f, 0.0f };
}

inline constexpr std::array rows {
    frequency ("hp_freq", "Highpass frequency", 20.0f, 20000.0f, 0.0f),
    percent ("hp_reso", "Highpass resonance", 0.0f),
    choice ("hp_mode", "Highpass mode", slopeTexts, 10, 2),
    frequency ("lp_freq", "Lowpass frequency", 20.0f, 20000.0f, 1.0f),
    percent ("lp_reso", "Lowpass resonance", 0.0f),
    choice ("lp_mode", "Lowpass mode", slopeTexts, 10, 2),
    onOff ("link", "Link frequencies"),
    percent ("inertia", "Inertia", 0.05f),

    frequency ("lfo1_speed", "LFO 1 speed", 0.2f, 20.0f, 0.5f),
    choice ("lfo1_mode", "LFO 1 mode", barTexts, 17, 0),
    bipolar ("lfo1_phase", "LFO 1 phase", 50.0f),
    choice ("lfo1_shape", "LFO 1 shape", waveTexts, 30, 1),
    bipolar ("lfo1_curve", "LFO 1 curve", 100.0f),
    choice ("lfo1_sync", "LFO 1 sync type", syncTexts, 10, 0),
    bipolar ("lfo1T_hpf", "LFO 1 > HP freq", 100.0f),
    bipolar ("lfo1T_lpf", "LFO 1 > LP freq", 100.0f),
    bipolar ("lfo1T_hpr", "LFO 1 > HP reso", 100.0f),
    bipolar ("lfo1T_lpr", "LFO 1 > LP reso", 100.0f),
    bipolar ("lfo1T_lfo2", "LFO 1 > LFO 2", 100.0f),

    frequency ("lfo2_speed", "LFO 2 speed", 0.2f, 20.0f, 0.5f),
    choice ("lfo2_mode", "LFO 2 mode", barTexts, 17, 0),
    bipolar ("lfo2_phase", "LFO 2 phase", 50.0f),
    choice ("lfo2_shape", "LFO 2 shape", waveTexts, 30, 1),
    bipolar ("lfo2_curve", "LFO 2 curve", 100.0f),
    choice ("lfo2_sync", "LFO 2 sync type", syncTexts, 10, 0),
    bipolar ("lfo2T_hpf", "LFO 2 > HP freq", 100.0f),
    bipolar ("lfo2T_lpf", "LFO 2 > LP freq", 100.0f),
    bipolar ("lfo2T_hpr", "LFO 2 > HP reso", 100.0f),
    bipolar ("lfo2T_lpr", "LFO 2 > LP reso", 100.0f),
    bipolar ("lfo2T_lfo1", "LFO 2 > LFO 1", 100.0f),

    choice ("filtmode", "Filter mode", filterTexts, 10, 0),
    bipolar ("seq_offs", "Sequencer offset", 1024.0f),
    choice ("seq_unit", "Offset unit", offsetTexts, 10, 0),
    percent ("srnd_hpf", "HP random amount", 0.5f),
    percent ("srnd_lpf", "LP random amount", 0.5f),

    bipolar ("seq1_hpf", "SEQ 1 > HP freq", 100.0f),
    bipolar ("seq1_lpf", "SEQ 1 > LP freq", 100.0f),
    bipolar ("seq2_hpf", "SEQ 2 > HP freq", 100.0f),
    bipolar ("seq2_lpf", "SEQ 2 > LP freq", 100.0f),
    bipolar ("seq3_hpf", "SEQ 3 > HP freq", 100.0f),
    bipolar ("seq3_lpf", "SEQ 3 > LP freq", 100.0f),
    bipolar ("seq4_hpf", "SEQ 4 > HP freq", 100.0f),
    bipolar ("seq4_lpf", "SEQ 4 > LP freq", 100.0f),
    bipolar ("seq5_hpf", "SEQ 5 > HP freq", 100.0f),
    bipolar ("seq5_lpf", "SEQ 5 > LP freq", 100.0f),
    bipolar ("seq6_hpf", "SEQ 6 > HP freq", 100.0f),
    bipolar ("seq6_lpf", "SEQ 6 > LP freq", 100.0f),
    bipolar ("seq7_hpf", "SEQ 7 > HP freq", 100.0f),
    bipolar ("seq7_lpf", "SEQ 7 > LP freq", 100.0f),
    bipolar ("seq8_hpf", "SEQ 8 > HP freq", 100.0f),
    bipolar ("seq8_lpf", "SEQ 8 > LP freq", 100.0f),
    bipolar ("seq9_hpf", "SEQ 9 > HP freq", 100.0f),
    bipolar ("seq9_lpf", "SEQ 9 > LP freq", 100.0f),
    bipolar ("seq10_hpf", "SEQ 10 > HP freq", 100.0f),
    bipolar ("seq10_lpf", "SEQ 10 > LP freq", 100.0f),
};

static_assert (rows.size() == 55);
} // namespace parameterTable
