// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/filters/GrungeLadder.h"

#include <cmath>
#include <type_traits>
#include <utility>

#include "dsp/filters/FilterConstants.h"
#include "dsp/simd/SkewedStages.h"

namespace
{
/** One frame through one lowpass stage; y is its state. The memory carries the non-linearity, so that the filter drags
    behind large signals. */
[[nodiscard]] StereoPair runLowpassStage (const GrungeLadder::Coefficients& c, StereoPair& y, StereoPair x) noexcept
{
    const auto one = StereoPair::both (1.0);
    const auto input = StereoPair::both (c.inputCoefficient);
    const auto prediction = input * x + y * StereoPair::both (c.poleCoefficient);
    const auto distance = (x - prediction).magnitude();
    const auto e = input / (StereoPair::both (c.grunge) * distance + one);
    y = x * e + (one - e) * y;
    return y;
}

/** No mirror image of the lowpass: the state stays linear, and only the output is modulated. */
[[nodiscard]] StereoPair runHighpassStage (const GrungeLadder::Coefficients& c, StereoPair& y, StereoPair x) noexcept
{
    const auto one = StereoPair::both (1.0);
    const auto pole = StereoPair::both (c.poleCoefficient);
    const auto prediction = StereoPair::both (c.inputCoefficient) * x + y * pole;
    const auto distance = (x - prediction).magnitude();
    const auto e = pole / (StereoPair::both (c.grunge) * distance + one);
    y = prediction;
    return x - (e * prediction + (one - e) * x);
}

/** The stages of a ladder on their way through a run of frames.
    @tparam perFrame  each frame has coefficients of its own */
template <std::size_t numStages, bool isHighpass, bool perFrame>
class StageRow
{
public:
    template <std::size_t... i>
    StageRow (std::span<const StereoPair> newState, const GrungeLadder::Coefficients* newCoefficients,
              FrameRun frameRun, std::index_sequence<i...>) noexcept
        : coefficients (newCoefficients), fixedCoefficients (*newCoefficients),
          frames (frameRun.data()), state { newState[i]... }
    {
    }

    template <std::size_t i>
    void run (std::size_t frame) noexcept
    {
        const auto c = perFrame ? coefficients[frame] : fixedCoefficients;
        const auto x = frames[frame];
        frames[frame] = isHighpass ? runHighpassStage (c, state[i], x) : runLowpassStage (c, state[i], x);
    }

    template <std::size_t... i>
    void storeState (std::span<StereoPair> newState, std::index_sequence<i...>) const noexcept
    {
        ((newState[i] = state[i]), ...);
    }

private:
    const GrungeLadder::Coefficients* const coefficients;
    const GrungeLadder::Coefficients fixedCoefficients;
    StereoPair* const frames;
    std::array<StereoPair, numStages> state;
};

/** Runs so many stages from the first one on, and sets the first one behind them. */
template <std::size_t numStages, bool perFrame>
void runStages (GrungeLadder& ladder, std::size_t& first, const GrungeLadder::Coefficients* coefficients,
                FrameRun frames) noexcept
{
    const auto state = std::span<StereoPair> (ladder.state).subspan (first, numStages);

    const auto run = [&] (auto isHighpass)
    {
        constexpr auto all = std::make_index_sequence<numStages> {};

        StageRow<numStages, isHighpass, perFrame> stages (state, coefficients, frames, all);
        runSkewed<numStages> (frames.size(), stages);
        stages.storeState (state, all);
    };

    if (ladder.isHighpass)
        run (std::true_type {});
    else
        run (std::false_type {});

    first += numStages;
}

template <bool perFrame>
void runLadder (GrungeLadder& ladder, const GrungeLadder::Coefficients* coefficients, FrameRun frames) noexcept
{
    std::size_t first = 0;

    if (ladder.numStages >= 8)
        return runStages<8, perFrame> (ladder, first, coefficients, frames);

    if ((ladder.numStages & 4) != 0)
        runStages<4, perFrame> (ladder, first, coefficients, frames);

    if ((ladder.numStages & 2) != 0)
        runStages<2, perFrame> (ladder, first, coefficients, frames);

    if ((ladder.numStages & 1) != 0)
        runStages<1, perFrame> (ladder, first, coefficients, frames);
}

[[nodiscard]] GrungeLadder::Coefficients configureStage (double cutoff, double resonance, double grungeGain,
                                                         double sampleRate) noexcept
{
    const auto w = cutoff * twoPi;
    const auto t = 2.0 * sampleRate;
    const auto inverse = inverseOrZero (w + t);
    const auto pole = (t - w) * inverse;

    return { pole, 1.0 - pole, (resonance * resonance * grungeGain) * (resonance * resonance) };
}
} // namespace

void GrungeLadder::configure (int stages, bool highpass, double cutoff, double resonance, double grungeGain,
                              double newSampleRate) noexcept
{
    isHighpass = highpass;
    numStages = stages;
    sampleRate = newSampleRate;
    limitedCutoff = limitCutoff (cutoff, sampleRate);
    prewarped = std::tan (limitedCutoff * pi / sampleRate);
    prewarpedSquared = prewarped * prewarped;
    numeratorMiddle = isHighpass ? -2.0 : 2.0;

    const auto w = cutoff * twoPi;
    forwardCoefficient = inverseOrZero (w + 2.0 * sampleRate) * w;

    const auto configured = configureStage (cutoff, resonance, grungeGain, sampleRate);
    poleCoefficient = configured.poleCoefficient;
    inputCoefficient = configured.inputCoefficient;
    grunge = configured.grunge;
}

void GrungeLadder::configureSeries (int stages, bool highpass, std::span<const float> cutoffs,
                                    std::span<const float> resonances, double grungeGain, double newSampleRate,
                                    Series& series) noexcept
{
    for (std::size_t frame = 0; frame < cutoffs.size(); ++frame)
        series[frame] = configureStage ((double) cutoffs[frame], (double) resonances[frame], grungeGain, newSampleRate);

    const auto last = cutoffs.size() - 1;
    configure (stages, highpass, (double) cutoffs[last], (double) resonances[last], grungeGain, newSampleRate);
}

void GrungeLadder::process (double& left, double& right) noexcept
{
    StereoPair frame (left, right);
    processRun (FrameRun (&frame, 1));
    left = frame.left();
    right = frame.right();
}

void GrungeLadder::processRun (FrameRun frames) noexcept
{
    const Coefficients coefficients { poleCoefficient, inputCoefficient, grunge };
    runLadder<false> (*this, &coefficients, frames);
}

void GrungeLadder::processRun (const Series& series, FrameRun frames) noexcept
{
    runLadder<true> (*this, series.data(), frames);
}
