// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/engine/FilterChain.h"

namespace
{
/** The lowpass peaks a tenth below its cutoff, the highpass on it. */
constexpr double hpPeakRatio = 1.0;
constexpr double lpPeakRatio = 0.9;

// A ladder's lowpass answers to the same amount more strongly than its highpass.
constexpr double hpGrungeGain = 15.0;
constexpr double lpGrungeGain = 80.0;
} // namespace

void FilterChain::design (TickBatch& ticks) noexcept
{
    const auto& hp = ticks.snapshot.highpass;
    const auto& lp = ticks.snapshot.lowpass;
    const auto first = ticks.firstPending;
    const auto hpHz = ticks.soFar (ticks.hpHz), lpHz = ticks.soFar (ticks.lpHz);
    const auto hpAmounts = ticks.soFar (ticks.hpResonance), lpAmounts = ticks.soFar (ticks.lpResonance);

    // The family that is not selected keeps its old coefficients.
    if (ticks.snapshot.family == Family::ladder)
    {
        hpLadder.configureSeries (hp.poles, true, hpHz, hpAmounts, first, hpGrungeGain, ticks.rate, ticks.hpLadder);
        lpLadder.configureSeries (lp.poles, false, lpHz, lpAmounts, first, lpGrungeGain, ticks.rate, ticks.lpLadder);
        return;
    }

    hpFilter.designSeries ((unsigned) hp.poles, true, hpHz, first, ticks.rate, ticks.hpFilter);
    lpFilter.designSeries ((unsigned) lp.poles, false, lpHz, first, ticks.rate, ticks.lpFilter);

    if (ticks.hpResonates)
        hpResonator.designSeries (ticks.rate, hpHz, first, hpPeakRatio, (double) hp.peakBandwidth, hpAmounts,
                                  ticks.hpResonator);

    if (ticks.lpResonates)
        lpResonator.designSeries (ticks.rate, lpHz, first, lpPeakRatio, (double) lp.peakBandwidth, lpAmounts,
                                  ticks.lpResonator);
}

void FilterChain::process (const TickBatch& ticks, SampleBlock samples) noexcept
{
    const auto& snapshot = ticks.snapshot;
    process ({ snapshot.family, snapshot.highpass.poles > 0 && ticks.hpResonates,
               snapshot.lowpass.poles > 0 && ticks.lpResonates, ticks.soFar (ticks.hpResonance),
               ticks.soFar (ticks.lpResonance) },
             &ticks, samples);
}

/** The order of the signal, once.
    @param designs  of each frame; null for coefficients that stand */
void FilterChain::process (const Setting& setting, const TickBatch* designs, SampleBlock samples) noexcept
{
    using Coefficients = SectionCascade::Coefficients;

    const auto processLadder = [=] (GrungeLadder& ladder, auto series, StereoBlock frames)
    { designs != nullptr ? ladder.process (designs->*series, frames) : ladder.process (frames); };

    const auto addSections = [=] (ButterworthFilter& filter, auto series, SectionCascade& cascade)
    { designs != nullptr ? filter.addTo (cascade, designs->*series) : filter.addTo (cascade); };

    const auto addResonance = [=] (ResonancePeak& peak, auto series, std::span<const float> amounts, StereoBlock frames)
    {
        designs != nullptr ? peak.addResonance (designs->*series, amounts, frames)
                           : peak.addResonance (amounts.front(), frames);
    };

    if (setting.family == Family::butterworth)
    {
        SectionCascade cascade (samples, designs != nullptr ? Coefficients::perFrame : Coefficients::standing);

        // The highpass resonance is taken behind its filter, the lowpass resonance before its own: part of the sound.
        addSections (hpFilter, &TickBatch::hpFilter, cascade);

        if (setting.hpResonates)
            addResonance (hpResonator, &TickBatch::hpResonator, setting.hpResonance, cascade.processed());

        if (setting.lpResonates)
            addResonance (lpResonator, &TickBatch::lpResonator, setting.lpResonance, cascade.processed());

        addSections (lpFilter, &TickBatch::lpFilter, cascade);
        return cascade.finish();
    }

    // The way through double precision is kept without a filter too: it flushes subnormal samples.
    processWidened (samples,
                    [&] (StereoBlock frames)
                    {
                        if (setting.family == Family::none)
                            return;

                        processLadder (hpLadder, &TickBatch::hpLadder, frames);
                        processLadder (lpLadder, &TickBatch::lpLadder, frames);
                    });
}
