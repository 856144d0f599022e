// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <random>

#include "SlewValue.h"

/** A triangle of period 1 for phases 0 to 1: -1 at phase 0, +1 at 0.5. Outside that range it runs on in a straight line. */
[[nodiscard]] inline float triangleOf (float phase) noexcept
{
    const auto p = (double) phase;
    return (float) (p < 0.5 ? 4.0 * p - 1.0 : (0.75 - p) * 4.0);
}

/** One low-frequency oscillator with one bipolar output, -1 to 1, bowed by a curve stage.

    It stands still by itself: the control tick sets its rate, advances it and reads it, in this order of members or in
    pieces of its own. The fields are open to the tick, and to the window, which shows the output as a dot.
    Audio thread, but for render, which the window calls too. Never allocates after construction. */
class LfoGenerator
{
public:
    /** The waves; the window's knob ends at brownian. */
    enum Shape : std::int32_t
    {
        sine = 0,
        triangle = 1,
        saw = 2,
        square = 3,
        randomTriangles = 4,
        brownian = 5,

        // Without a name and a place on the knob; a host can set them. They run locked to the bars.
        reservedPulse = 6,
        reservedSum = 7
    };

    /** Seeds the walk from the system: no two generators walk alike. */
    LfoGenerator();

    /** The output at the present phases. For brownian and reservedSum it also hands the output slew its target. */
    [[nodiscard]] float render() noexcept { return bend (renderShape()); }

    /** Sets the shape and the steps per tick.
        @param rate       ticks per second
        @param frequency  Hz */
    void setRate (std::int32_t newShape, float rate, float frequency) noexcept
    {
        shape = newShape;
        walkStep = (float) ((double) frequency * walkPerHertz);
        outputSlew.mode = 0;
        outputSlew.step = rate > 0.0f ? slewPerSecond / rate : 1.0e20f;

        if (rate > 0.0f && frequency >= 0.0f)
        {
            const auto period = 1.0 / (double) rate;
            phaseStepA = frequency / rate;
            phaseStepB = (float) ((double) frequency * ratioB * period);
            phaseStepC = (float) ((double) frequency * ratioC * period);
        }
        else
        {
            // The other two steps stay as they are.
            phaseStepA = 0.0f;
        }
    }

    /** Moves the phases, the walk and the output slew on by one tick. */
    void advance() noexcept
    {
        outputSlew.advanceLinear();
        phaseA += phaseStepA;
        phaseB += phaseStepB;
        phaseC += phaseStepC;

        if (shape == brownian)
            walk();

        if (followReference && (shape == reservedPulse || shape == reservedSum))
            follow();

        for (auto* phase : { &phaseA, &phaseB, &phaseC, &referencePhase })
            if (*phase >= 1.0f)
                *phase -= 1.0f;
    }

    /** Back to the start of the cycle, and of the walk. */
    void reset() noexcept { jumpTo (0.0f); }

    /** Sets all phases to one value and the walk to its middle. */
    void jumpTo (float phase) noexcept;

    std::int32_t shape = triangle;
    float amplitude = 1.0f;

    /** What the reserved shapes follow; a brownian generator advances it too. */
    float referencePhase = 0.0f;
    float phaseA = 0.0f;
    float phaseB = 0.0f;
    float phaseC = 0.0f;
    float phaseStepA = 0.0f;
    float phaseStepB = 0.0f;
    float phaseStepC = 0.0f;

    float walkValue = 0.0f;
    float walkStep = 0.01f;

    /** Exponent of the curve stage: above 1 bends the wave toward -1, below 1 toward +1. */
    float curveExponent = 1.0f;

    /** Set by the bar lock and never cleared; it acts only on the reserved shapes. */
    bool followReference = false;

    SlewValue outputSlew;
    std::mt19937 rng;
    double uniformLow = -1.0;
    double uniformHigh = 1.0;

private:
    // The three triangles of "Random tri" run at these ratios, which have no short common period.
    static constexpr double ratioB = 1.28396548763;
    static constexpr double ratioC = 0.82343668762;

    static constexpr double walkPerHertz = 0.003;

    /** What the output slew lets through per second: a brownian output is a very slow drift of its walk. */
    static constexpr float slewPerSecond = 0.01f;

    [[nodiscard]] float renderShape() noexcept;
    [[nodiscard]] float renderSine() const noexcept;
    [[nodiscard]] float renderRandomTriangles() const noexcept;
    [[nodiscard]] float renderBrownian() noexcept;
    [[nodiscard]] float renderReservedPulse() const noexcept;
    [[nodiscard]] float renderReservedSum() noexcept;

    /** The curve stage, which is left out around the straight exponent. */
    [[nodiscard]] float bend (float x) const noexcept
    {
        const auto exponent = (double) curveExponent;
        return exponent > 0.99 && exponent < 1.01 ? x : bendByPower (x);
    }

    [[nodiscard]] float bendByPower (float x) const noexcept;
    [[nodiscard]] double drawStep() noexcept;
    void walk() noexcept;
    void follow() noexcept;
};
