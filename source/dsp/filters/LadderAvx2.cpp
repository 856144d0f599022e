// SPDX-License-Identifier: AGPL-3.0-or-later
// Compiled for AVX2. No function is taken from elsewhere that is compiled for every processor too: the linker would keep one of
// both.
#include "dsp/filters/LadderAvx2.h"

#include <utility>

#include "dsp/filters/LadderLaw.h"
#include "dsp/simd/Avx2Pipeline.h"

namespace
{
using avx2::LadderPipeline;

[[nodiscard]] double* doublesOf (StereoPair* pair) noexcept { return reinterpret_cast<double*> (pair); }

/** Two stages in one register. */
template <bool isHighpass, bool perFrame>
class TwoStages
{
public:
    TwoStages (const GrungeLadder::Coefficients* newCoefficients, double* newFirst, double* newSecond) noexcept
        : standing (bothOf (newCoefficients[0], newCoefficients[0])), state (DoubleQuad::pairs (newFirst, newSecond)),
          coefficients (newCoefficients), first (newFirst), second (newSecond)
    {
    }

    [[nodiscard]] DoubleQuad process (DoubleQuad x, std::size_t frame1, std::size_t frame2) noexcept
    {
        const auto c = perFrame ? bothOf (coefficients[frame1], coefficients[frame2]) : standing;
        return isHighpass ? ladderLaw::processHighpass (c, state, x) : ladderLaw::processLowpass (c, state, x);
    }

    void keepFirst() const noexcept { state.storeFirst (first); }
    void keepSecond() const noexcept { state.storeSecond (second); }

private:
    using Coefficients = GrungeLadder::Coefficients;

    [[nodiscard]] static ladderLaw::Coefficients<DoubleQuad> bothOf (const Coefficients& a,
                                                                     const Coefficients& b) noexcept
    {
        return { DoubleQuad::twiceEach (&a.poleCoefficient, &b.poleCoefficient),
                 DoubleQuad::twiceEach (&a.inputCoefficient, &b.inputCoefficient),
                 DoubleQuad::twiceEach (&a.grunge, &b.grunge) };
    }

    const ladderLaw::Coefficients<DoubleQuad> standing;
    DoubleQuad state;
    const Coefficients* const coefficients;
    double* const first;
    double* const second;
};

/** The stages of a pipeline. */
template <bool isHighpass, bool perFrame>
class LadderStages
{
public:
    explicit LadderStages (const LadderPipeline& pipeline) noexcept
        : coefficients (pipeline.coefficients), state (doublesOf (pipeline.state.data())),
          frames (doublesOf (pipeline.frames.data()))
    {
    }

    [[nodiscard]] TwoStages<isHighpass, perFrame> two (std::size_t first, std::size_t second) const noexcept
    {
        return { coefficients, state + 2 * first, state + 2 * second };
    }

    [[nodiscard]] double* between (std::size_t frame) const noexcept { return frames + 2 * frame; }
    [[nodiscard]] DoubleQuad input (std::size_t frame) const noexcept { return DoubleQuad::pair (between (frame)); }

    template <bool fromSecondHalf>
    void leave (DoubleQuad y, std::size_t frame) const noexcept
    {
        y.storeHalf<fromSecondHalf> (between (frame));
    }

private:
    const GrungeLadder::Coefficients* const coefficients;
    double* const state;
    double* const frames;
};

template <bool isHighpass, bool perFrame>
void processStages (const LadderPipeline& pipeline) noexcept
{
    avx2::processTwoInARegister (LadderStages<isHighpass, perFrame> (pipeline), pipeline.state.size(),
                                 pipeline.frames.size(), std::make_index_sequence<GrungeLadder::maxStages> {});
}
} // namespace

namespace avx2
{

void LadderPipeline::process() const noexcept
{
    if (isHighpass)
        perFrame ? processStages<true, true> (*this) : processStages<true, false> (*this);
    else
        perFrame ? processStages<false, true> (*this) : processStages<false, false> (*this);
}

} // namespace avx2
