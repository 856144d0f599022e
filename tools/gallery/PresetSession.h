// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string_view>
#include <vector>

#include "demo/DemoStems.h"

/** A preset played over a loop in the plug-in itself, as its cutoffs can only be seen from inside. The loop begins on beat 32,
    a bar line of every pattern. Its last bar is played before it, in which the knobs come to rest; so the sound closes as the
    loop does. It is that of `kestrin-host render --start-beat 28` from the second bar on, but for a Brownian LFO, whose walk
    is the same every time here and never in a module. */
namespace presetSession
{
struct Moment
{
    double seconds, highpassHz, lowpassHz;
};

struct Played
{
    demo::Loop sound;

    /** Where the cutoffs stand, once in each block of the host. */
    std::vector<Moment> moments;
};

/** @param state  the block of bytes that a DAW keeps in its project */
[[nodiscard]] Played play (std::string_view state, const demo::Loop& loop);
} // namespace presetSession
