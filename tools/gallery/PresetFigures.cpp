// SPDX-License-Identifier: AGPL-3.0-or-later
// preset-figures: what a preset does to the stems of the demo, or where its cutoffs stand, as a table for gnuplot.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "gallery/PresetSession.h"
#include "gallery/SoundFigures.h"

namespace
{
using presetSession::Moment;

constexpr const char* usage =
    R"(Usage: preset-figures sound STATE STEM        what changes on this stem and on two others: a line of JSON each
       preset-figures cutoffs STATE SECONDS   lines of seconds, highpass in Hz, lowpass in Hz
STATE is a file of 'kestrin-host state --write'.
)";

/** The lead-in is taken from the end of the loop. */
constexpr auto shortest = 2.0;

/** How far a cutoff travels. */
[[nodiscard]] double octaves (std::span<const Moment> moments, double Moment::*cutoff)
{
    const auto [lowest, highest] = std::ranges::minmax (moments, {}, cutoff);
    return std::log2 (highest.*cutoff / (lowest.*cutoff));
}

void writeSound (const std::string& state, const demo::Stem& stem)
{
    const auto before = demo::render (stem);
    const auto after = presetSession::play (state, before);
    const auto gains = soundFigures::compare (before, after.sound);

    std::cout << "{\"stem\": \"" << stem.name << '"'
              << ", \"louder\": " << soundFigures::loudness (after.sound) - soundFigures::loudness (before)
              << ", \"peak\": " << soundFigures::peakDb (after.sound) << ", \"change\": " << gains.changeDb
              << ", \"motion\": " << gains.motionDb
              << ", \"highpassOctaves\": " << octaves (after.moments, &Moment::highpassHz)
              << ", \"lowpassOctaves\": " << octaves (after.moments, &Moment::lowpassHz) << "}\n";
}

void writeCutoffs (const std::string& state, double seconds)
{
    // The cutoffs do not listen to the sound.
    constexpr auto sampleRate = 44100.0;
    const std::vector<float> silence ((std::size_t) (seconds * sampleRate));

    for (const auto& moment : presetSession::play (state, { sampleRate, silence, silence }).moments)
        std::cout << moment.seconds << ' ' << moment.highpassHz << ' ' << moment.lowpassHz << '\n';
}

[[nodiscard]] bool run (std::span<char*> words)
{
    if (words.size() != 3)
        return false;

    std::ifstream file (words[1], std::ios::binary);
    const std::string state { std::istreambuf_iterator<char> (file), {} };

    if (state.empty())
    {
        std::cerr << "preset-figures: cannot read " << words[1] << '\n';
        return false;
    }

    const std::string command = words[0];
    const auto* const stem = demo::findStem (words[2]);
    const auto seconds = std::strtod (words[2], nullptr);

    if (command == "sound" && stem != nullptr)
        for (const auto* const judged : demo::stemsToJudgeOn (*stem))
            writeSound (state, *judged);
    else if (command == "cutoffs" && seconds >= shortest)
        writeCutoffs (state, seconds);
    else
        return false;

    return true;
}
} // namespace

int main (int numArguments, char** arguments)
{
    if (run ({ arguments + 1, arguments + numArguments }))
        return 0;

    std::cerr << usage;
    return 2;
}
