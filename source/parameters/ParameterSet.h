// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "parameters/AudioParameterFloatKestrin.h"

/** Makes the 55 parameters and hands them to the processor, which owns them. Keeps a pointer to each in the member that its row
    of ParameterTable names. The pointers are never null and live as long as the processor. */
class ParameterSet
{
public:
    using Parameter = juce::AudioParameterFloatKestrin;

    static constexpr int numLfos = 2;
    static constexpr int numSteps = 10;

    /** Adds one parameter to the owner for each row of the table, in its order. */
    explicit ParameterSet (juce::AudioProcessor& owner);

    /** Counts every setting of any parameter but link, and wraps. While it is the same, none of them has been set. Any
        thread. */
    [[nodiscard]] std::uint32_t getChangeCount() const noexcept { return changeCount.load (std::memory_order_acquire); }

    Parameter* hpFreq = nullptr;
    Parameter* hpReso = nullptr;
    Parameter* hpMode = nullptr;
    Parameter* lpFreq = nullptr;
    Parameter* lpReso = nullptr;
    Parameter* lpMode = nullptr;
    juce::AudioParameterBool* link = nullptr;
    Parameter* inertia = nullptr;

    std::array<Parameter*, numLfos> lfoSpeed {};
    std::array<Parameter*, numLfos> lfoMode {};
    std::array<Parameter*, numLfos> lfoPhase {};
    std::array<Parameter*, numLfos> lfoShape {};
    std::array<Parameter*, numLfos> lfoCurve {};
    std::array<Parameter*, numLfos> lfoSync {};
    std::array<Parameter*, numLfos> lfoToHpFreq {};
    std::array<Parameter*, numLfos> lfoToLpFreq {};
    std::array<Parameter*, numLfos> lfoToHpReso {};
    std::array<Parameter*, numLfos> lfoToLpReso {};
    std::array<Parameter*, numLfos> lfoToOtherLfo {};

    Parameter* filtMode = nullptr;
    Parameter* seqOffs = nullptr;
    Parameter* seqUnit = nullptr;
    Parameter* srndHpf = nullptr;
    Parameter* srndLpf = nullptr;

    std::array<Parameter*, numSteps> seqHpf {};
    std::array<Parameter*, numSteps> seqLpf {};

private:
    std::atomic<std::uint32_t> changeCount { 0 };
};
