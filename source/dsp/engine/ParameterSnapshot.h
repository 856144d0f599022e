// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "dsp/modulation/Frequencer.h"
#include "dsp/simd/Lanes.h"
#include "parameters/ParameterSet.h"

/** What the parameters say, in the terms of the control tick.

    A tick looks at about fifty parameters, which lie all over the memory, and taking them one by one would cost more than
    all that the tick computes of them. So ticks share a snapshot until ParameterSet's count of changes has moved on. Nothing
    that depends on time, rate or transport is kept here, and no exponential is.
    Audio thread only; never allocates. */
struct ParameterSnapshot
{
    /** What can be modulated, by its place among the four that move together. */
    enum Target : std::size_t
    {
        hpFreq,
        lpFreq,
        hpReso,
        lpReso
    };

    /** Which filters run. A choice above the two families runs none, though the ticks keep designing for the first. */
    enum class Family : std::uint8_t
    {
        butterworth,
        ladder,
        none
    };

    /** The choices of lfo1_sync and lfo2_sync that do something; all others run freely. */
    enum Sync
    {
        wobblySync = 1,
        drunkSync = 2,
        tempoSync = 3
    };

    /** What a choice of hp_mode or lp_mode comes to. */
    struct Slope
    {
        std::int32_t poles;
        float peakBandwidth;
    };

    /** What the eleven parameters of an LFO come to. */
    struct Lfo
    {
        int sync;

        /** One of LfoGenerator's. */
        int shape;

        /** Beats of one tempo-locked cycle. */
        float beats;

        float speed;
        float phase;

        /** What the curve stage bends by, as the exponent of e. */
        float bend;

        /** How deep this LFO modulates each target, -1 to 1. */
        FloatQuad depths;

        /** How deep the other LFO moves this one's speed, if it does. */
        float depthOfOther;
        bool isMovedByOther;
    };

    /** @param barLengths  in beats, in step with the choice of lfo1_mode and lfo2_mode */
    ParameterSnapshot (const ParameterSet& parameters, std::span<const float> barLengths) noexcept;

    /** True if ticks go on whatever becomes of the slews, and if all that a tick asks the host is its position: then ticks
        can be collected first and computed later. */
    [[nodiscard]] bool canBeBatched() const noexcept { return active && ! followsBars; }

    /** The count of changes before anything was read: if it has moved on, so may have a parameter. */
    std::uint32_t changeCount;

    Family family;
    Slope highpass, lowpass;

    /** Where the four targets lie without modulation. */
    FloatQuad baseTargets;

    std::array<Lfo, ParameterSet::numLfos> lfo;
    float shiftBeats;
    frequencer::Pattern pattern;

    /** Something is routed or programmed, so that every frame needs a tick. */
    bool active;

    /** One LFO or both have a reserved shape, which asks the transport for the bars and moves both. */
    bool followsBars;
};

/** The family that a position of filtmode selects. */
[[nodiscard]] ParameterSnapshot::Family familyOf (const ParameterSet::Parameter& filtMode) noexcept;
