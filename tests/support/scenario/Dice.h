// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>

namespace scenario
{

/** Random numbers by rules that are written here, because the distributions differ between standard libraries. A seed gives
    the same numbers with every compiler. */
class Dice
{
public:
    explicit Dice (std::uint32_t seed) : engine (seed) {}

    /** 32 random bits. */
    [[nodiscard]] std::uint32_t word();

    /** 0 to 1, without 1. */
    [[nodiscard]] double unit();

    /** True this often, between 0 (never) and 1 (always). */
    [[nodiscard]] bool chance (double probability);

    /** A whole number from 0 to count - 1. */
    [[nodiscard]] int below (int count);

    [[nodiscard]] double between (double low, double high);

    /** The position of a parameter, uniform from 0 to 1. */
    [[nodiscard]] float position();

    template <typename Value, std::size_t size>
    [[nodiscard]] Value oneOf (const std::array<Value, size>& values)
    {
        return values[(std::size_t) below ((int) size)];
    }

private:
    std::mt19937 engine;
};

} // namespace scenario
