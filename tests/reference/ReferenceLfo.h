// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <random>

namespace reference
{

/** One float on its way to a target. */
struct SlewValue
{
    std::int32_t mode = 0;
    float target = 0.0f;
    float current = 0.0f;
    float step = 0.0001f;
    float stiffness = 0.0f;
    float damping = 0.0f;

    void advance();
};

/** -1 at 0, +1 at a half; computed in double and converted to float once. */
float triangleOf (float p);

/** One low-frequency oscillator. */
struct LfoGenerator
{
    std::int32_t shape = 1;
    float amplitude = 1.0f;
    float referencePhase = 0.0f;
    float phaseA = 0.0f;
    float phaseB = 0.0f;
    float phaseC = 0.0f;
    float phaseStepA = 0.0f;
    float phaseStepB = 0.0f;
    float phaseStepC = 0.0f;
    float walkValue = 0.0f;
    float walkStep = 0.01f;
    float curveExponent = 1.0f;
    bool followReference = false;
    SlewValue outputSlew;
    std::mt19937 rng;
    double uniformLow = -1.0;
    double uniformHigh = 1.0;

    LfoGenerator();

    void setRate (int newShape, float rate, float frequency);
    float render();

    void resetPhases(); // the four phases and the walk; neither the slew nor the steps
    void advancePhases();
    void walk();   // one draw of the random walk
    void follow(); // the reserved shapes' way towards referencePhase
    void wrapPhases();
    double drawUniform(); // one draw between uniformLow and uniformHigh
};

} // namespace reference
