// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

#include "demo/Elementary.h"
#include "demo/LoopMix.h"

namespace demo
{
[[nodiscard]] inline double hertzOf (int midiNote)
{
    return 440.0 * exponential (std::numbers::ln2 * ((midiNote - 69) / 12.0));
}

/** A saw whose step is rounded off by a polynomial over the two samples next to it, which removes the strongest aliases
    (V. Valimaki, A. Huovilainen, "Antialiasing oscillators in subtractive synthesis", 2007). */
class Saw
{
public:
    Saw (double hertz, double startPhase) : step (hertz / sampleRate), phase (startPhase) {}

    void setHertz (double hertz) { step = hertz / sampleRate; }

    [[nodiscard]] double next()
    {
        const auto value = 2.0 * phase - 1.0 - roundedStep();
        phase += step;
        phase -= std::floor (phase);
        return value;
    }

private:
    [[nodiscard]] double roundedStep() const
    {
        if (phase < step)
        {
            const auto t = phase / step;
            return t + t - t * t - 1.0;
        }

        if (phase > 1.0 - step)
        {
            const auto t = (phase - 1.0) / step;
            return t * t + t + t + 1.0;
        }

        return 0.0;
    }

    double step;
    double phase;
};

/** White noise of a linear congruential generator: the same on every machine. */
class Noise
{
public:
    [[nodiscard]] double next()
    {
        state = state * 1664525u + 1013904223u;
        return (double) state / 2147483648.0 - 1.0;
    }

private:
    std::uint32_t state = 20u;
};

/** A resonance with a gain of 1 at 0 Hz, as a mouth has several.
    Source: D. Klatt, "Software for a cascade/parallel formant synthesizer", 1980. */
class Formant
{
public:
    [[nodiscard]] double next (double input, double hertz, double bandwidthHz)
    {
        using std::numbers::pi;
        const auto c = -exponential (-2.0 * pi * bandwidthHz / sampleRate);
        const auto b = 2.0 * exponential (-pi * bandwidthHz / sampleRate) * cosine (2.0 * pi * hertz / sampleRate);
        const auto output = (1.0 - b - c) * input + b * before + c * beforeThat;
        beforeThat = before;
        before = output;
        return output;
    }

private:
    double before = 0.0, beforeThat = 0.0;
};

} // namespace demo
