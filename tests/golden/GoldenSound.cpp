// SPDX-License-Identifier: AGPL-3.0-or-later
#include "golden/GoldenSound.h"

#include <bit>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <sstream>

namespace golden
{

scenario::Scenario sessionOf (std::uint32_t seed)
{
    scenario::Options options;
    options.strangeSamples = seed % 10 == 0;
    options.strangeTransport = seed % 10 == 5;
    return scenario::makeScenario (seed, options);
}

void Digest::add (std::span<const float> samples)
{
    for (const auto sample : samples)
        addBits (std::isnan (sample) ? 0x7fc00000u : std::bit_cast<std::uint32_t> (sample));
}

void Digest::add (const std::string& text)
{
    for (const auto letter : text)
        addByte ((std::uint8_t) letter);
}

std::string Digest::text() const
{
    std::ostringstream hex;
    hex << std::hex << std::setfill ('0') << std::setw (16) << value;
    return hex.str();
}

void Digest::addBits (std::uint32_t bits)
{
    for (int shift = 0; shift < 32; shift += 8)
        addByte ((std::uint8_t) (bits >> shift));
}

void Digest::addByte (std::uint8_t byte) { value = (value ^ byte) * 0x100000001b3u; }

std::string digestOf (const scenario::Output& output)
{
    Digest sound;
    sound.add (output.left);
    sound.add (output.right);
    return sound.text();
}

std::vector<std::string> rowsOf (const std::string& kind)
{
    std::ifstream file (std::string (KESTRIN_GOLDEN_DIR) + "/sound.txt");
    std::vector<std::string> rows;

    for (std::string row; std::getline (file, row);)
        if (row.starts_with (kind + " "))
            rows.push_back (row);

    return rows;
}

} // namespace golden
