// SPDX-License-Identifier: AGPL-3.0-or-later
// The control side of the engine up to the slews. While something is routed every frame has a tick, and ticks are what the
// engine spends most of its time on; so they are taken in rows. Of each tick the transport is asked in its place, between
// two steps of the clock; what the LFOs and slews make of the answers is computed afterwards, LFO by LFO and for the whole
// row, in loops that look at the readings once and keep what moves in registers. Where a tick needs more than that, because
// an LFO listens to the other one or to the bars, or because it depends on the slews whether there is a next tick, it is
// moved by itself.
#include "dsp/engine/ControlTicks.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "dsp/filters/FilterConstants.h"

namespace
{
using Readings = ControlReadings;

// The frequency map: ln (1000) and ln (20) as floats, 0 to 1 becoming 20 Hz to 20 kHz. The LFOs' own ln (1000) below is the
// next float: two constants, and the sound depends on each.
constexpr float freqExpScale = 6.907754898071289f;
constexpr float freqExpOffset = 2.995732307434082f;
constexpr float lfoExpScale = 6.9077554f;

/** ln (50): a free LFO runs from 0.02 Hz. */
constexpr float lfoExpOffset = 3.912023f;

/** A wobble has to be deeper than this to be heard. */
constexpr float wobbleThreshold = 0.01f;

[[nodiscard]] float square (float x) noexcept { return x * x; }

constexpr float straightExponent = 1.0f;

[[nodiscard]] float curveExponentOf (const Readings::Lfo& reading) noexcept
{
    return reading.bend == 0.0f ? straightExponent : 1.0f / std::exp (reading.bend);
}

/** Where a tempo-locked LFO has to jump to, if its phase has left the song's. */
[[nodiscard]] std::optional<float> correctedPhase (const Readings::Lfo& reading, double beats, float phase) noexcept
{
    if (reading.sync != Readings::tempoSync)
        return {};

    const auto cycles = beats / (double) reading.beats + 0.5 - (double) reading.phase;
    const auto wanted = (float) (cycles - std::floor (cycles));

    auto distance = phase - wanted;
    distance = distance - std::floor (distance);

    if (distance >= 0.5f)
        distance = 1.0f - distance;

    // One hundredth of a beat, in cycles: nearer than that the phase runs free.
    if (distance >= 0.01f / reading.beats)
        return wanted;

    return {};
}

/** Adds what a steady generator comes to at phases that it has passed. What is routed nowhere is added too: 0 times what is no
    number is heard. */
void routeSteadyLfo (const Readings::Lfo& reading, LfoGenerator& generator, std::span<const FloatQuad::Values> passed,
                     std::span<FloatQuad> sums) noexcept
{
    std::array<float, maxDesigns> outputs;
    generator.renderSteady (passed, outputs);

    if (reading.bend == 0.0f)
    {
        generator.curveExponent = straightExponent;
    }
    else
    {
        // Computed for each tick, as every exponential is.
        for (size_t n = 0; n < passed.size(); ++n)
        {
            generator.curveExponent = curveExponentOf (reading);
            outputs[n] = generator.bend (outputs[n]);
        }
    }

    for (size_t n = 0; n < passed.size(); ++n)
        sums[n] = sums[n] + reading.depths * FloatQuad::all (outputs[n]);
}

[[nodiscard]] float wobbled (float multiplier, float phase, float depth) noexcept
{
    return depth > wobbleThreshold ? multiplier * square (triangleOf (phase) * depth + 1.0f) : multiplier;
}

[[nodiscard]] float frequencyOf (const Readings::Lfo& reading, double bpm, float multiplier) noexcept
{
    if (multiplier < 0.01f)
        multiplier = 0.01f;
    else if (multiplier > 1.99f)
        multiplier = 1.99f;

    auto frequency = 0.0f;

    if (reading.sync == Readings::tempoSync)
    {
        multiplier = 1.0f;
        frequency = (float) (bpm / (double) reading.beats * 0.016666666666666666);
    }

    if (frequency == 0.0f)
        frequency = std::exp (reading.speed * multiplier * multiplier * lfoExpScale - lfoExpOffset);

    return frequency;
}
} // namespace

