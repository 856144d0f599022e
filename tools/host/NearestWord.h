// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/** How many letters must be inserted, removed, replaced or swapped with the next one to make one word of the other.
    Source: F. J. Damerau, "A technique for computer detection and correction of spelling errors" (1964). */
[[nodiscard]] std::size_t editDistance (const std::string& one, const std::string& other);

/** The word that was probably meant: the nearest one, if no more than two edits and a third of its letters away; else an empty
    one. The first of several that are equally near. */
[[nodiscard]] std::string nearestWord (const std::string& typed, const std::vector<std::string>& words);
