// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace demo
{
/** A sound in two channels of equal length, within -1 to 1. */
struct Loop
{
    double sampleRate;
    std::vector<float> left, right;
};

class LoopMix;

/** One of the loops to filter: eight bars at 120 beats per minute, which begin on a bar line and close without a seam. */
struct Stem
{
    std::string_view name;
    std::string_view about;
    void (*play) (LoopMix&);
};

/** All stems. The first is the whole band. */
[[nodiscard]] std::span<const Stem> stems();

/** The stem of this name; nullptr if there is none. */
[[nodiscard]] const Stem* findStem (std::string_view name);

/** What a sound effect is judged on: the stem that suits it, and the first two others. */
[[nodiscard]] std::vector<const Stem*> stemsToJudgeOn (const Stem& suited);

/** Plays a stem: peak at -6 dBFS, and every sample one of 24 bits, so that a file of 24 bits holds exactly these numbers. The
    same call gives the same loop: it uses no clock and no random device. */
[[nodiscard]] Loop render (const Stem& stem);

} // namespace demo
