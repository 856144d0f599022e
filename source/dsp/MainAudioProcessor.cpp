// SPDX-License-Identifier: AGPL-3.0-or-later
#include "MainAudioProcessor.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <cstddef>
#include <span>

#include "FilterConstants.h"
#include "frame/PluginIdentity.h"
#include "parameters/ParameterTable.h"

namespace
{
// The frequency map: ln (1000) and ln (20) as floats, 0 to 1 becoming 20 Hz to 20 kHz. The LFOs' own ln (1000) below is the
// next float: two constants, and the sound depends on each.
constexpr float freqExpScale = 6.907754898071289f;
constexpr float freqExpOffset = 2.995732307434082f;
constexpr float lfoExpScale = 6.9077554f;

/** ln (50): a free LFO runs from 0.02 Hz. */
constexpr float lfoExpOffset = 3.912023f;

/** Below it a resonance does not run. */
constexpr float resonanceThreshold = 1.0e-7f;

/** The lowpass peaks a tenth below its cutoff, the highpass on it. */
constexpr double lpPeakRatio = 0.9;

// A ladder's lowpass answers to the same amount more strongly than its highpass.
constexpr double hpGrungeGain = 15.0;
constexpr double lpGrungeGain = 80.0;

[[nodiscard]] float square (float x) noexcept { return x * x; }

/** A value that is no number becomes 0. */
[[nodiscard]] float limitToUnit (float x) noexcept
{
    if (! (x > 0.0f))
        return 0.0f;

    return x < 1.0f ? x : 1.0f;
}

[[nodiscard]] float hertzOf (float position) noexcept { return std::exp (freqExpScale * position + freqExpOffset); }

[[nodiscard]] float resonanceOf (float position) noexcept
{
    const auto cube = position * position * position;
    return cube * cube * 10.0f;
}
} // namespace

/** What the steps of one tick hand on to each other. */
struct MainAudioProcessor::Tick
{
    double ppq = 0.0;
    double bpm = 0.0;

    /** Also when the position is exactly 0: a transport that stands at its start is the same as none. */
    bool transportAbsent = true;

    /** What Frequencer and LFOs add up to. */
    ControlReadings::Routes sums {};

    float hpHz = 0.0f;
    float lpHz = 0.0f;

    /** What each LFO has been routed with, and in which shape. */
    std::array<float, ParameterSet::numLfos> lfoOutput;
    std::array<std::int32_t, ParameterSet::numLfos> renderedShape;
};

/** What consecutive ticks share, taken out of the parameters and the slews before the first and brought back behind the
    last. The four slews lie side by side here, so that the compiler can move all of them in one register. */
struct MainAudioProcessor::Motion
{
    using Routes = ControlReadings::Routes;

    void evaluateFrequencer (Tick& tick) noexcept;
    void setSlewSteps() noexcept;
    void setTargets (Routes sums) noexcept;
    void advanceSlews() noexcept;
    [[nodiscard]] bool isGliding() const noexcept;

    [[nodiscard]] std::bitset<frequencer::numSteps> stepsOn() const noexcept
    {
        return frequencer::stepsAt (beats, readings.shiftBeats);
    }

    ControlReadings readings;

    double rate;
    LfoGenerator::TickRate tickRate;
    Routes target, current, step {};

    /** Counts the ticks that had other readings or another rate than the tick before. */
    std::uint8_t numChanges = 0;

    /** Where the transport stood at the last tick. */
    double beats = 0.0;

    /** Once the watch of a frame has found nothing, it finds nothing until some parameter is set. */
    bool isWatchDue = true;
};

