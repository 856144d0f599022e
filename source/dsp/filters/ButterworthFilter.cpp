// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/filters/ButterworthFilter.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "dsp/filters/FilterConstants.h"
#include "dsp/simd/SkewedStages.h"

namespace
{
struct SectionCoefficients
{
    double gain, feedback1, feedback2;
};

[[nodiscard]] SectionCoefficients designSection (bool highpass, double a, double aSquared, double poleSine) noexcept
{
    const auto s = 2.0 * a * poleSine + aSquared + 1.0;

    return { (highpass ? 1.0 : aSquared) / s, 2.0 * (1.0 - aSquared) / s, (2.0 * a * poleSine - aSquared - 1.0) / s };
}

struct FirstOrderCoefficients
{
    double forward, feedback;
};

[[nodiscard]] FirstOrderCoefficients designFirstOrderSection (double cutoff, double sampleRate) noexcept
{
    const auto w = cutoff * twoPi;
    const auto t = 2.0 * sampleRate;
    const auto inverse = inverseOrZero (w + t);

    return { inverse * w, (t - w) * inverse };
}

/** The sine terms of the pole pairs depend on the number of sections alone, so they are computed once. */
class PoleSines
{
public:
    PoleSines() noexcept
    {
        for (std::size_t n = 1; n <= ButterworthFilter::maxSections; ++n)
            for (std::size_t i = 0; i < n; ++i)
                sines[n - 1][i] = std::sin ((halfPi / (double) n) * (double) i + quarterPi / (double) n);
    }

    [[nodiscard]] double of (std::size_t section, std::size_t numSections) const noexcept
    {
        return sines[numSections - 1][section];
    }

private:
    std::array<std::array<double, ButterworthFilter::maxSections>, ButterworthFilter::maxSections> sines {};
};

const PoleSines poleSines;

/** One frame through one section; x is the frame on its way in, the result on its way out. */
[[nodiscard]] StereoPair runSection (StereoPair& w1, StereoPair& w2, StereoPair numeratorMiddle, StereoPair gain,
                                     StereoPair feedback1, StereoPair feedback2, StereoPair x) noexcept
{
    const auto w0 = w1 * feedback1 + feedback2 * w2 + x;
    const auto y = (numeratorMiddle * w1 + w0 + w2) * gain;
    w2 = w1;
    w1 = w0;
    return y;
}

[[nodiscard]] StereoPair runFirstOrder (StereoPair& input, StereoPair& output, bool highpass, StereoPair forward,
                                        StereoPair feedback, StereoPair x) noexcept
{
    const auto lowpassed = (input + x) * forward + feedback * output;
    input = x;
    output = lowpassed;
    return highpass ? x - lowpassed : lowpassed;
}

/** A section of a filter, and its coefficients if they change from frame to frame. */
struct SectionOfRow
{
    ButterworthFilter* filter;
    const ButterworthFilter::Series* series;
    std::size_t index;
};

/** Sections in one row at the most: four of them keep the processor busy, and their delay lines in its registers. */
constexpr std::size_t maxRowSections = 4;

/** The coefficients that the design has left, the same for all frames of a run. */
struct FixedCoefficients
{
    explicit FixedCoefficients (std::span<const SectionOfRow> row) noexcept
    {
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            gain[i] = StereoPair::both (row[i].filter->sectionGain[row[i].index]);
            feedback1[i] = StereoPair::both (row[i].filter->feedback1[row[i].index]);
            feedback2[i] = StereoPair::both (row[i].filter->feedback2[row[i].index]);
        }
    }

    [[nodiscard]] StereoPair run (std::size_t i, std::size_t, StereoPair& w1, StereoPair& w2, StereoPair middle,
                                  StereoPair x) const noexcept
    {
        return runSection (w1, w2, middle, gain[i], feedback1[i], feedback2[i], x);
    }

    std::array<StereoPair, maxRowSections> gain, feedback1, feedback2;
};

