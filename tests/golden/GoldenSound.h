// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "support/scenario/Playback.h"
#include "support/scenario/Scenario.h"

/** Digests of the sound, and the file that holds them. Without JUCE. */
namespace golden
{

/** The random sessions whose digests are kept. */
inline constexpr std::uint32_t firstSeed = 60001, lastSeed = 60200;

/** Every tenth session has NaN and infinity in the sound, and every tenth a host that sends nonsense. */
[[nodiscard]] scenario::Scenario sessionOf (std::uint32_t seed);

/** A digest of numbers by their bits.
    Source: G. Fowler, L. C. Noll, P. Vo, FNV-1a, 1991, 64 bits wide. */
class Digest
{
public:
    /** Any NaN counts as the same: its sign and payload are the processor's business. */
    void add (std::span<const float> samples);
    void add (const std::string& text);

    /** 16 hexadecimal digits. */
    [[nodiscard]] std::string text() const;

private:
    void addBits (std::uint32_t bits);
    void addByte (std::uint8_t byte);

    std::uint64_t value = 0xcbf29ce484222325u;
};

/** The digest of every sample. */
[[nodiscard]] std::string digestOf (const scenario::Output& output);

/** The rows of sound.txt that begin with this word. */
[[nodiscard]] std::vector<std::string> rowsOf (const std::string& kind);

} // namespace golden
