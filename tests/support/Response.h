// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <random>
#include <vector>

/** How tests measure a filter: by its response to an impulse, a tone or noise, and not by its fields. */
namespace response
{
/** The left channel's response to a single 1. */
template <typename Filter>
[[nodiscard]] std::vector<double> toImpulse (Filter& filter, std::size_t numFrames)
{
    std::vector<double> answer (numFrames);

    for (std::size_t i = 0; i < numFrames; ++i)
    {
        auto left = i == 0 ? 1.0 : 0.0;
        auto right = 0.0;
        filter.process (left, right);
        answer[i] = left;
    }

    return answer;
}

/** The magnitude of the transfer function with the given impulse response. */
[[nodiscard]] inline double magnitude (const std::vector<double>& impulseResponse, double cyclesPerFrame)
{
    std::complex<double> sum;

    for (std::size_t i = 0; i < impulseResponse.size(); ++i)
        sum += std::polar (impulseResponse[i], -2.0 * std::numbers::pi * cyclesPerFrame * (double) i);

    return std::abs (sum);
}

/** The root mean square of the left channel's response to a sine, after the transient. */
template <typename Filter>
[[nodiscard]] double levelOfSine (Filter& filter, double cyclesPerFrame, double amplitude, std::size_t numFrames)
{
    auto sum = 0.0;
    const auto settled = numFrames / 2;

    for (std::size_t i = 0; i < numFrames; ++i)
    {
        auto left = amplitude * std::sin (2.0 * std::numbers::pi * cyclesPerFrame * (double) i);
        auto right = left;
        filter.process (left, right);

        if (i >= settled)
            sum += left * left;
    }

    return std::sqrt (sum / (double) (numFrames - settled));
}

/** White noise, -1 to 1, the same for the same seed. */
[[nodiscard]] inline std::vector<double> noise (std::uint32_t seed, std::size_t numFrames)
{
    std::mt19937 generator (seed);
    std::vector<double> samples (numFrames);

    for (auto& sample : samples)
        sample = (double) generator() / 2147483648.0 - 1.0;

    return samples;
}

/** The response to noise of two seeds, one per channel; left and right alternate. */
template <typename Filter>
std::vector<double> toNoise (Filter& filter, std::uint32_t seed, std::size_t numFrames)
{
    const auto lefts = noise (seed, numFrames);
    const auto rights = noise (seed + 1000, numFrames);
    std::vector<double> answer;
    answer.reserve (2 * numFrames);

    for (std::size_t i = 0; i < numFrames; ++i)
    {
        auto left = lefts[i];
        auto right = rights[i];
        filter.process (left, right);
        answer.push_back (left);
        answer.push_back (right);
    }

    return answer;
}

/** The response to silence; left and right alternate. */
template <typename Filter>
std::vector<double> toSilence (Filter& filter, std::size_t numFrames)
{
    std::vector<double> answer;
    answer.reserve (2 * numFrames);

    for (std::size_t i = 0; i < numFrames; ++i)
    {
        auto left = 0.0;
        auto right = 0.0;
        filter.process (left, right);
        answer.push_back (left);
        answer.push_back (right);
    }

    return answer;
}
} // namespace response
