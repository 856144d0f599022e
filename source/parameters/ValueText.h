// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

namespace juce
{
class AudioParameterFloatKestrin;
}

/** A time in words, floored to its largest unit: 330 seconds are "5 minutes", 4.99 seconds "4 sec". Empty below one
    microsecond and for a time that is not finite. Allocates. */
[[nodiscard]] std::string formatDuration (double seconds);

/** The words for a value. Numbers have a decimal point, whatever locale the host has set for its process. */
namespace valueText
{
/** The text of a position of a parameter, by its kind. Allocates. */
[[nodiscard]] std::string format (const juce::AudioParameterFloatKestrin& parameter, float position);

/** A frequency: below 0.3 Hz as the time of one period, and above 1000 Hz with a "k" before the unit. */
[[nodiscard]] std::string frequency (double hertz, const std::string& unit);
} // namespace valueText
