// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/EngineDriver.h"

#include <algorithm>
#include <random>
#include <string>

#include <gtest/gtest.h>

void EngineDriver::choose (std::string_view id, int index)
{
    const auto row = reference::indexOfParameter (std::string (id));
    set (id, reference::positionOfChoice (index, reference::parameterTable()[(std::size_t) row].stepCount));
}

void EngineDriver::setTransport (double beats, double bpm, int numerator, int denominator)
{
    applyTransport ({ true, true, bpm, beats, numerator, denominator });
}

void EngineDriver::setTransportWithoutPosition() { applyTransport ({ true, false, 120.0, 4.0, 4, 4 }); }

void EngineDriver::removePlayHead() { applyTransport ({}); }

EngineDriver::Frames EngineDriver::run (const Frames& input, std::size_t blockSize)
{
    // An empty block has buffers too.
    std::vector<float> left (blockSize), right (blockSize);
    Frames output;
    output.reserve (input.size());

    do
    {
        const auto start = output.size();
        const auto size = std::min (blockSize, input.size() - start);

        for (std::size_t i = 0; i < size; ++i)
        {
            left[i] = input[start + i].first;
            right[i] = input[start + i].second;
        }

        process (left.data(), right.data(), (int) size);

        for (std::size_t i = 0; i < size; ++i)
            output.emplace_back (left[i], right[i]);
    } while (output.size() < input.size());

    return output;
}

void EngineDriver::runSilence (std::size_t numFrames, std::size_t blockSize) { run (Frames (numFrames), blockSize); }

void EngineDriver::tick (int howOften)
{
    for (auto remaining = howOften; remaining > 0;)
    {
        const auto together = remaining == howOften ? howOften : 1;
        requestUpdate();
        runSilence ((std::size_t) together, (std::size_t) together);

        // An engine that has fallen asleep in between counts the frames since its last request. Only the first of them had a
        // tick.
        const auto numWithoutTick = std::max (0, framesSinceRequest() - 1);
        remaining -= together - numWithoutTick;
    }
}

void EngineDriver::keepAwake() { set ("lfo2T_lpr", 0.75f); }

void EngineDriver::fallAsleep()
{
    for (int block = 0; block < 1000 && isUpdatePending(); ++block)
        runSilence (1000, 1000);

    ASSERT_FALSE (isUpdatePending());
}

EngineDriver::Frames EngineDriver::noise (std::uint32_t seed, std::size_t numFrames, float amplitude)
{
    std::mt19937 generator (seed);
    Frames frames;
    frames.reserve (numFrames);
    const auto draw = [&] { return amplitude * (float) ((double) generator() / 2147483648.0 - 1.0); };

    for (std::size_t i = 0; i < numFrames; ++i)
    {
        const auto left = draw();
        frames.emplace_back (left, draw());
    }

    return frames;
}
