// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/filters/SectionCascade.h"

#include <algorithm>
#include <cassert>
#include <span>
#include <type_traits>
#include <utility>

#include "dsp/filters/SectionLaw.h"
#include "dsp/filters/SectionsAvx2.h"
#include "dsp/simd/Avx2.h"
#include "dsp/simd/StagePipeline.h"

namespace
{
using Section = SectionCascade::Section;

/** Sections in one pipeline at the most: four of them keep the processor busy, and their delay lines in its registers. */
constexpr std::size_t maxPipelineSections = 4;

[[nodiscard]] bool areTwoInARegister (std::size_t numFrames) noexcept
{
    return avx2::isThere && numFrames >= avx2::minFrames;
}

/** Twice as many where two sections lie in a register. */
[[nodiscard]] std::size_t maxSectionsFor (std::size_t numFrames) noexcept
{
    return areTwoInARegister (numFrames) ? avx2::SectionPipeline::maxSections : maxPipelineSections;
}

/** A coefficient of each section of a pipeline: one for all frames, or one for each. */
template <bool perFrame>
class Coefficient
{
public:
    template <std::size_t... i>
    Coefficient (std::span<const Section> sections, const double* Section::*values, std::index_sequence<i...>) noexcept
        : perSection { valueOf (sections[i].*values)... }
    {
    }

    [[nodiscard]] StereoPair at (std::size_t section, std::size_t frame) const noexcept
    {
        if constexpr (perFrame)
            return StereoPair::both (perSection[section][frame]);
        else
            return perSection[section];
    }

private:
    using Value = std::conditional_t<perFrame, const double*, StereoPair>;

    [[nodiscard]] static Value valueOf (const double* values) noexcept
    {
        if constexpr (perFrame)
            return values;
        else
            return StereoPair::both (*values);
    }

    std::array<Value, maxPipelineSections> perSection;
};

/** Where a pipeline takes its frames from and leaves them: frames in double precision, or samples. */
struct Frames
{
    [[nodiscard]] StereoPair load (std::size_t frame) const noexcept { return pairs[frame]; }
    void store (std::size_t frame, StereoPair x) const noexcept { pairs[frame] = x; }

    StereoPair* pairs;
};

struct Samples
{
    [[nodiscard]] StereoPair load (std::size_t frame) const noexcept
    {
        return StereoPair::widened (left[frame], right[frame]);
    }

    void store (std::size_t frame, StereoPair x) const noexcept { x.narrowTo (left[frame], right[frame]); }

    float* left;
    float* right;
};

/** The stages of a pipeline. The coefficients stay in memory: the registers are for the delay lines, which every frame waits
    for. */
template <bool perFrame, std::size_t numSections, typename Source, typename Sink>
class SectionStages
{
public:
    template <std::size_t... i>
    SectionStages (std::span<const Section> sections, Source newSource, Frames between, Sink newSink,
                   std::index_sequence<i...> all) noexcept
        : gain (sections, &Section::gain, all), feedback1 (sections, &Section::feedback1, all),
          feedback2 (sections, &Section::feedback2, all), source (newSource), frames (between),
          sink (newSink), numeratorMiddle { StereoPair::both (sections[i].numeratorMiddle)... },
          w1 { *sections[i].w1... }, w2 { *sections[i].w2... }
    {
    }

    template <std::size_t i>
    void process (std::size_t frame) noexcept
    {
        const auto y = processSection (load<i> (frame), gain.at (i, frame), feedback1.at (i, frame),
                                       feedback2.at (i, frame), numeratorMiddle[i], w1[i], w2[i]);

        if constexpr (i + 1 == numSections)
            sink.store (frame, y);
        else
            frames.store (frame, y);
    }

    template <std::size_t... i>
    void keepDelayLines (std::span<const Section> sections, std::index_sequence<i...>) const noexcept
    {
        ((*sections[i].w1 = w1[i]), ...);
        ((*sections[i].w2 = w2[i]), ...);
    }

private:
    template <std::size_t i>
    [[nodiscard]] StereoPair load (std::size_t frame) const noexcept
    {
        if constexpr (i == 0)
            return source.load (frame);
        else
            return frames.load (frame);
    }

