// SPDX-License-Identifier: AGPL-3.0-or-later
#include "parameters/ValueText.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include "parameters/AudioParameterFloatKestrin.h"

namespace
{
using Parameter = juce::AudioParameterFloatKestrin;

/** As printf's "%.1f" with that many decimals, but always with a decimal point. */
std::string fixed (double x, int decimals)
{
    std::array<char, std::numeric_limits<double>::max_exponent10 + 16> text {};
    const auto end = std::to_chars (text.data(), text.data() + text.size(), x, std::chars_format::fixed, decimals).ptr;
    return { text.data(), end };
}

/** As printf's "%+.1f": a number without a minus has a plus. */
std::string withSign (double x, int decimals)
{
    auto text = fixed (x, decimals);

    if (! std::signbit (x))
        text.insert (text.begin(), '+');

    return text;
}

/** The blank stays when there is no unit to follow it. */
std::string with (const std::string& number, const std::string& unit) { return number + " " + unit; }

/** The nearest int, half away from zero, and the nearest end of int beyond its range. */
int nearestInt (double x)
{
    constexpr double least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
    const auto rounded = std::round (x);

    if (! (rounded > least))
        return std::numeric_limits<int>::min();

    return rounded < most ? (int) rounded : std::numeric_limits<int>::max();
}

double cubed (float position)
{
    const auto p = (double) position;
    return p * p * p;
}

double exponential (const Parameter& parameter, float position)
{
    const auto low = std::log (parameter.minValue);
    return (double) std::exp ((std::log (parameter.maxValue) - low) * position + low);
}

std::string percent (float position, const std::string& unit)
{
    return with (std::to_string (nearestInt ((double) position * 100.0)), unit);
}

std::string cubic (const Parameter& parameter, float position, const std::string& unit)
{
    if (position <= 0.0f)
        return "OFF";

    const auto range = (double) (parameter.maxValue - parameter.minValue);
    return with (withSign (cubed (position) * range + (double) parameter.minValue, 1), unit);
}

std::string gain (float position, double fullScale, const std::string& unit)
{
    if (position <= 0.0f)
        return "OFF";

    return with (withSign (20.0 * std::log10 (cubed (position) * fullScale), 1), unit);
}

std::string plainExponential (double x, const std::string& unit)
{
    if (x == 0.0)
        return with ("0", unit);

    if (x < 3.0)
        return with (fixed (x, 2), unit);

    return with (fixed (x, x < 30.0 ? 1 : 0), unit);
}

std::string choice (const Parameter& parameter, float position)
{
    if (parameter.choiceTexts.empty())
        return "Modes not set!";

    const auto index = (std::uint32_t) parameter.getChoiceIndexForValue (position);
    return index < parameter.choiceTexts.size() ? parameter.choiceTexts[index] : std::string();
}

/** A zero has no sign: two blanks align its digits with those of its neighbours. */
std::string bipolar (const Parameter& parameter, float position, const std::string& unit)
{
    const auto range = parameter.maxValue - parameter.minValue;
    const auto x = position * range + parameter.minValue;

    if (range < 11.0f)
        return with (std::abs (x) < 0.1f ? "  0.0" : withSign ((double) x, 1), unit);

    const auto n = nearestInt ((double) x);

    if (n == 0)
        return with ("  0", unit);

    return with (withSign ((double) n, 0), unit);
}

double reciprocalOrZero (float x) { return x == 0.0f ? 0.0 : 1.0 / (double) x; }

std::string ratio (const Parameter& parameter, float position, const std::string& unit)
{
    const auto low = reciprocalOrZero (parameter.minValue);
    const auto high = reciprocalOrZero (parameter.maxValue);
    const auto x = (double) std::sqrt (position) * (high - low) + low;

    if (x == 0.0)
        return fixed (0.0, 1) + unit;

    const auto y = 1.0 / x;
    return fixed (y, y >= 10.0 ? 0 : 1) + unit;
}

std::string period (double seconds, const std::string& unit)
{
    return seconds <= 0.0 ? with ("0", unit) : formatDuration (seconds);
}

std::string linear (const Parameter& parameter, float position, const std::string& unit)
{
    const auto low = parameter.minValue;
    const auto high = parameter.maxValue;

    if (low == 0.0f && high == 1.0f)
        return with (fixed ((double) juce::jlimit (0.0f, 1.0f, position), 1), unit);

    const auto x = (double) ((high - low) * position + low);
    const auto decimals = parameter.valueKind == Parameter::wholeKind || high > 29.0f ? 0 : high > 2.9f ? 1 : 2;
    return with (low < 0.0f ? withSign (x, decimals) : fixed (x, decimals), unit);
}

struct TimeUnit
{
    double seconds;
    const char* one;
    const char* many;
};

constexpr std::array timeUnits {
    TimeUnit { 31536000.0, " year", " years" }, TimeUnit { 2592000.0, " month", " months" },
    TimeUnit { 86400.0, " day", " days" },      TimeUnit { 3600.0, " hour", " hours" },
    TimeUnit { 60.0, " minute", " minutes" },   TimeUnit { 1.0, " sec", " sec" },
    TimeUnit { 0.001, " ms", " ms" },           TimeUnit { 0.000001, " micros", " micros" },
};
} // namespace

std::string formatDuration (double seconds)
{
    if (! std::isfinite (seconds))
        return {};

    for (const auto& unit : timeUnits)
        if (const auto count = std::floor (seconds / unit.seconds); count != 0.0)
            return fixed (count, 0) + (count == 1.0 ? unit.one : unit.many);

    return {};
}

std::string valueText::frequency (double hertz, const std::string& unit)
{
    if (hertz == 0.0)
        return with ("0", unit);

    if (hertz < 0.3)
        return formatDuration (1.0 / hertz);

    if (hertz < 3.0)
        return with (fixed (hertz, 2), unit);

    if (hertz < 30.0)
        return with (fixed (hertz, 1), unit);

    if (hertz <= 1000.0)
        return with (fixed (hertz, 0), unit);

    return with (fixed (hertz * 0.001, hertz <= 19000.0 ? 1 : 0), "k" + unit);
}

std::string valueText::format (const Parameter& parameter, float position)
{
    const auto unit = parameter.unitText.toStdString();

    switch (parameter.valueKind)
    {
        case Parameter::percentKind:
            return percent (position, unit);
        case Parameter::cubicKind:
            return cubic (parameter, position, unit);
        case Parameter::gainKind:
            return gain (position, 3.162278, unit);
        case Parameter::highGainKind:
            return gain (position, 8.0, unit);
        case Parameter::frequencyKind:
            return frequency (exponential (parameter, position), unit);
        case Parameter::exponentialKind:
            return plainExponential (exponential (parameter, position), unit);
        case Parameter::signedFifteenKind:
            return with (withSign ((double) position * 15.0, 1), unit);
        case Parameter::bandwidthKind:
            return with (fixed ((double) (position * position) * 4.9 + 0.1, 1), unit);
        case Parameter::choiceKind:
            return choice (parameter, position);
        case Parameter::bipolarKind:
            return bipolar (parameter, position, unit);
        case Parameter::ratioKind:
            return ratio (parameter, position, unit);
        case Parameter::timeKind:
            return period (exponential (parameter, position), unit);
        default:
            return linear (parameter, position, unit);
    }
}
