// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>

/** Numbers side by side, for processors without lanes of their own. */
template <typename Number, std::size_t numLanes>
class PlainLanes
{
public:
    static constexpr std::size_t size = numLanes;
    using Values = std::array<Number, numLanes>;

    /** Not initialised, unless by braces: whole blocks are filled at once. */
    PlainLanes() noexcept = default;

    explicit PlainLanes (const Values& newLanes) noexcept : lanes (newLanes) {}

    template <typename... Numbers>
    PlainLanes (Number first, Number second, Numbers... others) noexcept : lanes { first, second, others... }
    {
    }

    /** The same number in every lane. */
    [[nodiscard]] static PlainLanes all (Number x) noexcept
    {
        return each ([x] (std::size_t) { return x; });
    }

    /** The number of each lane. */
    [[nodiscard]] Values values() const noexcept { return lanes; }

    /** The number of one lane. */
    template <std::size_t lane>
    [[nodiscard]] Number get() const noexcept
    {
        return lanes[lane];
    }

    /** The same but for one lane. */
    template <std::size_t lane>
    [[nodiscard]] PlainLanes with (Number x) const noexcept
    {
        auto changed = lanes;
        changed[lane] = x;
        return PlainLanes (changed);
    }

    /** Each without its sign. */
    [[nodiscard]] PlainLanes magnitude() const noexcept
    {
        return each ([this] (std::size_t i) { return std::abs (lanes[i]); });
    }

    friend PlainLanes operator+ (PlainLanes a, PlainLanes b) noexcept { return each (a, b, std::plus {}); }
    friend PlainLanes operator- (PlainLanes a, PlainLanes b) noexcept { return each (a, b, std::minus {}); }
    friend PlainLanes operator* (PlainLanes a, PlainLanes b) noexcept { return each (a, b, std::multiplies {}); }
    friend PlainLanes operator/ (PlainLanes a, PlainLanes b) noexcept { return each (a, b, std::divides {}); }

    // What only bit patterns have.
    friend PlainLanes operator& (PlainLanes a, PlainLanes b) noexcept { return each (a, b, std::bit_and {}); }
    friend PlainLanes operator| (PlainLanes a, PlainLanes b) noexcept { return each (a, b, std::bit_or {}); }
    friend PlainLanes operator^ (PlainLanes a, PlainLanes b) noexcept { return each (a, b, std::bit_xor {}); }

    friend PlainLanes operator<< (PlainLanes a, int count) noexcept
    {
        return each ([=] (std::size_t i) { return a.lanes[i] << count; });
    }

    friend PlainLanes operator>> (PlainLanes a, int count) noexcept
    {
        return each ([=] (std::size_t i) { return a.lanes[i] >> count; });
    }

    /** The entry of a table for each lane. */
    template <std::size_t tableSize>
    [[nodiscard]] friend PlainLanes lookUp (const std::array<Number, tableSize>& table, PlainLanes index) noexcept
    {
        return each ([&] (std::size_t i) { return table[(std::size_t) index.lanes[i]]; });
    }

    /** a where it is less than b, and b elsewhere. */
    [[nodiscard]] friend PlainLanes lesserOf (PlainLanes a, PlainLanes b) noexcept
    {
        return each (a, b, [] (Number x, Number y) { return x < y ? x : y; });
    }

    /** a where it is greater than b, and b elsewhere. */
    [[nodiscard]] friend PlainLanes greaterOf (PlainLanes a, PlainLanes b) noexcept
    {
        return each (a, b, [] (Number x, Number y) { return x > y ? x : y; });
    }

    /** x where a is greater than b, and y elsewhere. */
    [[nodiscard]] friend PlainLanes whereGreater (PlainLanes a, PlainLanes b, PlainLanes x, PlainLanes y) noexcept
    {
        return each ([=] (std::size_t i) { return a.lanes[i] > b.lanes[i] ? x.lanes[i] : y.lanes[i]; });
    }

    /** x where a is at least b, and y elsewhere. */
    [[nodiscard]] friend PlainLanes whereAtLeast (PlainLanes a, PlainLanes b, PlainLanes x, PlainLanes y) noexcept
    {
        return each ([=] (std::size_t i) { return a.lanes[i] >= b.lanes[i] ? x.lanes[i] : y.lanes[i]; });
    }

    /** True if a is at least b in any lane. */
    [[nodiscard]] friend bool isAnyAtLeast (PlainLanes a, PlainLanes b) noexcept
    {
        auto isAny = false;

        for (std::size_t i = 0; i < numLanes; ++i)
            isAny |= a.lanes[i] >= b.lanes[i];

        return isAny;
    }

    // What only a pair of channels has: the same number on both sides, two samples exactly, both sides rounded, each side.
    [[nodiscard]] static PlainLanes both (Number x) noexcept { return { x, x }; }
    [[nodiscard]] static PlainLanes widened (float l, float r) noexcept { return { (double) l, (double) r }; }
    [[nodiscard]] double left() const noexcept { return lanes[0]; }
    [[nodiscard]] double right() const noexcept { return lanes[1]; }

    /** The bit patterns. */
    [[nodiscard]] PlainLanes<std::uint64_t, numLanes> bits() const noexcept
    {
        return PlainLanes<std::uint64_t, numLanes> (std::bit_cast<std::array<std::uint64_t, numLanes>> (lanes));
    }

    [[nodiscard]] static PlainLanes ofBits (PlainLanes<std::uint64_t, numLanes> bits) noexcept
    {
        return PlainLanes (std::bit_cast<Values> (bits.values()));
    }

    void narrowTo (float& l, float& r) const noexcept
    {
        l = (float) lanes[0];
        r = (float) lanes[1];
    }

    // What only four floats have: two lanes as doubles, and four doubles rounded.
    [[nodiscard]] PlainLanes<double, 2> firstHalf() const noexcept { return { (double) lanes[0], (double) lanes[1] }; }
    [[nodiscard]] PlainLanes<double, 2> secondHalf() const noexcept { return { (double) lanes[2], (double) lanes[3] }; }

    [[nodiscard]] static PlainLanes narrowed (const PlainLanes<double, 2>& first,
                                              const PlainLanes<double, 2>& second) noexcept
    {
        return { (float) first.left(), (float) first.right(), (float) second.left(), (float) second.right() };
    }

private:
    template <typename Result>
    [[nodiscard]] static PlainLanes each (Result result) noexcept
    {
        Values values;

        for (std::size_t i = 0; i < numLanes; ++i)
            values[i] = result (i);

        return PlainLanes (values);
    }

    template <typename Result>
    [[nodiscard]] static PlainLanes each (const PlainLanes& a, const PlainLanes& b, Result result) noexcept
    {
        return each ([&] (std::size_t i) { return result (a.lanes[i], b.lanes[i]); });
    }

    Values lanes;
};

/** One number for the left channel and one for the right. */
using StereoPair = PlainLanes<double, 2>;

/** Four floats. */
using FloatQuad = PlainLanes<float, 4>;

/** The bit patterns of two doubles, as integers. */
using BitPair = PlainLanes<std::uint64_t, 2>;

/** Converts the samples of four frames to double. */
inline void widenFour (const float* left, const float* right, StereoPair* pairs) noexcept
{
    for (std::size_t i = 0; i < 4; ++i)
        pairs[i] = StereoPair::widened (left[i], right[i]);
}

/** Converts four frames back to float. */
inline void narrowFour (const StereoPair* pairs, float* left, float* right) noexcept
{
    for (std::size_t i = 0; i < 4; ++i)
        pairs[i].narrowTo (left[i], right[i]);
}
