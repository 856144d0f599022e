// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <iosfwd>

/** How far each DSP class lies from its closed form, as a table in Markdown. */
namespace measuredErrors
{
void write (std::ostream& out);
} // namespace measuredErrors
