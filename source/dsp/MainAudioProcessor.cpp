// SPDX-License-Identifier: AGPL-3.0-or-later
#include "MainAudioProcessor.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

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

/** A routing depth up to here does not keep the engine awake. No float lies between this one and 0.01, so that the
    comparison is that with 0.01. */
constexpr float routingDeadBand = 0.01f;

/** Below it a resonance does not run. */
constexpr float resonanceThreshold = 1.0e-7f;

/** The lowpass peaks a tenth below its cutoff, the highpass on it. */
constexpr double lpPeakRatio = 0.9;

// A ladder's lowpass answers to the same amount more strongly than its highpass.
constexpr double hpGrungeGain = 15.0;
constexpr double lpGrungeGain = 80.0;

enum FilterMode
{
    butterworthMode = 0,
    ladderMode = 1
};

enum SyncMode
{
    wobblySync = 1,
    drunkSync = 2,
    tempoSync = 3
};

[[nodiscard]] float bipolar (const ParameterSet::Parameter& parameter) noexcept
{
    return parameter.get() * 2.0f - 1.0f;
}

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
    double rate = 0.0;
    double ppq = 0.0;
    double bpm = 0.0;

    /** Also when the position is exactly 0: a transport that stands at its start is the same as none. */
    bool transportAbsent = true;

    /** Something is routed or programmed, so that the next frame needs a tick too. */
    bool active = false;

    float hpMod = 0.0f;
    float lpMod = 0.0f;
    float hpResoMod = 0.0f;
    float lpResoMod = 0.0f;

    float hpHz = 0.0f;
    float lpHz = 0.0f;

    std::array<int, ParameterSet::numLfos> lfoSync {};
    std::array<int, ParameterSet::numLfos> lfoShape {};

    /** What each LFO has been routed with, and in which shape. */
    std::array<float, ParameterSet::numLfos> lfoOutput;
    std::array<std::int32_t, ParameterSet::numLfos> renderedShape;

    /** Beats of one tempo-locked cycle. */
    std::array<float, ParameterSet::numLfos> lfoBeats {};
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
    Tick tick;

    moveControls (tick);
    mapSlews (tick);
    designFilters (tick);
}

