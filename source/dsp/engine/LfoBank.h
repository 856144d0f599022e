// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>

#include <juce_audio_processors/juce_audio_processors.h>

#include "dsp/engine/TickBatch.h"

/** The two LFOs as a tick moves them: their speed wobble, their lock to the tempo, their advance, what they modulate, and
    how each moves the other's speed.

    As long as the LFOs move nothing but their phases, the phases go through all ticks of a batch, and then come the waves.
    Audio thread only; never allocates. */
class LfoBank
{
public:
    static constexpr std::size_t numLfos = ParameterSet::numLfos;

    template <typename Value>
    using PerLfo = std::array<Value, numLfos>;

    /** Moves the generators and wobbles of others, who outlive it. */
    LfoBank (PerLfo<LfoGenerator>& generators, PerLfo<float>& newWobblePhase, PerLfo<float>& newWobbleStep,
             PerLfo<float>& newWobbleDepth) noexcept
        : lfo (generators), wobblePhase (newWobblePhase), wobbleStep (newWobbleStep), wobbleDepth (newWobbleDepth)
    {
    }

    /** Sets the wobble of the speeds, the bend of the waves, and where the song wants a tempo-locked phase to be. The phase
        jumps there when the tick comes that finds it elsewhere: in advanceAndRoute, for only there it is known. */
    void lockToTempo (TickBatch& ticks) noexcept;

    /** Moves both LFOs on and adds what they come to to the modulation.
        @param transport  asked for the bars by the reserved shapes; may be null */
    void advanceAndRoute (TickBatch& ticks, juce::AudioPlayHead* transport);

private:
    /** The phases of an LFO at each tick. */
    using PassedPhases = TickBatch::PerTick<LfoGenerator::Phases::Values>;

    void setWobble (const ParameterSnapshot::Lfo& settings, double rate, std::size_t i) noexcept;

    inline void advanceTick (TickBatch& ticks, std::size_t tick, juce::AudioPlayHead* transport);
    void advanceSteady (TickBatch& ticks, std::size_t firstTick) noexcept;
    void renderAndRoute (TickBatch& ticks, std::size_t firstTick, std::size_t i, const PassedPhases& passed) noexcept;
    inline float nextFrequency (const ParameterSnapshot::Lfo& settings, double bpm, float multiplier,
                                std::size_t i) noexcept;
    void lockToBars (const TickBatch& ticks, float barMultiple, juce::AudioPlayHead* transport);

    PerLfo<LfoGenerator>& lfo;
    PerLfo<float>& wobblePhase;
    PerLfo<float>& wobbleStep;
    PerLfo<float>& wobbleDepth;
};
