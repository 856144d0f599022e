// SPDX-License-Identifier: AGPL-3.0-or-later
#include "plots/MotionCurves.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <ostream>

#include "dsp/modulation/Frequencer.h"
#include "dsp/modulation/LfoGenerator.h"

namespace
{
struct ShapeRow
{
    LfoGenerator::Shape shape;
    double seconds;
    int linesPerSecond;
};

/** Long enough to show each shape: two cycles at 1 Hz, twelve of the irregular one, and a quarter of an hour of the drift,
    which moves by no more than a hundredth in a second. */
constexpr std::array shapeRows {
    ShapeRow { LfoGenerator::sine, 2.0, 500 },
    ShapeRow { LfoGenerator::triangle, 2.0, 500 },
    ShapeRow { LfoGenerator::saw, 2.0, 500 },
    ShapeRow { LfoGenerator::square, 2.0, 500 },
    ShapeRow { LfoGenerator::randomTriangles, 12.0, 80 },
    ShapeRow { LfoGenerator::brownian, 900.0, 1 },
};

constexpr int ticksPerSecond = 48000;

[[nodiscard]] float exponentOf (double curve) { return 1.0f / std::exp ((float) (curve * 1.7)); }

[[nodiscard]] float renderBent (LfoGenerator& lfo, double curve)
{
    lfo.curveExponent = exponentOf (curve);
    return lfo.render();
}

void writeShape (std::ostream& out, const ShapeRow& row)
{
    constexpr auto oneHertz = 1.0f;
    LfoGenerator lfo;
    lfo.rng.seed (8); // any walk is as good as any other; the picture should be the same every time
    lfo.setRate (row.shape, (float) ticksPerSecond, oneHertz);

    const auto numTicks = (long) (row.seconds * ticksPerSecond);
    const auto ticksPerLine = ticksPerSecond / row.linesPerSecond;

    for (long tick = 0; tick <= numTicks; ++tick)
    {
        if (tick % ticksPerLine == 0)
            out << (double) tick / ticksPerSecond << ' ' << renderBent (lfo, -1.0) << ' ' << renderBent (lfo, 0.0)
                << ' ' << renderBent (lfo, 1.0) << '\n';

        lfo.advance();
    }

    out << "\n\n";
}

/** Positions per beat. The half beats at which steps change are among them. */
constexpr int resolution = 32;

/** The pattern of the preset "Binary Groove". */
constexpr double restHertz = 500.0;
constexpr std::array patternOffsets { 28.0f, -16.0f, 22.0f, -12.0f };
constexpr double patternBeats = 16.0;
} // namespace

void motionCurves::writeLfoShapes (std::ostream& out)
{
    for (const auto& row : shapeRows)
        writeShape (out, row);
}

void motionCurves::writeSteps (std::ostream& out, double beats)
{
    constexpr auto notOn = -1.0;
    std::array<double, frequencer::numSteps> begins;
    begins.fill (notOn);

    for (int line = 0; line <= (int) (beats * resolution); ++line)
    {
        const auto position = (double) line / resolution;
        const auto result = frequencer::evaluate (position, 0.0f, {});

        for (std::size_t step = 0; step < begins.size(); ++step)
        {
            const auto isOn = result.stepLit[step] && position < beats;

            if (isOn && begins[step] == notOn)
                begins[step] = position;

            if (! isOn && begins[step] != notOn)
            {
                out << step + 1 << ' ' << begins[step] << ' ' << position << '\n';
                begins[step] = notOn;
            }
        }
    }
}

void motionCurves::writePattern (std::ostream& out)
{
    frequencer::Offsets offsets;
    offsets.highpass.fill (0.5f);
    offsets.lowpass.fill (0.5f);

    for (std::size_t step = 0; step < patternOffsets.size(); ++step)
        offsets.lowpass[step] = 0.5f + patternOffsets[step] / 200.0f;

    for (int line = 0; line < (int) (patternBeats * resolution); ++line)
    {
        const auto position = (double) line / resolution;
        const auto result = frequencer::evaluate (position, 0.0f, offsets);

        // Half of the sum moves the knob, whose whole travel is three decades.
        const auto travel = (double) result.lowpass * 0.5;
        out << position << ' ' << travel << ' ' << restHertz * std::pow (1000.0, travel) << '\n';
    }
}