// Everything up to the slews. That the tick decides here whether the next frame needs another one, and not behind the design,
// makes no difference: the decision looks at slews and routing alone.
void MainAudioProcessor::moveControls (Tick& tick)
{
    refreshHostSampleRate();
    tick.rate = processingRate();
    readTransport (tick);
    resetLfosWithoutTransport (tick);
    readLfoChoices (tick);
    setLfoWobbleAndTempoLock (tick);
    setSlopes();
    evaluateFrequencer (tick);
    advanceAndRouteLfos (tick);
    setSlewSteps (tick);
    setTargets (tick);
    advanceSlews();
    decideWhetherToStayAwake (tick);
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

void MainAudioProcessor::resetLfosWithoutTransport (const Tick& tick) noexcept
{
    if (tick.transportAbsent)
        for (auto& generator : lfo)
            generator.reset();
}

void MainAudioProcessor::setLfoWobbleAndTempoLock (const Tick& tick) noexcept
{
    for (size_t i = 0; i < lfo.size(); ++i)
    {
        setWobble (tick, i);

        if (tick.lfoSync[i] == tempoSync)
            lockToTempo (tick, i);

        const auto bend = (float) ((double) bipolar (*parameters.lfoCurve[i]) * 1.7);
        lfo[i].curveExponent = bend == 0.0f ? 1.0f : 1.0f / std::exp (bend);
    }
}

void MainAudioProcessor::readLfoChoices (Tick& tick) const noexcept
{
    for (size_t i = 0; i < lfo.size(); ++i)
    {
        tick.lfoSync[i] = parameters.lfoSync[i]->getChoiceIndex();
        tick.lfoShape[i] = parameters.lfoShape[i]->getChoiceIndex();
        tick.lfoBeats[i] = barLengths[(size_t) parameters.lfoMode[i]->getChoiceIndex()];
    }
}

void MainAudioProcessor::setWobble (const Tick& tick, size_t i) noexcept
{
    struct Law
    {
        float offset, scale, depth;
    };

    // ln (300), ln (350) and, below, ln (100): from 0.01 Hz up to 300 or 350 times that. The depth of the first is exactly
    // the threshold above which a wobble is heard, so "Wobbly" turns without effect: projects depend on that.
    static constexpr Law wobbly { 0.2297f, 5.7037826f, 0.01f };
    static constexpr Law drunk { 0.3297f, 5.857933f, 0.12f };

    if (tick.lfoSync[i] != wobblySync && tick.lfoSync[i] != drunkSync)
    {
        wobbleStep[i] = wobbleDepth[i] = 0.0f;
        return;
    }

    const auto& law = tick.lfoSync[i] == wobblySync ? wobbly : drunk;

    // The two LFOs are detuned against each other: 0.055 and 0.054.
    const auto detune = (float) (i ^ 0x37u) * 0.001f;
    const auto hertz = std::exp ((detune + law.offset) * parameters.lfoSpeed[i]->get() * law.scale - 4.6051702f);
    wobbleStep[i] = (float) ((double) hertz / tick.rate);
    wobbleDepth[i] = law.depth;
}

void MainAudioProcessor::lockToTempo (const Tick& tick, size_t i) noexcept
{
    const auto beats = tick.lfoBeats[i];
    const auto cycles = tick.ppq / (double) beats + 0.5 - (double) parameters.lfoPhase[i]->get();
    const auto wanted = (float) (cycles - std::floor (cycles));

    auto distance = lfo[i].phaseA - wanted;
    distance = distance - std::floor (distance);

    if (distance >= 0.5f)
        distance = 1.0f - distance;

    // One hundredth of a beat, in cycles: nearer than that the phase runs free.
    if (distance >= 0.01f / beats)
        lfo[i].jumpTo (wanted);
}

void MainAudioProcessor::setSlopes() noexcept
{
    struct Slope
    {
        std::int32_t poles;
        float peakBandwidth;
    };

    // By choice index; whatever lies above the texts is a bypass like index 0.
    static constexpr std::array<Slope, 5> slopes {
        { { 0, 3.0f }, { 1, 2.0f }, { 2, 1.25f }, { 4, 0.707f }, { 8, 0.5f } }
    };

    const auto slopeOf = [] (const ParameterSet::Parameter& mode)
    {
        const auto index = (size_t) mode.getChoiceIndex();
        return slopes[index < slopes.size() ? index : 0];
    };

    const auto highpass = slopeOf (*parameters.hpMode);
    hpPoles = highpass.poles;
    hpPeakBandwidth = highpass.peakBandwidth;

    const auto lowpass = slopeOf (*parameters.lpMode);
    lpPoles = lowpass.poles;
    lpPeakBandwidth = lowpass.peakBandwidth;
}

void MainAudioProcessor::evaluateFrequencer (Tick& tick) noexcept
{
    const auto& offset = *parameters.seqOffs;
    const auto shiftBeats = (offset.maxValue - offset.minValue) * offset.get() + offset.minValue;

    if (isFrequencerCentred())
        return showSteps (frequencer::stepsAt (tick.ppq, shiftBeats));

    frequencer::Offsets offsets;

    for (size_t j = 0; j < frequencer::numSteps; ++j)
    {
        offsets.highpass[j] = parameters.seqHpf[j]->get();
        offsets.lowpass[j] = parameters.seqLpf[j]->get();
    }

    const auto result = frequencer::evaluate (tick.ppq, shiftBeats, offsets);
    showSteps (result.stepLit);
    tick.hpMod = result.highpass;
    tick.lpMod = result.lowpass;
    tick.active = tick.active || result.active;
}

bool MainAudioProcessor::isFrequencerCentred() const noexcept
{
    // Compared as bits and all at once, which is the quickest: this is asked at every tick, and mostly answered with yes.
    constexpr auto centre = std::bit_cast<std::uint32_t> (0.5f);
    std::uint32_t difference = 0;

    for (size_t j = 0; j < frequencer::numSteps; ++j)
        difference |= (std::bit_cast<std::uint32_t> (parameters.seqHpf[j]->get()) ^ centre)
                      | (std::bit_cast<std::uint32_t> (parameters.seqLpf[j]->get()) ^ centre);

    return difference == 0;
}

void MainAudioProcessor::showSteps (std::bitset<frequencer::numSteps> steps) noexcept
{
    for (size_t j = 0; j < stepLit.size(); ++j)
        stepLit[j] = steps[j];
}

void MainAudioProcessor::advanceAndRouteLfos (Tick& tick)
{
    // All of LFO 1 before LFO 2: each reads the other's output, LFO 1 from before LFO 2's advance.
    for (size_t i = 0; i < lfo.size(); ++i)
    {
        wobblePhase[i] += wobbleStep[i];

        if (wobblePhase[i] >= 1.0f)
            wobblePhase[i] = 0.0f;

        lfo[i].advance();
        tick.renderedShape[i] = lfo[i].shape;
        tick.lfoOutput[i] = lfo[i].render();
        routeLfo (tick, i, tick.lfoOutput[i]);

        auto multiplier = speedMultiplier (tick, i);
        auto frequency = 0.0f;

        if (tick.lfoSync[i] == tempoSync)
        {
            multiplier = 1.0f;
            frequency = (float) (tick.bpm / (double) tick.lfoBeats[i] * 0.016666666666666666);
        }

        configureLfo (tick, i, frequency, multiplier);
    }
}

void MainAudioProcessor::routeLfo (Tick& tick, size_t i, float output) const noexcept
{
    const auto route = [&] (const ParameterSet::Parameter& parameter, float& sum)
    {
        const auto depth = bipolar (parameter);

        if (std::abs (depth) > routingDeadBand)
            tick.active = true;

        sum += depth * output;
    };

    route (*parameters.lfoToHpFreq[i], tick.hpMod);
    route (*parameters.lfoToLpFreq[i], tick.lpMod);
    route (*parameters.lfoToHpReso[i], tick.hpResoMod);
    route (*parameters.lfoToLpReso[i], tick.lpResoMod);
}

float MainAudioProcessor::speedMultiplier (const Tick& tick, size_t i) noexcept
{
    const auto other = (i + 1) % lfo.size();
    const auto depth = bipolar (*parameters.lfoToOtherLfo[other]);
    auto multiplier = 1.0f;

    if (std::abs (depth) > routingDeadBand)
    {
        // LFO 1 still stands where this tick has rendered it, unless it has changed its shape since.
        const auto isRendered = other < i && lfo[other].shape == tick.renderedShape[other];
        const auto output = isRendered ? tick.lfoOutput[other] : lfo[other].render();
        multiplier = square (1.0f + output * depth * 0.5f);
    }

    if (wobbleDepth[i] > 0.01f)
        multiplier = multiplier * square (triangleOf (wobblePhase[i]) * wobbleDepth[i] + 1.0f);

    if (multiplier < 0.01f)
        return 0.01f;

    return multiplier > 1.99f ? 1.99f : multiplier;
}

void MainAudioProcessor::configureLfo (Tick& tick, size_t i, float frequency, float multiplier)
{
    constexpr auto firstUnnamedSine = 8;
    const auto rate = (float) tick.rate;

    if (frequency == 0.0f)
        frequency = std::exp (parameters.lfoSpeed[i]->get() * multiplier * multiplier * lfoExpScale - lfoExpOffset);

    lfo[i].amplitude = 1.0f;

    switch (tick.lfoShape[i])
    {
        case LfoGenerator::reservedPulse:
            lfo[i].setRate (LfoGenerator::reservedPulse, rate, 0.0f);
            lockLfosToBars (tick, 1.0f);
            break;
        case LfoGenerator::reservedSum:
            lfo[i].setRate (LfoGenerator::reservedSum, rate, 0.0f);
            lockLfosToBars (tick, 16.0f);
            break;
        default:
            lfo[i].setRate (tick.lfoShape[i] < firstUnnamedSine ? tick.lfoShape[i] : LfoGenerator::sine, rate,
                            frequency);
    }
}

void MainAudioProcessor::lockLfosToBars (const Tick& tick, float barMultiple)
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
        const auto span = barMultiple * tick.lfoBeats[i];
        const auto cycles = ppq / (double) bar / (double) span;
        const auto wanted = cycles - std::floor (cycles);

        if (wanted > 0.0 && wanted < 1.0)
        {
            lfo[i].referencePhase = (float) wanted;
            lfo[i].followReference = true;
        }

        const auto period = (float) tick.rate * 60.0f * bar * span / bpm;
        const auto step = inverseOrZero ((double) period);
        lfo[i].phaseStepA = (float) step;
        lfo[i].phaseStepB = (float) (step * 0.5);
        lfo[i].phaseStepC = (float) (step * 2.0);
    }
}

