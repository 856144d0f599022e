// SPDX-License-Identifier: AGPL-3.0-or-later
#include "reference/ReferenceLfo.h"

#include "reference/ReferenceMath.h"

#include <cmath>

namespace reference
{

namespace
{
// The natural logarithms of 2, 4, 8 and so on to 256.
constexpr float logarithms[8] = { 0.693147182f, 1.38629436f, 2.07944155f, 2.77258873f,
                                  3.46573591f,  4.15888309f, 4.85203028f, 5.54517746f };
} // namespace

void SlewValue::advance()
{
    if (mode == 3)
    {
        step = (target - (step * damping + current)) * stiffness + step;
        current = step + current;
        return;
    }

    if (target > current)
    {
        current = current + step;

        if (current > target)
            current = target;
    }
    else if (current > target)
    {
        current = current - step;

        if (current < target)
            current = target;
    }
}

float triangleOf (float p)
{
    const double wide = (double) p;

    if (wide < 0.5)
        return (float) (4.0 * wide - 1.0);

    return (float) ((0.75 - wide) * 4.0);
}

LfoGenerator::LfoGenerator()
{
    std::random_device device;
    rng.seed ((std::uint32_t) device());
}

void LfoGenerator::setRate (int newShape, float rate, float frequency)
{
    shape = newShape;
    walkStep = (float) ((double) frequency * 0.003);

    if (rate > 0.0f && frequency >= 0.0f)
    {
        phaseStepA = frequency / rate;
        phaseStepB = (float) ((double) frequency * 1.28396548763 * (1.0 / (double) rate));
        phaseStepC = (float) ((double) frequency * 0.82343668762 * (1.0 / (double) rate));
        outputSlew.mode = 0;
        outputSlew.step = 0.01f / rate;
    }
    else
    {
        phaseStepA = 0.0f;
        outputSlew.mode = 0;

        if (rate > 0.0f)
            outputSlew.step = 0.01f / rate;
        else
            outputSlew.step = 1E+20f;
    }
}

float LfoGenerator::render()
{
    const float p = phaseA;
    const float A = amplitude;
    float x = 0.0f;

    if (shape == 0)
    {
        const float twoP = 2.0f * p;
        const float angle = (float) ((double) twoP * 3.141592653589793);
        x = A * sine (angle);
    }
    else if (shape == 1)
    {
        x = A * triangleOf (p);
    }
    else if (shape == 2)
    {
        x = A * (1.0f - 2.0f * p);
    }
    else if (shape == 3)
    {
        if (p < 0.5f)
            x = -A;
        else
            x = A;
    }
    else if (shape == 4)
    {
        const float sum = triangleOf (phaseB) + triangleOf (phaseA) + triangleOf (phaseC);
        x = (float) ((double) sum * 0.333333333 * (double) A);
    }
    else if (shape == 5)
    {
        outputSlew.target = walkValue * A;
        x = outputSlew.current;
    }
    else if (shape == 6)
    {
        double q = (double) p + 0.06;

        if (q >= 1.0)
            q = q - 1.0;

        const double y = 1.0 - q;
        const double cube = y * y * y;
        const double z = cube * cube;
        x = A * triangleOf ((float) z);
    }
    else if (shape == 7)
    {
        double q = (double) p + 0.0001;

        if (q >= 1.0)
            q = q - 1.0;

        const double y = 1.0 - q;
        double sum = 0.0;

        for (int j = 0; j < 8; ++j)
        {
            const double ky = (double) (1 << j) * y;
            const double fraction = ky - std::floor (ky);
            sum = sum + fraction / (double) logarithms[j];
        }

        outputSlew.target = (float) ((sum * sum - 1.9) * (double) A * 0.3);
        x = outputSlew.current;
    }

    const float c = curveExponent;

    if ((double) c > 0.99 && (double) c < 1.01)
        return x;

    double clamped = ((double) x + 1.0) * 0.5;

    if (clamped < 0.0)
        clamped = 0.0;

    if (clamped > 1.0)
        clamped = 1.0;

    const float u = (float) clamped;

    if (c > 1.0f)
    {
        const float y = power (u, c);
        return 2.0f * y - 1.0f;
    }

    const float y = power (1.0f - u, 1.0f / c);
    return 2.0f * (1.0f - y) - 1.0f;
}

void LfoGenerator::resetPhases()
{
    referencePhase = 0.0f;
    phaseA = 0.0f;
    phaseB = 0.0f;
    phaseC = 0.0f;
    walkValue = 0.0f;
}

void LfoGenerator::advancePhases()
{
    phaseA = phaseA + phaseStepA;
    phaseB = phaseB + phaseStepB;
    phaseC = phaseC + phaseStepC;
}

double LfoGenerator::drawUniform()
{
    // By hand, since each standard library has its own rule for its distributions.
    const double r0 = (double) ((std::uint32_t) rng());
    const double r1 = (double) ((std::uint32_t) rng());
    const double u = (r0 + r1 * 4294967296.0) / (4294967296.0 * 4294967296.0);
    return uniformLow + (uniformHigh - uniformLow) * u;
}

void LfoGenerator::walk()
{
    const double r = drawUniform();
    float moved = (float) ((double) walkValue + (double) walkStep * r);

    if (moved < -1.0f)
        moved = -1.0f;

    if (moved > 1.0f)
        moved = 1.0f;

    walkValue = moved;
}

void LfoGenerator::follow()
{
    if (! followReference || (shape != 6 && shape != 7))
        return;

    float e = std::abs (referencePhase - phaseA);

    if (e >= 0.5f)
        e = -e;

    if (referencePhase > phaseA)
    {
        phaseA = phaseA + e * phaseStepA;

        if (phaseA > referencePhase)
            phaseA = referencePhase;
    }
    else if (phaseA > referencePhase)
    {
        phaseA = phaseA - e * phaseStepA;

        if (phaseA < referencePhase)
            phaseA = referencePhase;
    }
}

void LfoGenerator::wrapPhases()
{
    if (phaseA >= 1.0f)
        phaseA = phaseA - 1.0f;

    if (phaseB >= 1.0f)
        phaseB = phaseB - 1.0f;

    if (phaseC >= 1.0f)
        phaseC = phaseC - 1.0f;

    if (referencePhase >= 1.0f)
        referencePhase = referencePhase - 1.0f;
}

} // namespace reference
