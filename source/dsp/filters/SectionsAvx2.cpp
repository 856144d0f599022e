// SPDX-License-Identifier: AGPL-3.0-or-later
// Compiled for AVX2. No function is taken from elsewhere that is compiled for every processor too: the linker would keep one of
// both.
#include "dsp/filters/SectionsAvx2.h"

#include <utility>

#include "dsp/filters/SectionLaw.h"
#include "dsp/simd/Avx2Lanes.h"

namespace
{
using avx2::SectionPipeline;
using Section = SectionCascade::Section;

/** In iteration n a section processes frame n - delayOf (section). In a register the second is two frames behind the first: at one
    frame the whole register would wait for the output of its first half. The next register is another frame behind. */
[[nodiscard]] constexpr std::size_t delayOf (std::size_t section) noexcept { return section / 2 * 3 + section % 2 * 2; }

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
    TwoSections (const Section& first, const Section& second) noexcept
        : gain (first.gain, second.gain), feedback1 (first.feedback1, second.feedback1),
          feedback2 (first.feedback2, second.feedback2),
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

    void keepFirst (const Section& first) const noexcept
    {
        w1.storeFirst (doublesOf (first.w1));
        w2.storeFirst (doublesOf (first.w2));
    }

    void keepSecond (const Section& second) const noexcept
    {
        w1.storeSecond (doublesOf (second.w1));
        w2.storeSecond (doublesOf (second.w2));
    }

private:
    const Coefficient<perFrame> gain, feedback1, feedback2;
    const DoubleQuad numeratorMiddle;
    DoubleQuad w1, w2;
};

/** A pipeline of a fixed number of sections. An odd one fills both halves of the last register, and the second is not used. */
template <std::size_t numSections, bool perFrame, bool takesSamples>
class FixedPipeline
{
public:
    explicit FixedPipeline (const SectionPipeline& pipeline) noexcept
        : sections (pipeline.sections.data()), frames (doublesOf (pipeline.frames.data())),
          numFrames (pipeline.frames.size()), left (pipeline.left), right (pipeline.right)
    {
    }

    void process() const noexcept
    {
        std::size_t iteration = 0;

        for (; iteration <= longestDelay; ++iteration)
            processWhereFrameExists (iteration);

        if (iteration < numFrames)
        {
            processAll (iteration, std::make_index_sequence<numRegisters> {});
            iteration = numFrames;
        }

        for (; iteration < numFrames + longestDelay; ++iteration)
            processWhereFrameExists (iteration);
    }

private:
    static constexpr std::size_t lastSection = numSections - 1;
    static constexpr std::size_t longestDelay = delayOf (lastSection);
    static constexpr std::size_t numRegisters = (numSections + 1) / 2;

    /** The second section of a register. */
    [[nodiscard]] static constexpr std::size_t secondOf (std::size_t i) noexcept
    {
        return 2 * i < lastSection ? 2 * i + 1 : lastSection;
    }

    /** At both ends some sections have no frame: a frame before the first wraps to a huge number. */
    void processWhereFrameExists (std::size_t iteration) const noexcept
    {
        for (std::size_t i = 0; i < numSections; ++i)
            if (const auto frame = iteration - delayOf (i); frame < numFrames)
            {
                TwoSections<perFrame> alone (sections[i], sections[i]);
                const auto y = alone.process (i == 0 ? input (frame) : DoubleQuad::pair (at (frame)), frame, frame);
                alone.keepFirst (sections[i]);
                i == lastSection ? leave<false> (y, frame) : y.storeFirst (at (frame));
            }
    }

    /** The iterations in which every section has a frame. Everything stays in registers: as in StagePipeline, all indices are
        constant. */
    template <std::size_t... i>
    void processAll (std::size_t first, std::index_sequence<i...>) const noexcept
    {
        TwoSections<perFrame> stages[] { { sections[2 * i], sections[secondOf (i)] }... };

        // What each has given in the last iteration, and in the one before that.
        DoubleQuad y[] { DoubleQuad::pairs (output (2 * i, first - 1), output (secondOf (i), first - 1))... };
        DoubleQuad earlier[] { DoubleQuad::pair (output (2 * i, first - 2))... };

        for (auto n = first; n < numFrames; ++n)
        {
            const DoubleQuad inputs[] { inputOf<i> (n, y, earlier)... };
            ((earlier[i] = y[i]), ...);
            ((y[i] = stages[i].process (inputs[i], n - delayOf (2 * i), n - delayOf (secondOf (i)))), ...);
            leave<numSections % 2 == 0> (y[numRegisters - 1], n - longestDelay);
        }

        (keep<i> (stages[i], y[i], earlier[i]), ...);
    }

    template <std::size_t i>
    [[nodiscard]] DoubleQuad inputOf (std::size_t n, const DoubleQuad* y, const DoubleQuad* earlier) const noexcept
    {
        if constexpr (i == 0)
            return DoubleQuad::firstAndFirst (input (n), earlier[0]);
        else
            return DoubleQuad::secondAndFirst (y[i - 1], earlier[i]);
    }

    template <std::size_t i>
    void keep (const TwoSections<perFrame>& stage, DoubleQuad y, DoubleQuad earlier) const noexcept
    {
        stage.keepFirst (sections[2 * i]);
        y.storeFirst (output (2 * i, numFrames - 1));
        earlier.storeFirst (output (2 * i, numFrames - 2));

        if constexpr (2 * i < lastSection)
        {
            stage.keepSecond (sections[2 * i + 1]);
            y.storeSecond (output (2 * i + 1, numFrames - 1));
        }
    }

    [[nodiscard]] double* at (std::size_t frame) const noexcept { return frames + 2 * frame; }

    /** Where a section leaves what it gives in an iteration. */
    [[nodiscard]] double* output (std::size_t section, std::size_t iteration) const noexcept
    {
        return at (iteration - delayOf (section));
    }

    /** What goes into the first section, in the first half. */
    [[nodiscard]] DoubleQuad input (std::size_t frame) const noexcept
    {
        if constexpr (takesSamples)
            return DoubleQuad::widened (left[frame], right[frame]);
        else
            return DoubleQuad::pair (at (frame));
    }

    /** Takes what comes out of the last section. */
    template <bool inSecondHalf>
    void leave (DoubleQuad y, std::size_t frame) const noexcept
    {
        if constexpr (takesSamples)
            y.narrow<inSecondHalf> (left[frame], right[frame]);
        else if constexpr (inSecondHalf)
            y.storeSecond (at (frame));
        else
            y.storeFirst (at (frame));
    }

    const Section* const sections;
    double* const frames;
    const std::size_t numFrames;
    float* const left;
    float* const right;
};

template <std::size_t numSections, bool perFrame, bool takesSamples>
void processFixed (const SectionPipeline& pipeline) noexcept
{
    FixedPipeline<numSections, perFrame, takesSamples> (pipeline).process();
}

template <bool perFrame, bool takesSamples, std::size_t... i>
void processAny (const SectionPipeline& pipeline, std::index_sequence<i...>) noexcept
{
    using Process = void (*) (const SectionPipeline&) noexcept;
    static constexpr Process pipelines[] { processFixed<i + 1, perFrame, takesSamples>... };
    pipelines[pipeline.sections.size() - 1](pipeline);
}
} // namespace

namespace avx2
{

void SectionPipeline::process() const noexcept
{
    constexpr auto all = std::make_index_sequence<maxSections> {};

    if (perFrame)
        processAny<true, false> (*this, all);
    else if (left != nullptr)
        processAny<false, true> (*this, all);
    else
        processAny<false, false> (*this, all);
}

} // namespace avx2
