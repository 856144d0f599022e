// SPDX-License-Identifier: AGPL-3.0-or-later
#include "reference/ReferenceParameters.h"

#include <cmath>

namespace reference
{

namespace
{
using Texts = std::vector<std::string>;

ParameterInfo number (const char* id, const char* name, int kind, const char* unit, float minValue, float maxValue,
                      float defaultPosition)
{
    ParameterInfo info;
    info.id = id;
    info.name = name;
    info.kind = kind;
    info.unit = unit;
    info.minValue = minValue;
    info.maxValue = maxValue;
    info.defaultPosition = defaultPosition;
    return info;
}

ParameterInfo choice (const char* id, const char* name, const Texts& texts, int stepCount, int defaultIndex)
{
    ParameterInfo info;
    info.id = id;
    info.name = name;
    info.kind = choiceKind;
    info.minValue = 0.0f;
    info.maxValue = 1.0f;
    info.texts = texts;
    info.stepCount = stepCount;
    info.defaultPosition = positionOfChoice (defaultIndex, stepCount);
    return info;
}

ParameterInfo onOff (const char* id, const char* name)
{
    ParameterInfo info;
    info.id = id;
    info.name = name;
    info.isBool = true;
    return info;
}

std::vector<ParameterInfo> makeTable()
{
    const Texts slopes { "bypass", "6 dB/oct", "12 dB/oct", "24 dB/oct", "48 dB/oct" };
    const Texts waves { "Sine", "Triangle", "Saw", "Square", "Random tri", "Brownian" };
    const Texts syncs { "Time", "Wobbly", "Drunk", "Tempo" };
    const Texts filters { "Butterworth", "Grunge Ladder" };
    const Texts offsets { "Bars", "Seconds" };
    const Texts bars { "16 bars", "8 bars",   "4 bars",   "3 bars",   "2 bars",  "1.5 bars",
                       "1 bar",   "3/4 bar",  "1/2 bar",  "2/3 bar",  "1/4 bar", "1/6 bar",
                       "1/8 bar", "1/12 bar", "1/16 bar", "1/24 bar", "1/32 bar" };

    return {
        number ("hp_freq", "Highpass frequency", 6, "Hz", 20.0f, 20000.0f, 0.0f),
        number ("hp_reso", "Highpass resonance", 2, "%", 0.0f, 100.0f, 0.0f),
        choice ("hp_mode", "Highpass mode", slopes, 10, 2),
        number ("lp_freq", "Lowpass frequency", 6, "Hz", 20.0f, 20000.0f, 1.0f),
        number ("lp_reso", "Lowpass resonance", 2, "%", 0.0f, 100.0f, 0.0f),
        choice ("lp_mode", "Lowpass mode", slopes, 10, 2),
        onOff ("link", "Link frequencies"),
        number ("inertia", "Inertia", 2, "%", 0.0f, 100.0f, 0.05f),

        number ("lfo1_speed", "LFO 1 speed", 6, "Hz", 0.2f, 20.0f, 0.5f),
        choice ("lfo1_mode", "LFO 1 mode", bars, 17, 0),
        number ("lfo1_phase", "LFO 1 phase", 11, "", -50.0f, 50.0f, 0.5f),
        choice ("lfo1_shape", "LFO 1 shape", waves, 30, 1),
        number ("lfo1_curve", "LFO 1 curve", 11, "", -100.0f, 100.0f, 0.5f),
        choice ("lfo1_sync", "LFO 1 sync type", syncs, 10, 0),
        number ("lfo1T_hpf", "LFO 1 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("lfo1T_lpf", "LFO 1 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("lfo1T_hpr", "LFO 1 > HP reso", 11, "", -100.0f, 100.0f, 0.5f),
        number ("lfo1T_lpr", "LFO 1 > LP reso", 11, "", -100.0f, 100.0f, 0.5f),
        number ("lfo1T_lfo2", "LFO 1 > LFO 2", 11, "", -100.0f, 100.0f, 0.5f),

        number ("lfo2_speed", "LFO 2 speed", 6, "Hz", 0.2f, 20.0f, 0.5f),
        choice ("lfo2_mode", "LFO 2 mode", bars, 17, 0),
        number ("lfo2_phase", "LFO 2 phase", 11, "", -50.0f, 50.0f, 0.5f),
        choice ("lfo2_shape", "LFO 2 shape", waves, 30, 1),
        number ("lfo2_curve", "LFO 2 curve", 11, "", -100.0f, 100.0f, 0.5f),
        choice ("lfo2_sync", "LFO 2 sync type", syncs, 10, 0),
        number ("lfo2T_hpf", "LFO 2 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("lfo2T_lpf", "LFO 2 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("lfo2T_hpr", "LFO 2 > HP reso", 11, "", -100.0f, 100.0f, 0.5f),
        number ("lfo2T_lpr", "LFO 2 > LP reso", 11, "", -100.0f, 100.0f, 0.5f),
        number ("lfo2T_lfo1", "LFO 2 > LFO 1", 11, "", -100.0f, 100.0f, 0.5f),

        choice ("filtmode", "Filter mode", filters, 10, 0),
        number ("seq_offs", "Sequencer offset", 11, "", -1024.0f, 1024.0f, 0.5f),
        choice ("seq_unit", "Offset unit", offsets, 10, 0),
        number ("srnd_hpf", "HP random amount", 2, "%", 0.0f, 100.0f, 0.5f),
        number ("srnd_lpf", "LP random amount", 2, "%", 0.0f, 100.0f, 0.5f),

        number ("seq1_hpf", "SEQ 1 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq1_lpf", "SEQ 1 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq2_hpf", "SEQ 2 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq2_lpf", "SEQ 2 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq3_hpf", "SEQ 3 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq3_lpf", "SEQ 3 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq4_hpf", "SEQ 4 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq4_lpf", "SEQ 4 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq5_hpf", "SEQ 5 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq5_lpf", "SEQ 5 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq6_hpf", "SEQ 6 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq6_lpf", "SEQ 6 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq7_hpf", "SEQ 7 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq7_lpf", "SEQ 7 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq8_hpf", "SEQ 8 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq8_lpf", "SEQ 8 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq9_hpf", "SEQ 9 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq9_lpf", "SEQ 9 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq10_hpf", "SEQ 10 > HP freq", 11, "", -100.0f, 100.0f, 0.5f),
        number ("seq10_lpf", "SEQ 10 > LP freq", 11, "", -100.0f, 100.0f, 0.5f),
    };
}
} // namespace

std::span<const ParameterInfo> parameterTable()
{
    static const std::vector<ParameterInfo> table = makeTable();
    return { table.data(), table.size() };
}

int indexOfParameter (const std::string& id)
{
    const auto table = parameterTable();

    for (std::size_t i = 0; i < table.size(); ++i)
        if (table[i].id == id)
            return (int) i;

    return -1;
}

std::string resolvedUnit (const ParameterInfo& info)
{
    if (info.kind == choiceKind || ! info.unit.empty())
        return info.unit;

    switch (info.kind)
    {
        case 1:
            return "";
        case 2:
            return "%";
        case 3:
            return "";
        case 4:
            return "dB";
        case 5:
            return "dB";
        case 6:
            return "Hz";
        case 7:
            return "";
        case 8:
            return "";
        case 9:
            return "oct";
        case 11:
            return "";
        case 12:
            return ":1";
        case 13:
            return "";
        default:
            return "";
    }
}

int choiceIndexOf (const ParameterInfo& info, float position)
{
    if (info.kind == choiceKind && info.stepCount > 1)
    {
        const float rounded = std::round ((float) (info.stepCount - 1) * position);

        if (std::isnan (rounded))
            return 0;

        return (int) rounded;
    }

    return 0;
}

float positionOfChoice (int index, int stepCount)
{
    if (stepCount < 2)
        return 0.0f;

    return (float) index / (float) (stepCount - 1);
}

} // namespace reference