void MainAudioProcessor::setSlewSteps (const Tick& tick) noexcept
{
    constexpr std::int32_t linearMode = 1;
    const auto timeConstant = tick.active ? 0.004f : 0.02f;
    const auto rate = (float) tick.rate;

    // Against the targets of the previous tick: a new target starts to be followed one tick later.
    for (auto* slew : { &hpFreqSlew, &lpFreqSlew, &hpResoSlew, &lpResoSlew })
    {
        slew->mode = linearMode;
        slew->step = rate > 0.0f ? std::abs (slew->target - slew->current) / (rate * timeConstant) : 1.0e20f;
    }
}

void MainAudioProcessor::setTargets (const Tick& tick) noexcept
{
    // Frequencies are moved by half the sum and resonances by the whole: the asymmetry is part of the sound.
    hpFreqSlew.target = limitToUnit (tick.hpMod * 0.5f + parameters.hpFreq->get());
    lpFreqSlew.target = limitToUnit (tick.lpMod * 0.5f + parameters.lpFreq->get());
    hpResoSlew.target = limitToUnit (parameters.hpReso->get() + tick.hpResoMod);
    lpResoSlew.target = limitToUnit (parameters.lpReso->get() + tick.lpResoMod);
}

void MainAudioProcessor::advanceSlews() noexcept
{
    hpFreqSlew.advance();
    lpFreqSlew.advance();
    hpResoSlew.advance();
    lpResoSlew.advance();
}

