// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

#include "reference/ReferenceEngine.h"
#include "support/scenario/Dice.h"

namespace scenario
{

/** A host's transport from block to block. */
class RandomTransport
{
public:
    /** @param diceToUse  must outlive it */
    RandomTransport (Dice& diceToUse, bool allowStrange);

    [[nodiscard]] std::string name() const;

    /** What the host tells at the start of the next block. */
    [[nodiscard]] reference::Transport now();

    /** Moves on by a block. */
    void advance (int numFrames, double rate);

private:
    enum class Kind
    {
        noPlayHead,
        noPosition,
        atZero,
        stopped,
        playing,
        looping,
        jumping,
        preRoll, // from below zero upwards
        zeroTempo,
        tempoRamp,
        changing, // another of these every now and then
        strange,
    };

    void makeStrange (reference::Transport& transport);

    Dice& dice;
    Kind kind {};
    Kind current {};
    double bpm = 120.0;
    double ppq = 0.0;
    int numerator = 4;
    int denominator = 4;
    double loopStart = 0.0;
    double loopLength = 1.0;
};

} // namespace scenario