void MainAudioProcessor::updateControlRate()
{
    auto motion = beginMotion();
    TickSeries ticks (motion);

    nextTick (motion, ticks);
    moveControls (motion, ticks);
    endMotion (motion, ticks);
    designFilters (ticks);
}

MainAudioProcessor::Motion MainAudioProcessor::beginMotion() const noexcept
{
    const auto rate = processingRate();

    return { .readings = ControlReadings (parameters, barLengths),
             .rate = rate,
             .tickRate = LfoGenerator::TickRate ((float) rate),
             .slews = { .target = { hpFreqSlew.target, lpFreqSlew.target, hpResoSlew.target, lpResoSlew.target },
                        .current = { hpFreqSlew.current, lpFreqSlew.current, hpResoSlew.current, lpResoSlew.current },
                        .step = FloatQuad::all (0.0f) } };
}

void MainAudioProcessor::endMotion (const Motion& motion, const TickSeries& ticks) noexcept
{
    constexpr std::int32_t linearMode = 1;

    const auto leave = [=, target = motion.slews.target.values(), current = motion.slews.current.values(),
                        step = motion.slews.step.values()] (SlewValue& slew, Readings::Route route)
    {
        slew.mode = linearMode;
        slew.target = target[route];
        slew.current = current[route];
        slew.step = step[route];
    };

    leave (hpFreqSlew, Readings::hpFreq);
    leave (lpFreqSlew, Readings::lpFreq);
    leave (hpResoSlew, Readings::hpReso);
    leave (lpResoSlew, Readings::lpReso);

    hpResonance = ticks.hpResonance[ticks.size - 1];
    lpResonance = ticks.lpResonance[ticks.size - 1];
    hpPoles = motion.readings.highpass.poles;
    hpPeakBandwidth = motion.readings.highpass.peakBandwidth;
    lpPoles = motion.readings.lowpass.poles;
    lpPeakBandwidth = motion.readings.lowpass.peakBandwidth;

    const auto stepsOn = frequencer::stepsAt (ticks.beats[ticks.size - 1], motion.readings.shiftBeats);

    for (size_t j = 0; j < stepLit.size(); ++j)
        stepLit[j] = stepsOn[j];
}

void MainAudioProcessor::gatherTicks (Motion& motion, TickSeries& ticks, size_t maxTicks)
{
    do
    {
        juce::ignoreUnused (advanceClock());
        nextTick (motion, ticks);

        if (motion.isWatchDue)
            motion.isWatchDue = watchParameters();
    } while (ticks.size < maxTicks && isControlUpdateDue());

    moveControls (motion, ticks);
}

// That the tick decides here whether the next frame needs another one, and not behind the design, makes no difference: the
// decision looks at slews and routing alone.
void MainAudioProcessor::nextTick (Motion& motion, TickSeries& ticks)
{
    askHost (motion, ticks);

    if (motion.mayBeMovedLater())
        return requestControlUpdate();

    moveControls (motion, ticks);

    if (motion.readings.active || motion.slews.areGliding())
        requestControlUpdate();
}

void MainAudioProcessor::askHost (Motion& motion, TickSeries& ticks)
{
    refreshHostSampleRate();

    auto beats = 0.0, bpm = 0.0;

    if (auto* const transport = getPlayHead())
    {
        if (const auto position = transport->getPosition())
        {
            beats = position->getPpqPosition().orFallback (0.0);
            bpm = position->getBpm().orFallback (120.0);
        }
    }

    if (processingRate() != motion.rate || parameters.getChangeCount() != motion.readings.changeCount)
        readAgain (motion, ticks);

    ticks.beats[ticks.size] = beats;
    ticks.bpm[ticks.size] = bpm;
    ++ticks.size;
}