MainAudioProcessor::MainAudioProcessor()
    : AudioProcessorKestrin (BusesProperties()
                                 .withInput ("Input", juce::AudioChannelSet::stereo(), true)
                                 .withOutput ("Output", juce::AudioChannelSet::stereo(), true)),
      barLengths (parameterTable::barLengths.begin(), parameterTable::barLengths.end()),
      barLabels (parameterTable::barTexts.begin(), parameterTable::barTexts.end()),
      hpFilter (std::make_unique<ButterworthFilter>()), lpFilter (std::make_unique<ButterworthFilter>()),
      hpLadder (std::make_unique<GrungeLadder>()), lpLadder (std::make_unique<GrungeLadder>()),
      hpResonator (std::make_unique<ResonancePeak>()), lpResonator (std::make_unique<ResonancePeak>()),
      parameters (*this)
{
    requestControlUpdate();
}

MainAudioProcessor::~MainAudioProcessor() = default;

const juce::String MainAudioProcessor::getName() const { return pluginIdentity::name; }

// The rate is not taken here: every tick reads it from the host.
void MainAudioProcessor::prepareToPlay (double, int) { requestControlUpdate(); }

void MainAudioProcessor::setCurrentProgram (int) { requestControlUpdate(); }

const juce::String MainAudioProcessor::getProgramName (int) { return {}; }

bool MainAudioProcessor::isBusesLayoutSupported (const BusesLayout& layouts) const
{
    const auto output = layouts.getMainOutputChannelSet();

    if (output != juce::AudioChannelSet::mono() && output != juce::AudioChannelSet::stereo())
        return false;

    return output == layouts.getMainInputChannelSet();
}

void MainAudioProcessor::updateControlRate()
{
    auto motion = beginMotion();
    Tick tick;

    moveControls (motion, tick);
    endMotion (motion);
    mapSlews (tick);
    designFilters (motion, tick);
}

// Everything up to the slews. That the tick decides here whether the next frame needs another one, and not behind the design,
// makes no difference: the decision looks at slews and routing alone.
void MainAudioProcessor::moveControls (Motion& motion, Tick& tick)
{
    refreshHostSampleRate();
    readTransport (tick);
    readRateAndParametersIfChanged (motion);
    resetLfosWithoutTransport (tick);
    setLfoWobbleAndTempoLock (motion, tick);
    motion.evaluateFrequencer (tick);
    advanceAndRouteLfos (motion, tick);
    motion.setSlewSteps();
    motion.setTargets (tick.sums);
    motion.advanceSlews();
    decideWhetherToStayAwake (motion);
}

MainAudioProcessor::Motion MainAudioProcessor::beginMotion() const noexcept
{
    const auto rate = processingRate();

    return { .readings = ControlReadings (parameters, barLengths),
             .rate = rate,
             .tickRate = LfoGenerator::TickRate ((float) rate),
             .target = { hpFreqSlew.target, lpFreqSlew.target, hpResoSlew.target, lpResoSlew.target },
             .current = { hpFreqSlew.current, lpFreqSlew.current, hpResoSlew.current, lpResoSlew.current } };
}

void MainAudioProcessor::endMotion (const Motion& motion) noexcept
{
    constexpr std::int32_t linearMode = 1;
    using Readings = ControlReadings;

    const auto leave = [&] (SlewValue& slew, Readings::Route route)
    {
        slew.mode = linearMode;
        slew.target = motion.target[route];
        slew.current = motion.current[route];
        slew.step = motion.step[route];
    };

    leave (hpFreqSlew, Readings::hpFreq);
    leave (lpFreqSlew, Readings::lpFreq);
    leave (hpResoSlew, Readings::hpReso);
    leave (lpResoSlew, Readings::lpReso);

    hpPoles = motion.readings.highpass.poles;
    hpPeakBandwidth = motion.readings.highpass.peakBandwidth;
    lpPoles = motion.readings.lowpass.poles;
    lpPeakBandwidth = motion.readings.lowpass.peakBandwidth;

    const auto stepsOn = motion.stepsOn();

    for (size_t j = 0; j < stepLit.size(); ++j)
        stepLit[j] = stepsOn[j];
}

