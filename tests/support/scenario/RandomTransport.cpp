// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/scenario/RandomTransport.h"

#include <array>
#include <limits>

namespace scenario
{

RandomTransport::RandomTransport (Dice& diceToUse, bool allowStrange) : dice (diceToUse)
{
    kind = static_cast<Kind> (dice.below (11));

    if (allowStrange && dice.chance (0.5))
        kind = Kind::strange;

    current = kind;
    // Half of the tempos and places are the round ones that sit exactly on a boundary.
    bpm = dice.chance (0.5) ? 120.0 : dice.between (20.0, 999.0);
    ppq = dice.chance (0.5) ? (double) dice.below (1024) * 0.25 : dice.between (0.0, 700.0);
    numerator = dice.chance (0.5) ? 4 : 1 + dice.below (16);
    denominator = dice.chance (0.5) ? 4 : 1 << dice.below (5);
    loopStart = ppq;
    loopLength = dice.between (0.01, 0.3);

    if (kind == Kind::preRoll)
        ppq = -dice.between (0.0, 0.3);
}

std::string RandomTransport::name() const
{
    static constexpr const char* names[] = { "no play head", "no position", "at zero",  "stopped",
                                             "playing",      "looping",     "jumping",  "pre-roll",
                                             "zero tempo",   "tempo ramp",  "changing", "strange" };
    return names[(int) kind];
}

reference::Transport RandomTransport::now()
{
    if (kind == Kind::changing && dice.chance (0.05))
        current = static_cast<Kind> (dice.below (10));

    reference::Transport transport;
    transport.hasPlayHead = current != Kind::noPlayHead;
    transport.hasPosition = transport.hasPlayHead && current != Kind::noPosition;
    transport.bpm = current == Kind::zeroTempo ? 0.0 : bpm;
    transport.ppqPosition = current == Kind::atZero ? 0.0 : ppq;
    transport.timeSigNumerator = numerator;
    transport.timeSigDenominator = denominator;

    if (current == Kind::strange)
        makeStrange (transport);

    return transport;
}

void RandomTransport::advance (int numFrames, double rate)
{
    const double beats = bpm / 60.0 * numFrames / rate;

    if (current == Kind::noPlayHead || current == Kind::noPosition || current == Kind::atZero
        || current == Kind::stopped)
        return;

    ppq += beats;

    if (current == Kind::looping && ppq >= loopStart + loopLength)
        ppq -= loopLength;

    if (current == Kind::jumping && dice.chance (0.1))
        ppq = dice.chance (0.2) ? 0.0 : dice.between (-4.0, 700.0);

    if (current == Kind::tempoRamp)
        bpm *= 1.001;
}

void RandomTransport::makeStrange (reference::Transport& transport)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double quietNaN = std::numeric_limits<double>::quiet_NaN();

    if (dice.chance (0.3))
        transport.ppqPosition = dice.oneOf (std::array { infinity, -infinity, quietNaN, 1e300, -1e18, 5e-324 });

    if (dice.chance (0.3))
        transport.bpm = dice.oneOf (std::array { infinity, -infinity, quietNaN, 1e300, -120.0, 1e-300 });

    if (dice.chance (0.3))
        transport.timeSigNumerator = dice.oneOf (std::array { 0, -1, 2147483647 });

    if (dice.chance (0.3))
        transport.timeSigDenominator = dice.oneOf (std::array { 0, -4, 2147483647 });
}

} // namespace scenario
