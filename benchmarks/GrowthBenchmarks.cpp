// SPDX-License-Identifier: AGPL-3.0-or-later
// How the cost grows with the size of the blocks, the sample rate and the number of instances.
#include <algorithm>

#include "EngineContestants.h"
#include "Registration.h"

namespace
{
constexpr int framesOfRound = 512;

const std::vector<Column> regimeColumns { { "asleep", "asleep, 12/12", 1 },
                                          { "oneLfo", "one LFO, 12/12", 1 },
                                          { "everything", "everything, 48/48", 1 } };

const Table byBlockSize { "block", "Cost by block size", "frames per block", regimeColumns,
                          "Nanoseconds per frame. A short block pays for the call and the bookkeeping around it." };

const Table byRate {
    "rate",
    "Cost by sample rate",
    "Hz",
    { regimeColumns[0], regimeColumns[1], regimeColumns[2], Column { "load", "everything: % of one core", 2 } },
    "Nanoseconds per frame. The work for one frame is the same, so that the load grows with the rate."
};

const Table byInstances { "instances", "Cost by number of instances", "instances", regimeColumns,
                          "Nanoseconds per frame and instance. The instances take turns with blocks of 512 frames." };

/** @param make  makes the contestant of a patch */
template <typename Make>
void addRegimes (Contest& contest, Make make)
{
    contest.add ("asleep", make (Patch::asleep (2)));
    contest.add ("oneLfo", make (Patch::oneLfo()));
    contest.add ("everything", make (Patch::everything()));
}

void runRegimes (benchmark::State& state, const Running& running)
{
    Contest contest (std::max (framesOfRound, running.blockSize));
    addRegimes (contest, [&] (const Patch& patch) { return std::make_unique<PluginContestant> (patch, running); });
    contest.run (state);
    state.counters["load"] = 100.0 * contest.nanosecondsPerFrame (2) * 1e-9 * running.rate;
}

void runInstances (benchmark::State& state, int count)
{
    Contest contest;
    addRegimes (contest, [&] (const Patch& patch) { return std::make_unique<ManyInstances> (count, patch); });
    contest.run (state);

    for (const auto& column : regimeColumns)
        state.counters[column.counter].value /= count;
}
} // namespace

std::vector<Table> registerGrowthBenchmarks()
{
    for (const auto size : { 1, 16, 64, 512, 4096 })
        registerRow (byBlockSize.key, std::to_string (size),
                     [size] (benchmark::State& state) {
                         runRegimes (state, { 48000.0, size });
                     });

    for (const auto rate : { 44100, 48000, 96000, 192000 })
        registerRow (byRate.key, std::to_string (rate),
                     [rate] (benchmark::State& state) {
                         runRegimes (state, { (double) rate, framesOfRound });
                     });

    for (const auto count : { 1, 8, 64 })
        registerRow (byInstances.key, std::to_string (count),
                     [count] (benchmark::State& state) { runInstances (state, count); });

    return { byBlockSize, byRate, byInstances };
}
