// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <random>
#include <span>

#include "dsp/math/FloatSine.h"
#include "dsp/modulation/SlewValue.h"
#include "dsp/simd/Lanes.h"

/** A triangle of period 1 for phases 0 to 1: -1 at phase 0, +1 at 0.5. Outside that range it runs on in a straight line. */
[[nodiscard]] inline float triangleOf (float phase) noexcept
{
    const auto p = (double) phase;
    return (float) (p < 0.5 ? 4.0 * p - 1.0 : (0.75 - p) * 4.0);
}

/** One low-frequency oscillator with one bipolar output, -1 to 1, bowed by a curve stage.

    It stands still by itself: the control tick advances it, reads it and sets its rate. The fields are open to the tick, and
    to the window, which shows the output as a dot. One text serves one tick and consecutive ticks: they take the phases out
    of the generator, move them, and bring them back.
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

    /** True for the shapes that run locked to the bars. */
    [[nodiscard]] static constexpr bool isReserved (std::int32_t shape) noexcept
    {
        return shape == reservedPulse || shape == reservedSum;
    }

    /** What the generators need of the number of ticks per second, worked out once for all of them. */
    struct TickRate
    {
        /** Works out what follows from the rate. */
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

    /** The phases and what they move by, side by side, so that all of them move together. A batch of ticks takes them out of
        the generator and brings them back behind the last. */
    struct Phases
    {
        /** In the order of the generator's fields, which the processor then moves in one go. */
        enum Index : std::size_t
        {
            reference,
            a,
            b,
            c
        };

        using Values = FloatQuad::Values;

        /** One step, and the wrap. */
        void advance() noexcept
        {
            now = now + step;
            wrap();
        }

        /** Whatever is at least 1 loses 1, once. */
        void wrap() noexcept
        {
            const auto one = FloatQuad::all (1.0f);
            now = whereAtLeast (now, one, now - one, now);
        }

        /** Sets the steps of one tick. A frequency below 0, or a rate that is none, stops the first phase alone: the other
            two go on as before. */
        void setFrequency (float frequency, const TickRate& rate) noexcept
        {
            const auto isRunning = rate.ticksPerSecond > 0.0f && frequency >= 0.0f;

            if (isRunning)
                step = { standstill, frequency / rate.ticksPerSecond,
                         (float) ((double) frequency * ratioB * rate.period),
                         (float) ((double) frequency * ratioC * rate.period) };
            else
                step = step.with<a> (0.0f);
        }

        FloatQuad now, step;
    };

    /** Seeds the walk from the system: no two generators walk alike. */
    LfoGenerator();

    /** The output at the present phases. For brownian and reservedSum it also hands the output slew its target. */
    [[nodiscard]] float render() noexcept { return renderAt (phases().now); }

    /** The same at phases that have been taken out. */
    [[nodiscard]] float renderAt (FloatQuad now) noexcept
    {
        const std::array<Phases::Values, 1> here { now.values() };
        std::array<float, 1> output;
        render<1> (here, output);
        return output[0];
    }

    /** The outputs at many phases, one for each; the generator must be steady.
        @tparam extent  the number of phases, if it is known */
    template <std::size_t extent>
    void render (std::span<const Phases::Values, extent> phases, std::span<float, extent> outputs) noexcept
    {
        renderShape<extent> (phases, outputs);

        // Left out around the straight exponent.
        if (const auto exponent = (double) curveExponent; exponent > 0.99 && exponent < 1.01)
            return;

        bend (outputs);
    }

    /** True if a tick moves nothing but the phases, and keeps the shape: then ticks can be taken together, first all their
        phases and then all their outputs. */
    [[nodiscard]] bool isSteadyIn (std::int32_t newShape) const noexcept
    {
        return shape == newShape && shape >= sine && shape < brownian && outputSlew.current == outputSlew.target;
    }

    /** The phases and their steps, taken out. */
    [[nodiscard]] Phases phases() const noexcept
    {
        return { { referencePhase, phaseA, phaseB, phaseC }, { standstill, phaseStepA, phaseStepB, phaseStepC } };
    }

    /** Takes over where ticks have led. */
    void setPhases (const Phases& phases) noexcept
    {
        const auto now = phases.now.values();
        referencePhase = now[Phases::reference];
        phaseA = now[Phases::a];
        phaseB = now[Phases::b];
        phaseC = now[Phases::c];

        const auto step = phases.step.values();
        phaseStepA = step[Phases::a];
        phaseStepB = step[Phases::b];
        phaseStepC = step[Phases::c];
    }

    /** Moves the phases, the walk and the output slew on by one tick. */
    void advance() noexcept
    {
        auto moved = phases();
        advance (moved);
        setPhases (moved);
    }

    /** The same for phases that have been taken out. */
    void advance (Phases& moved) noexcept
    {
        outputSlew.advanceLinear();

        if (shape < brownian)
            return moved.advance();

        moved.now = moved.now + moved.step;
        walkOrFollow (moved);
        moved.wrap();
    }

    /** Sets the shape and the steps per tick.
        @param rate       ticks per second
        @param frequency  Hz */
    void setRate (std::int32_t newShape, float rate, float frequency) noexcept
    {
        const TickRate tickRate (rate);
        auto moved = phases();
        moved.setFrequency (frequency, tickRate);
        setPhases (moved);
        setShape (newShape, tickRate, frequency);
    }

    /** Sets what goes with a rate besides the steps of the phases: the shape, and the steps of walk and output slew. */
    void setShape (std::int32_t newShape, const TickRate& rate, float frequency) noexcept
    {
        shape = newShape;
        walkStep = (float) ((double) frequency * walkPerHertz);
        outputSlew.mode = 0;
        outputSlew.step = rate.outputStep;
    }

    /** Back to the start of the cycle, and of the walk. */
    void reset() noexcept { jumpTo (0.0f); }

    /** Sets all phases to one value and the walk to its middle. */
    void jumpTo (float phase) noexcept
    {
        auto moved = phases();
        jump (moved, phase);
        setPhases (moved);
    }

    /** The same for phases that have been taken out. */
    void jump (Phases& moved, float phase) noexcept
    {
        moved.now = FloatQuad::all (phase);
        walkValue = 0.0f;
    }

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

    /** What the reference phase moves by: the zero whose addition changes no value. */
    static constexpr float standstill = -0.0f;

    static constexpr double walkPerHertz = 0.003;

    /** What the output slew lets through per second: a brownian output is a very slow drift of its walk. */
    static constexpr float slewPerSecond = 0.01f;

    /** The waves before the curve stage. The shape is looked at once; the waves that songs are made of are rendered here, the
        others are called. */
    template <std::size_t extent>
    void renderShape (std::span<const Phases::Values, extent> phases, std::span<float, extent> outputs) noexcept
    {
        const auto fill = [&] (auto waveAt)
        {
            for (std::size_t i = 0; i < phases.size(); ++i)
                outputs[i] = waveAt (phases[i]);
        };

        using At = const Phases::Values&;
        const auto scale = amplitude;

        switch (shape)
        {
            case sine:
                return renderSine<extent> (phases, outputs);
            case triangle:
                return fill ([=] (At at) { return scale * triangleOf (at[Phases::a]); });
            case saw:
                return fill ([=] (At at) { return scale * (1.0f - 2.0f * at[Phases::a]); });
            case square:
                return fill ([=] (At at) { return at[Phases::a] < 0.5f ? -scale : scale; });
            case randomTriangles:
                return fill ([=] (At at) { return randomTrianglesAt (at, scale); });
            default:
                return fill ([this] (At at) { return renderOtherShape (at[Phases::a]); });
        }
    }

    /** Four phases at a time as far as there are four. */
    template <std::size_t extent>
    void renderSine (std::span<const Phases::Values, extent> phases, std::span<float, extent> outputs) const noexcept
    {
        std::size_t i = 0;

        for (; i + 4 <= phases.size(); i += 4)
        {
            const auto doubled = FloatQuad::all (2.0f)
                                 * FloatQuad (phases[i][Phases::a], phases[i + 1][Phases::a], phases[i + 2][Phases::a],
                                              phases[i + 3][Phases::a]);
            const auto turn = StereoPair::both (std::numbers::pi);
            const auto angles = FloatQuad::narrowed (doubled.firstHalf() * turn, doubled.secondHalf() * turn);
            const auto sines = (FloatQuad::all (amplitude) * elementary::sine (angles)).values();
            std::ranges::copy (sines, outputs.begin() + (std::ptrdiff_t) i);
        }

        for (; i < phases.size(); ++i)
            outputs[i] =
                amplitude * elementary::sine ((float) ((double) (2.0f * phases[i][Phases::a]) * std::numbers::pi));
    }

    [[nodiscard]] static float randomTrianglesAt (const Phases::Values& at, float scale) noexcept
    {
        constexpr auto oneThird = 0.333333333;
        const auto sum = triangleOf (at[Phases::b]) + triangleOf (at[Phases::a]) + triangleOf (at[Phases::c]);
        return (float) ((double) sum * oneThird * (double) scale);
    }

    [[nodiscard]] float renderOtherShape (float phase) noexcept;
    [[nodiscard]] float renderBrownian() noexcept;
    [[nodiscard]] float renderReservedPulse (float phase) const noexcept;
    [[nodiscard]] float renderReservedSum (float phase) noexcept;

    void bend (std::span<float> outputs) const noexcept;
    [[nodiscard]] double drawStep() noexcept;
    void walkOrFollow (Phases& moved) noexcept;
};