void MainAudioProcessor::readAgain (Motion& motion, TickSeries& ticks)
{
    // The ticks before this one had the old readings.
    moveControls (motion, ticks);

    motion.rate = processingRate();
    motion.tickRate = LfoGenerator::TickRate ((float) motion.rate);
    motion.readings = ControlReadings (parameters, barLengths);
    motion.isWatchDue = true;
    ticks.beginStretch (motion);
}

void MainAudioProcessor::moveControls (Motion& motion, TickSeries& ticks)
{
    for (auto i = ticks.numMoved; i < ticks.size; ++i)
        ticks.sums[i] = motion.sumsOfSteps (ticks.beats[i]);

    moveLfos (motion, ticks);

    auto slews = motion.slews;

    for (auto i = ticks.numMoved; i < ticks.size; ++i)
    {
        slews.setSteps (motion.tickRate.ticksPerSecond, motion.readings.active);
        slews.setTargets (ticks.sums[i], motion.readings.knobs);
        slews.advance();

        const auto exponents =
            (slews.current * FloatQuad::all (freqExpScale) + FloatQuad::all (freqExpOffset)).values();
        ticks.hpHz[i] = std::exp (exponents[Readings::hpFreq]);
        ticks.lpHz[i] = std::exp (exponents[Readings::lpFreq]);

        const auto cubes = slews.current * slews.current * slews.current;
        const auto resonances = (cubes * cubes * FloatQuad::all (10.0f)).values();
        ticks.hpResonance[i] = resonances[Readings::hpReso];
        ticks.lpResonance[i] = resonances[Readings::lpReso];
    }

    motion.slews = slews;
    ticks.numMoved = ticks.size;
}

FloatQuad MainAudioProcessor::Motion::sumsOfSteps (double position) const noexcept
{
    if (! readings.pattern.isActive())
        return FloatQuad::all (0.0f);

    const auto sums = readings.pattern.sumsOf (frequencer::stepsAt (position, readings.shiftBeats));
    return { sums.highpass, sums.lowpass, 0.0f, 0.0f };
}

// Against the targets of the previous tick: a new target starts to be followed one tick later.
void MainAudioProcessor::Slews::setSteps (float ticksPerSecond, bool active) noexcept
{
    if (ticksPerSecond > 0.0f)
        step = (target - current).magnitude() / FloatQuad::all (ticksPerSecond * (active ? 0.004f : 0.02f));
    else
        step = FloatQuad::all (1.0e20f);
}

void MainAudioProcessor::Slews::setTargets (FloatQuad sums, FloatQuad knobs) noexcept
{
    // Frequencies are moved by half the sum and resonances by the whole: the asymmetry is part of the sound.
    const FloatQuad scales { 0.5f, 0.5f, 1.0f, 1.0f };

    // What is no number becomes 0.
    const auto raised = greaterOf (sums * scales + knobs, FloatQuad::all (0.0f));
    target = lesserOf (raised, FloatQuad::all (1.0f));
}

void MainAudioProcessor::Slews::advance() noexcept
{
    const auto raised = lesserOf (target, current + step);
    const auto lowered = greaterOf (target, current - step);
    current = whereGreater (target, current, raised, whereGreater (current, target, lowered, current));
}

bool MainAudioProcessor::Slews::areGliding() const noexcept
{
    static constexpr FloatQuad::Values thresholds { 0.0002f, 0.0002f, 0.0003f, 0.0003f };
    const auto distances = (target - current).magnitude().values();
    auto gliding = false;

    for (size_t i = 0; i < FloatQuad::size; ++i)
        gliding |= distances[i] > thresholds[i];

    return gliding;
}

void MainAudioProcessor::moveLfos (const Motion& motion, TickSeries& ticks)
{
    const auto& readings = motion.readings;

    // One tick alone would not pay for the way into a row and out of it.
    const auto isRow = ticks.size - ticks.numMoved > 1;
    const auto mayBeInRow = isRow && ! readings.areLfosCoupled && ! readings.followsBars;

    for (auto tick = ticks.numMoved; tick < ticks.size; ++tick)
    {
        if (mayBeInRow && lfo[0].isSteadyIn (readings.lfo[0].shape) && lfo[1].isSteadyIn (readings.lfo[1].shape))
        {
            moveSteadyLfo (motion, ticks, tick, 0);
            moveSteadyLfo (motion, ticks, tick, 1);
            return;
        }

        moveLfosOnce (motion, ticks, tick);
    }
}

