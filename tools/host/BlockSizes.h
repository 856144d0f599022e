// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <random>

/** The number of frames of each block: always the same, or different for every block as in some hosts. */
class BlockSizes
{
public:
    /** Well above what hosts use, and above the number of frames that the plug-in processes at once, so that this limit can
        be tried. */
    static constexpr int largest = 1 << 20;
    static constexpr int largestRandom = 2048;

    explicit BlockSizes (int fixedSize) : fixed (fixedSize) {}

    /** Sizes from 1 to largestRandom, the same ones for the same seed on every machine. */
    [[nodiscard]] static BlockSizes random (std::uint32_t seed)
    {
        BlockSizes sizes (0);
        sizes.generator.seed (seed);
        return sizes;
    }

    [[nodiscard]] int maximum() const noexcept { return fixed > 0 ? fixed : largestRandom; }

    // The standard's distributions give other numbers elsewhere; the generator itself does not.
    [[nodiscard]] int next() { return fixed > 0 ? fixed : 1 + (int) (generator() % (std::uint32_t) largestRandom); }

private:
    int fixed;
    std::mt19937 generator;
};
