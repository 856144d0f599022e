// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <span>

#include "dsp/engine/ParameterSnapshot.h"
#include "dsp/filters/ButterworthFilter.h"
#include "dsp/filters/GrungeLadder.h"
#include "dsp/filters/ResonancePeak.h"
#include "dsp/modulation/LfoGenerator.h"
#include "dsp/simd/Lanes.h"

/** What the transport says. Without a transport, and while its position is exactly 0, all is 0. */
struct SongPosition
{
    double beats = 0.0;
    double bpm = 0.0;
};

/** Consecutive ticks that share a snapshot of the parameters and a rate, with one entry for each tick in every array; a tick
    by itself is a batch of one.

    What depends on the snapshot and the rate alone is computed once for a batch; what depends on the transport, on a phase or
    on a slew is computed for every tick.

    Ticks are added one by one. Those that have been added and not computed are pending, and each step of a tick is done for
    all pending ticks before the next step. */
struct TickBatch
{
    static constexpr std::size_t maxTicks = maxBatchFrames;

    template <typename Value>
    using PerTick = std::array<Value, maxTicks>;

    /** @param newSnapshot   outlives the batch; it may change as long as the batch is empty
        @param newCapacity  1 to maxTicks */
    TickBatch (const ParameterSnapshot& newSnapshot, double newRate, std::size_t newCapacity) noexcept
        : snapshot (newSnapshot), rate (newRate), tickRate ((float) newRate), capacity (newCapacity)
    {
        assert (capacity >= 1 && capacity <= maxTicks);
    }

    /** Sets the rate, as long as the batch is empty. */
    void setRate (double newRate) noexcept
    {
        rate = newRate;
        tickRate = LfoGenerator::TickRate ((float) newRate);
    }

    /** Adds a tick, which is pending then. */
    void add (SongPosition position) noexcept
    {
        assert (! isFull());
        beats[size] = position.beats;
        bpm[size] = position.bpm;
        ++size;
    }

    /** True if there is no tick. */
    [[nodiscard]] bool isEmpty() const noexcept { return size == 0; }
    /** True if there is no room for another tick. */
    [[nodiscard]] bool isFull() const noexcept { return size == capacity; }
    /** True if some tick has not been computed. */
    [[nodiscard]] bool hasPending() const noexcept { return firstPending < size; }

    const ParameterSnapshot& snapshot;

    /** Ticks per second, and what follows from it. */
    double rate;
    LfoGenerator::TickRate tickRate;

    const std::size_t capacity;
    std::size_t size = 0;
    std::size_t firstPending = 0;

    // What the transport says.
    PerTick<double> beats, bpm;

    /** Where the song stands in the cycle of a tempo-locked LFO, 0 to 1. */
    std::array<PerTick<float>, ParameterSet::numLfos> songPhase;

    /** What Frequencer and LFOs add up to, for each target. */
    PerTick<FloatQuad> modulation;

    // What the slews come to.
    PerTick<double> hpHz, lpHz;
    PerTick<float> hpResonance, lpResonance;

    /** The amount of some tick is audible. */
    bool hpResonates = false;
    bool lpResonates = false;

    // What the filters are designed to: those of one family.
    ButterworthFilter::Series hpFilter, lpFilter;
    ResonancePeak::Series hpResonator, lpResonator;
    GrungeLadder::Series hpLadder, lpLadder;

    /** The entries of all ticks so far. */
    template <typename Value>
    [[nodiscard]] std::span<const Value> soFar (const PerTick<Value>& values) const noexcept
    {
        return std::span<const Value> (values).first (size);
    }
};
