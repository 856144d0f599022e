// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>

#include <juce_audio_processors/juce_audio_processors.h>

#include "dsp/engine/TickBatch.h"

/** The two LFOs as a tick moves them: their speed wobble, their lock to the tempo, their advance, what they modulate, and
    how each moves the other's speed.

    Everything is written for consecutive ticks; a tick by itself is one of them. As long as the LFOs neither listen to each
    other nor to the bars, all ticks of a batch are done for one LFO and then for the other.
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
    void setWobble (const ParameterSnapshot::Lfo& settings, double rate, std::size_t i) noexcept;

    template <std::size_t extent>
    float advanceAndRoute (TickBatch& ticks, std::size_t firstTick, std::size_t i, float multiplier) noexcept;

    inline void advanceSteady (const TickBatch& ticks, std::size_t tick, std::size_t i,
                               LfoGenerator::Phases& phases) noexcept;
    inline float nextFrequency (const ParameterSnapshot::Lfo& settings, double bpm, float multiplier,
                                std::size_t i) noexcept;
    inline void advanceCoupled (TickBatch& ticks, std::size_t tick, juce::AudioPlayHead* transport);
    void lockToBars (const TickBatch& ticks, float barMultiple, juce::AudioPlayHead* transport);

    PerLfo<LfoGenerator>& lfo;
    PerLfo<float>& wobblePhase;
    PerLfo<float>& wobbleStep;
    PerLfo<float>& wobbleDepth;
};
