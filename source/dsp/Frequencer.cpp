// SPDX-License-Identifier: AGPL-3.0-or-later
#include "Frequencer.h"

#include <cmath>
#include <cstddef>

namespace
{
/** Puts a position that stands exactly on a beat safely past that boundary. */
constexpr double boundaryBeats = 0.01;

constexpr float deadBand = 0.001f;
constexpr float offsetGain = 20.0f;
constexpr float sumLimit = 2.0f;

[[nodiscard]] bool outsideDeadBand (float offset) noexcept { return offset < -deadBand || offset > deadBand; }

[[nodiscard]] float signedSquare (float offset) noexcept { return std::abs (offset) * offset * offsetGain; }

[[nodiscard]] float limitSum (float sum) noexcept
{
    if (sum < -sumLimit)
        return -sumLimit;

    return sum > sumLimit ? sumLimit : sum;
}
} // namespace

frequencer::Result frequencer::evaluate (double beats, float shiftBeats, const Offsets& offsets) noexcept
{
    Result result;
    const auto position = (beats + boundaryBeats) + (double) shiftBeats;
    auto scale = 1.0;

    for (size_t j = 0; j < numSteps; ++j)
    {
        const auto periods = position * scale;
        const auto isOn = periods - std::floor (periods) < 0.5;
        const auto highpass = offsets.highpass[j] - 0.5f;
        const auto lowpass = offsets.lowpass[j] - 0.5f;

        result.stepLit[j] = isOn;

        if (outsideDeadBand (highpass) || outsideDeadBand (lowpass))
        {
            result.active = true;

            if (isOn)
            {
                result.highpass += signedSquare (highpass);
                result.lowpass += signedSquare (lowpass);
            }
        }

        scale *= 0.5;
    }

    result.highpass = limitSum (result.highpass);
    result.lowpass = limitSum (result.lowpass);
    return result;
}
