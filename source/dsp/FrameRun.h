// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <span>

#include "StereoPair.h"

/** Frames that are taken together at the most. Long enough to fill a row of skewed stages, short enough for the
    coefficients of every frame to stay near the processor. */
inline constexpr std::size_t maxRunFrames = 64;

/** Consecutive frames during which nothing of the engine's structure changes, processed in place. */
using FrameRun = std::span<StereoPair>;
