// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "demo/DemoStems.h"

/** What a preset does to a sound, in decibels. */
namespace soundFigures
{
/** The largest sample; 0 is full scale. */
[[nodiscard]] double peakDb (const demo::Loop& loop);

/** The loudness of the whole loop, pauses and all, in LUFS.
    Sources: ITU-R BS.1770-4, without its gate; the two filters for any rate as in B. De Man, "Evaluation of implementations
    of the EBU R128 loudness measurement", 2018. */
[[nodiscard]] double loudness (const demo::Loop& loop);

struct Gains
{
    /** How far the octave bands are raised or lowered, on average. */
    double changeDb;

    /** How far their gains wander in the course of the loop: the standard deviation, on average. */
    double motionDb;
};

/** Compares nine octave bands from 31.5 Hz to 8 kHz, where the sound before has something in them. */
[[nodiscard]] Gains compare (const demo::Loop& before, const demo::Loop& after);
} // namespace soundFigures
