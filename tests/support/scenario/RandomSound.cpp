// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/scenario/RandomSound.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace scenario
{

namespace
{
/** A sine of two parabolas a period, with the numbers of every C library. */
double roundWave (double angle)
{
    const double phase = std::fmod (angle, 6.283) / 6.283;
    const double half = phase < 0.5 ? phase : phase - 0.5;
    const double hill = 16.0 * half * (0.5 - half);
    return phase < 0.5 ? hill : -hill;
}
} // namespace

RandomSound drawSound (Dice& dice, int numFrames, bool strange)
{
    std::vector<float> samples ((std::size_t) numFrames, 0.0f);
    static constexpr const char* names[] = {
        "noise", "silence", "loud", "round", "clicks", "burst", "faint", "square"
    };
    const int which = dice.below (8);
    const double step = dice.between (0.0005, 1.5);
    const int burstLength = numFrames / 4;

    for (int n = 0; n < numFrames; ++n)
    {
        double x = 0.0;

        switch (which)
        {
            case 0:
                x = dice.between (-1.0, 1.0);
                break;
            case 2: // far beyond both channels' clamps
                x = dice.between (-45.0, 45.0);
                break;
            case 3:
                x = 0.8 * roundWave (step * n);
                break;
            case 4:
                x = dice.chance (0.01) ? dice.between (-1.0, 1.0) : 0.0;
                break;
            case 5:
                x = n < burstLength ? dice.between (-1.0, 1.0) : 0.0;
                break;
            case 6: // down to what is flushed to zero
                x = dice.between (-1.0, 1.0);
                x = std::ldexp (x, -(66 + dice.below (80)));
                break;
            case 7:
                x = std::fmod (step * n, 6.283) < 3.1415 ? -0.5 : 0.5;
                break;
            default:
                break;
        }

        float sample = (float) x;

        if (strange && dice.chance (0.002))
            sample = dice.oneOf (std::array { std::numeric_limits<float>::quiet_NaN(),
                                              std::numeric_limits<float>::infinity(),
                                              -std::numeric_limits<float>::infinity(), 3e38f });

        samples[(std::size_t) n] = sample;
    }

    return { names[which], samples };
}

} // namespace scenario
