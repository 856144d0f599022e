// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <span>

#include "dsp/engine/TickBatch.h"

/** The signal path: a highpass and a lowpass in series, with a resonance each, or the two ladders. Says which filters are
    designed and in which order they run; the filters belong to others, who outlive it.
    Audio thread only; never allocates. */
class FilterChain
{
public:
    using Family = ParameterSnapshot::Family;

    /** The six filters, which outlive the chain. */
    FilterChain (ButterworthFilter& newHpFilter, ButterworthFilter& newLpFilter, ResonancePeak& newHpResonator,
                 ResonancePeak& newLpResonator, GrungeLadder& newHpLadder, GrungeLadder& newLpLadder) noexcept
        : hpFilter (newHpFilter), lpFilter (newLpFilter), hpResonator (newHpResonator), lpResonator (newLpResonator),
          hpLadder (newHpLadder), lpLadder (newLpLadder)
    {
    }

    /** What decides which filters run. */
    struct Setting
    {
        Family family;

        /** Some frame has a resonance that is audible, of a filter that has an order. */
        bool hpResonates, lpResonates;

        /** 0 to 10; one for all frames, or one for each. */
        std::span<const float> hpResonance, lpResonance;
    };

    /** Designs the filters of the selected family for each pending tick, and leaves the last design in force. */
    void design (TickBatch& ticks) noexcept;

    /** Runs samples through the filters as they are designed.
        @param samples  at most maxBlockFrames of them */
    void process (const Setting& setting, SampleBlock samples) noexcept { process (setting, nullptr, samples); }

    /** Runs each sample through the filters as its tick has designed them.
        @param samples  as many as there are ticks */
    void process (const TickBatch& ticks, SampleBlock samples) noexcept;

private:
    void process (const Setting& setting, const TickBatch* designs, SampleBlock samples) noexcept;

    ButterworthFilter& hpFilter;
    ButterworthFilter& lpFilter;
    ResonancePeak& hpResonator;
    ResonancePeak& lpResonator;
    GrungeLadder& hpLadder;
    GrungeLadder& lpLadder;
};
