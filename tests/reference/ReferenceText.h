// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "reference/ReferenceParameters.h"

namespace reference
{

/** The display text of any position, for every kind, also those that no parameter of the list uses.
    Prints with the C library: run it under the "C" numeric locale. */
std::string formatValueText (const ParameterInfo& info, float position);

/** A time in words, floored to its largest unit: "5 minutes", "4 sec". Empty below a microsecond and for a time that is
    not finite. */
std::string formatDuration (double seconds);

} // namespace reference
