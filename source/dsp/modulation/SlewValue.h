// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>

#include "dsp/simd/Lanes.h"

/** One move toward the target by at most step, which never passes the target; for one float or for four.
    @tparam Lane  float or FloatQuad */
template <typename Lane>
[[nodiscard]] Lane advancedLinearly (Lane current, Lane target, Lane step) noexcept
{
    const auto raised = lesserOf (target, current + step);
    const auto lowered = greaterOf (target, current - step);
    return whereGreater (target, current, raised, whereGreater (current, target, lowered, current));
}

/** Moves one float toward a target, by at most `step` per advance, or by a damped spring. */
struct SlewValue
{
    static constexpr std::int32_t springMode = 3;

    /** springMode selects the spring law, any other value the linear law. Nothing selects the spring: it is the type's second
        law, and unused. */
    std::int32_t mode = 0;
    float target = 0.0f;
    float current = 0.0f;

    /** Largest move per advance in the linear law, velocity in the spring law. */
    float step = 0.0001f;
    float stiffness = 0.0f;
    float damping = 0.0f;

    /** One move by the law that is in force. */
    void advance() noexcept
    {
        if (mode == springMode)
            advanceSpring();
        else
            advanceLinear();
    }

    /** One move toward the target, which is never passed. */
    void advanceLinear() noexcept { current = advancedLinearly (current, target, step); }

    /** One move of the spring, which may swing past the target. */
    void advanceSpring() noexcept
    {
        step = (target - (step * damping + current)) * stiffness + step;
        current = step + current;
    }
};
