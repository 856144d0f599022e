// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/modulation/LfoGenerator.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double oneThird = 0.333333333;

// The reserved shapes look ahead of the phase by this much.
constexpr double pulseLead = 0.06;
constexpr double sumLead = 0.0001;

/** How far the rest of a cycle is from its end, after the lead has been added. */
[[nodiscard]] double remainderOfCycle (float phase, double lead) noexcept
{
    auto q = (double) phase + lead;

    if (q >= 1.0)
        q -= 1.0;

    return 1.0 - q;
}

[[nodiscard]] double fraction (double x) noexcept { return x - std::floor (x); }
} // namespace

LfoGenerator::LfoGenerator() : rng (std::random_device {}()) {}

void LfoGenerator::renderSteady (std::span<const FloatQuad::Values> phases, std::span<float> outputs) const noexcept
{
    // One loop per shape: the shape is looked at once.
    const auto fill = [&] (auto outputAt)
    {
        for (std::size_t i = 0; i < phases.size(); ++i)
            outputs[i] = outputAt (phases[i]);
    };

    using Values = const FloatQuad::Values&;

    switch (shape)
    {
        case sine:
            return fill ([] (Values at) { return sineOf (at[Phases::a]); });
        case triangle:
            return fill ([] (Values at) { return triangleOf (at[Phases::a]); });
        case saw:
            return fill ([] (Values at) { return sawOf (at[Phases::a]); });
        case square:
            return fill ([] (Values at) { return at[Phases::a] < 0.5f ? -1.0f : 1.0f; });
        default:
            return fill ([this] (Values at)
                         { return randomTrianglesOf (at[Phases::a], at[Phases::b], at[Phases::c]); });
    }
}

float LfoGenerator::renderOtherShape() noexcept
{
    switch (shape)
    {
        case randomTriangles:
            return randomTrianglesOf (phaseA, phaseB, phaseC);
        case brownian:
            return renderBrownian();
        case reservedPulse:
            return renderReservedPulse();
        case reservedSum:
            return renderReservedSum();
        default:
            return 0.0f;
    }
}

float LfoGenerator::randomTrianglesOf (float a, float b, float c) const noexcept
{
    const auto sum = triangleOf (b) + triangleOf (a) + triangleOf (c);
    return (float) ((double) sum * oneThird * (double) amplitude);
}

float LfoGenerator::renderBrownian() noexcept
{
    outputSlew.target = walkValue * amplitude;
    return outputSlew.current;
}

float LfoGenerator::renderReservedPulse() const noexcept
{
    const auto y = remainderOfCycle (phaseA, pulseLead);
    const auto cube = y * y * y;
    return amplitude * triangleOf ((float) (cube * cube));
}

float LfoGenerator::renderReservedSum() noexcept
{
    const auto y = remainderOfCycle (phaseA, sumLead);
    auto sum = 0.0;

    for (int k = 1; k <= 128; k *= 2)
        sum += fraction ((double) k * y) / (double) std::log (2.0f * (float) k);

    outputSlew.target = (float) ((sum * sum - 1.9) * (double) amplitude * 0.3);
    return outputSlew.current;
}

float LfoGenerator::bendByPower (float x) const noexcept
{
    const auto u = (float) std::clamp (((double) x + 1.0) * 0.5, 0.0, 1.0);

    if (curveExponent > 1.0f)
        return 2.0f * std::pow (u, curveExponent) - 1.0f;

    const auto y = std::pow (1.0f - u, 1.0f / curveExponent);
    return 2.0f * (1.0f - y) - 1.0f;
}

double LfoGenerator::drawStep() noexcept
{
    // Written out, since standard libraries differ in how they make a double of two draws.
    constexpr auto twoTo32 = 4294967296.0;
    const auto low = (double) rng();
    const auto high = (double) rng();
    const auto uniform = (low + high * twoTo32) / (twoTo32 * twoTo32);
    return uniformLow + (uniformHigh - uniformLow) * uniform;
}

void LfoGenerator::walkOrFollow() noexcept
{
    if (shape == brownian)
        walk();
    else if (followReference && (shape == reservedPulse || shape == reservedSum))
        follow();
}

void LfoGenerator::walk() noexcept
{
    const auto moved = (float) ((double) walkValue + (double) walkStep * drawStep());
    walkValue = std::clamp (moved, -1.0f, 1.0f);
    referencePhase += phaseStepA;
}

void LfoGenerator::follow() noexcept
{
    auto distance = std::abs (referencePhase - phaseA);

    if (distance >= 0.5f)
        distance = -distance;

    if (referencePhase > phaseA)
    {
        phaseA += distance * phaseStepA;

        if (phaseA > referencePhase)
            phaseA = referencePhase;
    }
    else if (phaseA > referencePhase)
    {
        phaseA -= distance * phaseStepA;

        if (referencePhase > phaseA)
            phaseA = referencePhase;
    }
}

void LfoGenerator::jumpTo (float phase) noexcept
{
    referencePhase = phaseA = phaseB = phaseC = phase;
    walkValue = 0.0f;
}
