// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <chrono>

#include <juce_audio_basics/juce_audio_basics.h>

/** A level as words: now, and in brackets the highest of the last seconds, marked if that was over full scale. */
class LevelDisplay
{
public:
    /** @param peak  the largest sample since the last time
        @returns the same number of characters every time, such as " -12.3 (  1.4)!" in decibels */
    [[nodiscard]] juce::String show (float peak)
    {
        constexpr std::chrono::seconds holdTime { 3 };
        const auto now = Clock::now();

        if (peak >= held || now - heldSince > holdTime)
        {
            held = peak;
            heldSince = now;
        }

        return decibels (peak) + " (" + decibels (held) + (held > 1.0f ? ")!" : ") ");
    }

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] static juce::String decibels (float peak)
    {
        constexpr int width = 5;
        constexpr float lowest = -99.9f;
        const auto level = juce::Decibels::gainToDecibels (peak, lowest);
        return (level > lowest ? juce::String (level, 1) : juce::String ("-inf")).paddedLeft (' ', width);
    }

    float held = 0.0f;
    Clock::time_point heldSince {};
};
