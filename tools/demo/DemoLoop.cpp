// SPDX-License-Identifier: AGPL-3.0-or-later
// Writes the loop that the demo filters: eight bars at 120 beats per minute of saw chords, a bass, a soft kick and hats of
// noise. At all times there is much sound between 100 Hz and 12 kHz, so that a moving cutoff can always be heard.
// The same call gives the same loop: it uses no clock and no random device.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <numbers>
#include <span>
#include <vector>

namespace
{
constexpr int sampleRate = 44100;
constexpr int framesPerBeat = sampleRate / 2; // 120 beats per minute
constexpr int framesPerStep = framesPerBeat / 4;
constexpr int beatsPerBar = 4;
constexpr int numBars = 8;
constexpr int numFrames = numBars * beatsPerBar * framesPerBeat;

constexpr double peakDb = -6.0; // room for the resonances

struct Sound
{
    std::vector<double> left = std::vector<double> (numFrames);
    std::vector<double> right = std::vector<double> (numFrames);

    /** Adds one sample; pan runs from -1, left, to 1, right, at constant power. A frame past the end is added at the
        beginning, so that the loop closes without a seam. */
    void add (int frame, double value, double pan)
    {
        const auto angle = (pan + 1.0) * 0.25 * std::numbers::pi;
        const auto index = (std::size_t) (frame % numFrames);
        left[index] += value * std::cos (angle);
        right[index] += value * std::sin (angle);
    }
};

[[nodiscard]] double hertzOf (int midiNote) { return 440.0 * std::exp2 ((midiNote - 69) / 12.0); }

[[nodiscard]] double secondsOf (int frames) { return (double) frames / sampleRate; }

/** A saw whose step is rounded off by a polynomial over the two samples next to it, which removes the strongest aliases
    (V. Valimaki, A. Huovilainen, "Antialiasing oscillators in subtractive synthesis", 2007). */
class Saw
{
public:
    Saw (double hertz, double startPhase) : step (hertz / sampleRate), phase (startPhase) {}

    [[nodiscard]] double next()
    {
        const auto value = 2.0 * phase - 1.0 - roundedStep();
        phase += step;
        phase -= std::floor (phase);
        return value;
    }

private:
    [[nodiscard]] double roundedStep() const
    {
        if (phase < step)
        {
            const auto t = phase / step;
            return t + t - t * t - 1.0;
        }

        if (phase > 1.0 - step)
        {
            const auto t = (phase - 1.0) / step;
            return t * t + t + t + 1.0;
        }

        return 0.0;
    }