void MainAudioProcessor::mapSlews (Tick& tick) noexcept
{
    tick.hpHz = hertzOf (hpFreqSlew.current);
    tick.lpHz = hertzOf (lpFreqSlew.current);
    hpResonance = resonanceOf (hpResoSlew.current);
    lpResonance = resonanceOf (lpResoSlew.current);
}

void MainAudioProcessor::designFilters (const Tick& tick) noexcept
{
    const auto hpHz = (double) tick.hpHz;
    const auto lpHz = (double) tick.lpHz;

    // The family that is not selected keeps its old coefficients.
    if (parameters.filtMode->getChoiceIndex() == ladderMode)
    {
        hpLadder->configure (hpPoles, true, hpHz, (double) hpResonance, hpGrungeGain, tick.rate);
        lpLadder->configure (lpPoles, false, lpHz, (double) lpResonance, lpGrungeGain, tick.rate);
        return;
    }

    hpFilter->design ((unsigned) hpPoles, true, hpHz, tick.rate);
    lpFilter->design ((unsigned) lpPoles, false, lpHz, tick.rate);

    if (hpResonance > resonanceThreshold)
        hpResonator->design (tick.rate, hpHz, (double) hpPeakBandwidth);

    if (lpResonance > resonanceThreshold)
        lpResonator->design (tick.rate, lpHz * lpPeakRatio, (double) lpPeakBandwidth);
}

