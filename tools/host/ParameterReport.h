// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "host/ParameterList.h"

/** The list of a module's parameters, as its host sees them. */
namespace parameterReport
{
/** Columns for a terminal. */
[[nodiscard]] juce::String asTable (const ParameterList& list);

/** A page of documentation. It holds the module's own parameters and not what the framework adds (the bypass). */
[[nodiscard]] juce::String asMarkdown (const ParameterList& list);

[[nodiscard]] juce::String asJson (const ParameterList& list);
} // namespace parameterReport
