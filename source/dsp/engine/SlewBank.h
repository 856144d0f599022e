// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>

#include "dsp/engine/ParameterSnapshot.h"
#include "dsp/modulation/SlewValue.h"
#include "dsp/simd/Lanes.h"

/** The four slews of the tick side by side, so that all of them move together: highpass and lowpass frequency, highpass and
    lowpass resonance. Taken out of the four records for a batch of ticks, and brought back behind its last one. All of it is
    inline, so that it stays in registers. */
class SlewBank
{
public:
    /** @param ticksPerSecond  of all ticks of the batch
        @param snapshot        of all ticks of the batch */
    SlewBank (const SlewValue& hpFreq, const SlewValue& lpFreq, const SlewValue& hpReso, const SlewValue& lpReso,
              float ticksPerSecond, const ParameterSnapshot& snapshot) noexcept
        : target { hpFreq.target, lpFreq.target, hpReso.target, lpReso.target },
          current { hpFreq.current, lpFreq.current, hpReso.current, lpReso.current }, step { hpFreq.step, lpFreq.step,
                                                                                             hpReso.step, lpReso.step },
          baseTargets (snapshot.baseTargets), ticksPerGlide (ticksPerSecond * (snapshot.active ? 0.004f : 0.02f)),
          hasTicks (ticksPerSecond > 0.0f)
    {
    }

    /** Sets the largest moves of the next advance against the targets of the previous tick: a new target starts to be
        followed one tick later. One tick per frame makes it a one-pole glide of 4 ms while something modulates, of 20 ms
        otherwise. */
    void setSteps() noexcept
    {
        step = hasTicks ? (target - current).magnitude() / FloatQuad::all (ticksPerGlide) : FloatQuad::all (1.0e20f);
    }

    /** Frequencies are moved by half the modulation and resonances by all of it: the asymmetry is part of the sound. Targets
        are clamped to 0 to 1; NaN becomes 0. */
    void setTargets (FloatQuad modulation) noexcept
    {
        const FloatQuad scales { 0.5f, 0.5f, 1.0f, 1.0f };
        const auto raised = greaterOf (modulation * scales + baseTargets, FloatQuad::all (0.0f));
        target = lesserOf (raised, FloatQuad::all (1.0f));
    }

    /** One move of each slew. */
    void advance() noexcept { current = advancedLinearly (current, target, step); }

    /** Where the slews stand. */
    [[nodiscard]] FloatQuad values() const noexcept { return current; }

    /** True if a slew is farther from its target than can be heard. */
    [[nodiscard]] bool areGliding() const noexcept
    {
        static constexpr FloatQuad::Values thresholds { 0.0002f, 0.0002f, 0.0003f, 0.0003f };
        const auto distances = (target - current).magnitude().values();
        auto gliding = false;

        for (std::size_t i = 0; i < FloatQuad::size; ++i)
            gliding |= distances[i] > thresholds[i];

        return gliding;
    }

    /** Brings the slews back into their records. */
    void keepIn (SlewValue& hpFreq, SlewValue& lpFreq, SlewValue& hpReso, SlewValue& lpReso) const noexcept
    {
        const auto keep = [=, targets = target.values(), currents = current.values(),
                           steps = step.values()] (SlewValue& slew, std::size_t i)
        {
            slew.mode = linearMode;
            slew.target = targets[i];
            slew.current = currents[i];
            slew.step = steps[i];
        };

        keep (hpFreq, 0);
        keep (lpFreq, 1);
        keep (hpReso, 2);
        keep (lpReso, 3);
    }

private:
    static constexpr std::int32_t linearMode = 1;

    FloatQuad target, current, step;
    const FloatQuad baseTargets;
    const float ticksPerGlide;
    const bool hasTicks;
};
