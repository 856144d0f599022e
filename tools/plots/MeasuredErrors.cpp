// SPDX-License-Identifier: AGPL-3.0-or-later
#include "plots/MeasuredErrors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <numbers>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "dsp/filters/ButterworthFilter.h"
#include "dsp/filters/FilterConstants.h"
#include "dsp/filters/GrungeLadder.h"
#include "dsp/filters/ResonancePeak.h"
#include "dsp/modulation/Frequencer.h"
#include "dsp/modulation/LfoGenerator.h"
#include "dsp/modulation/SlewValue.h"

namespace
{
constexpr double sampleRate = 48000.0;
constexpr std::array cutoffs { 50.0, 1000.0, 10000.0 };

/** Below this level both the closed form and the answer count as silence. */
constexpr double lowestDb = -120.0;

using Complex = std::complex<double>;

[[nodiscard]] double toDb (double gain) { return 20.0 * std::log10 (gain); }

[[nodiscard]] double square (double x) { return x * x; }

//---- responses ------------------------------------------------------------------------------------------------------

template <typename Filter>
[[nodiscard]] std::vector<double> answerToImpulse (Filter& filter)
{
    std::vector<double> answer (2 * (std::size_t) sampleRate);

    for (std::size_t i = 0; i < answer.size(); ++i)
    {
        auto left = i == 0 ? 1.0 : 0.0;
        auto right = 0.0;
        filter.process (left, right);
        answer[i] = left;
    }

    return answer;
}

[[nodiscard]] double magnitudeAt (const std::vector<double>& answer, double hertz)
{
    const auto step = std::polar (1.0, -twoPi * hertz / sampleRate);
    Complex sum = 0.0, rotation = 1.0;

    for (const auto sample : answer)
    {
        sum += sample * rotation;
        rotation *= step;
    }

    return std::abs (sum);
}

/** The largest difference in dB between 20 Hz and 20 kHz, where the closed form is above lowestDb. */
template <typename Filter>
[[nodiscard]] double responseError (Filter& filter, const std::function<double (double)>& closedForm)
{
    constexpr int numFrequencies = 61;
    const auto answer = answerToImpulse (filter);
    auto largest = 0.0;

    for (int i = 0; i < numFrequencies; ++i)
    {
        const auto hertz = 20.0 * std::pow (1000.0, (double) i / (numFrequencies - 1));
        const auto wanted = toDb (closedForm (hertz));

        if (wanted > lowestDb)
            largest = std::max (largest, std::abs (toDb (magnitudeAt (answer, hertz)) - wanted));
    }

    return largest;
}

/** The frequency axis of the bilinear transform. */
[[nodiscard]] double warped (double hertz) { return std::tan (pi * hertz / sampleRate); }

[[nodiscard]] double butterworthGain (unsigned order, bool highpass, double hertz, double cutoff)
{
    const auto ratio = highpass ? warped (cutoff) / warped (hertz) : warped (hertz) / warped (cutoff);
    return 1.0 / std::sqrt (1.0 + std::pow (ratio, 2.0 * order));
}

/** One bilinear pole without prewarping: its -3 dB point lies where the warped axis meets pi times cutoff over rate. */
[[nodiscard]] Complex onePole (double hertz, double cutoff)
{
    return 1.0 / (1.0 + Complex (0.0, warped (hertz) / (pi * cutoff / sampleRate)));
}

[[nodiscard]] double butterworthError (unsigned order)
{
    auto largest = 0.0;

    for (const auto cutoff : cutoffs)
        for (const auto highpass : { false, true })
        {
            ButterworthFilter filter;
            filter.design (order, highpass, cutoff, sampleRate);

            largest = std::max (largest, responseError (filter, [&] (double hertz)
                                                        { return butterworthGain (order, highpass, hertz, cutoff); }));
        }

    return largest;
}

[[nodiscard]] double firstOrderError()
{
    auto largest = 0.0;

    for (const auto cutoff : cutoffs)
        for (const auto highpass : { false, true })
        {
            ButterworthFilter filter;
            filter.design (1, highpass, cutoff, sampleRate);

            largest = std::max (largest, responseError (filter,
                                                        [&] (double hertz)
                                                        {
                                                            const auto lowpass = onePole (hertz, cutoff);
                                                            return std::abs (highpass ? 1.0 - lowpass : lowpass);
                                                        }));
        }

    return largest;
}

[[nodiscard]] double peakError()
{
    auto largest = 0.0;

    for (const auto centre : cutoffs)
        for (const auto octaves : { 0.5, 0.707, 1.25, 2.0 })
        {
            ResonancePeak peak;
            peak.design (sampleRate, centre, octaves);

            largest = std::max (
                largest,
                responseError (peak,
                               [&] (double hertz)
                               {
                                   const auto angle = twoPi * centre / sampleRate;
                                   const auto inverseQ =
                                       2.0 * std::sinh (std::numbers::ln2 / 2.0 * octaves * angle / std::sin (angle));
                                   const auto amplitude = std::sqrt (10.0);
                                   const Complex s (0.0, warped (hertz) / warped (centre));
                                   return std::abs ((s * s + s * inverseQ * amplitude + 1.0)
                                                    / (s * s + s * inverseQ / amplitude + 1.0));
                               }));
        }

    return largest;
}

/** What is added to a frame never exceeds 1, and is the sine of the excess within a quarter of a circle. */
[[nodiscard]] double resonanceError()
{
    constexpr auto amount = 3.0f;
    ResonancePeak inUse, beside;
    inUse.design (sampleRate, 1000.0, 1.25);
    beside.design (sampleRate, 1000.0, 1.25);
    auto largest = 0.0;

    for (int i = 0; i < 48000; ++i)
    {
        const auto x = std::sin (0.13 * i) * i / 48000.0;
        StereoPair frame (x, x);
        inUse.addResonance (amount, StereoBlock (&frame, 1));

        auto left = x, right = x;
        beside.process (left, right);
        const auto wanted = x + std::sin (std::clamp ((left - x) * (double) amount, -halfPi, halfPi));
        largest = std::max (largest, std::abs (frame.left() - wanted));
    }

    return largest;
}

[[nodiscard]] double ladderError (bool highpass)
{
    auto largest = 0.0;

    for (const auto cutoff : cutoffs)
        for (const auto stages : { 1, 2, 4, 8 })
        {
            GrungeLadder ladder;
            ladder.configure (stages, highpass, cutoff, 0.0, 80.0, sampleRate);
            const auto pole = ladder.poleCoefficient;

            largest = std::max (largest,
                                responseError (ladder,
                                               [&] (double hertz)
                                               {
                                                   const auto delay = std::polar (1.0, -twoPi * hertz / sampleRate);
                                                   const auto lowpass = (1.0 - pole) / (1.0 - pole * delay);
                                                   return std::pow (
                                                       std::abs (highpass ? pole * (1.0 - lowpass) : lowpass), stages);
                                               }));
        }

    return largest;
}

/** A stage at rest, met by a step: y = b x / (k a |x| + 1). */
[[nodiscard]] double ladderStepError()
{
    auto largest = 0.0;

    for (const auto resonance : { 0.1, 0.5, 1.0, 3.0, 10.0 })
        for (const auto x : { 0.001, 0.1, 1.0 })
        {
            GrungeLadder ladder;
            ladder.configure (1, false, 1000.0, resonance, 80.0, sampleRate);

            const auto angle = twoPi * 1000.0;
            const auto a = (2.0 * sampleRate - angle) / (2.0 * sampleRate + angle);
            const auto k = 80.0 * square (square (resonance));
            const auto wanted = (1.0 - a) * x / (k * a * x + 1.0);

            auto left = x, right = x;
            ladder.process (left, right);
            largest = std::max (largest, std::abs (left - wanted) / wanted);
        }

    return largest;
}

//---- movement -------------------------------------------------------------------------------------------------------

[[nodiscard]] double triangleAt (double phase) { return 1.0 - 4.0 * std::abs (phase - 0.5); }

[[nodiscard]] double shapeError (LfoGenerator::Shape shape, const std::function<double (double)>& closedForm)
{
    constexpr int numPhases = 100000;
    LfoGenerator lfo;
    lfo.shape = shape;
    auto largest = 0.0;

    for (int i = 0; i < numPhases; ++i)
    {
        lfo.jumpTo ((float) i / (float) numPhases);
        largest = std::max (largest, std::abs ((double) lfo.render() - closedForm ((double) lfo.phaseA)));
    }

    return largest;
}

[[nodiscard]] double curveError()
{
    auto largest = 0.0;

    for (const auto bend : { -1.7, -0.8, -0.1, 0.1, 0.8, 1.7 })
    {
        LfoGenerator lfo;
        lfo.shape = LfoGenerator::triangle;
        lfo.curveExponent = 1.0f / std::exp ((float) bend);
        const auto exponent = std::exp (-bend);

        for (int i = 0; i < 10000; ++i)
        {
            lfo.jumpTo ((float) i / 10000.0f);
            const auto u = (triangleAt ((double) lfo.phaseA) + 1.0) * 0.5;
            const auto bent = bend < 0.0 ? std::pow (u, exponent) : 1.0 - std::pow (1.0 - u, 1.0 / exponent);
            largest = std::max (largest, std::abs ((double) lfo.render() - (2.0 * bent - 1.0)));
        }
    }

    return largest;
}

/** The relative error of the speed over many cycles: the phase adds up in single precision. */
[[nodiscard]] double speedError (double hertz)
{
    constexpr long mostTicks = 20000000;
    LfoGenerator lfo;
    lfo.setRate (LfoGenerator::saw, (float) sampleRate, (float) hertz);

    const auto wantedCycles = std::max (1.0, std::floor (mostTicks / sampleRate * hertz / 2.0));
    auto cycles = 0.0;
    auto before = 0.0f;
    long ticks = 0;

    while (cycles < wantedCycles)
    {
        lfo.advance();
        ++ticks;

        if (lfo.phaseA < before)
            cycles += 1.0;

        before = lfo.phaseA;
    }

    return std::abs ((cycles + (double) lfo.phaseA) / ((double) ticks * hertz / sampleRate) - 1.0);
}

[[nodiscard]] int wrongSteps()
{
    auto wrong = 0;

    // Positions of a step of 1/7 beat, and never on a boundary: 2048 beats before and after the start.
    for (int i = -14336; i < 14336; ++i)
    {
        const auto beats = i / 7.0 + 0.03;
        const auto result = frequencer::evaluate (beats, 0.0f, {});
        const auto halfBeats = (std::int64_t) std::floor ((beats + 0.01) * 2.0);

        for (std::size_t step = 0; step < frequencer::numSteps; ++step)
            wrong += result.stepLit[step] != (((halfBeats >> step) & 1) == 0) ? 1 : 0;
    }

    return wrong;
}

[[nodiscard]] double stepSumError()
{
    auto largest = 0.0;
    frequencer::Offsets offsets;
    std::mt19937 chance (3);

    for (int i = 0; i < 100000; ++i)
    {
        auto wanted = 0.0;
        offsets.highpass.fill (0.5f);

        // At position 0 all ten are on.
        for (auto& offset : offsets.lowpass)
        {
            offset = 0.35f + 0.3f * (float) ((double) chance() / 4294967296.0);
            const auto distance = (double) offset - 0.5;
            wanted += 20.0 * distance * std::abs (distance);
        }

        const auto result = frequencer::evaluate (0.0, 0.0f, offsets);
        largest = std::max (largest, std::abs ((double) result.lowpass - std::clamp (wanted, -2.0, 2.0)));
    }

    return largest;
}

/** The glide that the control tick makes of a slew: each step is the rest of the way over the time constant in frames. */
[[nodiscard]] double glideError (double seconds)
{
    const auto frames = sampleRate * seconds;
    SlewValue slew;
    slew.target = 1.0f;
    auto largest = 0.0;

    for (int n = 1; n <= (int) (10.0 * frames); ++n)
    {
        slew.step = std::abs (slew.target - slew.current) / (float) frames;
        slew.advance();
        largest = std::max (largest, std::abs ((double) slew.current - (1.0 - std::pow (1.0 - 1.0 / frames, n))));
    }

    return largest;
}

//---- the table ------------------------------------------------------------------------------------------------------

/** Few digits: the last ones depend on the maths library. An error that is smaller than any sound counts as none. */
[[nodiscard]] std::string inWords (double error, const char* unit)
{
    constexpr auto nothing = 1.0e-30;
    std::array<char, 64> text {};

    if (error < nothing)
        return std::string ("0") + unit;

    std::snprintf (text.data(), text.size(), "%.0e%s", error, unit);
    return text.data();
}

void row (std::ostream& out, const char* name, const char* what, const std::string& error)
{
    out << "| `" << name << "` | " << what << " | " << error << " |\n";
}

void writeFilters (std::ostream& out)
{
    row (out, "ButterworthFilter", "response of order 1, both kinds", inWords (firstOrderError(), " dB"));
    row (out, "ButterworthFilter", "response of order 2, both kinds", inWords (butterworthError (2), " dB"));
    row (out, "ButterworthFilter", "response of order 4, both kinds", inWords (butterworthError (4), " dB"));
    row (out, "ButterworthFilter", "response of order 8, both kinds", inWords (butterworthError (8), " dB"));
    row (out, "ResonancePeak", "response at the four bandwidths", inWords (peakError(), " dB"));
    row (out, "ResonancePeak", "what is added, at an amount of 3", inWords (resonanceError(), ""));
    row (out, "GrungeLadder", "response of the lowpass at grunge 0", inWords (ladderError (false), " dB"));
    row (out, "GrungeLadder", "response of the highpass at grunge 0", inWords (ladderError (true), " dB"));
    row (out, "GrungeLadder", "first answer to a step, relative", inWords (ladderStepError(), ""));
}

void writeMovement (std::ostream& out)
{
    row (out, "LfoGenerator", "sine",
         inWords (shapeError (LfoGenerator::sine, [] (double p) { return std::sin (twoPi * p); }), ""));
    row (out, "LfoGenerator", "triangle", inWords (shapeError (LfoGenerator::triangle, triangleAt), ""));
    row (out, "LfoGenerator", "saw",
         inWords (shapeError (LfoGenerator::saw, [] (double p) { return 1.0 - 2.0 * p; }), ""));
    row (out, "LfoGenerator", "square",
         inWords (shapeError (LfoGenerator::square, [] (double p) { return p < 0.5 ? -1.0 : 1.0; }), ""));
    row (out, "LfoGenerator", "curve stage on a triangle", inWords (curveError(), ""));
    row (out, "LfoGenerator", "speed at 0.02 Hz, relative", inWords (speedError (0.02), ""));
    row (out, "LfoGenerator", "speed at 1 Hz, relative", inWords (speedError (1.0), ""));
    row (out, "LfoGenerator", "speed at 20 Hz, relative", inWords (speedError (20.0), ""));
    row (out, "frequencer", "steps that are on or off at the wrong place, of 286720", std::to_string (wrongSteps()));
    row (out, "frequencer", "sum of ten offsets; all of it is the dead band around the middle",
         inWords (stepSumError(), ""));
    row (out, "SlewValue", "glide with a time constant of 4 ms", inWords (glideError (0.004), ""));
    row (out, "SlewValue", "glide with a time constant of 20 ms", inWords (glideError (0.02), ""));
}
} // namespace

void measuredErrors::write (std::ostream& out)
{
    out << "| class | what is compared | largest error |\n|---|---|---|\n";
    writeFilters (out);
    writeMovement (out);
}
