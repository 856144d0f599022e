// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

/** A time in words, floored to its largest unit: 330 seconds are "5 minutes", 4.99 seconds "4 sec". Empty below one
    microsecond and for a time that is not finite. Allocates. */
[[nodiscard]] std::string formatDuration (double seconds);