void MainAudioProcessor::readTransport (Tick& tick) const
{
    if (auto* const transport = getPlayHead())
    {
        if (const auto position = transport->getPosition())
        {
            tick.bpm = position->getBpm().orFallback (120.0);
            tick.ppq = position->getPpqPosition().orFallback (0.0);
        }
    }

    tick.transportAbsent = tick.ppq == 0.0;
}

void MainAudioProcessor::readRateAndParametersIfChanged (Motion& motion) const noexcept
{
    const auto rate = processingRate();

    if (rate == motion.rate && parameters.getChangeCount() == motion.readings.changeCount)
        return;

    motion.rate = rate;
    motion.tickRate = LfoGenerator::TickRate ((float) rate);
    motion.readings = ControlReadings (parameters, barLengths);
    motion.isWatchDue = true;
    ++motion.numChanges;
}

void MainAudioProcessor::resetLfosWithoutTransport (const Tick& tick) noexcept
{
    if (tick.transportAbsent)
        for (auto& generator : lfo)
            generator.reset();
}

void MainAudioProcessor::setLfoWobbleAndTempoLock (const Motion& motion, const Tick& tick) noexcept
{
    for (size_t i = 0; i < lfo.size(); ++i)
    {
        const auto& reading = motion.readings.lfo[i];
        setWobble (reading, motion.rate, i);

        if (reading.sync == ControlReadings::tempoSync)
            lockToTempo (reading, tick, i);

        lfo[i].curveExponent = reading.bend == 0.0f ? 1.0f : 1.0f / std::exp (reading.bend);
    }
}

void MainAudioProcessor::setWobble (const ControlReadings::Lfo& reading, double rate, size_t i) noexcept
{
    struct Law
    {
        float offset, scale, depth;
    };

    // ln (300), ln (350) and, below, ln (100): from 0.01 Hz up to 300 or 350 times that. The depth of the first is exactly
    // the threshold above which a wobble is heard, so "Wobbly" turns without effect: projects depend on that.
    static constexpr Law wobbly { 0.2297f, 5.7037826f, 0.01f };
    static constexpr Law drunk { 0.3297f, 5.857933f, 0.12f };

    if (reading.sync != ControlReadings::wobblySync && reading.sync != ControlReadings::drunkSync)
    {
        wobbleStep[i] = wobbleDepth[i] = 0.0f;
        return;
    }

    const auto& law = reading.sync == ControlReadings::wobblySync ? wobbly : drunk;

    // The two LFOs are detuned against each other: 0.055 and 0.054.
    const auto detune = (float) (i ^ 0x37u) * 0.001f;
    const auto hertz = std::exp ((detune + law.offset) * reading.speed * law.scale - 4.6051702f);
    wobbleStep[i] = (float) ((double) hertz / rate);
    wobbleDepth[i] = law.depth;
}

void MainAudioProcessor::lockToTempo (const ControlReadings::Lfo& reading, const Tick& tick, size_t i) noexcept
{
    const auto cycles = tick.ppq / (double) reading.beats + 0.5 - (double) reading.phase;
    const auto wanted = (float) (cycles - std::floor (cycles));

    auto distance = lfo[i].phaseA - wanted;
    distance = distance - std::floor (distance);

    if (distance >= 0.5f)
        distance = 1.0f - distance;

    // One hundredth of a beat, in cycles: nearer than that the phase runs free.
    if (distance >= 0.01f / reading.beats)
        lfo[i].jumpTo (wanted);
}

void MainAudioProcessor::Motion::evaluateFrequencer (Tick& tick) noexcept
{
    beats = tick.ppq;

    if (! readings.pattern.isActive())
        return;

    const auto sums = readings.pattern.sumsOf (stepsOn());
    tick.sums[ControlReadings::hpFreq] = sums.highpass;
    tick.sums[ControlReadings::lpFreq] = sums.lowpass;
}