    const Coefficient<perFrame> gain, feedback1, feedback2;
    const Source source;
    const Frames frames;
    const Sink sink;
    const std::array<StereoPair, numSections> numeratorMiddle;
    std::array<StereoPair, numSections> w1, w2;
};

template <bool perFrame, typename Source, typename Sink, std::size_t numSections>
void processSections (std::span<const Section> sections, Source source, Frames between, Sink sink,
                      std::size_t numFrames) noexcept
{
    constexpr auto all = std::make_index_sequence<numSections> {};

    SectionStages<perFrame, numSections, Source, Sink> stages (sections, source, between, sink, all);
    StagePipeline<numSections>::process (stages, numFrames);
    stages.keepDelayLines (sections, all);
}

/** A pipeline with two sections in a register.
    @param ends  frames or samples */
template <bool perFrame, typename Ends>
void processTwoInARegister (std::span<const Section> sections, Ends ends, Frames between,
                            std::size_t numFrames) noexcept
{
    avx2::SectionPipeline pipeline { sections, perFrame, StereoBlock (between.pairs, numFrames), nullptr, nullptr };

    if constexpr (std::is_same_v<Ends, Samples>)
    {
        pipeline.left = ends.left;
        pipeline.right = ends.right;
    }

    pipeline.process();
}

/** One pipeline, of one to maxSectionsFor the frames. */
template <bool perFrame, typename Source, typename Sink>
void processPipeline (std::span<const Section> sections, Source source, Frames between, Sink sink,
                      std::size_t numFrames) noexcept
{
    if constexpr (avx2::isBuilt && std::is_same_v<Source, Sink>)
        if (sections.size() > 1 && areTwoInARegister (numFrames))
            return processTwoInARegister<perFrame> (sections, source, between, numFrames);

    static constexpr std::array pipelines { processSections<perFrame, Source, Sink, 1>,
                                            processSections<perFrame, Source, Sink, 2>,
                                            processSections<perFrame, Source, Sink, 3>,
                                            processSections<perFrame, Source, Sink, 4> };
    static_assert (pipelines.size() == maxPipelineSections);

    pipelines[sections.size() - 1](sections, source, between, sink, numFrames);
}

/** All sections, in as many pipelines as they need. */
template <bool perFrame>
void processFrames (std::span<const Section> sections, StereoBlock block) noexcept
{
    const Frames frames { block.data() };
    const auto longest = maxSectionsFor (block.size());

    for (std::size_t first = 0; first < sections.size(); first += longest)
        processPipeline<perFrame> (sections.subspan (first, std::min (longest, sections.size() - first)), frames,
                                   frames, frames, block.size());
}

/** Converts the samples on the way: the conversion overlaps with the first and the last section. At least one section, and
    at most two pipelines of them. With coefficients of each frame's own it would gain nothing: there the processor is full. */
void processSamples (std::span<const Section> sections, SampleBlock block, StereoPair* storage) noexcept
{
    const Samples samples { block.left, block.right };
    const Frames between { storage };

    if (sections.size() <= maxSectionsFor (block.size))
        return processPipeline<false> (sections, samples, between, samples, block.size);

    const auto half = sections.size() / 2;
    processPipeline<false> (sections.first (half), samples, between, between, block.size);
    processPipeline<false> (sections.subspan (half), between, between, samples, block.size);
}
} // namespace

SectionCascade::SectionCascade (SampleBlock newSamples, Coefficients newCoefficients) noexcept
    : samples (newSamples), coefficients (newCoefficients), frames (StereoBlock (storage).first (newSamples.size)),
      areConverted (false)
{
    assert (newSamples.size <= maxBlockFrames);
}

SectionCascade::SectionCascade (StereoBlock newFrames, Coefficients newCoefficients) noexcept
    : samples {}, coefficients (newCoefficients), frames (newFrames), areConverted (true)
{
}

void SectionCascade::add (const Section& section) noexcept
{
    assert (numSections < maxSections);
    sections[numSections++] = section;
}

StereoBlock SectionCascade::processed() noexcept
{
    if (! areConverted)
        widen (samples, frames);

    areConverted = true;

    const auto added = std::span<const Section> (sections).first (numSections);

    if (coefficients == Coefficients::standing)
        processFrames<false> (added, frames);
    else
        processFrames<true> (added, frames);

    numSections = 0;
    return frames;
}

void SectionCascade::finish() noexcept
{
    const auto canConvertOnTheWay = ! areConverted && numSections > 0 && numSections <= 2 * maxPipelineSections;

    if (canConvertOnTheWay && coefficients == Coefficients::standing)
        return processSamples (std::span<const Section> (sections).first (numSections), samples, storage.data());

    const auto result = processed();

    if (samples.size > 0)
        narrow (result, samples);
}
