// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>

/** One number for the left channel and one for the right. */
using StereoPair = std::array<double, 2>;