void MainAudioProcessor::moveSteadyLfo (const Motion& motion, TickSeries& ticks, size_t firstTick, size_t i) noexcept
{
    auto& generator = lfo[i];
    const auto& reading = motion.readings.lfo[i];
    const auto numTicks = ticks.size - firstTick;

    std::array<float, maxDesigns> frequencies;
    std::array<FloatQuad::Values, maxDesigns> passed;

    setFrequencies (motion, ticks, firstTick, i, frequencies);

    auto phases = generator.phases();

    const auto jumpTo = [&] (float phase)
    {
        phases.jumpTo (phase);
        generator.walkValue = 0.0f;
    };

    for (size_t n = 0; n < numTicks; ++n)
    {
        if (ticks.isTransportAbsent (firstTick + n))
            jumpTo (0.0f);

        if (const auto phase = correctedPhase (reading, ticks.beats[firstTick + n], phases.now.first()))
            jumpTo (*phase);

        phases.advance();
        passed[n] = phases.now.values();
        phases.setFrequency (frequencies[n], motion.tickRate);
    }

    generator.setPhases (phases);
    generator.setRate (reading.shape, motion.tickRate, frequencies[numTicks - 1]);
    routeSteadyLfo (reading, generator, std::span (passed).first (numTicks),
                    std::span (ticks.sums).subspan (firstTick, numTicks));
}

void MainAudioProcessor::setFrequencies (const Motion& motion, const TickSeries& ticks, size_t firstTick, size_t i,
                                         std::span<float> frequencies) noexcept
{
    const auto& reading = motion.readings.lfo[i];

    // A wobble that stands still is the same after one tick and after many.
    moveWobble (reading, motion.rate, i);
    frequencies[0] = frequencyOf (reading, ticks.bpm[firstTick], wobbled (1.0f, wobblePhase[i], wobbleDepth[i]));

    if (wobbleDepth[i] == 0.0f)
    {
        for (auto tick = firstTick + 1; tick < ticks.size; ++tick)
            frequencies[tick - firstTick] = frequencyOf (reading, ticks.bpm[tick], 1.0f);

        return;
    }

    for (auto tick = firstTick + 1; tick < ticks.size; ++tick)
    {
        moveWobble (reading, motion.rate, i);
        frequencies[tick - firstTick] =
            frequencyOf (reading, ticks.bpm[tick], wobbled (1.0f, wobblePhase[i], wobbleDepth[i]));
    }
}

void MainAudioProcessor::moveLfosOnce (const Motion& motion, TickSeries& ticks, size_t tick)
{
    for (size_t i = 0; i < lfo.size(); ++i)
    {
        const auto& reading = motion.readings.lfo[i];

        if (ticks.isTransportAbsent (tick))
            lfo[i].reset();

        if (const auto phase = correctedPhase (reading, ticks.beats[tick], lfo[i].phaseA))
            lfo[i].jumpTo (*phase);

        lfo[i].curveExponent = curveExponentOf (reading);
    }

    std::array<float, ParameterSet::numLfos> outputs;
    std::array<std::int32_t, ParameterSet::numLfos> renderedShapes;

    // All of LFO 1 before LFO 2: each reads the other's output, LFO 1 from before LFO 2's advance.
    for (size_t i = 0; i < lfo.size(); ++i)
    {
        const auto& reading = motion.readings.lfo[i];
        const auto other = (i + 1) % lfo.size();

        moveWobble (reading, motion.rate, i);
        lfo[i].advance();
        renderedShapes[i] = lfo[i].shape;
        outputs[i] = lfo[i].render();

        ticks.sums[tick] = ticks.sums[tick] + reading.depths * FloatQuad::all (outputs[i]);

        auto multiplier = 1.0f;

        if (reading.isMovedByOther)
        {
            // LFO 1 still stands where this tick has rendered it, unless it has changed its shape since.
            const auto isRendered = other < i && lfo[other].shape == renderedShapes[other];
            const auto output = isRendered ? outputs[other] : lfo[other].render();
            multiplier = square (1.0f + output * reading.depthOfOther * 0.5f);
        }

        multiplier = wobbled (multiplier, wobblePhase[i], wobbleDepth[i]);
        configureLfo (motion, i, frequencyOf (reading, ticks.bpm[tick], multiplier));
    }
}

