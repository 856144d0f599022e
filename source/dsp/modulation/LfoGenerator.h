// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <random>
#include <span>

#include "dsp/modulation/SlewValue.h"
#include "dsp/simd/FloatQuad.h"

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

    /** What the generators need of the number of ticks per second, worked out once for all of them. */
    struct TickRate
    {
        explicit TickRate (float newTicksPerSecond) noexcept
            : ticksPerSecond (newTicksPerSecond), period (1.0 / (double) ticksPerSecond),
              outputStep (ticksPerSecond > 0.0f ? slewPerSecond / ticksPerSecond : 1.0e20f)
        {
        }

        float ticksPerSecond;

        /** Seconds; of no use if there are no ticks. */
        double period;

        /** What the output slew lets through per tick. */
        float outputStep;
    };

    /** The phases and what they move by, side by side, so that all of them move together. A row of ticks takes them out of
        the generator and brings them back behind the last. */
    struct Phases
    {
        enum Index : std::size_t
        {
            a,
            b,
            c,
            reference
        };

        void jumpTo (float phase) noexcept { now = FloatQuad::all (phase); }

        void advance() noexcept
        {
            const auto one = FloatQuad::all (1.0f);
            const auto moved = now + step;
            now = whereAtLeast (moved, one, moved - one, moved);
        }

        /** Sets the steps of one tick. A frequency below 0, or a rate that is none, stops the first phase alone: the other
            two go on as before. */
        void setFrequency (float frequency, const TickRate& rate) noexcept
        {
            if (isRunning (frequency, rate))
                step = { stepOf (frequency, rate), stepOf (frequency, ratioB, rate), stepOf (frequency, ratioC, rate),
                         standstill };
            else
                step = step.withFirst (0.0f);
        }

        /** What the reference moves by: the zero that changes no number when it is added. */
        static constexpr float standstill = -0.0f;

        FloatQuad now, step;
    };

    /** True if a tick moves nothing but the phases, and keeps the shape: then a row of ticks can be taken together, first all
        their phases and then all their outputs. */
    [[nodiscard]] bool isSteadyIn (std::int32_t newShape) const noexcept
    {
        return shape == newShape && shape >= sine && shape < brownian && amplitude == 1.0f
               && outputSlew.current == outputSlew.target;
    }

    [[nodiscard]] Phases phases() const noexcept
    {
        return { { phaseA, phaseB, phaseC, referencePhase },
                 { phaseStepA, phaseStepB, phaseStepC, Phases::standstill } };
    }

    /** Takes over where a row of steady ticks has led. */
    void setPhases (const Phases& phases) noexcept
    {
        const auto now = phases.now.values();
        const auto step = phases.step.values();
        phaseA = now[Phases::a];
        phaseB = now[Phases::b];
        phaseC = now[Phases::c];
        referencePhase = now[Phases::reference];
        phaseStepA = step[Phases::a];
        phaseStepB = step[Phases::b];
        phaseStepC = step[Phases::c];
    }

    /** The curve stage, which is left out around the straight exponent. */
    [[nodiscard]] float bend (float x) const noexcept
    {
        const auto exponent = (double) curveExponent;
        return exponent > 0.99 && exponent < 1.01 ? x : bendByPower (x);
    }

    /** The present shape at other phases than the generator's own, one output for each; before the curve stage. */
    void renderSteady (std::span<const FloatQuad::Values> phases, std::span<float> outputs) const noexcept;

    /** Sets the shape and the steps per tick.
        @param rate       ticks per second
        @param frequency  Hz */
    void setRate (std::int32_t newShape, float rate, float frequency) noexcept
    {
        setRate (newShape, TickRate (rate), frequency);
    }

    /** The same with what has been worked out before. */
    void setRate (std::int32_t newShape, const TickRate& rate, float frequency) noexcept
    {
        shape = newShape;
        walkStep = (float) ((double) frequency * walkPerHertz);
        outputSlew.mode = 0;
        outputSlew.step = rate.outputStep;

        if (isRunning (frequency, rate))
        {
            phaseStepA = stepOf (frequency, rate);
            phaseStepB = stepOf (frequency, ratioB, rate);
            phaseStepC = stepOf (frequency, ratioC, rate);
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
        phaseB = wrapped (phaseB + phaseStepB);
        phaseC = wrapped (phaseC + phaseStepC);
        phaseA += phaseStepA;

        if (shape >= brownian)
            walkOrFollow();

        phaseA = wrapped (phaseA);
        referencePhase = wrapped (referencePhase);
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

    [[nodiscard]] static bool isRunning (float frequency, const TickRate& rate) noexcept
    {
        return rate.ticksPerSecond > 0.0f && frequency >= 0.0f;
    }

    [[nodiscard]] static float stepOf (float frequency, const TickRate& rate) noexcept
    {
        return frequency / rate.ticksPerSecond;
    }

    [[nodiscard]] static float stepOf (float frequency, double ratio, const TickRate& rate) noexcept
    {
        return (float) ((double) frequency * ratio * rate.period);
    }

    [[nodiscard]] static float wrapped (float phase) noexcept { return phase >= 1.0f ? phase - 1.0f : phase; }

    [[nodiscard]] static float sineOf (float phase) noexcept
    {
        return std::sin ((float) ((double) (2.0f * phase) * std::numbers::pi));
    }

    [[nodiscard]] static float sawOf (float phase) noexcept { return 1.0f - 2.0f * phase; }

    /** The waves that songs are made of are rendered here, once per tick; the others are called. */
    [[nodiscard]] float renderShape() noexcept
    {
        switch (shape)
        {
            case sine:
                return amplitude * sineOf (phaseA);
            case triangle:
                return amplitude * triangleOf (phaseA);
            case saw:
                return amplitude * sawOf (phaseA);
            case square:
                return phaseA < 0.5f ? -amplitude : amplitude;
            default:
                return renderOtherShape();
        }
    }

    [[nodiscard]] float renderOtherShape() noexcept;
    [[nodiscard]] float randomTrianglesOf (float a, float b, float c) const noexcept;
    [[nodiscard]] float renderBrownian() noexcept;
    [[nodiscard]] float renderReservedPulse() const noexcept;
    [[nodiscard]] float renderReservedSum() noexcept;

    [[nodiscard]] float bendByPower (float x) const noexcept;
    [[nodiscard]] double drawStep() noexcept;
    void walkOrFollow() noexcept;
    void walk() noexcept;
    void follow() noexcept;
};
