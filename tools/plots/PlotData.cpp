// SPDX-License-Identifier: AGPL-3.0-or-later
// plot-data: writes the tables from which gnuplot draws the pictures of docs/, and the table of measured errors.

#include <charconv>
#include <cstddef>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "plots/MeasuredErrors.h"
#include "plots/MotionCurves.h"
#include "plots/ProbeSignal.h"

namespace
{
constexpr const char* usage = R"(Usage: plot-data lfos | steps BEATS | pattern | errors
       plot-data probe impulse|tones LEVEL      > sound to send through the module (WAV, mono, float, 48 kHz)
       plot-data response impulse|tones LEVEL   < what came back: writes Hz and dB
)";

[[nodiscard]] double numberOf (const std::string& text)
{
    auto number = 0.0;
    const auto* end = text.data() + text.size();

    if (const auto [last, error] = std::from_chars (text.data(), end, number); error != std::errc() || last != end)
        throw std::runtime_error ("\"" + text + "\" is not a number");

    return number;
}

/** @returns false if the words are not a command of this program */
[[nodiscard]] bool run (const std::vector<std::string>& words)
{
    const auto is = [&] (std::size_t count, const std::string& first, const std::string& second = {})
    { return words.size() == count && words[0] == first && (second.empty() || words[1] == second); };

    if (is (1, "lfos"))
        motionCurves::writeLfoShapes (std::cout);
    else if (is (2, "steps"))
        motionCurves::writeSteps (std::cout, numberOf (words[1]));
    else if (is (1, "pattern"))
        motionCurves::writePattern (std::cout);
    else if (is (1, "errors"))
        measuredErrors::write (std::cout);
    else if (is (3, "probe", "impulse"))
        probeSignal::writeImpulse (std::cout, numberOf (words[2]));
    else if (is (3, "probe", "tones"))
        probeSignal::writeTones (std::cout, numberOf (words[2]));
    else if (is (3, "response", "impulse"))
        probeSignal::measureImpulse (std::cin, std::cout, numberOf (words[2]));
    else if (is (3, "response", "tones"))
        probeSignal::measureTones (std::cin, std::cout, numberOf (words[2]));
    else
        return false;

    return true;
}
} // namespace

int main (int argc, char** argv)
{
    try
    {
        if (run ({ argv + 1, argv + argc }))
            return 0;

        std::cerr << usage;
    }
    catch (const std::exception& error)
    {
        std::cerr << "plot-data: " << error.what() << '\n';
    }

    return 2;
}
