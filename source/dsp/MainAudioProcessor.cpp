// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/MainAudioProcessor.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "dsp/math/FloatExponential.h"
#include "frame/PluginIdentity.h"
#include "parameters/ParameterTable.h"

namespace
{
// The frequency map: ln (1000) and ln (20) as floats, 0 to 1 becoming 20 Hz to 20 kHz.
constexpr float freqExpScale = 6.907754898071289f;
constexpr float freqExpOffset = 2.995732307434082f;

template <typename Value, typename Column>
[[nodiscard]] std::vector<Value> columnOfBars (Column column)
{
    std::vector<Value> values;

    for (const auto& bar : parameterTable::bars)
        values.emplace_back (bar.*column);

    return values;
}

/** What the slews come to: cutoffs in hertz, and ten times the sixth power of the resonances. */
inline void mapToHertzAndAmounts (FloatQuad slewed, TickBatch& ticks, std::size_t tick) noexcept
{
    using Snapshot = ParameterSnapshot;

    static_assert (Snapshot::hpFreq == 0 && Snapshot::lpFreq == 1, "the cutoffs are the first half");
    const auto exponents = slewed * FloatQuad::all (freqExpScale) + FloatQuad::all (freqExpOffset);
    const auto exact = elementary::unroundedExponential (exponents.firstHalf());
    const auto hertz = FloatQuad::narrowed (exact, exact).firstHalf();
    ticks.hpHz[tick] = hertz.left();
    ticks.lpHz[tick] = hertz.right();

    const auto cubes = slewed * slewed * slewed;
    const auto amounts = (cubes * cubes * FloatQuad::all (10.0f)).values();
    ticks.hpResonance[tick] = amounts[Snapshot::hpReso];
    ticks.lpResonance[tick] = amounts[Snapshot::lpReso];
    ticks.hpResonates |= ResonancePeak::isAudible (amounts[Snapshot::hpReso]);
    ticks.lpResonates |= ResonancePeak::isAudible (amounts[Snapshot::lpReso]);
}
} // namespace

MainAudioProcessor::MainAudioProcessor()
    : AudioProcessorKestrin (BusesProperties()
                                 .withInput ("Input", juce::AudioChannelSet::stereo(), true)
                                 .withOutput ("Output", juce::AudioChannelSet::stereo(), true)),
      barLengths (columnOfBars<float> (&parameterTable::Bar::beats)),
      barLabels (columnOfBars<std::string> (&parameterTable::Bar::text)),
      hpFilter (std::make_unique<ButterworthFilter>()), lpFilter (std::make_unique<ButterworthFilter>()),
      hpLadder (std::make_unique<GrungeLadder>()), lpLadder (std::make_unique<GrungeLadder>()),
      hpResonator (std::make_unique<ResonancePeak>()), lpResonator (std::make_unique<ResonancePeak>()),
      parameters (*this), snapshot (parameters, barLengths), lfos (lfo, wobblePhase, wobbleStep, wobbleDepth),
      filters (*hpFilter, *lpFilter, *hpResonator, *lpResonator, *hpLadder, *lpLadder)
{
    static_assert (maxFramesTogether == (int) maxBlockFrames, "frame and engine take as many frames together");
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
    TickBatch tick (snapshot, processingRate(), 1);
    updateControlRate (tick);
}

/** A tick: its steps in their order, each for all ticks of a batch before the next step. Every tick goes through here. */
void MainAudioProcessor::updateControlRate (TickBatch& ticks)
{
    collectTicks (ticks);

    if (! ticks.hasPending())
        return;

    lfos.lockToTempo (ticks);
    takeSlopes (ticks);
    addFrequencer (ticks);
    lfos.advanceAndRoute (ticks, getPlayHead());

    SlewBank slews (hpFreqSlew, lpFreqSlew, hpResoSlew, lpResoSlew, ticks.tickRate.ticksPerSecond, snapshot);

    for (auto tick = ticks.firstPending; tick < ticks.size; ++tick)
    {
        slews.setSteps();
        slews.setTargets (ticks.modulation[tick]);
        slews.advance();
        mapToHertzAndAmounts (slews.values(), ticks, tick);
    }

    takeSlews (slews, ticks);
    filters.design (ticks);
    stayAwake (slews);
    ticks.firstPending = ticks.size;
}

// Rate and transport. They are asked for each tick in its place on the clock, and the host may turn a knob when it is asked.
void MainAudioProcessor::collectTicks (TickBatch& ticks)
{
    auto goesOn =
        begunTick ? collect (ticks, *std::exchange (begunTick, std::nullopt)) : collect (ticks, queryTransport());

    while (goesOn)
    {
        watchParameters();
        juce::ignoreUnused (advanceClock());
        goesOn = collect (ticks, queryTransport());
    }
}

/** Adds a tick to the batch.
    @returns true if the next one may follow */
bool MainAudioProcessor::collect (TickBatch& ticks, SongPosition position)
{
    if (parameters.getChangeCount() != snapshot.changeCount || processingRate() != ticks.rate)
    {
        // The ticks before this one have the old snapshot.
        if (! ticks.isEmpty())
        {
            begunTick = position;
            return false;
        }

        snapshot = ParameterSnapshot (parameters, barLengths);
        ticks.setRate (processingRate());
    }

    ticks.add (position);

    // Whether there is a next tick is the last step of a tick, and has to be known here if the batch is to go on. With
    // something routed it is known: then no tick is the last, whatever becomes of the slews.
    if (! snapshot.canBeBatched())
        return false;

    requestControlUpdate();
    return ! ticks.isFull();
}

