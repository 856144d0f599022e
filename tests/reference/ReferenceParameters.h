// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <span>
#include <string>
#include <vector>

namespace reference
{

/** The kind of every parameter that offers a list of texts. */
inline constexpr int choiceKind = 10;

/** One row of the parameter list, written a second time so that a slip in the plug-in's own list shows. */
struct ParameterInfo
{
    std::string id;
    std::string name;
    int kind = 0;     // 1 to 13, 10 for a choice; 0 for the one on/off parameter
    std::string unit; // if empty, resolvedUnit() takes the unit of the kind
    float minValue = 0.0f;
    float maxValue = 1.0f;
    float defaultPosition = 0.0f;
    std::vector<std::string> texts;
    int stepCount = 0;
    bool isBool = false;
};

/** All 55 parameters in host order; index 6 is the on/off parameter "link". */
std::span<const ParameterInfo> parameterTable();

/** The place of an identifier in parameterTable(), or -1. */
int indexOfParameter (const std::string& id);

/** The unit behind the number: the row's own, or the default of its kind. */
std::string resolvedUnit (const ParameterInfo& info);

/** The index of a position: 0 for all but choices of two or more steps. Not limited by the number
    of texts. NaN gives 0. */
int choiceIndexOf (const ParameterInfo& info, float position);

/** The position of a choice index, computed in single precision; 0 when there are fewer than two steps. */
float positionOfChoice (int index, int stepCount);

} // namespace reference