void MainAudioProcessor::decideWhetherToStayAwake (const Tick& tick) noexcept
{
    const auto isGliding = [] (const SlewValue& slew, float threshold)
    { return std::abs (slew.target - slew.current) > threshold; };

    if (tick.active || isGliding (hpFreqSlew, 0.0002f) || isGliding (hpResoSlew, 0.0003f)
        || isGliding (lpFreqSlew, 0.0002f) || isGliding (lpResoSlew, 0.0003f))
        requestControlUpdate();
}

std::pair<float, float> MainAudioProcessor::processFrame (float left, float right)
{
    watchParameters();
    runFilters (SampleRun { &left, &right, 1 });
    return { left, right };
}

void MainAudioProcessor::watchParameters() noexcept
{
    // Only the first that has moved is taken note of; the others are found on the following frames.
    if (parameters.hpFreq->hasChanged() || parameters.lpFreq->hasChanged() || parameters.hpReso->hasChanged()
        || parameters.lpReso->hasChanged())
        requestControlUpdate();
}

void MainAudioProcessor::runFilters (SampleRun samples) noexcept
{
    // An index above the two texts runs no filter at all, though the tick keeps designing for it.
    switch (parameters.filtMode->getChoiceIndex())
    {
        case butterworthMode:
            runButterworth (samples);
            break;
        case ladderMode:
            runLadder (samples);
            break;
        default:
            passThrough (samples);
            break;
    }
}

void MainAudioProcessor::passThrough (SampleRun samples) noexcept
{
    // The way through double precision is kept without a filter too: it flushes subnormal samples.
    std::array<StereoPair, maxRunFrames> storage;
    const auto frames = FrameRun (storage).first (samples.size);

    widen (samples.left, samples.right, frames);
    narrow (frames, samples.left, samples.right);
}

void MainAudioProcessor::runLadder (SampleRun samples) noexcept
{
    std::array<StereoPair, maxRunFrames> storage;
    const auto frames = FrameRun (storage).first (samples.size);

    widen (samples.left, samples.right, frames);
    hpLadder->processRun (frames);
    lpLadder->processRun (frames);
    narrow (frames, samples.left, samples.right);
}

void MainAudioProcessor::runButterworth (SampleRun samples) noexcept
{
    const auto hpResonates = hpResonance > resonanceThreshold && hpPoles > 0;
    const auto lpResonates = lpResonance > resonanceThreshold && lpPoles > 0;

    if (! hpResonates && ! lpResonates)
        return ButterworthFilter::processRun (*hpFilter, *lpFilter, samples);

    std::array<StereoPair, maxRunFrames> storage;
    std::array<float, maxRunFrames> amounts;
    const auto frames = FrameRun (storage).first (samples.size);
    const auto amount = std::span<const float> (amounts).first (samples.size);

    widen (samples.left, samples.right, frames);

    // The highpass resonance is taken behind its filter, the lowpass resonance before its own: part of the sound.
    hpFilter->processRun (frames);

    if (hpResonates)
    {
        amounts.fill (hpResonance);
        hpResonator->addResonance (amount, frames);
    }

    if (lpResonates)
    {
        amounts.fill (lpResonance);
        lpResonator->addResonance (amount, frames);
    }

    lpFilter->processRun (frames);
    narrow (frames, samples.left, samples.right);
}

/** What has to stay the same for ticks to be gathered: everything that decides which filters run and with which order. */
struct MainAudioProcessor::Structure
{
    float filtMode, hpMode, lpMode;
    double hostRate;

    [[nodiscard]] bool operator== (const Structure&) const = default;
};

MainAudioProcessor::Structure MainAudioProcessor::readStructure() const noexcept
{
    return { parameters.filtMode->get(), parameters.hpMode->get(), parameters.lpMode->get(), getSampleRate() };
}

