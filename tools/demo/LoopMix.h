// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

#include "demo/Elementary.h"

namespace demo
{
inline constexpr int sampleRate = 44100;
inline constexpr int framesPerBeat = sampleRate / 2; // 120 beats per minute
inline constexpr int framesPerStep = framesPerBeat / 4;
inline constexpr int beatsPerBar = 4;
inline constexpr int framesPerBar = beatsPerBar * framesPerBeat;
inline constexpr int numBars = 8;
inline constexpr int numFrames = numBars * framesPerBar;

[[nodiscard]] inline double secondsOf (int frames) { return (double) frames / sampleRate; }

/** What the instruments play into: eight bars that close without a seam. */
class LoopMix
{
public:
    /** Adds one sample; pan runs from -1, left, to 1, right, at constant power. A frame past the end is added at the
        beginning. */
    void add (int frame, double value, double pan)
    {
        const auto angle = (pan + 1.0) * 0.25 * std::numbers::pi;
        const auto index = (std::size_t) (frame % numFrames);
        left[index] += value * cosine (angle);
        right[index] += value * sine (angle);
    }

    void scaleToPeak (double peakDb)
    {
        auto peak = 0.0;

        for (const auto* channel : { &left, &right })
            for (const auto value : *channel)
                peak = std::max (peak, std::abs (value));

        const auto gain = exponential (std::numbers::ln10 * peakDb / 20.0) / peak;

        for (auto* channel : { &left, &right })
            for (auto& value : *channel)
                value *= gain;
    }

    std::vector<double> left = std::vector<double> (numFrames);
    std::vector<double> right = std::vector<double> (numFrames);
};

} // namespace demo
