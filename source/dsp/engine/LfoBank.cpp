// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/engine/LfoBank.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <span>

#include "dsp/filters/FilterConstants.h"
#include "dsp/math/FloatExponential.h"

namespace
{
using Settings = ParameterSnapshot::Lfo;
using Phases = LfoGenerator::Phases;

/** ln (1000), as the float next to the one of the filters' frequency map: two constants, and the sound depends on each. */
constexpr float expScale = 6.9077554f;

/** ln (50): a free LFO runs from 0.02 Hz. */
constexpr float expOffset = 3.912023f;

constexpr double minutesPerSecond = 0.016666666666666666;

/** A wobble has to be deeper than this to be heard. */
constexpr float wobbleThreshold = 0.01f;

[[nodiscard]] float square (float x) noexcept { return x * x; }

[[nodiscard]] double fraction (double x) noexcept { return x - std::floor (x); }

/** True if a tempo-locked phase has left the song's by a hundredth of a beat; nearer than that it runs free. */
[[nodiscard]] bool hasLeftSong (const Settings& settings, float phase, float songPhase) noexcept
{
    if (settings.sync != ParameterSnapshot::tempoSync)
        return false;

    auto distance = phase - songPhase;
    distance = distance - std::floor (distance);

    if (distance >= 0.5f)
        distance = 1.0f - distance;

    return distance >= 0.01f / settings.beats;
}

/** Where a tick makes all phases of an LFO jump to: to the start if the transport is absent, then to the song. */
[[nodiscard]] std::optional<float> jumpOf (const TickBatch& ticks, std::size_t i, std::size_t tick,
                                           float phase) noexcept
{
    const auto isAbsent = ticks.beats[tick] == 0.0;

    if (isAbsent)
        phase = 0.0f;

    if (hasLeftSong (ticks.snapshot.lfo[i], phase, ticks.songPhase[i][tick]))
        return ticks.songPhase[i][tick];

    return isAbsent ? std::optional (0.0f) : std::nullopt;
}

/** True if the speed depends on neither wobble nor transport: then it is one for all ticks. */
[[nodiscard]] bool isFree (const Settings& settings) noexcept
{
    return settings.sync != ParameterSnapshot::wobblySync && settings.sync != ParameterSnapshot::drunkSync
           && settings.sync != ParameterSnapshot::tempoSync;
}

/** Adds what an output comes to. What is routed nowhere is added too: 0 times NaN is heard. */
void route (float output, const Settings& settings, FloatQuad& modulation) noexcept
{
    modulation = modulation + settings.depths * FloatQuad::all (output);
}

/** What the other LFO's output makes of an LFO's speed. */
[[nodiscard]] float multiplierOf (const Settings& settings, float otherOutput) noexcept
{
    return square (1.0f + otherOutput * settings.depthOfOther * 0.5f);
}

/** Hertz. */
[[nodiscard]] float frequencyOf (const Settings& settings, double bpm, float multiplier) noexcept
{
    // They run by the bars, not by a frequency.
    if (LfoGenerator::isReserved (settings.shape))
        return 0.0f;

    if (multiplier < 0.01f)
        multiplier = 0.01f;
    else if (multiplier > 1.99f)
        multiplier = 1.99f;

    auto frequency = 0.0f;

    if (settings.sync == ParameterSnapshot::tempoSync)
    {
        multiplier = 1.0f;
        frequency = (float) (bpm / (double) settings.beats * minutesPerSecond);
    }

    // A song without a tempo lets a tempo-locked LFO run freely.
    if (frequency == 0.0f)
        frequency = elementary::exponential (settings.speed * multiplier * multiplier * expScale - expOffset);

    return frequency;
}
} // namespace

void LfoBank::lockToTempo (TickBatch& ticks) noexcept
{
    for (std::size_t i = 0; i < numLfos; ++i)
    {
        const auto& settings = ticks.snapshot.lfo[i];

        setWobble (settings, ticks.rate, i);
        lfo[i].curveExponent = 1.0f / elementary::exponential (settings.bend);

        if (settings.sync != ParameterSnapshot::tempoSync)
            continue;

        for (auto tick = ticks.firstPending; tick < ticks.size; ++tick)
            ticks.songPhase[i][tick] =
                (float) fraction (ticks.beats[tick] / (double) settings.beats + 0.5 - (double) settings.phase);
    }
}

