// SPDX-License-Identifier: AGPL-3.0-or-later
// Writes the loop that the demo filters, or one of its stems, as a WAV file of 24 bits. In the whole loop there is at all times
// much sound between 100 Hz and 12 kHz, so that a moving cutoff can always be heard.

#include <cmath>
#include <cstdint>
#include <fstream>
#include <iostream>

#include "demo/DemoStems.h"

namespace
{
/** The bytes of a WAV file, whose numbers are little-endian on every machine. */
class Bytes
{
public:
    void text (const char* fourLetters) { data.insert (data.end(), fourLetters, fourLetters + 4); }

    void number (std::uint32_t value, int numBytes)
    {
        for (auto i = 0; i < numBytes; ++i)
            data.push_back ((char) ((value >> (8 * i)) & 0xffu));
    }

    std::vector<char> data;
};

[[nodiscard]] Bytes wavOf (const demo::Loop& loop)
{
    constexpr auto numChannels = 2u, bytesPerSample = 3u, bytesPerFrame = numChannels * bytesPerSample;
    const auto numDataBytes = (std::uint32_t) loop.left.size() * bytesPerFrame;
    const auto sampleRate = (std::uint32_t) loop.sampleRate;

    Bytes bytes;
    bytes.text ("RIFF");
    bytes.number (36 + numDataBytes, 4);
    bytes.text ("WAVE");
    bytes.text ("fmt ");
    bytes.number (16, 4);
    bytes.number (1, 2); // plain integers
    bytes.number (numChannels, 2);
    bytes.number (sampleRate, 4);
    bytes.number (sampleRate * bytesPerFrame, 4);
    bytes.number (bytesPerFrame, 2);
    bytes.number (8 * bytesPerSample, 2);
    bytes.text ("data");
    bytes.number (numDataBytes, 4);

    for (std::size_t frame = 0; frame < loop.left.size(); ++frame)
        for (const auto value : { loop.left[frame], loop.right[frame] })
            bytes.number ((std::uint32_t) std::lrint (value * 8388608.0f), bytesPerSample);

    return bytes;
}

[[nodiscard]] int usage()
{
    std::cerr << "Usage: demo-loop out.wav [stem]\nStems:\n";

    for (const auto& stem : demo::stems())
        std::cerr << "  " << stem.name << ": " << stem.about << '\n';

    return 2;
}
} // namespace

int main (int numArguments, char** arguments)
{
    if (numArguments < 2 || numArguments > 3)
        return usage();

    const auto* const stem = demo::findStem (numArguments == 3 ? arguments[2] : demo::stems().front().name);

    if (stem == nullptr)
        return usage();

    const auto bytes = wavOf (demo::render (*stem));
    std::ofstream file (arguments[1], std::ios::binary);
    file.write (bytes.data.data(), (std::streamsize) bytes.data.size());
    file.close();

    if (! file)
    {
        std::cerr << "demo-loop: cannot write " << arguments[1] << '\n';
        return 2;
    }

    return 0;
}
