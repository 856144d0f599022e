// SPDX-License-Identifier: AGPL-3.0-or-later
#include "parameters/ParameterSet.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "parameters/ParameterTable.h"

namespace
{
using Parameter = ParameterSet::Parameter;
using Switch = juce::AudioParameterBool;

std::unique_ptr<Parameter> makeParameter (const parameterTable::Row& row)
{
    if (row.kind == Parameter::choiceKind)
        return std::make_unique<Parameter> (row.id, row.name, row.minValue, row.maxValue, row.defaultIndex,
                                            std::vector<std::string> (row.texts.begin(), row.texts.end()),
                                            row.stepCount);

    return std::make_unique<Parameter> (row.id, row.name, row.minValue, row.maxValue, row.defaultValue, row.kind,
                                        row.unit);
}

std::unique_ptr<Switch> makeSwitch (const parameterTable::Row& row)
{
    return std::make_unique<Switch> (juce::ParameterID { row.id, 0 }, row.name, false);
}

/** Hands a parameter over to its owner, and returns a pointer to it. */
template <typename ParameterType>
ParameterType* addTo (juce::AudioProcessor& owner, std::unique_ptr<ParameterType> parameter)
{
    auto* const added = parameter.get();
    owner.addParameter (parameter.release());
    return added;
}

/** Makes the parameter of a row and keeps its pointer in the row's member: one function for each kind of member. */
struct RowAdder
{
    void operator() (Switch* ParameterSet::*member) const { set.*member = addTo (owner, makeSwitch (row)); }
    void operator() (Parameter* ParameterSet::*member) const { set.*member = addCounted(); }

    void operator() (const parameterTable::LfoMember& member) const
    {
        (set.*member.parameters)[member.lfo] = addCounted();
    }

    void operator() (const parameterTable::StepMember& member) const
    {
        (set.*member.parameters)[member.step] = addCounted();
    }

    [[nodiscard]] Parameter* addCounted() const
    {
        auto* const parameter = addTo (owner, makeParameter (row));
        parameter->countChangesIn (changeCount);
        return parameter;
    }

    ParameterSet& set;
    std::atomic<std::uint32_t>& changeCount;
    juce::AudioProcessor& owner;
    const parameterTable::Row& row;
};
} // namespace

ParameterSet::ParameterSet (juce::AudioProcessor& owner)
{
    for (const auto& row : parameterTable::rows)
        std::visit (RowAdder { *this, changeCount, owner, row }, row.member);
}