void LfoBank::setWobble (const ParameterSnapshot::Lfo& settings, double rate, std::size_t i) noexcept
{
    struct Law
    {
        float offset, scale, depth;
    };

    // ln (300), ln (350) and, below, ln (100): from 0.01 Hz up to 300 or 350 times that. The depth of the first is exactly
    // the threshold, so "Wobbly" turns without effect: projects depend on that.
    static constexpr Law wobbly { 0.2297f, 5.7037826f, wobbleThreshold };
    static constexpr Law drunk { 0.3297f, 5.857933f, 0.12f };

    if (settings.sync != ParameterSnapshot::wobblySync && settings.sync != ParameterSnapshot::drunkSync)
    {
        wobbleStep[i] = wobbleDepth[i] = 0.0f;
        return;
    }

    const auto& law = settings.sync == ParameterSnapshot::wobblySync ? wobbly : drunk;

    // The two LFOs are detuned against each other: 0.055 and 0.054.
    const auto detune = (float) (i ^ 0x37u) * 0.001f;
    const auto hertz = elementary::exponential ((detune + law.offset) * settings.speed * law.scale - 4.6051702f);
    wobbleStep[i] = (float) ((double) hertz / rate);
    wobbleDepth[i] = law.depth;
}

void LfoBank::advanceAndRoute (TickBatch& ticks, juce::AudioPlayHead* transport)
{
    const auto& settings = ticks.snapshot.lfo;

    for (auto tick = ticks.firstPending; tick < ticks.size; ++tick)
    {
        // A change of shape takes hold behind the first tick.
        if (! ticks.snapshot.followsBars && tick + 1 < ticks.size && lfo[0].isSteadyIn (settings[0].shape)
            && lfo[1].isSteadyIn (settings[1].shape))
            return advanceSteady (ticks, tick);

        advanceTick (ticks, tick, transport);
    }
}

/** Both LFOs through one tick, whatever they do. */
inline void LfoBank::advanceTick (TickBatch& ticks, std::size_t tick, juce::AudioPlayHead* transport)
{
    const auto& settings = ticks.snapshot.lfo;
    PerLfo<float> outputs;
    PerLfo<std::int32_t> renderedShapes;

    for (std::size_t i = 0; i < numLfos; ++i)
        if (const auto phase = jumpOf (ticks, i, tick, lfo[i].phaseA))
            lfo[i].jumpTo (*phase);

    // All of LFO 1 before LFO 2: each listens to the other, LFO 1 to LFO 2 from before its advance.
    for (std::size_t i = 0; i < numLfos; ++i)
    {
        const auto other = (i + 1) % numLfos;
        auto multiplier = 1.0f;

        if (settings[i].isMovedByOther)
        {
            // LFO 1 still stands where this tick has rendered it, unless it has changed its shape since.
            const auto isRendered = other < i && lfo[other].shape == renderedShapes[other];
            multiplier = multiplierOf (settings[i], isRendered ? outputs[other] : lfo[other].render());
        }

        auto phases = lfo[i].phases();
        lfo[i].advance (phases);
        const auto frequency = nextFrequency (settings[i], ticks.bpm[tick], multiplier, i);
        phases.setFrequency (frequency, ticks.tickRate);
        lfo[i].setPhases (phases);

        renderedShapes[i] = lfo[i].shape;
        outputs[i] = lfo[i].render();
        route (outputs[i], settings[i], ticks.modulation[tick]);
        lfo[i].amplitude = 1.0f;
        lfo[i].setShape (settings[i].shape, ticks.tickRate, frequency);

        if (settings[i].shape == LfoGenerator::reservedPulse)
            lockToBars (ticks, 1.0f, transport);
        else if (settings[i].shape == LfoGenerator::reservedSum)
            lockToBars (ticks, 16.0f, transport);
    }
}

/** Both LFOs through all ticks from the first on, while they move nothing but their phases: first the phases go through the
    ticks, in a loop that keeps them in registers, and then come the waves. */