/** Coefficients of each frame's own. */
struct MovingCoefficients
{
    explicit MovingCoefficients (std::span<const SectionOfRow> row) noexcept
    {
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            gain[i] = row[i].series->sectionGain[row[i].index].data();
            feedback1[i] = row[i].series->feedback1[row[i].index].data();
            feedback2[i] = row[i].series->feedback2[row[i].index].data();
        }
    }

    [[nodiscard]] StereoPair run (std::size_t i, std::size_t frame, StereoPair& w1, StereoPair& w2, StereoPair middle,
                                  StereoPair x) const noexcept
    {
        return runSection (w1, w2, middle, StereoPair::both (gain[i][frame]), StereoPair::both (feedback1[i][frame]),
                           StereoPair::both (feedback2[i][frame]), x);
    }

    std::array<const double*, maxRowSections> gain, feedback1, feedback2;
};

/** Where a row takes its frames from or leaves them: frames that have been widened, or samples. */
struct PairsOfRow
{
    [[nodiscard]] StereoPair load (std::size_t frame) const noexcept { return pairs[frame]; }
    void store (std::size_t frame, StereoPair x) const noexcept { pairs[frame] = x; }

    StereoPair* pairs;
};

struct SamplesOfRow
{
    [[nodiscard]] StereoPair load (std::size_t frame) const noexcept
    {
        return StereoPair::widened (left[frame], right[frame]);
    }

    void store (std::size_t frame, StereoPair x) const noexcept { x.narrowTo (left[frame], right[frame]); }

    float* left;
    float* right;
};

/** A row of sections, of one filter or of two in series, on its way through a run of frames. The coefficients stay where
    they are: the registers are for the delay lines, which every frame waits for. */
template <typename Coefficients, std::size_t numSections, typename Source, typename Sink>
class SectionRow
{
public:
    template <std::size_t... i>
    SectionRow (std::span<const SectionOfRow> row, const Coefficients& rowCoefficients, Source rowSource,
                PairsOfRow between, Sink rowSink, std::index_sequence<i...>) noexcept
        : coefficients (rowCoefficients), source (rowSource), frames (between),
          sink (rowSink), middle { StereoPair::both (row[i].filter->numeratorMiddle)... },
          w1 { row[i].filter->w1[row[i].index]... }, w2 { row[i].filter->w2[row[i].index]... }
    {
    }

    template <std::size_t i>
    void run (std::size_t frame) noexcept
    {
        const auto x = loadFor<i> (frame);
        const auto y = coefficients.run (i, frame, w1[i], w2[i], middle[i], x);

        if constexpr (i + 1 == numSections)
            sink.store (frame, y);
        else
            frames.store (frame, y);
    }

    template <std::size_t... i>
    void storeDelayLines (std::span<const SectionOfRow> row, std::index_sequence<i...>) const noexcept
    {
        ((row[i].filter->w1[row[i].index] = w1[i]), ...);
        ((row[i].filter->w2[row[i].index] = w2[i]), ...);
    }

private:
    template <std::size_t i>
    [[nodiscard]] StereoPair loadFor (std::size_t frame) const noexcept
    {
        if constexpr (i == 0)
            return source.load (frame);
        else
            return frames.load (frame);
    }

    const Coefficients& coefficients;
    const Source source;
    const PairsOfRow frames;
    const Sink sink;
    const std::array<StereoPair, numSections> middle;
    std::array<StereoPair, numSections> w1, w2;
};

template <typename Coefficients, typename Source, typename Sink, std::size_t numSections>
void runRow (std::span<const SectionOfRow> row, const Coefficients& coefficients, Source source, PairsOfRow between,
             Sink sink, std::size_t numFrames) noexcept
{
    constexpr auto all = std::make_index_sequence<numSections> {};

    SectionRow<Coefficients, numSections, Source, Sink> stages (row, coefficients, source, between, sink, all);
    runSkewed<numSections> (numFrames, stages);
    stages.storeDelayLines (row, all);
}

