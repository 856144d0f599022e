// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>

/** Moves one float toward a target, by at most `step` per advance, or by a damped spring. */
struct SlewValue
{
    static constexpr std::int32_t springMode = 3;

    /** springMode selects the spring law, any other value the linear law. Nothing selects the spring yet. */
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
    void advanceLinear() noexcept
    {
        if (target > current)
        {
            const auto above = current + step;
            current = above > target ? target : above;
        }
        else if (current > target)
        {
            const auto below = current - step;
            current = target > below ? target : below;
        }
    }

    /** One move of the spring, which may swing past the target. */
    void advanceSpring() noexcept
    {
        step = (target - (step * damping + current)) * stiffness + step;
        current = step + current;
    }
};
