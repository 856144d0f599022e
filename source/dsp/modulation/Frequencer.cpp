// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/modulation/Frequencer.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace
{
/** Puts a position that stands exactly on a beat safely past that boundary. */
constexpr double boundaryBeats = 0.01;

constexpr float deadBand = 0.001f;
constexpr float offsetGain = 20.0f;
constexpr float sumLimit = 2.0f;

/** Beyond it, and for NaN, half beats are not counted in an integer. */
constexpr double countableBeats = 4.0e18;

[[nodiscard]] bool outsideDeadBand (float offset) noexcept { return std::abs (offset) > deadBand; }

[[nodiscard]] float signedSquare (float offset) noexcept { return std::abs (offset) * offset * offsetGain; }

[[nodiscard]] float limitSum (float sum) noexcept
{
    if (sum < -sumLimit)
        return -sumLimit;

    return sum > sumLimit ? sumLimit : sum;
}

} // namespace

// Step j is on in the first half of each period of 2^j beats: where binary digit j of the half beats passed is 0.
std::bitset<frequencer::numSteps> frequencer::stepsAt (double beats, float shiftBeats) noexcept
{
    const auto position = (beats + boundaryBeats) + (double) shiftBeats;

    if (std::abs (position) < countableBeats)
    {
        const auto halfBeats = position * 2.0;
        const auto towardZero = (std::int64_t) halfBeats;
        const auto passed = towardZero - ((double) towardZero > halfBeats ? 1 : 0);
        return ~(unsigned long long) passed;
    }

    std::bitset<numSteps> steps;
    auto periods = position;

    for (std::size_t j = 0; j < steps.size(); ++j)
    {
        steps[j] = periods - std::floor (periods) < 0.5;
        periods *= 0.5;
    }

    return steps;
}

frequencer::Pattern::Pattern (const Offsets& offsets) noexcept
{
    for (std::size_t j = 0; j < numSteps; ++j)
    {
        const auto highpass = offsets.highpass[j] - 0.5f;
        const auto lowpass = offsets.lowpass[j] - 0.5f;

        carrying[j] = outsideDeadBand (highpass) || outsideDeadBand (lowpass);
        gains[j] = { signedSquare (highpass), signedSquare (lowpass) };
    }
}

frequencer::Sums frequencer::Pattern::sumsOf (std::bitset<numSteps> stepsOn) const noexcept
{
    Sums sums;

    for (auto left = (stepsOn & carrying).to_ulong(); left != 0; left &= left - 1)
    {
        const auto& gain = gains[(std::size_t) std::countr_zero (left)];
        sums.highpass += gain.highpass;
        sums.lowpass += gain.lowpass;
    }

    return { limitSum (sums.highpass), limitSum (sums.lowpass) };
}

frequencer::Result frequencer::evaluate (double beats, float shiftBeats, const Offsets& offsets) noexcept
{
    const Pattern pattern (offsets);
    const auto steps = stepsAt (beats, shiftBeats);
    const auto sums = pattern.sumsOf (steps);

    return { steps, sums.highpass, sums.lowpass, pattern.isActive() };
}
