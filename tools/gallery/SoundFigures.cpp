// SPDX-License-Identifier: AGPL-3.0-or-later
#include "gallery/SoundFigures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

namespace
{
/** A section of second order; the coefficients of the input first. */
struct Section
{
    std::array<double, 3> b;
    std::array<double, 2> a;

    [[nodiscard]] double next (double input)
    {
        const auto output = b[0] * input + first;
        first = b[1] * input - a[0] * output + second;
        second = b[2] * input - a[1] * output;
        return output;
    }

    double first = 0.0, second = 0.0;
};

[[nodiscard]] double warped (double hertz, double rate) { return std::tan (std::numbers::pi * hertz / rate); }

/** The head: about 4 dB more above 2 kHz. */
[[nodiscard]] Section headShelf (double rate)
{
    constexpr auto gain = 1.584864701130855, root = 1.258720930232562, q = 0.7071752369554196;
    const auto k = warped (1681.974450955533, rate), sum = 1.0 + k / q + k * k;
    return { { (gain + root * k / q + k * k) / sum, 2.0 * (k * k - gain) / sum, (gain - root * k / q + k * k) / sum },
             { 2.0 * (k * k - 1.0) / sum, (1.0 - k / q + k * k) / sum } };
}

/** What the ear does not count as loud: the lowest octave. */
[[nodiscard]] Section lowCut (double rate)
{
    constexpr auto q = 0.5003270373238773;
    const auto k = warped (38.13547087602444, rate), sum = 1.0 + k / q + k * k;
    return { { 1.0, -2.0, 1.0 }, { 2.0 * (k * k - 1.0) / sum, (1.0 - k / q + k * k) / sum } };
}

/** One octave; 1 at its middle. */
[[nodiscard]] Section octaveBand (double hertz, double rate)
{
    constexpr auto q = std::numbers::sqrt2;
    const auto k = warped (hertz, rate), sum = 1.0 + k / q + k * k;
    return { { k / q / sum, 0.0, -k / q / sum }, { 2.0 * (k * k - 1.0) / sum, (1.0 - k / q + k * k) / sum } };
}

[[nodiscard]] double decibels (double power) { return 10.0 * std::log10 (power + 1.0e-30); }

/** The energy of an octave band in each moment of the loop. */
[[nodiscard]] std::vector<double> energies (const demo::Loop& loop, double hertz)
{
    constexpr auto seconds = 0.03125; // half of a thirty-second note, so that a gate in sixteenths is seen
    const auto window = (std::size_t) (seconds * loop.sampleRate);
    std::vector<double> result (loop.left.size() / window);

    for (const auto* channel : { &loop.left, &loop.right })
    {
        // Twice, so that the slopes keep the neighbours out.
        auto band = octaveBand (hertz, loop.sampleRate), again = band;

        for (std::size_t frame = 0; frame < result.size() * window; ++frame)
        {
            const auto value = again.next (band.next ((double) (*channel)[frame]));
            result[frame / window] += value * value;
        }
    }

    return result;
}

/** Sums over the moments that count. */
struct Deviation
{
    void add (double value)
    {
        count += 1.0;
        sum += value;
        squares += value * value;
    }

    [[nodiscard]] double mean() const { return count > 0.0 ? sum / count : 0.0; }
    [[nodiscard]] double standard() const
    {
        return count > 0.0 ? std::sqrt (std::max (0.0, squares / count - mean() * mean())) : 0.0;
    }

    double count = 0.0, sum = 0.0, squares = 0.0;
};

constexpr std::array bandHertz { 31.5, 63.0, 125.0, 250.0, 500.0, 1000.0, 2000.0, 4000.0, 8000.0 };
} // namespace

double soundFigures::peakDb (const demo::Loop& loop)
{
    auto peak = 0.0f;

    for (const auto* channel : { &loop.left, &loop.right })
        for (const auto value : *channel)
            peak = std::max (peak, std::abs (value));

    return 2.0 * decibels ((double) peak);
}

double soundFigures::loudness (const demo::Loop& loop)
{
    constexpr auto calibration = -0.691; // a sine of 997 Hz on one side at full scale is -3.01 LUFS
    auto power = 0.0;

    for (const auto* channel : { &loop.left, &loop.right })
    {
        auto head = headShelf (loop.sampleRate), low = lowCut (loop.sampleRate);

        for (const auto sample : *channel)
        {
            const auto value = low.next (head.next ((double) sample));
            power += value * value;
        }
    }

    return calibration + decibels (power / (double) loop.left.size());
}

soundFigures::Gains soundFigures::compare (const demo::Loop& before, const demo::Loop& after)
{
    constexpr auto quietest = 1.0e-5; // 50 dB below the loudest band
    std::vector<std::vector<double>> bandsBefore;
    auto loudest = 0.0;

    for (const auto hertz : bandHertz)
    {
        bandsBefore.push_back (energies (before, hertz));
        loudest = std::max (loudest, std::ranges::max (bandsBefore.back()));
    }

    Deviation change, motion;

    for (std::size_t band = 0; band < bandHertz.size(); ++band)
    {
        const auto bandAfter = energies (after, bandHertz[band]);
        Deviation gain;

        for (std::size_t moment = 0; moment < bandAfter.size(); ++moment)
            if (bandsBefore[band][moment] > quietest * loudest)
                gain.add (decibels (bandAfter[moment] / bandsBefore[band][moment]));

        if (gain.count == 0.0)
            continue;

        change.add (std::abs (gain.mean()));
        motion.add (gain.standard());
    }

    return { change.mean(), motion.mean() };
}
