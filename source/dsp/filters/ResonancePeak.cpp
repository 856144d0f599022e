// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/filters/ResonancePeak.h"

#include <cassert>
#include <cstddef>

#include "dsp/filters/FilterConstants.h"
#include "dsp/math/HyperbolicSine.h"
#include "dsp/math/Sine.h"

namespace
{
constexpr double gainDb = 20.0;

// 10 to the power of gainDb / 40, and its inverse.
constexpr double amplitude = 3.1622776601683795;
constexpr double inverseAmplitude = 0.31622776601683794;

// ln (2) / 2 as a float.
constexpr double halfLn2 = 0.3465735912322998;

/** The sine of x within a quarter of a circle, and what it is at its ends beyond: it limits to -1 and 1 and folds nothing
    back. A NaN becomes the upper limit. */
[[nodiscard]] StereoPair saturate (StereoPair x) noexcept
{
    const auto upper = StereoPair::both (halfPi);
    return elementary::sineWithinQuarterTurn (greaterOf (lesserOf (x, upper), StereoPair::both (-halfPi)));
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
        if (const auto amount = amountOf (i); ResonancePeak::isAudible (amount))
            excess[i] = (process (i, frames[i]) - frames[i]) * StereoPair::both ((double) amount);

    for (std::size_t i = 0; i < frames.size(); ++i)
        if (ResonancePeak::isAudible (amountOf (i)))
            frames[i] = frames[i] + saturate (excess[i]);
}
} // namespace

void ResonancePeak::design (double sampleRate, double frequency, double bandwidthOctaves) noexcept
{
    if (designed && sampleRate == designedRate && frequency == designedFrequency && gainDb == designedGainDb
        && bandwidthOctaves == designedBandwidth)
        return;

    designedRate = sampleRate;
    designedFrequency = frequency;
    designedGainDb = gainDb;
    designedBandwidth = bandwidthOctaves;
    designed = true;

    const auto w = frequency * twoPi / sampleRate;
    const auto s = elementary::sine (w);
    const auto c = elementary::cosine (w);
    const auto alpha = elementary::hyperbolicSine (bandwidthOctaves * halfLn2 * w / s) * s;

    b1 = a1 = -2.0 * c;
    b0 = alpha * amplitude + 1.0;
    b2 = 1.0 - alpha * amplitude;
    a0 = alpha * inverseAmplitude + 1.0;
    a2 = 1.0 - alpha * inverseAmplitude;
}

void ResonancePeak::designSeries (double sampleRate, std::span<const double> cutoffs, std::size_t first, double ratio,
                                  double bandwidthOctaves, std::span<const float> amounts, Series& series) noexcept
{
    assert (cutoffs.size() <= maxBatchFrames);

    for (auto frame = first; frame < cutoffs.size(); ++frame)
    {
        if (! isAudible (amounts[frame]))
            continue;

        design (sampleRate, cutoffs[frame] * ratio, bandwidthOctaves);
        series[frame] = { b0, b1, b2, a0, a1, a2 };
    }
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
    addSaturatedExcess ([&] (std::size_t i, StereoPair x) { return processSection (Normalised (series[i]), line, x); },
                        [=] (std::size_t i) { return amounts[i]; }, frames);
    delayLine = line;
}
