// SPDX-License-Identifier: AGPL-3.0-or-later
// Compiled for AVX2. No function is taken from elsewhere that is compiled for every processor too: the linker would keep one of
// both.
#include "dsp/filters/SectionsAvx2.h"

#include <utility>

#include "dsp/filters/SectionLaw.h"
#include "dsp/simd/Avx2Pipeline.h"

namespace
{
using avx2::SectionPipeline;
using Section = SectionCascade::Section;

[[nodiscard]] double* doublesOf (StereoPair* pair) noexcept { return reinterpret_cast<double*> (pair); }

/** A coefficient of two sections: one for all frames, or one for each. */
template <bool perFrame>
class Coefficient
{
public:
    Coefficient (const double* newFirst, const double* newSecond) noexcept
        : first (newFirst), second (newSecond), standing (DoubleQuad::twiceEach (newFirst, newSecond))
    {
    }

    /** @param frame1  of the first section
        @param frame2  of the second */
    [[nodiscard]] DoubleQuad at (std::size_t frame1, std::size_t frame2) const noexcept
    {
        if constexpr (perFrame)
            return DoubleQuad::twiceEach (first + frame1, second + frame2);
        else
            return standing;
    }

private:
    const double* const first;
    const double* const second;
    const DoubleQuad standing;
};

/** Two sections in one register. */
template <bool perFrame>
class TwoSections
{
public:
    TwoSections (const Section& newFirst, const Section& newSecond) noexcept
        : first (newFirst), second (newSecond), gain (first.gain, second.gain),
          feedback1 (first.feedback1, second.feedback1), feedback2 (first.feedback2, second.feedback2),
          numeratorMiddle (DoubleQuad::twiceEach (&first.numeratorMiddle, &second.numeratorMiddle)),
          w1 (DoubleQuad::pairs (doublesOf (first.w1), doublesOf (second.w1))),
          w2 (DoubleQuad::pairs (doublesOf (first.w2), doublesOf (second.w2)))
    {
    }

    [[nodiscard]] DoubleQuad process (DoubleQuad x, std::size_t frame1, std::size_t frame2) noexcept
    {
        return processSection (x, gain.at (frame1, frame2), feedback1.at (frame1, frame2),
                               feedback2.at (frame1, frame2), numeratorMiddle, w1, w2);
    }

    void keepFirst() const noexcept
    {
        w1.storeFirst (doublesOf (first.w1));
        w2.storeFirst (doublesOf (first.w2));
    }

    void keepSecond() const noexcept
    {
        w1.storeSecond (doublesOf (second.w1));
        w2.storeSecond (doublesOf (second.w2));
    }

private:
    const Section& first;
    const Section& second;
    const Coefficient<perFrame> gain, feedback1, feedback2;
    const DoubleQuad numeratorMiddle;
    DoubleQuad w1, w2;
};

/** The stages of a pipeline. */
template <bool perFrame, bool takesSamples>
class SectionStages
{
public:
    explicit SectionStages (const SectionPipeline& pipeline) noexcept
        : sections (pipeline.sections.data()), frames (doublesOf (pipeline.frames.data())), left (pipeline.left),
          right (pipeline.right)
    {
    }

    [[nodiscard]] TwoSections<perFrame> two (std::size_t first, std::size_t second) const noexcept
    {
        return { sections[first], sections[second] };
    }

    [[nodiscard]] double* between (std::size_t frame) const noexcept { return frames + 2 * frame; }

    [[nodiscard]] DoubleQuad input (std::size_t frame) const noexcept
    {
        if constexpr (takesSamples)
            return DoubleQuad::widened (left[frame], right[frame]);
        else
            return DoubleQuad::pair (between (frame));
    }

    template <bool fromSecondHalf>
    void leave (DoubleQuad y, std::size_t frame) const noexcept
    {
        if constexpr (takesSamples)
            y.narrow<fromSecondHalf> (left[frame], right[frame]);
        else
            y.storeHalf<fromSecondHalf> (between (frame));
    }

private:
    const Section* const sections;
    double* const frames;
    float* const left;
    float* const right;
};

template <bool perFrame, bool takesSamples>
void processSections (const SectionPipeline& pipeline) noexcept
{
    avx2::processTwoInARegister (SectionStages<perFrame, takesSamples> (pipeline), pipeline.sections.size(),
                                 pipeline.frames.size(), std::make_index_sequence<SectionPipeline::maxSections> {});
}
} // namespace

namespace avx2
{

void SectionPipeline::process() const noexcept
{
    if (perFrame)
        processSections<true, false> (*this);
    else if (left != nullptr)
        processSections<false, true> (*this);
    else
        processSections<false, false> (*this);
}

} // namespace avx2
