// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/filters/GrungeLadder.h"

#include <cassert>
#include <utility>

#include "dsp/filters/FilterConstants.h"
#include "dsp/filters/LadderAvx2.h"
#include "dsp/filters/LadderLaw.h"
#include "dsp/math/Tangent.h"
#include "dsp/simd/Avx2.h"
#include "dsp/simd/StagePipeline.h"

namespace
{
/** The stages of a pipeline.
    @tparam perFrame  each frame has coefficients of its own */
template <std::size_t numStages, bool isHighpass, bool perFrame>
class LadderStages
{
public:
    template <std::size_t... i>
    LadderStages (std::span<const StereoPair> newState, const GrungeLadder::Coefficients* newCoefficients,
                  StereoBlock block, std::index_sequence<i...>) noexcept
        : coefficients (newCoefficients), fixedCoefficients (*newCoefficients),
          frames (block.data()), state { newState[i]... }
    {
    }

    template <std::size_t i>
    void process (std::size_t frame) noexcept
    {
        const auto& own = perFrame ? coefficients[frame] : fixedCoefficients;
        const ladderLaw::Coefficients<StereoPair> c { StereoPair::both (own.poleCoefficient),
                                                      StereoPair::both (own.inputCoefficient),
                                                      StereoPair::both (own.grunge) };
        const auto x = frames[frame];
        frames[frame] =
            isHighpass ? ladderLaw::processHighpass (c, state[i], x) : ladderLaw::processLowpass (c, state[i], x);
    }

    template <std::size_t... i>
    void keepState (std::span<StereoPair> newState, std::index_sequence<i...>) const noexcept
    {
        ((newState[i] = state[i]), ...);
    }

private:
    const GrungeLadder::Coefficients* const coefficients;
    const GrungeLadder::Coefficients fixedCoefficients;
    StereoPair* const frames;
    std::array<StereoPair, numStages> state;
};

template <bool isHighpass, bool perFrame, std::size_t numStages>
void processStages (std::span<StereoPair> state, const GrungeLadder::Coefficients* coefficients,
                    StereoBlock frames) noexcept
{
    constexpr auto all = std::make_index_sequence<numStages> {};

    LadderStages<numStages, isHighpass, perFrame> stages (state, coefficients, frames, all);
    StagePipeline<numStages>::process (stages, frames.size());
    stages.keepState (state, all);
}

/** All stages in one pipeline. */
template <bool isHighpass, bool perFrame, std::size_t... i>
void processPipeline (GrungeLadder& ladder, const GrungeLadder::Coefficients* coefficients, StereoBlock frames,
                      std::index_sequence<i...>) noexcept
{
    static constexpr std::array pipelines { processStages<isHighpass, perFrame, i + 1>... };
    pipelines[(std::size_t) ladder.numStages - 1](ladder.state, coefficients, frames);
}

template <bool perFrame>
void processLadder (GrungeLadder& ladder, const GrungeLadder::Coefficients* coefficients, StereoBlock frames) noexcept
{
    constexpr auto all = std::make_index_sequence<GrungeLadder::maxStages> {};

    if (ladder.numStages == 0)
        return;

    if constexpr (avx2::isBuilt)
        if (avx2::isThere && ladder.numStages > 1 && frames.size() >= avx2::minFrames)
        {
            const auto state = std::span (ladder.state).first ((std::size_t) ladder.numStages);
            return avx2::LadderPipeline { ladder.isHighpass, state, coefficients, perFrame, frames }.process();
        }

    if (ladder.isHighpass)
        processPipeline<true, perFrame> (ladder, coefficients, frames, all);
    else
        processPipeline<false, perFrame> (ladder, coefficients, frames, all);
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
    assert (stages >= 0 && stages <= (int) maxStages);

    isHighpass = highpass;
    numStages = stages;
    sampleRate = newSampleRate;
    limitedCutoff = limitCutoff (cutoff, sampleRate);
    prewarped = elementary::tangent (limitedCutoff * pi / sampleRate);
    prewarpedSquared = prewarped * prewarped;
    numeratorMiddle = isHighpass ? -2.0 : 2.0;

    const auto w = cutoff * twoPi;
    forwardCoefficient = inverseOrZero (w + 2.0 * sampleRate) * w;

    const auto configured = configureStage (cutoff, resonance, grungeGain, sampleRate);
    poleCoefficient = configured.poleCoefficient;
    inputCoefficient = configured.inputCoefficient;
    grunge = configured.grunge;
}

void GrungeLadder::configureSeries (int stages, bool highpass, std::span<const double> cutoffs,
                                    std::span<const float> resonances, std::size_t first, double grungeGain,
                                    double newSampleRate, Series& series) noexcept
{
    assert (cutoffs.size() <= maxBatchFrames);

    if (first == cutoffs.size())
        return;

    for (auto frame = first; frame < cutoffs.size(); ++frame)
        series[frame] = configureStage (cutoffs[frame], (double) resonances[frame], grungeGain, newSampleRate);

    const auto last = cutoffs.size() - 1;
    configure (stages, highpass, cutoffs[last], (double) resonances[last], grungeGain, newSampleRate);
}

void GrungeLadder::process (double& left, double& right) noexcept
{
    StereoPair frame (left, right);
    process (StereoBlock (&frame, 1));
    left = frame.left();
    right = frame.right();
}

void GrungeLadder::process (StereoBlock frames) noexcept
{
    const Coefficients coefficients { poleCoefficient, inputCoefficient, grunge };
    processLadder<false> (*this, &coefficients, frames);
}

void GrungeLadder::process (const Series& series, StereoBlock frames) noexcept
{
    processLadder<true> (*this, series.data(), frames);
}
