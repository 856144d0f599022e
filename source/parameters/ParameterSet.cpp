// SPDX-License-Identifier: AGPL-3.0-or-later
#include "parameters/ParameterSet.h"

#include <memory>
#include <string>
#include <vector>

#include "parameters/ParameterTable.h"

namespace
{
using Parameter = ParameterSet::Parameter;

std::unique_ptr<juce::RangedAudioParameter> makeParameter (const parameterTable::Row& row)
{
    if (row.kind == parameterTable::switchKind)
        return std::make_unique<juce::AudioParameterBool> (juce::ParameterID { row.id, 0 }, row.name, false);

    if (row.kind == Parameter::choiceKind)
        return std::make_unique<Parameter> (row.id, row.name, row.minValue, row.maxValue, row.defaultIndex,
                                            std::vector<std::string> (row.texts.begin(), row.texts.end()),
                                            row.stepCount);

    return std::make_unique<Parameter> (row.id, row.name, row.minValue, row.maxValue, row.defaultValue, row.kind,
                                        row.unit);
}

template <typename ParameterType>
ParameterType* find (const juce::AudioProcessor& owner, const char* id)
{
    for (auto* parameter : owner.getParameters())
        if (auto* found = dynamic_cast<ParameterType*> (parameter); found != nullptr && found->paramID == id)
            return found;

    jassertfalse; // a name below that the table does not hold
    return nullptr;
}
} // namespace

ParameterSet::ParameterSet (juce::AudioProcessor& owner)
{
    for (const auto& row : parameterTable::rows)
        owner.addParameter (makeParameter (row).release());

    const auto named = [&] (const char* id)
    {
        auto* const parameter = find<Parameter> (owner, id);
        parameter->countChangesIn (changeCount);
        return parameter;
    };

    hpFreq = named ("hp_freq");
    hpReso = named ("hp_reso");
    hpMode = named ("hp_mode");
    lpFreq = named ("lp_freq");
    lpReso = named ("lp_reso");
    lpMode = named ("lp_mode");
    link = find<juce::AudioParameterBool> (owner, "link");
    inertia = named ("inertia");

    lfoSpeed = { named ("lfo1_speed"), named ("lfo2_speed") };
    lfoMode = { named ("lfo1_mode"), named ("lfo2_mode") };
    lfoPhase = { named ("lfo1_phase"), named ("lfo2_phase") };
    lfoShape = { named ("lfo1_shape"), named ("lfo2_shape") };
    lfoCurve = { named ("lfo1_curve"), named ("lfo2_curve") };
    lfoSync = { named ("lfo1_sync"), named ("lfo2_sync") };
    lfoToHpFreq = { named ("lfo1T_hpf"), named ("lfo2T_hpf") };
    lfoToLpFreq = { named ("lfo1T_lpf"), named ("lfo2T_lpf") };
    lfoToHpReso = { named ("lfo1T_hpr"), named ("lfo2T_hpr") };
    lfoToLpReso = { named ("lfo1T_lpr"), named ("lfo2T_lpr") };
    lfoToOtherLfo = { named ("lfo1T_lfo2"), named ("lfo2T_lfo1") };

    filtMode = named ("filtmode");
    seqOffs = named ("seq_offs");
    seqUnit = named ("seq_unit");
    srndHpf = named ("srnd_hpf");
    srndLpf = named ("srnd_lpf");

    seqHpf = { named ("seq1_hpf"), named ("seq2_hpf"), named ("seq3_hpf"), named ("seq4_hpf"), named ("seq5_hpf"),
               named ("seq6_hpf"), named ("seq7_hpf"), named ("seq8_hpf"), named ("seq9_hpf"), named ("seq10_hpf") };
    seqLpf = { named ("seq1_lpf"), named ("seq2_lpf"), named ("seq3_lpf"), named ("seq4_lpf"), named ("seq5_lpf"),
               named ("seq6_lpf"), named ("seq7_lpf"), named ("seq8_lpf"), named ("seq9_lpf"), named ("seq10_lpf") };
}
