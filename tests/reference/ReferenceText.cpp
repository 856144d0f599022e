// SPDX-License-Identifier: AGPL-3.0-or-later
#include "reference/ReferenceText.h"

#include <cmath>
#include <cstdio>

namespace reference
{

namespace
{
// snprintf with a buffer that always fits: first the length, then the text.
template <typename... Values>
std::string print (const char* format, Values... values)
{
    const int length = std::snprintf (nullptr, 0, format, values...);

    if (length <= 0)
        return {};

    std::string text ((std::size_t) length + 1, '\0');
    std::snprintf (text.data(), text.size(), format, values...);
    text.resize ((std::size_t) length);
    return text;
}

double exponentialValue (float lo, float hi, float p)
{
    const float f = std::exp ((std::log (hi) - std::log (lo)) * p + std::log (lo));
    return (double) f;
}

double cubed (float p)
{
    const double wide = (double) p;
    return wide * wide * wide;
}
} // namespace

std::string formatValueText (const ParameterInfo& info, float p)
{
    // The on/off parameter has the framework's own two words.
    if (info.isBool)
        return p >= 0.5f ? "On" : "Off";

    const std::string unitText = resolvedUnit (info);
    const char* unit = unitText.c_str();
    const float lo = info.minValue;
    const float hi = info.maxValue;

    if (info.kind == 2)
    {
        const int n = (int) std::round ((double) p * 100.0);
        return print ("%d %s", n, unit);
    }

    if (info.kind == 3)
    {
        if (p <= 0.0f)
            return "OFF";

        const float range = hi - lo;
        const double x = cubed (p) * (double) range + (double) lo;
        return print ("%+.1f %s", x, unit);
    }

    if (info.kind == 4)
    {
        if (p <= 0.0f)
            return "OFF";

        const double x = 20.0 * std::log10 (cubed (p) * 3.162278);
        return print ("%+.1f %s", x, unit);
    }

    if (info.kind == 5)
    {
        if (p <= 0.0f)
            return "OFF";

        const double x = 20.0 * std::log10 (cubed (p) * 8.0);
        return print ("%+.1f %s", x, unit);
    }

    if (info.kind == 6)
    {
        const double f = exponentialValue (lo, hi, p);

        if (f == 0.0)
            return print ("0 %s", unit);

        if (f < 0.3)
            return formatDuration (1.0 / f);

        if (f < 3.0)
            return print ("%.2f %s", f, unit);

        if (f < 30.0)
            return print ("%.1f %s", f, unit);

        if (f <= 1000.0)
            return print ("%.0f %s", f, unit);

        const double x = f * 0.001;

        if (f <= 19000.0)
            return print ("%.1f k%s", x, unit);

        return print ("%.0f k%s", x, unit);
    }

    if (info.kind == 7)
    {
        const double f = exponentialValue (lo, hi, p);

        if (f == 0.0)
            return print ("0 %s", unit);

        if (f < 3.0)
            return print ("%.2f %s", f, unit);

        if (f < 30.0)
            return print ("%.1f %s", f, unit);

        return print ("%.0f %s", f, unit);
    }

    if (info.kind == 8)
    {
        const double x = (double) p * 15.0;
        return print ("%+.01f %s", x, unit);
    }

    if (info.kind == 9)
    {
        const float squared = p * p;
        const double x = (double) squared * 4.9 + 0.1;
        return print ("%.01f %s", x, unit);
    }

    if (info.kind == choiceKind)
    {
        const int i = info.stepCount < 2 ? 0 : choiceIndexOf (info, p);

        if (info.texts.empty())
            return "Modes not set!";

        if ((unsigned) i < info.texts.size())
            return info.texts[(std::size_t) i];

        return "";
    }

    if (info.kind == 11)
    {
        const float range = hi - lo;
        const float x = p * range + lo;

        if (range < 11.0f)
        {
            if (std::abs (x) < 0.1f)
                return print ("  0.0 %s", unit);

            return print ("%+.1f %s", (double) x, unit);
        }

        const int n = (int) std::round (x);

        if (n == 0)
            return print ("  0 %s", unit);

        return print ("%+d %s", n, unit);
    }

    if (info.kind == 12)
    {
        const double a = lo == 0.0f ? 0.0 : 1.0 / (double) lo;
        const double b = hi == 0.0f ? 0.0 : 1.0 / (double) hi;
        const double x = (double) std::sqrt (p) * (b - a) + a;

        if (x == 0.0)
            return print ("%.1f%s", 0.0, unit);

        const double y = 1.0 / x;

        if (y >= 10.0)
            return print ("%.0f%s", y, unit);

        return print ("%.1f%s", y, unit);
    }

    if (info.kind == 13)
    {
        const double f = exponentialValue (lo, hi, p);

        if (f <= 0.0)
            return print ("0 %s", unit);

        return formatDuration (f);
    }

    if (lo == 0.0f && hi == 1.0f)
    {
        float limited = p;

        if (limited < 0.0f)
            limited = 0.0f;

        if (limited > 1.0f)
            limited = 1.0f;

        return print ("%.01f %s", (double) limited, unit);
    }

    const float x = (hi - lo) * p + lo;
    const bool isSigned = lo < 0.0f;

    if (info.kind == 1 || hi > 29.0f)
        return print (isSigned ? "%+.0f %s" : "%.0f %s", (double) x, unit);

    if (hi > 2.9f)
        return print (isSigned ? "%+.01f %s" : "%.01f %s", (double) x, unit);

    return print (isSigned ? "%+.02f %s" : "%.02f %s", (double) x, unit);
}

std::string formatDuration (double seconds)
{
    if (! std::isfinite (seconds))
        return "";

    struct Row
    {
        double unit;
        const char* one;
        const char* many;
    };

    static const Row rows[] = {
        { 31536000.0, " year", " years" }, { 2592000.0, " month", " months" }, { 86400.0, " day", " days" },
        { 3600.0, " hour", " hours" },     { 60.0, " minute", " minutes" },    { 1.0, " sec", " sec" },
        { 0.001, " ms", " ms" },           { 0.000001, " micros", " micros" },
    };

    double remainder = seconds;

    for (const Row& row : rows)
    {
        const double q = std::floor (remainder / row.unit);
        remainder = remainder - row.unit * q;

        // Only the first part is ever shown, so the walk may end at it.
        if (q != 0.0)
            return print ("%.0f", q) + (q == 1.0 ? row.one : row.many);
    }

    return "";
}

} // namespace reference
