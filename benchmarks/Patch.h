// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <vector>

/** Parameter positions that bring an engine into one of its regimes. Each costs the same in every block, so that the
    shortest of many blocks stands for all. */
struct Patch
{
    struct Setting
    {
        int index;
        float position;
    };

    std::vector<Setting> settings;

    /** Nothing moves.
        @param slope  choice index of both filters: 2 is 12 dB per octave, 4 is 48 */
    [[nodiscard]] static Patch asleep (int slope, float resonance = 0.0f);

    /** The ladder at 48 dB per octave, in which the resonance is the grunge. */
    [[nodiscard]] static Patch ladder (float grunge);

    /** A sine to the highpass cutoff, 12 dB per octave. */
    [[nodiscard]] static Patch oneLfo();

    /** A sine to both cutoffs. */
    [[nodiscard]] static Patch bothCutoffs (int slope);

    /** Both LFOs, with curve and "Drunk", to all four places and to each other, all ten steps, 48 dB per octave, and both
        resonances. */
    [[nodiscard]] static Patch everything();
};