void LfoBank::advanceSteady (TickBatch& ticks, std::size_t firstTick) noexcept
{
    const auto& settings = ticks.snapshot.lfo;
    PerLfo<Phases> phases { lfo[0].phases(), lfo[1].phases() };
    PerLfo<float> frequencies;
    PerLfo<PassedPhases> passed;

    for (auto tick = firstTick; tick < ticks.size; ++tick)
    {
        for (std::size_t i = 0; i < numLfos; ++i)
            if (const auto phase = jumpOf (ticks, i, tick, phases[i].now.get<Phases::a>()))
                lfo[i].jump (phases[i], *phase);

        for (std::size_t i = 0; i < numLfos; ++i)
        {
            const auto other = (i + 1) % numLfos;
            const auto multiplier =
                settings[i].isMovedByOther ? multiplierOf (settings[i], lfo[other].renderAt (phases[other].now)) : 1.0f;

            phases[i].advance();
            passed[i][tick] = phases[i].now.values();

            // What neither the other LFO nor wobble nor tempo moves has one frequency for all ticks.
            if (tick == firstTick || settings[i].isMovedByOther || ! isFree (settings[i]))
            {
                frequencies[i] = nextFrequency (settings[i], ticks.bpm[tick], multiplier, i);
                phases[i].setFrequency (frequencies[i], ticks.tickRate);
            }
        }
    }

    for (std::size_t i = 0; i < numLfos; ++i)
    {
        lfo[i].setPhases (phases[i]);
        renderAndRoute (ticks, firstTick, i, passed[i]);
        lfo[i].amplitude = 1.0f;
        lfo[i].setShape (settings[i].shape, ticks.tickRate, frequencies[i]);
    }
}

/** The waves of one LFO at the phases of all ticks from the first on. */
void LfoBank::renderAndRoute (TickBatch& ticks, std::size_t firstTick, std::size_t i,
                              const PassedPhases& passed) noexcept
{
    TickBatch::PerTick<float> outputs;
    const auto numTicks = ticks.size - firstTick;

    lfo[i].render<std::dynamic_extent> (std::span (passed).subspan (firstTick, numTicks),
                                        std::span (outputs).subspan (firstTick, numTicks));

    for (auto tick = firstTick; tick < ticks.size; ++tick)
        route (outputs[tick], ticks.snapshot.lfo[i], ticks.modulation[tick]);
}

/** Moves the wobble on by one tick and gives the frequency that follows from it, in hertz. */
inline float LfoBank::nextFrequency (const Settings& settings, double bpm, float multiplier, std::size_t i) noexcept
{
    wobblePhase[i] += wobbleStep[i];

    if (wobblePhase[i] >= 1.0f)
        wobblePhase[i] = 0.0f;

    if (wobbleDepth[i] > wobbleThreshold)
        multiplier *= square (triangleOf (wobblePhase[i]) * wobbleDepth[i] + 1.0f);

    return frequencyOf (settings, bpm, multiplier);
}

/** Sets the steps of both LFOs to the bars of the song. */
void LfoBank::lockToBars (const TickBatch& ticks, float barMultiple, juce::AudioPlayHead* transport)
{
    const auto position = transport != nullptr ? transport->getPosition() : juce::nullopt;

    // Unlike in the tick's own question, a position of exactly 0 is a position here.
    if (! position.hasValue())
        return;

    const auto signature = position->getTimeSignature().orFallback (juce::AudioPlayHead::TimeSignature {});
    const auto beats = position->getPpqPosition().orFallback (0.0);
    const auto bpm = (float) position->getBpm().orFallback (120.0);
    const auto bar = (float) signature.numerator / (float) signature.denominator;

    for (std::size_t i = 0; i < numLfos; ++i)
    {
        const auto span = barMultiple * ticks.snapshot.lfo[i].beats;
        const auto wanted = fraction (beats / (double) bar / (double) span);

        if (wanted > 0.0 && wanted < 1.0)
        {
            lfo[i].referencePhase = (float) wanted;
            lfo[i].followReference = true;
        }

        const auto period = (float) ticks.rate * 60.0f * bar * span / bpm;
        const auto step = inverseOrZero ((double) period);
        lfo[i].phaseStepA = (float) step;
        lfo[i].phaseStepB = (float) (step * 0.5);
        lfo[i].phaseStepC = (float) (step * 2.0);
    }
}