/** What consecutive ticks have left, one entry per tick and frame. */
struct MainAudioProcessor::TickSeries
{
    using Values = std::array<float, maxDesigns>;

    [[nodiscard]] static std::span<const float> part (const Values& values, std::size_t first,
                                                      std::size_t count) noexcept
    {
        return std::span<const float> (values).subspan (first, count);
    }

    std::size_t size = 0;
    double rate = 0.0;
    int filtMode = 0;

    // First the slews' positions, which mapSlews turns into hertz and amounts.
    Values hpHz, lpHz, hpResonance, lpResonance;
};

void MainAudioProcessor::processFrames (float* left, float* right, int numFrames)
{
    SampleRun samples { left, right, (size_t) numFrames };

    while (samples.size > 0)
        samples = samples.after (isControlUpdateDue() ? processAwake (samples) : processAsleep (samples));
}

size_t MainAudioProcessor::processAsleep (SampleRun samples) noexcept
{
    const auto limit = std::min (samples.size, (size_t) framesUntilClockedUpdate());

    // The watch of every frame, in as few instructions as it can be: values of the same bits have not moved, but for a NaN,
    // which always has. Other bits end the run, and watchParameters says whether anything has moved.
    const auto watch = [] (const ParameterSet::Parameter& parameter)
    {
        const auto bits = std::bit_cast<std::uint32_t> (parameter.lastSeenValue);
        return std::pair { &parameter, std::isnan (parameter.lastSeenValue) ? ~bits : bits };
    };

    const auto isSame = [] (const auto& watched)
    { return std::bit_cast<std::uint32_t> (watched.first->get()) == watched.second; };

    const auto hpFreq = watch (*parameters.hpFreq);
    const auto lpFreq = watch (*parameters.lpFreq);
    const auto hpReso = watch (*parameters.hpReso);
    const auto lpReso = watch (*parameters.lpReso);

    size_t count = 1;

    while (count < limit && isSame (hpFreq) && isSame (lpFreq) && isSame (hpReso) && isSame (lpReso))
        ++count;

    skipClock ((int) count);
    watchParameters();
    runFilters (samples.first (count));
    return count;
}

size_t MainAudioProcessor::processAwake (SampleRun samples)
{
    TickSeries ticks;
    gatherTicks (ticks, std::min (samples.size, maxDesigns));
    mapSlews (ticks);

    std::array<StereoPair, maxDesigns> storage;
    const auto frames = FrameRun (storage).first (ticks.size);
    widen (samples.left, samples.right, frames);

    if (ticks.filtMode == ladderMode)
        runLadder (ticks, frames);
    else
        runButterworth (ticks, frames);

    narrow (frames, samples.left, samples.right);
    return ticks.size;
}

void MainAudioProcessor::gatherTicks (TickSeries& ticks, size_t maxTicks)
{
    const auto structure = readStructure();
    ticks.filtMode = parameters.filtMode->getChoiceIndexForValue (structure.filtMode);

    do
    {
        Tick tick;
        juce::ignoreUnused (advanceClock());
        moveControls (tick);

        ticks.rate = tick.rate;
        ticks.hpHz[ticks.size] = hpFreqSlew.current;
        ticks.lpHz[ticks.size] = lpFreqSlew.current;
        ticks.hpResonance[ticks.size] = hpResoSlew.current;
        ticks.lpResonance[ticks.size] = lpResoSlew.current;
        ++ticks.size;

        watchParameters();
    } while (ticks.size < maxTicks && isControlUpdateDue() && readStructure() == structure);
}

void MainAudioProcessor::mapSlews (TickSeries& ticks) noexcept
{
    for (size_t i = 0; i < ticks.size; ++i)
    {
        ticks.hpHz[i] = hertzOf (ticks.hpHz[i]);
        ticks.lpHz[i] = hertzOf (ticks.lpHz[i]);
        ticks.hpResonance[i] = resonanceOf (ticks.hpResonance[i]);
        ticks.lpResonance[i] = resonanceOf (ticks.lpResonance[i]);
    }

    hpResonance = ticks.hpResonance[ticks.size - 1];
    lpResonance = ticks.lpResonance[ticks.size - 1];
}

