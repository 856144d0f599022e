// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <iosfwd>

/** What moves the filters, as tables for gnuplot, from the classes that the plug-in itself is made of. */
namespace motionCurves
{
/** One block of lines per LFO shape: time, and the output with the curve at -100, 0 and +100. */
void writeLfoShapes (std::ostream& out);

/** Lines of a step's number, the beat where it goes on and the beat where it goes off.
    @param beats  how much of the song is shown, from beat 0 */
void writeSteps (std::ostream& out, double beats);

/** Lines of a position in beats, the travel of the lowpass knob and the cutoff in Hz: the pattern that the manual works
    through. */
void writePattern (std::ostream& out);
} // namespace motionCurves