void MainAudioProcessor::advanceAndRouteLfos (const Motion& motion, Tick& tick)
{
    // All of LFO 1 before LFO 2: each reads the other's output, LFO 1 from before LFO 2's advance.
    for (size_t i = 0; i < lfo.size(); ++i)
    {
        const auto& reading = motion.readings.lfo[i];
        wobblePhase[i] += wobbleStep[i];

        if (wobblePhase[i] >= 1.0f)
            wobblePhase[i] = 0.0f;

        lfo[i].advance();
        tick.renderedShape[i] = lfo[i].shape;
        tick.lfoOutput[i] = lfo[i].render();

        for (size_t route = 0; route < tick.sums.size(); ++route)
            tick.sums[route] += reading.depths[route] * tick.lfoOutput[i];

        configureLfo (motion, tick, i, speedMultiplier (reading.depthOfOther, tick, i));
    }
}

float MainAudioProcessor::speedMultiplier (float depthOfOther, const Tick& tick, size_t i) noexcept
{
    auto multiplier = 1.0f;

    if (std::abs (depthOfOther) > routingDeadBand)
    {
        // LFO 1 still stands where this tick has rendered it, unless it has changed its shape since.
        const auto other = (i + 1) % lfo.size();
        const auto isRendered = other < i && lfo[other].shape == tick.renderedShape[other];
        const auto output = isRendered ? tick.lfoOutput[other] : lfo[other].render();
        multiplier = square (1.0f + output * depthOfOther * 0.5f);
    }

    if (wobbleDepth[i] > 0.01f)
        multiplier = multiplier * square (triangleOf (wobblePhase[i]) * wobbleDepth[i] + 1.0f);

    if (multiplier < 0.01f)
        return 0.01f;

    return multiplier > 1.99f ? 1.99f : multiplier;
}

