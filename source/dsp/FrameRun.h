// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <span>

#include "StereoPair.h"

/** Frames that are taken together at the most: long enough to fill a row of skewed stages and to make up for getting
    there. */
inline constexpr std::size_t maxRunFrames = 256;

/** The same while every frame has a design of its own: short enough for all coefficients to stay near the processor. */
inline constexpr std::size_t maxDesigns = 64;

/** Consecutive frames during which nothing of the engine's structure changes, processed in place. */
using FrameRun = std::span<StereoPair>;
