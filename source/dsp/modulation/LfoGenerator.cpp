// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/modulation/LfoGenerator.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

#include "dsp/math/FloatPower.h"

namespace
{
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

/** A phase that is drawn to the reference, faster the farther it is; beyond half a cycle it is pushed away. */
[[nodiscard]] float followed (float phase, float reference, float step) noexcept
{
    auto distance = std::abs (reference - phase);

    if (distance >= 0.5f)
        distance = -distance;

    if (reference > phase)
    {
        const auto moved = phase + distance * step;
        return moved > reference ? reference : moved;
    }

    if (phase > reference)
    {
        const auto moved = phase - distance * step;
        return reference > moved ? reference : moved;
    }

    return phase;
}

[[nodiscard]] double fraction (double x) noexcept { return x - std::floor (x); }

/** An output of -1 to 1 as 0 to 1, clamped; NaN stays NaN.
    @tparam Real  double or StereoPair */
template <typename Real>
[[nodiscard]] Real unipolarOf (Real x) noexcept
{
    using elementary::all;
    using elementary::greaterOf;
    using elementary::lesserOf;

    const auto raised = (x + all<Real> (1.0)) * all<Real> (0.5);
    return greaterOf (all<Real> (0.0), lesserOf (all<Real> (1.0), raised));
}

[[nodiscard]] float unipolar (float x) noexcept { return (float) unipolarOf ((double) x); }

[[nodiscard]] FloatQuad unipolar (FloatQuad x) noexcept
{
    return FloatQuad::narrowed (unipolarOf (x.firstHalf()), unipolarOf (x.secondHalf()));
}

/** The curve stage.
    @tparam Lane  float or FloatQuad */
template <typename Lane>
[[nodiscard]] Lane bentBy (float exponent, Lane x) noexcept
{
    const auto all = [] (float value)
    {
        if constexpr (std::is_same_v<Lane, float>)
            return value;
        else
            return Lane::all (value);
    };

    const auto one = all (1.0f), two = all (2.0f);
    const auto u = unipolar (x);

    if (exponent > 1.0f)
        return two * elementary::power (u, all (exponent)) - one;

    const auto y = elementary::power (one - u, all (1.0f / exponent));
    return two * (one - y) - one;
}
} // namespace

LfoGenerator::LfoGenerator() : rng (std::random_device {}()) {}

float LfoGenerator::renderOtherShape (float phase) noexcept
{
    switch (shape)
    {
        case brownian:
            return renderBrownian();
        case reservedPulse:
            return renderReservedPulse (phase);
        case reservedSum:
            return renderReservedSum (phase);
        default:
            return 0.0f;
    }
}

float LfoGenerator::renderBrownian() noexcept
{
    outputSlew.target = walkValue * amplitude;
    return outputSlew.current;
}

float LfoGenerator::renderReservedPulse (float phase) const noexcept
{
    const auto y = remainderOfCycle (phase, pulseLead);
    const auto cube = y * y * y;
    return amplitude * triangleOf ((float) (cube * cube));
}

float LfoGenerator::renderReservedSum (float phase) noexcept
{
    const auto y = remainderOfCycle (phase, sumLead);
    auto sum = 0.0;
    auto k = 1.0;

    // ln (2), ln (4) and on to ln (256), as floats.
    for (const auto logarithm :
         { 0.693147182f, 1.38629436f, 2.07944155f, 2.77258873f, 3.46573591f, 4.15888309f, 4.85203028f, 5.54517746f })
    {
        sum += fraction (k * y) / (double) logarithm;
        k *= 2.0;
    }

    outputSlew.target = (float) ((sum * sum - 1.9) * (double) amplitude * 0.3);
    return outputSlew.current;
}

void LfoGenerator::bend (std::span<float> outputs) const noexcept
{
    std::size_t i = 0;

    for (; i + FloatQuad::size <= outputs.size(); i += FloatQuad::size)
    {
        const auto bent =
            bentBy (curveExponent, FloatQuad (outputs[i], outputs[i + 1], outputs[i + 2], outputs[i + 3]));
        std::ranges::copy (bent.values(), outputs.begin() + (std::ptrdiff_t) i);
    }

    for (; i < outputs.size(); ++i)
        outputs[i] = bentBy (curveExponent, outputs[i]);
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

void LfoGenerator::walkOrFollow (Phases& moved) noexcept
{
    auto now = moved.now.values();

    if (shape == brownian)
    {
        const auto walked = (float) ((double) walkValue + (double) walkStep * drawStep());
        walkValue = std::clamp (walked, -1.0f, 1.0f);
        now[Phases::reference] += moved.step.values()[Phases::a];
    }
    else if (followReference && isReserved (shape))
    {
        now[Phases::a] = followed (now[Phases::a], now[Phases::reference], moved.step.values()[Phases::a]);
    }

    moved.now = FloatQuad (now);
}
