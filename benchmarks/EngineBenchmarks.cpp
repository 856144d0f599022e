// SPDX-License-Identifier: AGPL-3.0-or-later
// The whole plug-in beside the reference engine of the tests, and beside JUCE's filters.
#include "EngineContestants.h"
#include "JuceCascade.h"
#include "Registration.h"

namespace
{
/** How many times faster the plug-in should be, and how many it could be. */
struct Target
{
    double target;
    double stretch;
};

struct Regime
{
    const char* name;
    Patch patch;
    Target target;
};

using Sharing = JuceCascade::Sharing;

struct JuceRegime
{
    const char* name;
    int order;
    bool redesigned;
    Target target;
    Sharing sharing = Sharing::oneForBothChannels;
};

const Table besideReferenceEngine { "plug-in",
                                    "The plug-in beside the reference engine",
                                    "regime",
                                    { { "reference", "reference, ns/frame", 1 },
                                      { "plug-in", "plug-in, ns/frame", 1 },
                                      { "ratio", "ratio", 2 },
                                      { "target", "target", 1 },
                                      { "stretchTarget", "stretch target", 1 },
                                      { "referenceMegaframes", "reference, Mframes/s", 2 },
                                      { "megaframes", "plug-in, Mframes/s", 2 } },
                                    "Through `MainAudioProcessor::processBlock`: 512-frame blocks, 48 kHz, stereo. "
                                    "Mframes/s: million frames per second." };

const Table besideJuce {
    "JUCE",
    "The plug-in beside cascades of JUCE's own filters",
    "JUCE / plug-in",
    { { "juce", "JUCE, ns/frame", 1 },
      { "plug-in", "plug-in, ns/frame", 1 },
      { "ratio", "ratio", 2 },
      { "target", "target", 1 },
      { "stretchTarget", "stretch target", 1 } },
    "`juce::dsp::IIR::Filter<double>`, highpass and lowpass of the same orders, stereo. JUCE's "
    "side is the bare filters on\n"
    "doubles; beside them stands the whole plug-in on floats, with transport, LFO, slews and change watch."
};

void report (benchmark::State& state, const Contest& contest, const Target& target)
{
    const auto theirs = contest.nanosecondsPerFrame (0);
    const auto plugin = contest.nanosecondsPerFrame (1);
    state.counters["ratio"] = theirs / plugin;
    state.counters["referenceMegaframes"] = 1000.0 / theirs;
    state.counters["megaframes"] = 1000.0 / plugin;
    state.counters["target"] = target.target;
    state.counters["stretchTarget"] = target.stretch;
}

void registerBesideReferenceEngine()
{
    const std::vector<Regime> regimes {
        { "asleep, 12/12", Patch::asleep (2), { 5.3, 6.0 } },
        { "asleep, 48/48", Patch::asleep (4), { 5.0, 6.0 } },
        { "asleep, 48/48, both resonances at 100 %", Patch::asleep (4, 1.0f), { 4.2, 5.0 } },
        { "ladder, 48/48, grunge at 50 %", Patch::ladder (0.5f), { 7.5, 9.0 } },
        { "awake, LFO 1 sine to the highpass cutoff, 12/12", Patch::oneLfo(), { 6.0, 8.0 } },
        { "awake, everything, 48/48", Patch::everything(), { 3.8, 4.8 } },
    };

    for (const auto& regime : regimes)
        registerRow (besideReferenceEngine.key, regime.name,
                     [regime] (benchmark::State& state)
                     {
                         Contest contest;
                         contest.add ("reference", std::make_unique<ReferenceContestant> (regime.patch));
                         contest.add ("plug-in", std::make_unique<PluginContestant> (regime.patch));
                         contest.run (state);
                         report (state, contest, regime.target);
                     });
}

/** Choice index of the slope with so many poles. */
int slopeOfOrder (int order)
{
    if (order == 2)
        return 2;

    return order == 4 ? 3 : 4;
}

std::unique_ptr<Contestant> makeJuceContestant (const JuceRegime& regime)
{
    if (regime.redesigned)
        return std::make_unique<RedesignedJuceContestant> (regime.order, regime.sharing);

    return std::make_unique<StaticJuceContestant> (regime.order);
}

void registerBesideJuce()
{
    const std::vector<JuceRegime> regimes {
        { "static / asleep, 12/12", 2, false, { 3.0, 4.0 } },
        { "static / asleep, 24/24", 4, false, { 3.5, 5.0 } },
        { "static / asleep, 48/48", 8, false, { 4.0, 6.0 } },
        { "redesigned every frame / both cutoffs moving, 12/12", 2, true, { 1.1, 1.5 } },
        { "redesigned every frame / both cutoffs moving, 24/24", 4, true, { 1.8, 2.2 } },
        { "redesigned every frame / both cutoffs moving, 48/48", 8, true, { 2.8, 3.4 } },
        { "the same, coefficients for each channel, 12/12", 2, true, { 1.1, 1.5 }, Sharing::oneForEach },
        { "the same, coefficients for each channel, 24/24", 4, true, { 1.8, 2.2 }, Sharing::oneForEach },
        { "the same, coefficients for each channel, 48/48", 8, true, { 2.8, 3.4 }, Sharing::oneForEach },
    };

    for (const auto& regime : regimes)
        registerRow (besideJuce.key, regime.name,
                     [regime] (benchmark::State& state)
                     {
                         const auto slope = slopeOfOrder (regime.order);
                         const auto patch = regime.redesigned ? Patch::bothCutoffs (slope) : Patch::asleep (slope);
                         Contest contest;
                         contest.add ("juce", makeJuceContestant (regime));
                         contest.add ("plug-in", std::make_unique<PluginContestant> (patch));
                         contest.run (state);
                         report (state, contest, regime.target);
                     });
}
} // namespace

std::vector<Table> registerEngineBenchmarks()
{
    registerBesideReferenceEngine();
    registerBesideJuce();
    return { besideReferenceEngine, besideJuce };
}
