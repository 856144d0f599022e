// SPDX-License-Identifier: AGPL-3.0-or-later
// The classes of the engine by themselves, beside their counterparts in the reference engine.
#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "Contest.h"
#include "dsp/filters/ButterworthFilter.h"
#include "dsp/filters/GrungeLadder.h"
#include "dsp/filters/ResonancePeak.h"
#include "dsp/modulation/Frequencer.h"
#include "dsp/modulation/LfoGenerator.h"
#include "dsp/simd/StereoBlock.h"
#include "reference/ReferenceFilters.h"
#include "reference/ReferenceLfo.h"
#include "Registration.h"

namespace
{
constexpr double rate = 48000.0;
constexpr double startHz = 300.0;

const Table kernels {
    "kernel",
    "The kernels",
    "kernel",
    { { "reference", "reference, ns/frame", 1 }, { "plug-in", "plug-in, ns/frame", 1 }, { "ratio", "ratio", 2 } },
    "The classes by themselves. The plug-in takes frames in blocks wherever it can; one frame at a time is how a test "
    "or\n"
    "another program may call them. Redesigned: before every frame."
};

/** Calls a function of one frame in double precision for each frame of the block. */
template <typename Frame>
class KernelContestant : public Contestant
{
public:
    explicit KernelContestant (Frame newFrame) : frame (std::move (newFrame)) {}

    void take (const Noise::Block& block) override
    {
        left.assign (block.left.begin(), block.left.end());
        right.assign (block.right.begin(), block.right.end());
    }

    void run() override
    {
        for (std::size_t n = 0; n < left.size(); ++n)
            frame (left[n], right[n]);

        benchmark::DoNotOptimize (left.data());
        benchmark::DoNotOptimize (right.data());
        benchmark::ClobberMemory();
    }

private:
    Frame frame;
    std::vector<double> left, right;
};

template <typename Frame>
std::unique_ptr<Contestant> makeKernel (Frame frame)
{
    return std::make_unique<KernelContestant<Frame>> (std::move (frame));
}

/** The same for a function of many frames, which takes the samples as pairs. */
template <typename Process>
class BlockContestant : public Contestant
{
public:
    explicit BlockContestant (Process newProcess) : process (std::move (newProcess)) {}

    void take (const Noise::Block& block) override
    {
        frames.clear();

        for (std::size_t n = 0; n < block.left.size(); ++n)
            frames.emplace_back ((double) block.left[n], (double) block.right[n]);
    }