void MainAudioProcessor::moveWobble (const Readings::Lfo& reading, double rate, size_t i) noexcept
{
    struct Law
    {
        float offset, scale, depth;
    };

    // ln (300), ln (350) and, below, ln (100): from 0.01 Hz up to 300 or 350 times that. The depth of the first is exactly
    // the threshold, so "Wobbly" turns without effect: projects depend on that.
    static constexpr Law wobbly { 0.2297f, 5.7037826f, wobbleThreshold };
    static constexpr Law drunk { 0.3297f, 5.857933f, 0.12f };

    if (reading.sync == Readings::wobblySync || reading.sync == Readings::drunkSync)
    {
        const auto& law = reading.sync == Readings::wobblySync ? wobbly : drunk;

        // The two LFOs are detuned against each other: 0.055 and 0.054.
        const auto detune = (float) (i ^ 0x37u) * 0.001f;
        const auto hertz = std::exp ((detune + law.offset) * reading.speed * law.scale - 4.6051702f);
        wobbleStep[i] = (float) ((double) hertz / rate);
        wobbleDepth[i] = law.depth;
    }
    else
    {
        wobbleStep[i] = wobbleDepth[i] = 0.0f;
    }

    wobblePhase[i] += wobbleStep[i];

    if (wobblePhase[i] >= 1.0f)
        wobblePhase[i] = 0.0f;
}

void MainAudioProcessor::configureLfo (const Motion& motion, size_t i, float frequency)
{
    const auto shape = motion.readings.lfo[i].shape;
    lfo[i].amplitude = 1.0f;

    if (shape == LfoGenerator::reservedPulse || shape == LfoGenerator::reservedSum)
    {
        lfo[i].setRate (shape, motion.tickRate, 0.0f);
        lockLfosToBars (motion, shape == LfoGenerator::reservedPulse ? 1.0f : 16.0f);
    }
    else
    {
        lfo[i].setRate (shape, motion.tickRate, frequency);
    }
}

void MainAudioProcessor::lockLfosToBars (const Motion& motion, float barMultiple)
{
    auto* const transport = getPlayHead();
    const auto position = transport != nullptr ? transport->getPosition() : juce::nullopt;

    // Unlike in the tick's own reading, a position of exactly 0 is a position here.
    if (! position.hasValue())
        return;

    const auto signature = position->getTimeSignature().orFallback (juce::AudioPlayHead::TimeSignature {});
    const auto ppq = position->getPpqPosition().orFallback (0.0);
    const auto bpm = (float) position->getBpm().orFallback (120.0);
    const auto bar = (float) signature.numerator / (float) signature.denominator;

    for (size_t i = 0; i < lfo.size(); ++i)
    {
        const auto span = barMultiple * motion.readings.lfo[i].beats;
        const auto cycles = ppq / (double) bar / (double) span;
        const auto wanted = cycles - std::floor (cycles);

        if (wanted > 0.0 && wanted < 1.0)
        {
            lfo[i].referencePhase = (float) wanted;
            lfo[i].followReference = true;
        }

        const auto period = (float) motion.rate * 60.0f * bar * span / bpm;
        const auto step = inverseOrZero ((double) period);
        lfo[i].phaseStepA = (float) step;
        lfo[i].phaseStepB = (float) (step * 0.5);
        lfo[i].phaseStepC = (float) (step * 2.0);
    }
}
