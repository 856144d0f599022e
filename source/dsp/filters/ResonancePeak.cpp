// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/filters/ResonancePeak.h"

#include <cassert>
#include <cstddef>

#include "dsp/filters/FilterConstants.h"
#include "dsp/math/Rows.h"

namespace
{
constexpr double gainDb = 20.0;

// 10 to the power of gainDb / 40, and its inverse.
constexpr double amplitude = 3.1622776601683795;
constexpr double inverseAmplitude = 0.31622776601683794;

// ln (2) / 2 as a float.
constexpr double halfLn2 = 0.3465735912322998;

/** x within a quarter of a circle, so that its sine limits to -1 and 1 and folds nothing back. A NaN becomes the upper limit. */
[[nodiscard]] StereoPair limited (StereoPair x) noexcept
{
    return greaterOf (lesserOf (x, StereoPair::both (halfPi)), StereoPair::both (-halfPi));
}

/** The designs of a batch from one frame on, at this ratio to the cutoffs. */
void designEach (double sampleRate, std::span<const double> cutoffs, std::size_t first, double ratio,
                 double bandwidthOctaves, ResonancePeak::Series& series) noexcept
{
    assert (cutoffs.size() <= maxBatchFrames);

    ResonancePeak::Series::Values angles, sines, alphas;
    auto& cosines = series.b1;
    const auto ofBatch = [=, size = cutoffs.size()] (ResonancePeak::Series::Values& values)
    { return std::span (values).subspan (first, size - first); };

    for (auto i = first; i < cutoffs.size(); ++i)
        angles[i] = sines[i] = cosines[i] = cutoffs[i] * ratio * twoPi / sampleRate;

    elementary::sines (ofBatch (sines));
    elementary::cosines (ofBatch (cosines));

    for (auto i = first; i < cutoffs.size(); ++i)
        alphas[i] = bandwidthOctaves * halfLn2 * angles[i] / sines[i];

    elementary::hyperbolicSines (ofBatch (alphas));

    for (auto i = first; i < cutoffs.size(); ++i)
    {
        const auto alpha = alphas[i] * sines[i];
        series.b0[i] = alpha * amplitude + 1.0;
        series.b1[i] = -2.0 * cosines[i];
        series.b2[i] = 1.0 - alpha * amplitude;
        series.a0[i] = alpha * inverseAmplitude + 1.0;
        series.a2[i] = 1.0 - alpha * inverseAmplitude;
    }
}

/** The coefficients as a frame uses them, divided by a0. */
struct Normalised
{
    explicit Normalised (const ResonancePeak::Coefficients& c) noexcept
    {
        const auto g = 1.0 / c.a0;
        b0 = StereoPair::both (g * c.b0);
        b1 = StereoPair::both (g * c.b1);
        b2 = StereoPair::both (g * c.b2);
        a1 = StereoPair::both (g * c.a1);
        a2 = StereoPair::both (g * c.a2);
    }

    StereoPair b0, b1, b2, a1, a2;
};

[[nodiscard]] StereoPair processSection (const Normalised& c, ResonancePeak::DelayLine& line, StereoPair x) noexcept
{
    const auto y = c.b0 * x + c.b1 * line.input1 + c.b2 * line.input2 - c.a1 * line.output1 - c.a2 * line.output2;
    line = { x, line.input1, y, line.output1 };
    return y;
}

/** What the section would add to each frame, times the frame's amount, and of that the sine.
    @param process      gives the section's output for a frame's number and value
    @param amountOf     gives a frame's amount */
template <typename Process, typename AmountOf>
void addSaturatedExcess (Process process, AmountOf amountOf, StereoBlock frames) noexcept
{
    std::array<StereoPair, maxBlockFrames> excess;

    for (std::size_t i = 0; i < frames.size(); ++i)
    {
        const auto amount = amountOf (i);
        excess[i] = ResonancePeak::isAudible (amount)
                        ? limited ((process (i, frames[i]) - frames[i]) * StereoPair::both ((double) amount))
                        : StereoPair {};
    }

    elementary::sinesWithinQuarterTurn (std::span (excess).first (frames.size()));

    for (std::size_t i = 0; i < frames.size(); ++i)
        if (ResonancePeak::isAudible (amountOf (i)))
            frames[i] = frames[i] + excess[i];
}
} // namespace

void ResonancePeak::design (double sampleRate, double frequency, double bandwidthOctaves) noexcept
{
    if (designed && sampleRate == designedRate && frequency == designedFrequency && gainDb == designedGainDb
        && bandwidthOctaves == designedBandwidth)
        return;

    Series series;
    designEach (sampleRate, { &frequency, 1 }, 0, 1.0, bandwidthOctaves, series);
    keep (sampleRate, frequency, bandwidthOctaves, series.at (0));
}

void ResonancePeak::designSeries (double sampleRate, std::span<const double> cutoffs, std::size_t first, double ratio,
                                  double bandwidthOctaves, std::span<const float> amounts, Series& series) noexcept
{
    designEach (sampleRate, cutoffs, first, ratio, bandwidthOctaves, series);

    auto frame = cutoffs.size();

    while (frame > first && ! isAudible (amounts[frame - 1]))
        --frame;

    if (frame > first)
        keep (sampleRate, cutoffs[frame - 1] * ratio, bandwidthOctaves, series.at (frame - 1));
}

/** Keeps a design, and what it was made for. */
void ResonancePeak::keep (double sampleRate, double frequency, double bandwidthOctaves,
                          const Coefficients& coefficients) noexcept
{
    designedRate = sampleRate;
    designedFrequency = frequency;
    designedGainDb = gainDb;
    designedBandwidth = bandwidthOctaves;
    designed = true;

    b0 = coefficients.b0;
    b1 = coefficients.b1;
    b2 = coefficients.b2;
    a0 = coefficients.a0;
    a1 = coefficients.a1;
    a2 = coefficients.a2;
}

void ResonancePeak::process (double& left, double& right) noexcept
{
    if (! designed)
        return;

    const auto y = processSection (Normalised ({ b0, b1, b2, a0, a1, a2 }), delayLine, StereoPair (left, right));
    left = y.left();
    right = y.right();
}

void ResonancePeak::addResonance (float amount, StereoBlock frames) noexcept
{
    const auto amountOf = [amount] (std::size_t) { return amount; };

    if (! designed)
        return addSaturatedExcess ([] (std::size_t, StereoPair x) { return x; }, amountOf, frames);

    const Normalised normalised ({ b0, b1, b2, a0, a1, a2 });
    auto line = delayLine;
    addSaturatedExcess ([&] (std::size_t, StereoPair x) { return processSection (normalised, line, x); }, amountOf,
                        frames);
    delayLine = line;
}

void ResonancePeak::addResonance (const Series& series, std::span<const float> amounts, StereoBlock frames) noexcept
{
    auto line = delayLine;
    addSaturatedExcess ([&] (std::size_t i, StereoPair x)
                        { return processSection (Normalised (series.at (i)), line, x); },
                        [=] (std::size_t i) { return amounts[i]; }, frames);
    delayLine = line;
}
