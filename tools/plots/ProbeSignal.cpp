// SPDX-License-Identifier: AGPL-3.0-or-later
#include "plots/ProbeSignal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <istream>
#include <numbers>
#include <ostream>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace
{
using probeSignal::sampleRate;

constexpr std::size_t framesPerSecond = sampleRate;
constexpr std::size_t settlingFrames = 2 * framesPerSecond;

/** Longer than the longest ringing to be measured. */
constexpr std::size_t impulseFrames = 2 * framesPerSecond;
constexpr int impulseLines = 500;

constexpr int numTones = 60;
constexpr std::size_t toneFrames = framesPerSecond / 2;

/** Only the end of a tone is measured, after the filter's transient. */
constexpr std::size_t measuredFrames = toneFrames / 2;

constexpr double lowestHertz = 20.0;
constexpr double highestHertz = 20000.0;

/** The smallest gain that float samples can show, far below the pictures' lower edge. */
constexpr double smallestGain = 1.0e-9;

[[nodiscard]] double hertzAt (int index, int count)
{
    return lowestHertz * std::pow (highestHertz / lowestHertz, (double) index / (count - 1));
}

template <typename Number>
void writeNumber (std::ostream& out, Number number)
{
    std::array<char, sizeof (number)> bytes;
    std::memcpy (bytes.data(), &number, sizeof (number));
    out.write (bytes.data(), (std::streamsize) bytes.size());
}

template <typename Number>
[[nodiscard]] Number readNumber (std::istream& in)
{
    std::array<char, sizeof (Number)> bytes;

    if (! in.read (bytes.data(), (std::streamsize) bytes.size()))
        throw std::runtime_error ("the sound ends too early");

    Number number;
    std::memcpy (&number, bytes.data(), sizeof (number));
    return number;
}

constexpr std::uint16_t bytesPerSample = sizeof (float);
constexpr std::uint16_t floatFormat = 3;

/** The head of a WAV file. The machine must store the low byte first, as the format does. */
void writeHead (std::ostream& out, std::size_t numFrames)
{
    constexpr std::uint32_t formatSize = 16, headSize = 36;
    const auto dataSize = (std::uint32_t) (numFrames * bytesPerSample);

    out << "RIFF";
    writeNumber (out, dataSize + headSize);
    out << "WAVEfmt ";
    writeNumber (out, formatSize);
    writeNumber (out, floatFormat);
    writeNumber (out, (std::uint16_t) 1);
    writeNumber (out, (std::uint32_t) sampleRate);
    writeNumber (out, (std::uint32_t) (sampleRate * bytesPerSample));
    writeNumber (out, bytesPerSample);
    writeNumber (out, (std::uint16_t) (8 * bytesPerSample));
    out << "data";
    writeNumber (out, dataSize);
}

/** Reads the samples of the one kind of WAV file that kestrin-host writes for a sound of one channel. */
[[nodiscard]] std::vector<float> readSamples (std::istream& in, std::size_t numExpected)
{
    constexpr std::streamsize fileHead = 12;
    in.ignore (fileHead);

    for (;;)
    {
        std::array<char, 4> name;

        for (auto& letter : name)
            letter = readNumber<char> (in);

        const auto size = readNumber<std::uint32_t> (in);

        if (std::string_view (name.data(), name.size()) == "data")
        {
            if (size != numExpected * bytesPerSample)
                throw std::runtime_error ("the sound is not the answer to this probe");

            break;
        }

        in.ignore ((std::streamsize) size + (std::streamsize) size % 2);
    }

    std::vector<float> samples (numExpected);

    for (auto& sample : samples)
        sample = readNumber<float> (in);

    return samples;
}

/** The component of one frequency. A Hann window keeps other tones and the rest of the filter's transient out of it. */
[[nodiscard]] double component (std::span<const float> samples, double hertz, bool windowed)
{
    const auto twoPi = 2.0 * std::numbers::pi;
    const auto step = std::polar (1.0, -twoPi * hertz / sampleRate);
    std::complex<double> rotation = 1.0, sum = 0.0;
    auto weights = 0.0;

    for (std::size_t i = 0; i < samples.size(); ++i)
    {
        const auto window = 0.5 - 0.5 * std::cos (twoPi * ((double) i + 0.5) / (double) samples.size());
        const auto weight = windowed ? window : 1.0;
        sum += weight * (double) samples[i] * rotation;
        weights += weight;
        rotation *= step;
    }

    return std::abs (sum) / (windowed ? weights * 0.5 : 1.0);
}

void writeGain (std::ostream& out, double hertz, double gain)
{
    out << hertz << ' ' << 20.0 * std::log10 (std::max (gain, smallestGain)) << '\n';
}
} // namespace

void probeSignal::writeImpulse (std::ostream& out, double level)
{
    writeHead (out, settlingFrames + impulseFrames);

    for (std::size_t i = 0; i < settlingFrames + impulseFrames; ++i)
        writeNumber (out, i == settlingFrames ? (float) level : 0.0f);
}

void probeSignal::writeTones (std::ostream& out, double level)
{
    writeHead (out, settlingFrames + numTones * toneFrames);

    for (std::size_t i = 0; i < settlingFrames; ++i)
        writeNumber (out, 0.0f);

    for (int tone = 0; tone < numTones; ++tone)
        for (std::size_t i = 0; i < toneFrames; ++i)
            writeNumber (out, (float) (level
                                       * std::sin (2.0 * std::numbers::pi * hertzAt (tone, numTones) * (double) i
                                                   / sampleRate)));
}

void probeSignal::measureImpulse (std::istream& in, std::ostream& out, double level)
{
    const auto samples = readSamples (in, settlingFrames + impulseFrames);
    const auto answer = std::span<const float> (samples).subspan (settlingFrames);

    for (int line = 0; line < impulseLines; ++line)
    {
        const auto hertz = hertzAt (line, impulseLines);
        writeGain (out, hertz, component (answer, hertz, false) / level);
    }
}

void probeSignal::measureTones (std::istream& in, std::ostream& out, double level)
{
    const auto samples = readSamples (in, settlingFrames + numTones * toneFrames);

    for (int tone = 0; tone < numTones; ++tone)
    {
        const auto end = settlingFrames + (std::size_t) (tone + 1) * toneFrames;
        const auto measured = std::span<const float> (samples).subspan (end - measuredFrames, measuredFrames);
        const auto hertz = hertzAt (tone, numTones);
        writeGain (out, hertz, component (measured, hertz, true) / level);
    }
}
