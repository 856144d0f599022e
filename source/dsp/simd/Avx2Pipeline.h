// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <utility>

#include "dsp/simd/Avx2Lanes.h"

namespace avx2
{

/** Stages in series, as in StagePipeline, and two of them in one register of four doubles: half the instructions for the same
    frames. An odd one fills both halves of the last register, and the second is not used.

    In iteration n a stage processes frame n - delayOf (stage). The second of a register is two frames behind the first: at one frame
    the whole register would wait for the output of its first half. The next register is another frame behind.

    Stages must offer

        Two two (std::size_t first, std::size_t second)    two stages in a register, with their state, which itself offers
                                                           DoubleQuad process (DoubleQuad x, std::size_t frame1, std::size_t frame2),
                                                           void keepFirst() and void keepSecond(): puts the state back
        DoubleQuad input (std::size_t frame)               what goes into the first stage, in the first half
        double* between (std::size_t frame)                room for what is between two stages
        void leave<bool> (DoubleQuad y, std::size_t frame) takes what comes out of the last, false: from the first half

    @tparam numStages  one or more */
template <std::size_t numStages, typename Stages>
class TwoStagePipeline
{
public:
    /** Sends frames 0 to numFrames - 1 through all stages. */
    static void process (const Stages& stages, std::size_t numFrames) noexcept
    {
        TwoStagePipeline (stages, numFrames).run();
    }

private:
    static constexpr std::size_t lastStage = numStages - 1;
    static constexpr std::size_t numRegisters = (numStages + 1) / 2;

    [[nodiscard]] static constexpr std::size_t delayOf (std::size_t stage) noexcept
    {
        return stage / 2 * 3 + stage % 2 * 2;
    }

    /** The second stage of a register. */
    [[nodiscard]] static constexpr std::size_t secondOf (std::size_t i) noexcept
    {
        return 2 * i < lastStage ? 2 * i + 1 : lastStage;
    }

    static constexpr std::size_t longestDelay = delayOf (lastStage);

    TwoStagePipeline (const Stages& newStages, std::size_t newNumFrames) noexcept
        : stages (newStages), numFrames (newNumFrames)
    {
    }

    void run() const noexcept
    {
        // Every stage has given two frames by then, which processAll takes up.
        constexpr auto firstFull = longestDelay + 2;
        const auto isLong = numFrames > firstFull;

        for (std::size_t stage = 0; stage < numStages; ++stage)
            processAlone (stage, 0, isLong ? firstFull - delayOf (stage) : numFrames);

        if (! isLong)
            return;

        processAll (firstFull, std::make_index_sequence<numRegisters> {});

        for (std::size_t stage = 0; stage < numStages; ++stage)
            processAlone (stage, numFrames - delayOf (stage), numFrames);
    }

    /** Some frames through one stage, where the stages have no frame all together.
        @param last  behind the last one */
    void processAlone (std::size_t stage, std::size_t first, std::size_t last) const noexcept
    {
        auto alone = stages.two (stage, stage);

        for (auto frame = first; frame < last; ++frame)
        {
            const auto x = stage == 0 ? stages.input (frame) : DoubleQuad::pair (stages.between (frame));
            const auto y = alone.process (x, frame, frame);
            stage == lastStage ? stages.template leave<false> (y, frame) : y.storeFirst (stages.between (frame));
        }

        alone.keepFirst();
    }

    /** The iterations in which every stage has a frame. Everything stays in registers: as in StagePipeline, all indices are
        constant. */
    template <std::size_t... i>
    void processAll (std::size_t first, std::index_sequence<i...>) const noexcept
    {
        decltype (stages.two (0, 0)) twos[] { stages.two (2 * i, secondOf (i))... };

        // What each has given in the last iteration, and in the one before that.
        DoubleQuad y[] { DoubleQuad::pairs (output (2 * i, first - 1), output (secondOf (i), first - 1))... };
        DoubleQuad earlier[] { DoubleQuad::pair (output (2 * i, first - 2))... };

        for (auto n = first; n < numFrames; ++n)
        {
            const DoubleQuad inputs[] { inputOf<i> (n, y, earlier)... };
            ((earlier[i] = y[i]), ...);
            ((y[i] = twos[i].process (inputs[i], n - delayOf (2 * i), n - delayOf (secondOf (i)))), ...);
            stages.template leave<numStages % 2 == 0> (y[numRegisters - 1], n - longestDelay);
        }

        (keep<i> (twos[i], y[i], earlier[i]), ...);
    }

    template <std::size_t i>
    [[nodiscard]] DoubleQuad inputOf (std::size_t n, const DoubleQuad* y, const DoubleQuad* earlier) const noexcept
    {
        if constexpr (i == 0)
            return DoubleQuad::firstAndFirst (stages.input (n), earlier[0]);
        else
            return DoubleQuad::secondAndFirst (y[i - 1], earlier[i]);
    }

    template <std::size_t i, typename Two>
    void keep (const Two& two, DoubleQuad y, DoubleQuad earlier) const noexcept
    {
        two.keepFirst();
        y.storeFirst (output (2 * i, numFrames - 1));
        earlier.storeFirst (output (2 * i, numFrames - 2));

        if constexpr (2 * i < lastStage)
        {
            two.keepSecond();
            y.storeSecond (output (2 * i + 1, numFrames - 1));
        }
    }

    /** Where a stage leaves what it gives in an iteration. */
    [[nodiscard]] double* output (std::size_t stage, std::size_t iteration) const noexcept
    {
        return stages.between (iteration - delayOf (stage));
    }

    const Stages& stages;
    const std::size_t numFrames;
};

/** Sends all frames through a pipeline of one of these numbers of stages, each less one. */
template <typename Stages, std::size_t... i>
void processTwoInARegister (const Stages& stages, std::size_t numStages, std::size_t numFrames,
                            std::index_sequence<i...>) noexcept
{
    static constexpr std::array pipelines { TwoStagePipeline<i + 1, Stages>::process... };
    pipelines[numStages - 1](stages, numFrames);
}

} // namespace avx2
