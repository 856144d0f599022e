// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "host/ParameterList.h"

/** Turns what people write into the position that a host sends. */
namespace valueResolver
{
/** A plain number without a sign is a position, 0 to 1. Everything else is a text as the module shows it: a choice
    ("24 dB/oct"), or a number with sign or unit ("440 Hz", "30 %", "+50", "-20"), even between two that the module shows.
    @throws HostError, which lists the choices or names the range */
[[nodiscard]] float resolve (const HostedParameter& parameter, const juce::String& text);

/** The two halves of "id=text or position".
    @throws HostError if there is no equals sign or nothing on one side of it */
struct Assignment
{
    juce::String id;
    juce::String value;
};

[[nodiscard]] Assignment splitAssignment (const juce::String& text);
} // namespace valueResolver