    double step;
    double phase;
};

/** White noise of a linear congruential generator: the same on every machine. */
class Noise
{
public:
    [[nodiscard]] double next()
    {
        state = state * 1664525u + 1013904223u;
        return (double) state / 2147483648.0 - 1.0;
    }

private:
    std::uint32_t state = 20u;
};

/** Rises and falls without a click: a ramp of a few milliseconds at either end of a note. */
[[nodiscard]] double edges (int frame, int length)
{
    constexpr auto ramp = 200.0;
    return std::min ({ 1.0, frame / ramp, (length - frame) / ramp });
}

struct Bar
{
    int bassNote;
    std::array<int, 4> chord;
};

constexpr std::array bars {
    Bar { 33, { 57, 60, 64, 71 } }, // A minor, with the ninth
    Bar { 29, { 53, 57, 60, 64 } }, // F major seventh
    Bar { 36, { 55, 60, 64, 67 } }, // C
    Bar { 31, { 55, 59, 62, 69 } }, // G, with the ninth
};

[[nodiscard]] const Bar& barAt (int index) { return bars[(std::size_t) index % bars.size()]; }

/** Each voice is two saws a little apart, one to each side. */
void addChord (Sound& sound, int firstFrame, std::span<const int> notes)
{
    constexpr auto length = beatsPerBar * framesPerBeat;
    constexpr auto detune = 1.0035;

    for (const auto note : notes)
    {
        auto low = Saw (hertzOf (note) / detune, 0.21 * (note % 5));
        auto high = Saw (hertzOf (note) * detune, 0.17 * (note % 6));

        for (auto frame = 0; frame < length; ++frame)
        {
            // The chord leans back on every beat, as if the kick pushed it away.
            const auto sinceBeat = secondsOf (frame % framesPerBeat);
            const auto level = 0.10 * edges (frame, length) * (1.0 - 0.55 * std::exp (-9.0 * sinceBeat));
            sound.add (firstFrame + frame, level * low.next(), -0.7);
            sound.add (firstFrame + frame, level * high.next(), 0.7);
        }
    }
}

void addBassNote (Sound& sound, int firstFrame, int length, int note)
{
    auto saw = Saw (hertzOf (note), 0.5);
    auto octave = Saw (2.0 * hertzOf (note), 0.25);

    for (auto frame = 0; frame < length; ++frame)
    {
        const auto level = 0.26 * edges (frame, length) * std::exp (-3.5 * secondsOf (frame));
        sound.add (firstFrame + frame, level * (saw.next() + 0.4 * octave.next()), 0.0);
    }
}

void addKick (Sound& sound, int firstFrame)
{
    constexpr auto length = framesPerBeat / 2;
    auto phase = 0.0;

    for (auto frame = 0; frame < length; ++frame)
    {
        const auto seconds = secondsOf (frame);
        const auto level = 0.55 * edges (frame, length) * std::exp (-14.0 * seconds);
        phase += (48.0 + 130.0 * std::exp (-38.0 * seconds)) / sampleRate;
        sound.add (firstFrame + frame, level * std::sin (2.0 * std::numbers::pi * phase), 0.0);
    }
}

void addHat (Sound& sound, Noise& noise, int firstFrame, double loudness, double decay, double pan)
{
    constexpr auto length = 2 * framesPerStep;
    auto before = 0.0;

    for (auto frame = 0; frame < length; ++frame)
    {
        // The difference of neighbours tilts the noise towards the top.
        const auto now = noise.next();
        const auto level = loudness * edges (frame, length) * std::exp (-decay * secondsOf (frame));
        sound.add (firstFrame + frame, level * (now - 0.8 * before), pan);
        before = now;
    }
}

void addHatsOfBeat (Sound& sound, Noise& noise, int firstFrame)
{
    addHat (sound, noise, firstFrame, 0.05, 60.0, 0.3);
    addHat (sound, noise, firstFrame + framesPerStep, 0.025, 90.0, -0.3);
    addHat (sound, noise, firstFrame + 2 * framesPerStep, 0.10, 18.0, 0.15);
    addHat (sound, noise, firstFrame + 3 * framesPerStep, 0.035, 80.0, -0.15);
}

/** Eighths, with the octave on the last of each half. */
void addBassOfBar (Sound& sound, int firstFrame, int note)
{
    constexpr std::array octaves { 0, 0, 0, 12, 0, 0, 7, 12 };
    constexpr auto length = 2 * framesPerStep;

    for (auto i = 0; i < (int) octaves.size(); ++i)
        addBassNote (sound, firstFrame + i * length, length, note + octaves[(std::size_t) i]);
}

[[nodiscard]] Sound playAll()
{
    Sound sound;
    Noise noise;

    for (auto bar = 0; bar < numBars; ++bar)
    {
        const auto barStart = bar * beatsPerBar * framesPerBeat;
        addChord (sound, barStart, barAt (bar).chord);
        addBassOfBar (sound, barStart, barAt (bar).bassNote);

        for (auto beat = 0; beat < beatsPerBar; ++beat)
        {
            addKick (sound, barStart + beat * framesPerBeat);
            addHatsOfBeat (sound, noise, barStart + beat * framesPerBeat);
        }
    }

    return sound;
}

void scaleToPeak (Sound& sound)
{
    auto peak = 0.0;

    for (const auto* channel : { &sound.left, &sound.right })
        for (const auto value : *channel)
            peak = std::max (peak, std::abs (value));

    const auto gain = std::pow (10.0, peakDb / 20.0) / peak;

    for (auto* channel : { &sound.left, &sound.right })
        for (auto& value : *channel)
            value *= gain;
}

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

[[nodiscard]] Bytes wavOf (const Sound& sound)
{
    constexpr auto numChannels = 2u, bytesPerSample = 3u, bytesPerFrame = numChannels * bytesPerSample;
    constexpr auto numDataBytes = (std::uint32_t) numFrames * bytesPerFrame;
    constexpr auto fullScale = 8388607.0;

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

    for (std::size_t frame = 0; frame < sound.left.size(); ++frame)
        for (const auto value : { sound.left[frame], sound.right[frame] })
            bytes.number ((std::uint32_t) std::lrint (value * fullScale), bytesPerSample);

    return bytes;
}
} // namespace

int main (int numArguments, char** arguments)
{
    if (numArguments != 2)
    {
        std::cerr << "Usage: demo-loop out.wav\n";
        return 2;
    }

    auto sound = playAll();
    scaleToPeak (sound);
    const auto bytes = wavOf (sound);

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
