// SPDX-License-Identifier: AGPL-3.0-or-later
// What MainAudioProcessor.cpp and ControlTicks.cpp share, and nobody else: the ticks of the control side on their way to the
// filters.
#pragma once

#include <array>
#include <cstddef>

#include "dsp/MainAudioProcessor.h"

/** The four gliding values side by side, so that all of them move together. */
struct MainAudioProcessor::Slews
{
    void setSteps (float ticksPerSecond, bool active) noexcept;
    void setTargets (FloatQuad sums, FloatQuad knobs) noexcept;
    void advance() noexcept;
    [[nodiscard]] bool areGliding() const noexcept;

    FloatQuad target, current, step;
};

/** What consecutive ticks share, taken out of the parameters and the slews before the first and brought back behind the
    last. */
struct MainAudioProcessor::Motion
{
    /** True if the ticks go on whatever becomes of the slews, and if all of a tick that asks the host is its beginning. */
    [[nodiscard]] bool mayBeMovedLater() const noexcept { return readings.active && ! readings.followsBars; }

    [[nodiscard]] FloatQuad sumsOfSteps (double position) const noexcept;

    ControlReadings readings;

    double rate;
    LfoGenerator::TickRate tickRate;
    Slews slews;

    /** Once the watch of a frame has found nothing, it finds nothing until some parameter is set. */
    bool isWatchDue = true;
};

/** Consecutive ticks, with one entry for each in every array. Of a tick the host is asked first. The rest is done array by
    array, for as many ticks together as have been asked for. */
struct MainAudioProcessor::TickSeries
{
    using Values = std::array<float, maxDesigns>;

    explicit TickSeries (const Motion& motion) noexcept { beginStretch (motion); }

    /** True if there is no position, or if it is exactly 0: a transport that stands at its start is the same as none. */
    [[nodiscard]] bool isTransportAbsent (std::size_t tick) const noexcept { return beats[tick] == 0.0; }

    /** The ticks from here on go by what has just been read. */
    void beginStretch (const Motion& motion) noexcept
    {
        stretches[numStretches++] = { size, motion.rate, motion.readings.family, motion.readings.highpass,
                                      motion.readings.lowpass };
    }

    [[nodiscard]] std::size_t endOfStretch (std::size_t i) const noexcept
    {
        return i + 1 < numStretches ? stretches[i + 1].firstTick : size;
    }

    std::size_t size = 0;

    /** How many of them have moved the LFOs and slews. */
    std::size_t numMoved = 0;

    // What the transport has said.
    std::array<double, maxDesigns> beats, bpm;

    /** Ticks in a row that have the same filters, made in the same way. */
    struct Stretch
    {
        std::size_t firstTick;
        double rate;
        ControlReadings::Family family;
        ControlReadings::Slope highpass, lowpass;
    };

    std::array<Stretch, maxDesigns + 1> stretches;
    std::size_t numStretches = 0;

    /** What Frequencer and LFOs add up to. */
    std::array<FloatQuad, maxDesigns> sums;

    // What the slews come to.
    Values hpHz, lpHz, hpResonance, lpResonance;
};
