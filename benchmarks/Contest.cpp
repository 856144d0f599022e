// SPDX-License-Identifier: AGPL-3.0-or-later
#include "Contest.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <random>

namespace
{
constexpr std::size_t noiseLength = 1 << 18;

double secondsOf (Contestant& contestant)
{
    const auto start = std::chrono::steady_clock::now();
    contestant.run();
    return std::chrono::duration<double> (std::chrono::steady_clock::now() - start).count();
}
} // namespace

Noise::Noise()
{
    std::mt19937 generator (1);

    for (auto* channel : { &left, &right })
    {
        channel->resize (noiseLength);

        for (auto& sample : *channel)
            sample = (float) generator() / 4294967296.0f - 0.5f;
    }
}

Noise::Block Noise::next (std::size_t numFrames) noexcept
{
    if (position + numFrames > noiseLength)
        position = 0;

    const auto start = position;
    position += numFrames;
    return { std::span<const float> (left).subspan (start, numFrames),
             std::span<const float> (right).subspan (start, numFrames) };
}

void Contest::add (const char* counter, std::unique_ptr<Contestant> contestant)
{
    entries.push_back ({ counter, std::move (contestant), std::numeric_limits<double>::infinity() });
}

void Contest::run (benchmark::State& state)
{
    std::size_t first = 0;

    for ([[maybe_unused]] auto _ : state)
    {
        const auto block = noise.next ((std::size_t) numFrames);
        auto secondsOfRound = 0.0;

        // Another one begins each time: nobody is always the one who finds the caches as the same other left them.
        for (std::size_t i = 0; i < entries.size(); ++i)
        {
            auto& entry = entries[(first + i) % entries.size()];
            entry.contestant->take (block);

            const auto seconds = secondsOf (*entry.contestant);
            entry.fastest = std::min (entry.fastest, seconds);
            secondsOfRound += seconds;
        }

        state.SetIterationTime (secondsOfRound);
        ++first;
    }

    for (std::size_t i = 0; i < entries.size(); ++i)
        state.counters[entries[i].counter] = nanosecondsPerFrame (i);
}

double Contest::nanosecondsPerFrame (std::size_t index) const { return entries[index].fastest * 1e9 / numFrames; }
