// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <iosfwd>

/** Sounds to send through the module, and what its answers say: WAV files of one channel, 32-bit float, at sampleRate. Each
    begins with silence, in which the module's controls come to rest. */
namespace probeSignal
{
inline constexpr int sampleRate = 48000;

/** One single sample. At a small level the module answers linearly, and the answer's spectrum is the response.
    @param level  its height */
void writeImpulse (std::ostream& out, double level);

/** Sines one after another, from low to high. They measure the response to a loud sound, where the module is not linear.
    @param level  their amplitude */
void writeTones (std::ostream& out, double level);

/** Reads the answer to an impulse.
    @returns through out lines of a frequency in Hz and a gain in dB */
void measureImpulse (std::istream& in, std::ostream& out, double level);

/** Reads the answer to tones. For each tone only its own frequency is measured. */
void measureTones (std::istream& in, std::ostream& out, double level);
} // namespace probeSignal
