// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <algorithm>
#include <atomic>

#include <juce_audio_basics/juce_audio_basics.h>

/** The largest sample of either channel since somebody looked last. */
class PeakMeter
{
public:
    /** Audio thread. */
    void add (const juce::AudioBuffer<float>& block) noexcept
    {
        const auto peak = block.getMagnitude (0, block.getNumSamples());

        for (auto before = largest.load(); peak > before && ! largest.compare_exchange_weak (before, peak);)
            continue;
    }

    /** Another thread. */
    [[nodiscard]] float take() noexcept { return largest.exchange (0.0f); }

private:
    std::atomic<float> largest { 0.0f };
};
