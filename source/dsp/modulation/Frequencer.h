// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <bitset>

/** The step sequencer: ten overlapping gates, the binary digits of a counter of half beats. Step index j is on for the
    first half of every period of 2^j beats, and the offsets of all steps that are on are summed. */
namespace frequencer
{
inline constexpr int numSteps = 10;

/** What the knobs of the steps say. */
struct Offsets
{
    /** Normalised positions, 0 to 1, with 0.5 as no offset. */
    std::array<float, numSteps> highpass {};
    std::array<float, numSteps> lowpass {};
};

/** The sums of the offsets of some steps, -2 to 2. */
struct Sums
{
    float highpass = 0.0f;
    float lowpass = 0.0f;
};

/** Which steps carry an offset, and what each adds. */
class Pattern
{
public:
    /** Works out what each step adds. */
    explicit Pattern (const Offsets& offsets) noexcept;

    /** Some step carries an offset, whether it is on or not. */
    [[nodiscard]] bool isActive() const noexcept { return carrying.any(); }

    /** What the steps that are on come to.
        Audio thread; never allocates. */
    [[nodiscard]] Sums sumsOf (std::bitset<numSteps> stepsOn) const noexcept;

private:
    std::bitset<numSteps> carrying;
    std::array<Sums, numSteps> gains {};
};

/** What the steps come to at one position. */
struct Result
{
    /** Which steps are on at the position. */
    std::bitset<numSteps> stepLit;

    /** The summed offsets, -2 to 2. */
    float highpass = 0.0f;
    float lowpass = 0.0f;

    /** Some step carries an offset, whether it is on or not. */
    bool active = false;
};

/** The steps alone.
    @param beats       the transport's position
    @param shiftBeats  added to the position
    Audio thread; never allocates. */
[[nodiscard]] std::bitset<numSteps> stepsAt (double beats, float shiftBeats) noexcept;

/** The steps and the sums of their offsets. */
[[nodiscard]] Result evaluate (double beats, float shiftBeats, const Offsets& offsets) noexcept;
} // namespace frequencer
