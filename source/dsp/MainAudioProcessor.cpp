// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/MainAudioProcessor.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include "dsp/engine/ControlTicks.h"
#include "frame/PluginIdentity.h"
#include "parameters/ParameterTable.h"

namespace
{
/** Below it a resonance does not run. */
constexpr float resonanceThreshold = 1.0e-7f;

/** The lowpass peaks a tenth below its cutoff, the highpass on it. */
constexpr double lpPeakRatio = 0.9;

// A ladder's lowpass answers to the same amount more strongly than its highpass.
constexpr double hpGrungeGain = 15.0;
constexpr double lpGrungeGain = 80.0;
} // namespace

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

void MainAudioProcessor::designFilters (const TickSeries& ticks) noexcept
{
    const auto& stretch = ticks.stretches[ticks.numStretches - 1];
    const auto hpHz = (double) ticks.hpHz[ticks.size - 1];
    const auto lpHz = (double) ticks.lpHz[ticks.size - 1];

    // The family that is not selected keeps its old coefficients.
    if (stretch.family == ControlReadings::Family::ladder)
    {
        hpLadder->configure (hpPoles, true, hpHz, (double) hpResonance, hpGrungeGain, stretch.rate);
        lpLadder->configure (lpPoles, false, lpHz, (double) lpResonance, lpGrungeGain, stretch.rate);
        return;
    }

    hpFilter->design ((unsigned) hpPoles, true, hpHz, stretch.rate);
    lpFilter->design ((unsigned) lpPoles, false, lpHz, stretch.rate);

    if (hpResonance > resonanceThreshold)
        hpResonator->design (stretch.rate, hpHz, (double) hpPeakBandwidth);

    if (lpResonance > resonanceThreshold)
        lpResonator->design (stretch.rate, lpHz * lpPeakRatio, (double) lpPeakBandwidth);
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

/** Ticks that run the same filters. */
struct MainAudioProcessor::TickRun
{
    TickRun (const TickSeries& ticks, const TickSeries::Stretch& ticksStretch, size_t first, size_t end) noexcept
        : stretch (ticksStretch), hpResonates (ticks.hpResonance[first] > resonanceThreshold),
          lpResonates (ticks.lpResonance[first] > resonanceThreshold)
    {
        size = 1;

        while (first + size < end && (ticks.hpResonance[first + size] > resonanceThreshold) == hpResonates
               && (ticks.lpResonance[first + size] > resonanceThreshold) == lpResonates)
            ++size;

        const auto part = [=, this] (const TickSeries::Values& values)
        { return std::span<const float> (values).subspan (first, size); };

        hpHz = part (ticks.hpHz);
        lpHz = part (ticks.lpHz);
        hpResonance = part (ticks.hpResonance);
        lpResonance = part (ticks.lpResonance);
    }

    const TickSeries::Stretch& stretch;
    bool hpResonates, lpResonates;
    size_t size;
    std::span<const float> hpHz, lpHz, hpResonance, lpResonance;
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
    auto motion = beginMotion();
    TickSeries ticks (motion);

    gatherTicks (motion, ticks, std::min (samples.size, maxDesigns));
    endMotion (motion, ticks);
    processWidened (samples.first (ticks.size), [&] (FrameRun frames) { runFilters (ticks, frames); });
    return ticks.size;
}

void MainAudioProcessor::runFilters (const TickSeries& ticks, FrameRun frames) noexcept
{
    size_t first = 0;

    for (size_t i = 0; i < ticks.numStretches; ++i)
    {
        const auto end = ticks.endOfStretch (i);

        while (first < end)
        {
            const TickRun run (ticks, ticks.stretches[i], first, end);
            const auto part = frames.subspan (first, run.size);
            first += run.size;

            if (run.stretch.family == ControlReadings::Family::ladder)
                runLadder (run, part);
            else
                runButterworth (run, part);
        }
    }
}

void MainAudioProcessor::runLadder (const TickRun& ticks, FrameRun frames) noexcept
{
    const auto& stretch = ticks.stretch;
    GrungeLadder::Series series;

    hpLadder->configureSeries (stretch.highpass.poles, true, ticks.hpHz, ticks.hpResonance, hpGrungeGain, stretch.rate,
                               series);
    hpLadder->processRun (series, frames);

    lpLadder->configureSeries (stretch.lowpass.poles, false, ticks.lpHz, ticks.lpResonance, lpGrungeGain, stretch.rate,
                               series);
    lpLadder->processRun (series, frames);
}

void MainAudioProcessor::runButterworth (const TickRun& ticks, FrameRun frames) noexcept
{
    ButterworthFilter::Series hpSeries, lpSeries;
    ResonancePeak::Series hpPeakSeries, lpPeakSeries;
    const auto& stretch = ticks.stretch;

    hpFilter->designSeries ((unsigned) stretch.highpass.poles, true, ticks.hpHz, stretch.rate, hpSeries);
    lpFilter->designSeries ((unsigned) stretch.lowpass.poles, false, ticks.lpHz, stretch.rate, lpSeries);

    if (ticks.hpResonates)
        hpResonator->designSeries (stretch.rate, ticks.hpHz, 1.0, (double) stretch.highpass.peakBandwidth,
                                   hpPeakSeries);

    if (ticks.lpResonates)
        lpResonator->designSeries (stretch.rate, ticks.lpHz, lpPeakRatio, (double) stretch.lowpass.peakBandwidth,
                                   lpPeakSeries);

    if (stretch.family != ControlReadings::Family::butterworth)
        return;

    if (! ticks.hpResonates && ! ticks.lpResonates)
        return ButterworthFilter::processRun (*hpFilter, hpSeries, *lpFilter, lpSeries, frames);

    hpFilter->processRun (hpSeries, frames);

    if (ticks.hpResonates && stretch.highpass.poles > 0)
        hpResonator->addResonance (hpPeakSeries, ticks.hpResonance, frames);

    if (ticks.lpResonates && stretch.lowpass.poles > 0)
        lpResonator->addResonance (lpPeakSeries, ticks.lpResonance, frames);

    lpFilter->processRun (lpSeries, frames);
}