SongPosition MainAudioProcessor::queryTransport()
{
    refreshHostSampleRate();

    auto* const transport = getPlayHead();
    const auto position = transport != nullptr ? transport->getPosition() : juce::nullopt;

    if (! position.hasValue())
        return {};

    return { position->getPpqPosition().orFallback (0.0), position->getBpm().orFallback (120.0) };
}

void MainAudioProcessor::takeSlopes (const TickBatch& ticks) noexcept
{
    hpPoles = ticks.snapshot.highpass.poles;
    hpPeakBandwidth = ticks.snapshot.highpass.peakBandwidth;
    lpPoles = ticks.snapshot.lowpass.poles;
    lpPeakBandwidth = ticks.snapshot.lowpass.peakBandwidth;
}

void MainAudioProcessor::addFrequencer (TickBatch& ticks) noexcept
{
    const auto& pattern = ticks.snapshot.pattern;
    const auto stepsAt = [&] (std::size_t tick)
    { return frequencer::stepsAt (ticks.beats[tick], ticks.snapshot.shiftBeats); };

    for (auto tick = ticks.firstPending; tick < ticks.size; ++tick)
    {
        const auto sums = pattern.isActive() ? pattern.sumsOf (stepsAt (tick)) : frequencer::Sums {};
        ticks.modulation[tick] = { sums.highpass, sums.lowpass, 0.0f, 0.0f };
    }

    const auto stepsOn = stepsAt (ticks.size - 1);

    for (std::size_t j = 0; j < stepLit.size(); ++j)
        stepLit[j] = stepsOn[j];
}

void MainAudioProcessor::takeSlews (const SlewBank& slews, const TickBatch& ticks) noexcept
{
    slews.keepIn (hpFreqSlew, lpFreqSlew, hpResoSlew, lpResoSlew);
    hpResonance = ticks.hpResonance[ticks.size - 1];
    lpResonance = ticks.lpResonance[ticks.size - 1];
}

void MainAudioProcessor::stayAwake (const SlewBank& slews) noexcept
{
    // A tick that can be batched has asked for the next one when it was collected.
    if (! snapshot.canBeBatched() && (snapshot.active || slews.areGliding()))
        requestControlUpdate();
}

std::pair<float, float> MainAudioProcessor::processFrame (float left, float right)
{
    watchParameters();
    processAsDesigned ({ &left, &right, 1 });
    return { left, right };
}

// What the host has set is seen without waiting for the next tick. Only the first parameter that has moved is taken note of;
// the others are found on the following frames. A look that finds nothing holds until some parameter is set.
bool MainAudioProcessor::watchParameters() noexcept
{
    const auto count = parameters.getChangeCount();

    if (count == unchangedSince)
        return false;

    const auto hasMoved = parameters.hpFreq->hasChanged() || parameters.lpFreq->hasChanged()
                          || parameters.hpReso->hasChanged() || parameters.lpReso->hasChanged();

    if (hasMoved)
        requestControlUpdate();
    else
        unchangedSince = count;

    return hasMoved;
}

void MainAudioProcessor::processFrames (float* left, float* right, int numFrames)
{
    SampleBlock samples { left, right, (std::size_t) numFrames };

    while (samples.size > 0)
        samples = samples.after (isControlUpdateDue() ? processAwake (samples) : processAsleep (samples));
}

/** Frames without a tick: the filters stand.
    @returns how many have been processed */
std::size_t MainAudioProcessor::processAsleep (SampleBlock samples) noexcept
{
    skipClock (1);

    // Once the watch has found nothing, the next frames need no look of their own.
    const auto limit = std::min (samples.size, (std::size_t) framesUntilClockedUpdate() + 1);
    const auto count = watchParameters() ? 1 : limit;

    skipClock ((int) count - 1);
    processAsDesigned (samples.first (count));
    return count;
}

/** Frames with a tick each.
    @returns how many have been processed */
std::size_t MainAudioProcessor::processAwake (SampleBlock samples)
{
    auto numProcessed = std::size_t { 0 };

    juce::ignoreUnused (advanceClock());

    do
    {
        const auto rest = samples.after (numProcessed);
        TickBatch ticks (snapshot, processingRate(), std::min (rest.size, TickBatch::maxTicks));

        do
            updateControlRate (ticks);
        while (goesOn (ticks));

        filters.process (ticks, rest.first (ticks.size));
        numProcessed += ticks.size;
    } while (begunTick);

    return numProcessed;
}

/** Begins the next frame's tick if it belongs to the batch. */
bool MainAudioProcessor::goesOn (const TickBatch& ticks) noexcept
{
    // The next tick has begun already, with another snapshot.
    if (begunTick)
        return false;

    watchParameters();

    if (ticks.isFull() || ! isControlUpdateDue())
        return false;

    juce::ignoreUnused (advanceClock());
    return true;
}

void MainAudioProcessor::processAsDesigned (SampleBlock samples) noexcept
{
    filters.process ({ familyOf (*parameters.filtMode),
                       hpPoles > 0 && ResonancePeak::isAudible (hpResonance),
                       lpPoles > 0 && ResonancePeak::isAudible (lpResonance),
                       { &hpResonance, 1 },
                       { &lpResonance, 1 } },
                     samples);
}