/** The sections of up to two filters in series: the more there are, the more overlaps, until the processor is full. */
class Row
{
public:
    void add (ButterworthFilter& filter, const ButterworthFilter::Series* series) noexcept
    {
        for (std::size_t i = 0; i < filter.numSections; ++i)
            sections[size++] = { &filter, series, i };
    }

    template <typename Coefficients>
    void run (FrameRun frames) const noexcept
    {
        const PairsOfRow pairs { frames.data() };

        for (std::size_t first = 0; first < size; first += maxRowSections)
            runPart<Coefficients> (first, std::min (maxRowSections, size - first), pairs, pairs, pairs, frames.size());
    }

    /** Runs at least one section. */
    void run (SampleRun samples) const noexcept
    {
        std::array<StereoPair, maxRunFrames> storage;
        const PairsOfRow between { storage.data() };
        const SamplesOfRow ends { samples.left, samples.right };

        if (size <= maxRowSections)
            return runPart<FixedCoefficients> (0, size, ends, between, ends, samples.size);

        runPart<FixedCoefficients> (0, size / 2, ends, between, between, samples.size);
        runPart<FixedCoefficients> (size / 2, size - size / 2, between, between, ends, samples.size);
    }

    [[nodiscard]] bool isEmpty() const noexcept { return size == 0; }

private:
    template <typename Coefficients, typename Source, typename Sink>
    void runPart (std::size_t first, std::size_t count, Source source, PairsOfRow between, Sink sink,
                  std::size_t numFrames) const noexcept
    {
        static constexpr std::array runners { runRow<Coefficients, Source, Sink, 1>,
                                              runRow<Coefficients, Source, Sink, 2>,
                                              runRow<Coefficients, Source, Sink, 3>,
                                              runRow<Coefficients, Source, Sink, 4> };
        static_assert (runners.size() == maxRowSections);

        const auto row = std::span<const SectionOfRow> (sections).subspan (first, count);
        runners[count - 1](row, Coefficients (row), source, between, sink, numFrames);
    }

    std::array<SectionOfRow, 2 * ButterworthFilter::maxSectionsOfRun> sections;
    std::size_t size = 0;
};
} // namespace

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

void ButterworthFilter::design (unsigned order, bool highpass, double cutoff, double newSampleRate) noexcept
{
    setOrder (order, highpass, newSampleRate);
    limitedCutoff = limitCutoff (cutoff, sampleRate);
    prewarped = std::tan (limitedCutoff * pi / sampleRate);
    prewarpedSquared = prewarped * prewarped;
    designSections();

    if (hasFirstOrderSection)
        designFirstOrder (cutoff);
}

void ButterworthFilter::designSections() noexcept
{
    for (std::size_t i = 0; i < numSections; ++i)
    {
        poleSine = poleSines.of (i, numSections);
        const auto section = designSection (isHighpass, prewarped, prewarpedSquared, poleSine);
        sectionGain[i] = section.gain;
        feedback1[i] = section.feedback1;
        feedback2[i] = section.feedback2;
    }
}

void ButterworthFilter::designFirstOrder (double cutoff) noexcept
{
    const auto section = designFirstOrderSection (cutoff, sampleRate);
    firstOrderForward = section.forward;
    firstOrderFeedback = section.feedback;
}

