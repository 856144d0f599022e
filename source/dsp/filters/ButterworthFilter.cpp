// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/filters/ButterworthFilter.h"

#include <cassert>

#include "dsp/filters/FilterConstants.h"
#include "dsp/math/Rows.h"
#include "dsp/math/Sine.h"

namespace
{
/** The sine terms of the pole pairs depend on the number of sections alone, so they are computed once. */
class PoleSines
{
public:
    PoleSines() noexcept
    {
        for (std::size_t n = 1; n <= ButterworthFilter::maxSections; ++n)
            for (std::size_t i = 0; i < n; ++i)
                sines[n - 1][i] =
                    elementary::sineWithinQuarterTurn ((halfPi / (double) n) * (double) i + quarterPi / (double) n);
    }

    [[nodiscard]] double of (std::size_t section, std::size_t numSections) const noexcept
    {
        return sines[numSections - 1][section];
    }

private:
    std::array<std::array<double, ButterworthFilter::maxSections>, ButterworthFilter::maxSections> sines {};
};

const PoleSines poleSines;
} // namespace

void ButterworthFilter::design (unsigned order, bool highpass, double cutoff, double newSampleRate) noexcept
{
    Series series;
    designSeries (order, highpass, Cutoffs (&cutoff, 1), 0, newSampleRate, series);
}

void ButterworthFilter::designSeries (unsigned order, bool highpass, Cutoffs cutoffs, std::size_t first,
                                      double newSampleRate, Series& series) noexcept
{
    assert (order <= maxOrder && cutoffs.size() <= maxBatchFrames);

    setOrder (order, highpass, newSampleRate);

    if (first == cutoffs.size())
        return;

    designSections (cutoffs, first, series);

    if (hasFirstOrderSection)
        designFirstOrder (cutoffs, first, series);
}

void ButterworthFilter::setOrder (unsigned order, bool highpass, double newSampleRate) noexcept
{
    const auto newNumSections = order >> 1;

    isHighpass = highpass;
    numeratorMiddle = isHighpass ? -2.0 : 2.0;
    hasFirstOrderSection = (order & 1u) != 0;
    sampleRate = newSampleRate;

    // What is out of use is clear as long as the number of sections stays.
    for (std::size_t i = newNumSections; i < numSections; ++i)
    {
        sectionGain[i] = feedback1[i] = feedback2[i] = 0.0;
        w1[i] = w2[i] = {};
    }

    numSections = newNumSections;
}

void ButterworthFilter::designSections (Cutoffs cutoffs, std::size_t first, Series& series) noexcept
{
    const auto last = cutoffs.size() - 1;
    const auto highpass = isHighpass;
    Series::Values tangents;

    for (auto frame = first; frame <= last; ++frame)
        tangents[frame] = limitCutoff (cutoffs[frame], sampleRate) * pi / sampleRate;

    elementary::tangents (std::span (tangents).subspan (first, cutoffs.size() - first));

    for (std::size_t i = 0; i < numSections; ++i)
    {
        const auto r = poleSines.of (i, numSections);
        auto& section = series.sections[i];

        for (auto frame = first; frame <= last; ++frame)
        {
            const auto a = tangents[frame];
            const auto aSquared = a * a;
            const auto s = 2.0 * a * r + aSquared + 1.0;
            section.gain[frame] = (highpass ? 1.0 : aSquared) / s;
            section.feedback1[frame] = 2.0 * (1.0 - aSquared) / s;
            section.feedback2[frame] = (2.0 * a * r - aSquared - 1.0) / s;
        }

        poleSine = r;
        sectionGain[i] = section.gain[last];
        feedback1[i] = section.feedback1[last];
        feedback2[i] = section.feedback2[last];
    }

    limitedCutoff = limitCutoff (cutoffs[last], sampleRate);
    prewarped = tangents[last];
    prewarpedSquared = prewarped * prewarped;
}

void ButterworthFilter::designFirstOrder (Cutoffs cutoffs, std::size_t first, Series& series) noexcept
{
    for (auto frame = first; frame < cutoffs.size(); ++frame)
    {
        const auto w = cutoffs[frame] * twoPi;
        const auto t = 2.0 * sampleRate;
        const auto inverse = inverseOrZero (w + t);
        series.firstOrderFeedback[frame] = (t - w) * inverse;
        series.firstOrderForward[frame] = inverse * w;
    }

    firstOrderFeedback = series.firstOrderFeedback[cutoffs.size() - 1];
    firstOrderForward = series.firstOrderForward[cutoffs.size() - 1];
}

void ButterworthFilter::process (double& left, double& right) noexcept
{
    StereoPair frame (left, right);
    SectionCascade cascade (StereoBlock (&frame, 1), SectionCascade::Coefficients::standing);
    addTo (cascade);
    cascade.finish();
    left = frame.left();
    right = frame.right();
}

void ButterworthFilter::addTo (SectionCascade& cascade) noexcept
{
    for (std::size_t i = 0; i < numSections; ++i)
        cascade.add ({ &w1[i], &w2[i], numeratorMiddle, &sectionGain[i], &feedback1[i], &feedback2[i] });

    if (hasFirstOrderSection)
        processFirstOrder (cascade.processed(), { &firstOrderForward, 1 }, { &firstOrderFeedback, 1 });
}

void ButterworthFilter::addTo (SectionCascade& cascade, const Series& series) noexcept
{
    for (std::size_t i = 0; i < numSections; ++i)
        cascade.add ({ &w1[i], &w2[i], numeratorMiddle, series.sections[i].gain.data(),
                       series.sections[i].feedback1.data(), series.sections[i].feedback2.data() });

    if (hasFirstOrderSection)
        processFirstOrder (cascade.processed(), series.firstOrderForward, series.firstOrderFeedback);
}

/** @param forward   one for all frames, or one for each
    @param feedback  likewise */
void ButterworthFilter::processFirstOrder (StereoBlock frames, std::span<const double> forward,
                                           std::span<const double> feedback) noexcept
{
    const auto stride = (std::size_t) (forward.size() > 1 ? 1 : 0);
    const auto highpass = isHighpass;
    auto input = firstOrderInput;
    auto output = firstOrderOutput;

    for (std::size_t i = 0; i < frames.size(); ++i)
    {
        const auto x = frames[i];
        output =
            (input + x) * StereoPair::both (forward[i * stride]) + StereoPair::both (feedback[i * stride]) * output;
        input = x;
        frames[i] = highpass ? x - output : output;
    }

    firstOrderInput = input;
    firstOrderOutput = output;
}
