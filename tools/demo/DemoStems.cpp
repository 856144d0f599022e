// SPDX-License-Identifier: AGPL-3.0-or-later
#include "demo/DemoStems.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "demo/Elementary.h"
#include "demo/LoopMix.h"
#include "demo/Oscillators.h"

namespace demo
{
namespace
{
using std::numbers::pi;

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

//---- the band --------------------------------------------------------------------------------------------------------

/** Each voice is two saws a little apart, one to each side. */
void addChord (LoopMix& mix, int firstFrame, std::span<const int> notes)
{
    constexpr auto detune = 1.0035;

    for (const auto note : notes)
    {
        auto low = Saw (hertzOf (note) / detune, 0.21 * (note % 5));
        auto high = Saw (hertzOf (note) * detune, 0.17 * (note % 6));

        for (auto frame = 0; frame < framesPerBar; ++frame)
        {
            // The chord leans back on every beat, as if the kick pushed it away.
            const auto sinceBeat = secondsOf (frame % framesPerBeat);
            const auto level = 0.10 * edges (frame, framesPerBar) * (1.0 - 0.55 * exponential (-9.0 * sinceBeat));
            mix.add (firstFrame + frame, level * low.next(), -0.7);
            mix.add (firstFrame + frame, level * high.next(), 0.7);
        }
    }
}

void addBassNote (LoopMix& mix, int firstFrame, int length, int note)
{
    auto saw = Saw (hertzOf (note), 0.5);
    auto octave = Saw (2.0 * hertzOf (note), 0.25);

    for (auto frame = 0; frame < length; ++frame)
    {
        const auto level = 0.26 * edges (frame, length) * exponential (-3.5 * secondsOf (frame));
        mix.add (firstFrame + frame, level * (saw.next() + 0.4 * octave.next()), 0.0);
    }
}

void addKick (LoopMix& mix, int firstFrame)
{
    constexpr auto length = framesPerBeat / 2;
    auto phase = 0.0;

    for (auto frame = 0; frame < length; ++frame)
    {
        const auto seconds = secondsOf (frame);
        const auto level = 0.55 * edges (frame, length) * exponential (-14.0 * seconds);
        phase += (48.0 + 130.0 * exponential (-38.0 * seconds)) / sampleRate;
        mix.add (firstFrame + frame, level * sine (2.0 * pi * phase), 0.0);
    }
}

void addHat (LoopMix& mix, Noise& noise, int firstFrame, double loudness, double decay, double pan)
{
    constexpr auto length = 2 * framesPerStep;
    auto before = 0.0;

    for (auto frame = 0; frame < length; ++frame)
    {
        // The difference of neighbours tilts the noise towards the top.
        const auto now = noise.next();
        const auto level = loudness * edges (frame, length) * exponential (-decay * secondsOf (frame));
        mix.add (firstFrame + frame, level * (now - 0.8 * before), pan);
        before = now;
    }
}

void addHatsOfBeat (LoopMix& mix, Noise& noise, int firstFrame)
{
    addHat (mix, noise, firstFrame, 0.05, 60.0, 0.3);
    addHat (mix, noise, firstFrame + framesPerStep, 0.025, 90.0, -0.3);
    addHat (mix, noise, firstFrame + 2 * framesPerStep, 0.10, 18.0, 0.15);
    addHat (mix, noise, firstFrame + 3 * framesPerStep, 0.035, 80.0, -0.15);
}

void playChords (LoopMix& mix)
{
    for (auto bar = 0; bar < numBars; ++bar)
        addChord (mix, bar * framesPerBar, barAt (bar).chord);
}

/** Eighths, with the octave on the last of each half. */
void playBass (LoopMix& mix)
{
    constexpr std::array octaves { 0, 0, 0, 12, 0, 0, 7, 12 };
    constexpr auto length = 2 * framesPerStep;

    for (auto bar = 0; bar < numBars; ++bar)
        for (auto i = 0; i < (int) octaves.size(); ++i)
            addBassNote (mix, bar * framesPerBar + i * length, length, barAt (bar).bassNote + octaves[(std::size_t) i]);
}

void playDrums (LoopMix& mix)
{
    Noise noise;

    for (auto beat = 0; beat < numBars * beatsPerBar; ++beat)
    {
        addKick (mix, beat * framesPerBeat);
        addHatsOfBeat (mix, noise, beat * framesPerBeat);
    }
}

void playAll (LoopMix& mix)
{
    playChords (mix);
    playBass (mix);
    playDrums (mix);
}

//---- what else presets are made for ----------------------------------------------------------------------------------

/** One low note that goes on and on: two saws that beat against each other, a whole number of times in the loop. */
void playDrone (LoopMix& mix)
{
    constexpr auto turns = 880, beats = 3; // 55 Hz

    auto low = Saw (turns / secondsOf (numFrames), 0.0);
    auto high = Saw ((2 * turns + beats) / secondsOf (numFrames), 0.3);

    for (auto frame = 0; frame < numFrames; ++frame)
    {
        mix.add (frame, low.next(), -0.2);
        mix.add (frame, 0.7 * high.next(), 0.2);
    }
}

/** A bright saw that plays the notes of the chords, in the middle octaves. */
void playLead (LoopMix& mix)
{
    constexpr std::array<std::size_t, 8> voices { 0, 3, 2, 3, 1, 2, 3, 1 };
    constexpr auto length = 2 * framesPerStep;

    for (auto bar = 0; bar < numBars; ++bar)
        for (auto i = 0; i < (int) voices.size(); ++i)
        {
            auto saw = Saw (hertzOf (barAt (bar).chord[voices[(std::size_t) i]]), 0.5);

            for (auto frame = 0; frame < length; ++frame)
                mix.add (bar * framesPerBar + i * length + frame, edges (frame, length) * saw.next(), 0.0);
        }
}

/** An electric piano: two sines, of which one turns the phase of the other.
    Source: J. Chowning, "The synthesis of complex audio spectra by means of frequency modulation", 1973. */
void addKey (LoopMix& mix, int firstFrame, int note, double pan)
{
    constexpr auto length = 2 * framesPerBeat;
    auto phase = 0.0;

    for (auto frame = 0; frame < length; ++frame)
    {
        const auto seconds = secondsOf (frame);
        const auto body = 1.2 * exponential (-2.5 * seconds) * sine (2.0 * pi * phase);
        const auto tine = 0.5 * exponential (-12.0 * seconds) * sine (2.0 * pi * 14.0 * phase);
        const auto level = edges (frame, length) * exponential (-1.6 * seconds);
        mix.add (firstFrame + frame, level * sine (2.0 * pi * phase + body + tine), pan);
        phase += hertzOf (note) / sampleRate;
        phase -= std::floor (phase);
    }
}

void playKeys (LoopMix& mix)
{
    for (auto half = 0; half < 2 * numBars; ++half)
        for (const auto note : barAt (half / 2).chord)
            addKey (mix, half * 2 * framesPerBeat, note, (note - 61) / 16.0);
}

/** Where the first three resonances of a mouth lie.
    Source: G. Peterson, H. Barney, "Control methods used in a study of the vowels", 1952, men. */
struct Vowel
{
    std::array<double, 3> hertz;
};

constexpr std::array vowels {
    Vowel { { 730, 1090, 2440 } }, // father
    Vowel { { 270, 2290, 3010 } }, // heed
    Vowel { { 570, 840, 2410 } },  // all
    Vowel { { 530, 1840, 2480 } }, // head
    Vowel { { 300, 870, 2240 } },  // boot
};

/** One syllable of a beat: a hiss, then the vocal cords through a mouth that glides from vowel to vowel. */
class Singer
{
public:
    void sing (LoopMix& mix, int beat)
    {
        constexpr std::array melody { 45, 45, 48, 47, 45, 52, 50, 48 };
        constexpr auto hissFrames = framesPerStep / 2, gap = framesPerStep / 2;
        constexpr auto length = framesPerBeat - hissFrames - gap;
        const auto firstFrame = beat * framesPerBeat;
        const auto note = melody[(std::size_t) beat % melody.size()];
        addHat (mix, noise, firstFrame, 0.06, 25.0, 0.0);

        for (auto frame = 0; frame < length; ++frame)
        {
            const auto seconds = secondsOf (frame);
            const auto vibrato = 1.0 + 0.012 * std::min (1.0, 3.0 * seconds) * sine (2.0 * pi * 5.5 * seconds);
            cords.setHertz (hertzOf (note) * vibrato);
            const auto voice = throughMouth (cords.next() + 0.1 * noise.next(), beat, (double) frame / length);
            mix.add (firstFrame + hissFrames + frame, 0.2 * edges (frame, length) * voice, 0.0);
        }
    }

private:
    [[nodiscard]] double throughMouth (double sound, int beat, double place)
    {
        constexpr std::array bandwidths { 80.0, 100.0, 140.0 };
        const auto& from = vowels[(std::size_t) beat % vowels.size()];
        const auto& to = vowels[(std::size_t) (beat + 1) % vowels.size()];

        for (std::size_t i = 0; i < mouth.size(); ++i)
            sound = mouth[i].next (sound, from.hertz[i] + place * (to.hertz[i] - from.hertz[i]), bandwidths[i]);

        // Lips send out what is high better than what is low.
        const auto sent = sound - 0.9 * behindLips;
        behindLips = sound;
        return sent;
    }