void MainAudioProcessor::configureLfo (const Motion& motion, const Tick& tick, size_t i, float multiplier)
{
    constexpr auto firstUnnamedSine = 8;
    const auto& reading = motion.readings.lfo[i];
    auto frequency = 0.0f;

    if (reading.sync == ControlReadings::tempoSync)
    {
        multiplier = 1.0f;
        frequency = (float) (tick.bpm / (double) reading.beats * 0.016666666666666666);
    }

    if (frequency == 0.0f)
        frequency = std::exp (reading.speed * multiplier * multiplier * lfoExpScale - lfoExpOffset);

    lfo[i].amplitude = 1.0f;

    switch (reading.shape)
    {
        case LfoGenerator::reservedPulse:
            lfo[i].setRate (LfoGenerator::reservedPulse, motion.tickRate, 0.0f);
            lockLfosToBars (motion, 1.0f);
            break;
        case LfoGenerator::reservedSum:
            lfo[i].setRate (LfoGenerator::reservedSum, motion.tickRate, 0.0f);
            lockLfosToBars (motion, 16.0f);
            break;
        default:
            lfo[i].setRate (reading.shape < firstUnnamedSine ? reading.shape : LfoGenerator::sine, motion.tickRate,
                            frequency);
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

// Against the targets of the previous tick: a new target starts to be followed one tick later.
void MainAudioProcessor::Motion::setSlewSteps() noexcept
{
    if (! (tickRate.ticksPerSecond > 0.0f))
    {
        step.fill (1.0e20f);
        return;
    }

    const auto ticks = tickRate.ticksPerSecond * (readings.active ? 0.004f : 0.02f);

    for (size_t route = 0; route < step.size(); ++route)
        step[route] = std::abs (target[route] - current[route]) / ticks;
}

void MainAudioProcessor::Motion::setTargets (Routes sums) noexcept
{
    // Frequencies are moved by half the sum and resonances by the whole: the asymmetry is part of the sound.
    static constexpr Routes scales { 0.5f, 0.5f, 1.0f, 1.0f };

    for (size_t route = 0; route < target.size(); ++route)
        target[route] = limitToUnit (sums[route] * scales[route] + readings.knobs[route]);
}

void MainAudioProcessor::Motion::advanceSlews() noexcept
{
    for (size_t route = 0; route < current.size(); ++route)
        current[route] = SlewValue::movedLinearly (current[route], target[route], step[route]);
}

bool MainAudioProcessor::Motion::isGliding() const noexcept
{
    static constexpr Routes thresholds { 0.0002f, 0.0002f, 0.0003f, 0.0003f };
    auto gliding = false;

    for (size_t route = 0; route < current.size(); ++route)
        gliding |= std::abs (target[route] - current[route]) > thresholds[route];

    return gliding;
}

void MainAudioProcessor::decideWhetherToStayAwake (const Motion& motion) noexcept
{
    if (motion.readings.active || motion.isGliding())
        requestControlUpdate();
}

void MainAudioProcessor::mapSlews (Tick& tick) noexcept
{
    tick.hpHz = hertzOf (hpFreqSlew.current);
    tick.lpHz = hertzOf (lpFreqSlew.current);
    hpResonance = resonanceOf (hpResoSlew.current);
    lpResonance = resonanceOf (lpResoSlew.current);
}

void MainAudioProcessor::designFilters (const Motion& motion, const Tick& tick) noexcept
{
    const auto hpHz = (double) tick.hpHz;
    const auto lpHz = (double) tick.lpHz;

    // The family that is not selected keeps its old coefficients.
    if (motion.readings.family == ControlReadings::Family::ladder)
    {
        hpLadder->configure (hpPoles, true, hpHz, (double) hpResonance, hpGrungeGain, motion.rate);
        lpLadder->configure (lpPoles, false, lpHz, (double) lpResonance, lpGrungeGain, motion.rate);
        return;
    }

    hpFilter->design ((unsigned) hpPoles, true, hpHz, motion.rate);
    lpFilter->design ((unsigned) lpPoles, false, lpHz, motion.rate);

    if (hpResonance > resonanceThreshold)
        hpResonator->design (motion.rate, hpHz, (double) hpPeakBandwidth);

    if (lpResonance > resonanceThreshold)
        lpResonator->design (motion.rate, lpHz * lpPeakRatio, (double) lpPeakBandwidth);
}

std::pair<float, float> MainAudioProcessor::processFrame (float left, float right)
{
    watchParameters();
    runFilters (SampleRun { &left, &right, 1 });
    return { left, right };
}

bool MainAudioProcessor::watchParameters() noexcept
{
    // Only the first that has moved is taken note of; the others are found on the following frames.
    const auto hasMoved = parameters.hpFreq->hasChanged() || parameters.lpFreq->hasChanged()
                          || parameters.hpReso->hasChanged() || parameters.lpReso->hasChanged();

    if (hasMoved)
        requestControlUpdate();

    return hasMoved;
}

void MainAudioProcessor::runFilters (SampleRun samples) noexcept
{
    switch (familyOf (*parameters.filtMode))
    {
        case ControlReadings::Family::butterworth:
            return runButterworth (samples);
        case ControlReadings::Family::ladder:
            return runLadder (samples);
        case ControlReadings::Family::none:
            // The way through double precision is kept without a filter too: it flushes subnormal samples.
            return processWidened (samples, [] (FrameRun) {});
    }
}

void MainAudioProcessor::runLadder (SampleRun samples) noexcept
{
    processWidened (samples,
                    [this] (FrameRun frames)
                    {
                        hpLadder->processRun (frames);
                        lpLadder->processRun (frames);
                    });
}

void MainAudioProcessor::runButterworth (SampleRun samples) noexcept
{
    const auto hpResonates = hpResonance > resonanceThreshold && hpPoles > 0;
    const auto lpResonates = lpResonance > resonanceThreshold && lpPoles > 0;

    if (! hpResonates && ! lpResonates)
        return ButterworthFilter::processRun (*hpFilter, *lpFilter, samples);

    const auto add = [] (ResonancePeak& peak, float amount, FrameRun frames)
    {
        std::array<float, maxRunFrames> amounts;
        std::fill_n (amounts.begin(), frames.size(), amount);
        peak.addResonance (std::span<const float> (amounts).first (frames.size()), frames);
    };

    // The highpass resonance is taken behind its filter, the lowpass resonance before its own: part of the sound.
    processWidened (samples,
                    [&] (FrameRun frames)
                    {
                        hpFilter->processRun (frames);

                        if (hpResonates)
                            add (*hpResonator, hpResonance, frames);

                        if (lpResonates)
                            add (*lpResonator, lpResonance, frames);

                        lpFilter->processRun (frames);
                    });
}

/** What decides which filters run, and how they are made. */
struct MainAudioProcessor::Structure
{
    double rate;
    ControlReadings::Family family;
    ControlReadings::Slope highpass, lowpass;
};

/** What consecutive ticks have left, one entry per tick and frame. */
struct MainAudioProcessor::TickSeries
{
    using Values = std::array<float, maxDesigns>;

    void add (const Motion& motion) noexcept;
    [[nodiscard]] bool areOfOneRun (std::size_t a, std::size_t b) const noexcept;
    [[nodiscard]] TickRun run (std::size_t first, std::size_t count) const noexcept;

    std::size_t size = 0;

    /** Which structure each tick had: Motion::numChanges. */
    std::array<std::uint8_t, maxDesigns> structureOf;
    std::array<Structure, maxDesigns + 1> structures;

    std::array<ControlReadings::Routes, maxDesigns> slews;

    // What mapSlews makes of the slews.
    Values hpHz, lpHz, hpResonance, lpResonance;
};

/** Some of them that run the same filters. */
struct MainAudioProcessor::TickRun
{
    const Structure& structure;
    bool hpResonates, lpResonates;
    std::span<const float> hpHz, lpHz, hpResonance, lpResonance;
};

void MainAudioProcessor::TickSeries::add (const Motion& motion) noexcept
{
    const auto& readings = motion.readings;

    structureOf[size] = motion.numChanges;
    structures[motion.numChanges] = { motion.rate, readings.family, readings.highpass, readings.lowpass };
    slews[size] = motion.current;
    ++size;
}

bool MainAudioProcessor::TickSeries::areOfOneRun (size_t a, size_t b) const noexcept
{
    return (hpResonance[a] > resonanceThreshold) == (hpResonance[b] > resonanceThreshold)
           && (lpResonance[a] > resonanceThreshold) == (lpResonance[b] > resonanceThreshold)
           && structureOf[a] == structureOf[b];
}

MainAudioProcessor::TickRun MainAudioProcessor::TickSeries::run (size_t first, size_t count) const noexcept
{
    const auto part = [=] (const Values& values) { return std::span<const float> (values).subspan (first, count); };

    return { structures[structureOf[first]],
             hpResonance[first] > resonanceThreshold,
             lpResonance[first] > resonanceThreshold,
             part (hpHz),
             part (lpHz),
             part (hpResonance),
             part (lpResonance) };
}

void MainAudioProcessor::processFrames (float* left, float* right, int numFrames)
{
    SampleRun samples { left, right, (size_t) numFrames };

    while (samples.size > 0)
        samples = samples.after (isControlUpdateDue() ? processAwake (samples) : processAsleep (samples));
}

size_t MainAudioProcessor::processAsleep (SampleRun samples) noexcept
{
    const auto limit = std::min (samples.size, (size_t) framesUntilClockedUpdate());
    const auto changeCount = parameters.getChangeCount();
    size_t count = 1;

    skipClock (1);

    // Once the watch has found nothing, it finds nothing until some parameter is set.
    if (! watchParameters())
    {
        while (count < limit && parameters.getChangeCount() == changeCount)
            ++count;

        skipClock ((int) count - 1);
    }

    runFilters (samples.first (count));
    return count;
}

size_t MainAudioProcessor::processAwake (SampleRun samples)
{
    TickSeries ticks;
    gatherTicks (ticks, std::min (samples.size, maxDesigns));
    mapSlews (ticks);
    processWidened (samples.first (ticks.size), [&] (FrameRun frames) { runFilters (ticks, frames); });
    return ticks.size;
}

void MainAudioProcessor::gatherTicks (TickSeries& ticks, size_t maxTicks)
{
    auto motion = beginMotion();

    do
    {
        Tick tick;
        juce::ignoreUnused (advanceClock());
        moveControls (motion, tick);
        ticks.add (motion);

        if (motion.isWatchDue)
            motion.isWatchDue = watchParameters();
    } while (ticks.size < maxTicks && isControlUpdateDue());

    endMotion (motion);
}

void MainAudioProcessor::mapSlews (TickSeries& ticks) noexcept
{
    for (size_t i = 0; i < ticks.size; ++i)
    {
        ticks.hpHz[i] = hertzOf (ticks.slews[i][ControlReadings::hpFreq]);
        ticks.lpHz[i] = hertzOf (ticks.slews[i][ControlReadings::lpFreq]);
        ticks.hpResonance[i] = resonanceOf (ticks.slews[i][ControlReadings::hpReso]);
        ticks.lpResonance[i] = resonanceOf (ticks.slews[i][ControlReadings::lpReso]);
    }

    hpResonance = ticks.hpResonance[ticks.size - 1];
    lpResonance = ticks.lpResonance[ticks.size - 1];
}

void MainAudioProcessor::runFilters (const TickSeries& ticks, FrameRun frames) noexcept
{
    for (size_t first = 0, end = 0; first < ticks.size; first = end)
    {
        do
            ++end;
        while (end < ticks.size && ticks.areOfOneRun (first, end));

        const auto run = ticks.run (first, end - first);
        const auto part = frames.subspan (first, end - first);

        if (run.structure.family == ControlReadings::Family::ladder)
            runLadder (run, part);
        else
            runButterworth (run, part);
    }
}

void MainAudioProcessor::runLadder (const TickRun& ticks, FrameRun frames) noexcept
{
    const auto& structure = ticks.structure;
    GrungeLadder::Series series;

    hpLadder->configureSeries (structure.highpass.poles, true, ticks.hpHz, ticks.hpResonance, hpGrungeGain,
                               structure.rate, series);
    hpLadder->processRun (series, frames);

    lpLadder->configureSeries (structure.lowpass.poles, false, ticks.lpHz, ticks.lpResonance, lpGrungeGain,
                               structure.rate, series);
    lpLadder->processRun (series, frames);
}

void MainAudioProcessor::runButterworth (const TickRun& ticks, FrameRun frames) noexcept
{
    ButterworthFilter::Series hpSeries, lpSeries;
    ResonancePeak::Series hpPeakSeries, lpPeakSeries;
    const auto& structure = ticks.structure;

    hpFilter->designSeries ((unsigned) structure.highpass.poles, true, ticks.hpHz, structure.rate, hpSeries);
    lpFilter->designSeries ((unsigned) structure.lowpass.poles, false, ticks.lpHz, structure.rate, lpSeries);

    if (ticks.hpResonates)
        hpResonator->designSeries (structure.rate, ticks.hpHz, 1.0, (double) structure.highpass.peakBandwidth,
                                   hpPeakSeries);

    if (ticks.lpResonates)
        lpResonator->designSeries (structure.rate, ticks.lpHz, lpPeakRatio, (double) structure.lowpass.peakBandwidth,
                                   lpPeakSeries);

    if (structure.family != ControlReadings::Family::butterworth)
        return;

    if (! ticks.hpResonates && ! ticks.lpResonates)
        return ButterworthFilter::processRun (*hpFilter, hpSeries, *lpFilter, lpSeries, frames);

    hpFilter->processRun (hpSeries, frames);

    if (ticks.hpResonates && structure.highpass.poles > 0)
        hpResonator->addResonance (hpPeakSeries, ticks.hpResonance, frames);

    if (ticks.lpResonates && structure.lowpass.poles > 0)
        lpResonator->addResonance (lpPeakSeries, ticks.lpResonance, frames);

    lpFilter->processRun (lpSeries, frames);
}