void MainAudioProcessor::runLadder (const TickSeries& ticks, FrameRun frames) noexcept
{
    GrungeLadder::Series series;

    hpLadder->configureSeries (hpPoles, true, TickSeries::part (ticks.hpHz, 0, ticks.size),
                               TickSeries::part (ticks.hpResonance, 0, ticks.size), hpGrungeGain, ticks.rate, series);
    hpLadder->processRun (series, frames);

    lpLadder->configureSeries (lpPoles, false, TickSeries::part (ticks.lpHz, 0, ticks.size),
                               TickSeries::part (ticks.lpResonance, 0, ticks.size), lpGrungeGain, ticks.rate, series);
    lpLadder->processRun (series, frames);
}

void MainAudioProcessor::runButterworth (const TickSeries& ticks, FrameRun frames) noexcept
{
    const auto resonates = [&] (size_t i) {
        return std::pair { ticks.hpResonance[i] > resonanceThreshold, ticks.lpResonance[i] > resonanceThreshold };
    };

    // A resonance that comes or goes parts the run.
    for (size_t first = 0, end = 0; first < ticks.size; first = end)
    {
        do
            ++end;
        while (end < ticks.size && resonates (end) == resonates (first));

        runButterworth (ticks, first, end - first, ticks.filtMode == butterworthMode,
                        frames.subspan (first, end - first));
    }
}

void MainAudioProcessor::runButterworth (const TickSeries& ticks, size_t first, size_t count, bool isHeard,
                                         FrameRun frames) noexcept
{
    ButterworthFilter::Series hpSeries, lpSeries;
    ResonancePeak::Series hpPeakSeries, lpPeakSeries;
    std::array<double, maxDesigns> peakHz;

    const auto hpHz = TickSeries::part (ticks.hpHz, first, count);
    const auto lpHz = TickSeries::part (ticks.lpHz, first, count);
    const auto hpAmounts = TickSeries::part (ticks.hpResonance, first, count);
    const auto lpAmounts = TickSeries::part (ticks.lpResonance, first, count);
    const auto hpPeaks = hpAmounts[0] > resonanceThreshold;
    const auto lpPeaks = lpAmounts[0] > resonanceThreshold;

    hpFilter->designSeries ((unsigned) hpPoles, true, hpHz, ticks.rate, hpSeries);
    lpFilter->designSeries ((unsigned) lpPoles, false, lpHz, ticks.rate, lpSeries);

    if (hpPeaks)
    {
        for (size_t i = 0; i < count; ++i)
            peakHz[i] = (double) hpHz[i];

        hpResonator->designSeries (ticks.rate, std::span<const double> (peakHz).first (count), (double) hpPeakBandwidth,
                                   hpPeakSeries);
    }

    if (lpPeaks)
    {
        for (size_t i = 0; i < count; ++i)
            peakHz[i] = (double) lpHz[i] * lpPeakRatio;

        lpResonator->designSeries (ticks.rate, std::span<const double> (peakHz).first (count), (double) lpPeakBandwidth,
                                   lpPeakSeries);
    }

    if (! isHeard)
        return;

    if (! hpPeaks && ! lpPeaks)
        return ButterworthFilter::processRun (*hpFilter, hpSeries, *lpFilter, lpSeries, frames);

    hpFilter->processRun (hpSeries, frames);

    if (hpPeaks && hpPoles > 0)
        hpResonator->addResonance (hpPeakSeries, hpAmounts, frames);

    if (lpPeaks && lpPoles > 0)
        lpResonator->addResonance (lpPeakSeries, lpAmounts, frames);

    lpFilter->processRun (lpSeries, frames);
}