    void run() override
    {
        for (std::size_t start = 0; start < frames.size(); start += maxBlockFrames)
            process (StereoBlock (frames).subspan (start, std::min (maxBlockFrames, frames.size() - start)));

        benchmark::DoNotOptimize (frames.data());
        benchmark::ClobberMemory();
    }

private:
    Process process;
    std::vector<StereoPair> frames;
};

template <typename Process>
std::unique_ptr<Contestant> makeBlockKernel (Process process)
{
    return std::make_unique<BlockContestant<Process>> (std::move (process));
}

/** A cutoff that is another one at every frame. */
class MovingCutoff
{
public:
    double next() noexcept
    {
        hertz = hertz > 2.0 * startHz ? startHz : hertz * 1.0001;
        return hertz;
    }

private:
    double hertz = startHz;
};

void runDuel (benchmark::State& state, std::unique_ptr<Contestant> reference, std::unique_ptr<Contestant> plugin)
{
    Contest contest;
    contest.add ("reference", std::move (reference));
    contest.add ("plug-in", std::move (plugin));
    contest.run (state);
    state.counters["ratio"] = contest.nanosecondsPerFrame (0) / contest.nanosecondsPerFrame (1);
}

template <typename MakeReference, typename MakePlugin>
void registerDuel (const std::string& name, MakeReference makeReference, MakePlugin makePlugin)
{
    registerRow (kernels.key, name,
                 [=] (benchmark::State& state)
                 { runDuel (state, makeKernel (makeReference()), makeKernel (makePlugin())); });
}

/** The plug-in takes many frames at once. */
template <typename MakeReference, typename MakePlugin>
void registerBlockDuel (const std::string& name, MakeReference makeReference, MakePlugin makePlugin)
{
    registerRow (kernels.key, name + ", in blocks",
                 [=] (benchmark::State& state)
                 { runDuel (state, makeKernel (makeReference()), makeBlockKernel (makePlugin())); });
}

//======================================================================================================================
template <typename Filter>
auto staticButterworth (unsigned order)
{
    Filter filter;
    filter.design (order, false, startHz, rate);
    return [filter] (double& left, double& right) mutable { filter.process (left, right); };
}

template <typename Filter>
auto movingButterworth (unsigned order)
{
    return [filter = Filter {}, cutoff = MovingCutoff {}, order] (double& left, double& right) mutable
    {
        filter.design (order, false, cutoff.next(), rate);
        filter.process (left, right);
    };
}

auto butterworthBlock (unsigned order)
{
    ButterworthFilter filter;
    filter.design (order, false, startHz, rate);
    return [filter] (StereoBlock frames) mutable
    {
        SectionCascade cascade (frames, SectionCascade::Coefficients::standing);
        filter.addTo (cascade);
        cascade.finish();
    };
}

auto ladderBlock (int stages)
{
    GrungeLadder ladder;
    ladder.configure (stages, false, startHz, 0.15625, 80.0, rate);
    return [ladder] (StereoBlock frames) mutable { ladder.process (frames); };
}

template <typename Peak>
auto staticPeak()
{
    Peak peak;
    peak.design (rate, startHz, 1.25);
    return [peak] (double& left, double& right) mutable { peak.process (left, right); };
}

template <typename Peak>
auto movingPeak()
{
    return [peak = Peak {}, cutoff = MovingCutoff {}] (double& left, double& right) mutable
    {
        peak.design (rate, cutoff.next(), 1.25);
        peak.process (left, right);
    };
}

template <typename Ladder>
auto staticLadder (int stages)
{
    Ladder ladder;
    ladder.configure (stages, false, startHz, 0.15625, 80.0, rate);
    return [ladder] (double& left, double& right) mutable { ladder.process (left, right); };
}

template <typename Ladder>
auto movingLadder (int stages)
{
    return [ladder = Ladder {}, cutoff = MovingCutoff {}, stages] (double& left, double& right) mutable
    {
        ladder.configure (stages, false, cutoff.next(), 0.15625, 80.0, rate);
        ladder.process (left, right);
    };
}

void registerFilters()
{
    for (const auto order : { 1u, 2u, 4u, 8u })
    {
        const auto name = "ButterworthFilter of order " + std::to_string (order);
        registerDuel (
            name, [=] { return staticButterworth<reference::ButterworthFilter> (order); },
            [=] { return staticButterworth<ButterworthFilter> (order); });
        registerBlockDuel (
            name, [=] { return staticButterworth<reference::ButterworthFilter> (order); },
            [=] { return butterworthBlock (order); });
        registerDuel (
            name + ", redesigned", [=] { return movingButterworth<reference::ButterworthFilter> (order); },
            [=] { return movingButterworth<ButterworthFilter> (order); });
    }

    registerDuel (
        "ResonancePeak", [] { return staticPeak<reference::ResonancePeak>(); },
        [] { return staticPeak<ResonancePeak>(); });
    registerDuel (
        "ResonancePeak, redesigned", [] { return movingPeak<reference::ResonancePeak>(); },
        [] { return movingPeak<ResonancePeak>(); });

    for (const auto stages : { 1, 8 })
    {
        const auto name = "GrungeLadder of " + std::to_string (stages) + (stages == 1 ? " stage" : " stages");
        registerDuel (
            name, [=] { return staticLadder<reference::GrungeLadder> (stages); },
            [=] { return staticLadder<GrungeLadder> (stages); });
        registerBlockDuel (
            name, [=] { return staticLadder<reference::GrungeLadder> (stages); }, [=] { return ladderBlock (stages); });
        registerDuel (
            name + ", redesigned", [=] { return movingLadder<reference::GrungeLadder> (stages); },
            [=] { return movingLadder<GrungeLadder> (stages); });
    }
}

//======================================================================================================================
void advance (LfoGenerator& lfo) { lfo.advance(); }

void advance (reference::LfoGenerator& lfo)
{
    lfo.outputSlew.advance();
    lfo.advancePhases();

    if (lfo.shape == LfoGenerator::brownian)
    {
        lfo.walk();
        lfo.referencePhase += lfo.phaseStepA;
    }

    lfo.follow();
    lfo.wrapPhases();
}

template <typename Lfo>
auto runningLfo (int shape, float curveExponent)
{
    Lfo lfo;
    lfo.setRate (shape, (float) rate, 2.0f);
    lfo.curveExponent = curveExponent;

    return [lfo] (double& left, double&) mutable
    {
        advance (lfo);
        left = (double) lfo.render();
    };
}

void registerLfos()
{
    constexpr std::array names { "sine",     "triangle",       "saw",         "square", "random triangles",
                                 "brownian", "reserved pulse", "reserved sum" };

    const auto registerLfo = [] (const std::string& name, int shape, float curveExponent)
    {
        registerDuel (
            "LfoGenerator, " + name, [=] { return runningLfo<reference::LfoGenerator> (shape, curveExponent); },
            [=] { return runningLfo<LfoGenerator> (shape, curveExponent); });
    };

    for (std::size_t shape = 0; shape < names.size(); ++shape)
        registerLfo (names[shape], (int) shape, 1.0f);

    registerLfo ("sine, with curve", LfoGenerator::sine, 2.0f);
}

/** All ten steps; the reference engine has no such function by itself. */
void registerSteps()
{
    registerRow (kernels.key, "frequencer::evaluate",
                 [] (benchmark::State& state)
                 {
                     frequencer::Offsets offsets;
                     offsets.highpass.fill (0.6f);
                     offsets.lowpass.fill (0.4f);

                     const auto evaluate = [offsets, beats = 1.0] (double& left, double& right) mutable
                     {
                         beats += 0.00004;
                         const auto result = frequencer::evaluate (beats, 0.0f, offsets);
                         left = (double) result.highpass;
                         right = (double) result.lowpass;
                     };

                     Contest contest;
                     contest.add ("plug-in", makeKernel (evaluate));
                     contest.run (state);
                 });
}
} // namespace

std::vector<Table> registerKernelBenchmarks()
{
    registerFilters();
    registerLfos();
    registerSteps();
    return { kernels };
}