void ButterworthFilter::designSeries (unsigned order, bool highpass, std::span<const float> cutoffs,
                                      double newSampleRate, Series& series) noexcept
{
    setOrder (order, highpass, newSampleRate);

    std::array<double, maxDesigns> a;

    for (std::size_t frame = 0; frame < cutoffs.size(); ++frame)
        a[frame] = std::tan (limitCutoff ((double) cutoffs[frame], newSampleRate) * pi / newSampleRate);

    for (std::size_t i = 0; i < numSections; ++i)
    {
        const auto sine = poleSines.of (i, numSections);

        for (std::size_t frame = 0; frame < cutoffs.size(); ++frame)
        {
            const auto section = designSection (highpass, a[frame], a[frame] * a[frame], sine);
            series.sectionGain[i][frame] = section.gain;
            series.feedback1[i][frame] = section.feedback1;
            series.feedback2[i][frame] = section.feedback2;
        }
    }

    if (hasFirstOrderSection)
    {
        for (std::size_t frame = 0; frame < cutoffs.size(); ++frame)
        {
            const auto section = designFirstOrderSection ((double) cutoffs[frame], newSampleRate);
            series.firstOrderForward[frame] = section.forward;
            series.firstOrderFeedback[frame] = section.feedback;
        }
    }

    const auto last = cutoffs.size() - 1;
    limitedCutoff = limitCutoff ((double) cutoffs[last], sampleRate);
    prewarped = a[last];
    prewarpedSquared = prewarped * prewarped;
    designSections();

    if (hasFirstOrderSection)
        designFirstOrder ((double) cutoffs[last]);
}

void ButterworthFilter::process (double& left, double& right) noexcept
{
    StereoPair frame (left, right);
    processRun (FrameRun (&frame, 1));
    left = frame.left();
    right = frame.right();
}

void ButterworthFilter::processRun (FrameRun frames) noexcept
{
    Row row;
    row.add (*this, nullptr);
    row.run<FixedCoefficients> (frames);
    processFirstOrder (frames);
}

void ButterworthFilter::processRun (const Series& series, FrameRun frames) noexcept
{
    Row row;
    row.add (*this, &series);
    row.run<MovingCoefficients> (frames);
    processFirstOrder (series, frames);
}

// A filter of first order has no sections, so that each filter's own order is kept around the common row.
void ButterworthFilter::processRun (ButterworthFilter& first, ButterworthFilter& second, FrameRun frames) noexcept
{
    Row row;
    row.add (first, nullptr);
    row.add (second, nullptr);

    first.processFirstOrder (frames);
    row.run<FixedCoefficients> (frames);
    second.processFirstOrder (frames);
}

void ButterworthFilter::processRun (ButterworthFilter& first, ButterworthFilter& second, SampleRun samples) noexcept
{
    Row row;
    row.add (first, nullptr);
    row.add (second, nullptr);

    if (! row.isEmpty() && ! first.hasFirstOrderSection && ! second.hasFirstOrderSection)
        return row.run (samples);

    processWidened (samples, [&] (FrameRun frames) { processRun (first, second, frames); });
}

void ButterworthFilter::processRun (ButterworthFilter& first, const Series& firstSeries, ButterworthFilter& second,
                                    const Series& secondSeries, FrameRun frames) noexcept
{
    Row row;
    row.add (first, &firstSeries);
    row.add (second, &secondSeries);

    first.processFirstOrder (firstSeries, frames);
    row.run<MovingCoefficients> (frames);
    second.processFirstOrder (secondSeries, frames);
}

void ButterworthFilter::processFirstOrder (FrameRun frames) noexcept
{
    if (! hasFirstOrderSection)
        return;

    for (auto& frame : frames)
        frame = runFirstOrder (firstOrderInput, firstOrderOutput, isHighpass, StereoPair::both (firstOrderForward),
                               StereoPair::both (firstOrderFeedback), frame);
}

void ButterworthFilter::processFirstOrder (const Series& series, FrameRun frames) noexcept
{
    if (! hasFirstOrderSection)
        return;

    for (std::size_t i = 0; i < frames.size(); ++i)
        frames[i] = runFirstOrder (firstOrderInput, firstOrderOutput, isHighpass,
                                   StereoPair::both (series.firstOrderForward[i]),
                                   StereoPair::both (series.firstOrderFeedback[i]), frames[i]);
}