    Saw cords { hertzOf (45), 0.0 };
    Noise noise;
    std::array<Formant, 3> mouth;
    double behindLips = 0.0;
};

void playVoice (LoopMix& mix)
{
    Singer singer;

    for (auto beat = 0; beat < numBars * beatsPerBar; ++beat)
        singer.sing (mix, beat);
}

/** The voice on a stage: a floor that hums and shakes below 30 Hz. */
void playStage (LoopMix& mix)
{
    playVoice (mix);
    constexpr std::array turns { 143, 207, 292, 341, 399 }; // in the loop, so that it closes: 9 to 25 Hz

    for (auto frame = 0; frame < numFrames; ++frame)
        for (const auto turn : turns)
            mix.add (frame, 0.03 * sine (2.0 * pi * (double) (turn * frame % numFrames) / numFrames), 0.0);
}

/** White noise, another one on each side. */
void playNoise (LoopMix& mix)
{
    Noise noise;

    for (auto frame = 0; frame < numFrames; ++frame)
    {
        mix.add (frame, noise.next(), -1.0);
        mix.add (frame, noise.next(), 1.0);
    }
}

constexpr std::array table {
    Stem { "all", "saw chords, bass, a soft kick and hats of noise", playAll },
    Stem { "drums", "the kick and the hats", playDrums },
    Stem { "chords", "four-part saw chords that lean back on the beat", playChords },
    Stem { "bass", "a saw bass in eighths", playBass },
    Stem { "drone", "one low saw that goes on and on", playDrone },
    Stem { "lead", "a bright saw line in eighths", playLead },
    Stem { "keys", "an electric piano", playKeys },
    Stem { "voice", "a voice that sings vowels", playVoice },
    Stem { "stage", "the voice on a stage that rumbles", playStage },
    Stem { "noise", "white noise", playNoise },
};

[[nodiscard]] std::vector<float> roundedTo24Bits (const std::vector<double>& channel)
{
    std::vector<float> result (channel.size());
    std::ranges::transform (channel, result.begin(),
                            [] (double value)
                            { return (float) ((double) std::lrint (value * 8388607.0) / 8388608.0); });
    return result;
}
} // namespace

std::span<const Stem> stems() { return table; }

const Stem* findStem (std::string_view name)
{
    const auto* const found = std::ranges::find (table, name, &Stem::name);
    return found == table.end() ? nullptr : found;
}

std::vector<const Stem*> stemsToJudgeOn (const Stem& suited)
{
    std::vector<const Stem*> result { &suited };

    for (const auto& stem : table)
        if (&stem != &suited && result.size() < 3)
            result.push_back (&stem);

    return result;
}

Loop render (const Stem& stem)
{
    constexpr auto peakDb = -6.0; // room for the resonances
    LoopMix mix;
    stem.play (mix);
    mix.scaleToPeak (peakDb);
    return { (double) sampleRate, roundedTo24Bits (mix.left), roundedTo24Bits (mix.right) };
}

} // namespace demo
