// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

#include "dsp/simd/StereoPair.h"

/** Four floats, on which every operation works alike: what the control side has four of, it moves together.

    With SSE2 they lie in one register; elsewhere, and with TAMSILE_PLAIN_STEREO defined, they are four floats. Both give the
    same bits, also for values that are no numbers. */
class FloatQuad
{
public:
    static constexpr std::size_t size = 4;
    using Values = std::array<float, size>;

#if TAMSILE_SSE2_STEREO
    /** Not initialised, unless by braces. */
    FloatQuad() noexcept = default;

    FloatQuad (float a, float b, float c, float d) noexcept : quad (_mm_setr_ps (a, b, c, d)) {}
    explicit FloatQuad (const Values& values) noexcept : quad (_mm_loadu_ps (values.data())) {}

    /** The same number four times. */
    [[nodiscard]] static FloatQuad all (float x) noexcept { return FloatQuad (_mm_set1_ps (x)); }

    [[nodiscard]] Values values() const noexcept
    {
        Values result;
        _mm_storeu_ps (result.data(), quad);
        return result;
    }

    /** The first of them alone. */
    [[nodiscard]] float first() const noexcept { return _mm_cvtss_f32 (quad); }

    /** The same but for the first. */
    [[nodiscard]] FloatQuad withFirst (float x) const noexcept
    {
        return FloatQuad (_mm_move_ss (quad, _mm_set_ss (x)));
    }

    /** Each without its sign. */
    [[nodiscard]] FloatQuad magnitude() const noexcept { return FloatQuad (_mm_andnot_ps (_mm_set1_ps (-0.0f), quad)); }

    friend FloatQuad operator+ (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (_mm_add_ps (a.quad, b.quad)); }
    friend FloatQuad operator- (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (_mm_sub_ps (a.quad, b.quad)); }
    friend FloatQuad operator* (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (_mm_mul_ps (a.quad, b.quad)); }
    friend FloatQuad operator/ (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (_mm_div_ps (a.quad, b.quad)); }

    /** a where it is less than b, and b elsewhere. */
    [[nodiscard]] friend FloatQuad lesserOf (FloatQuad a, FloatQuad b) noexcept
    {
        return FloatQuad (_mm_min_ps (a.quad, b.quad));
    }

    /** a where it is greater than b, and b elsewhere. */
    [[nodiscard]] friend FloatQuad greaterOf (FloatQuad a, FloatQuad b) noexcept
    {
        return FloatQuad (_mm_max_ps (a.quad, b.quad));
    }

    /** x where a is greater than b, and y elsewhere. */
    [[nodiscard]] friend FloatQuad whereGreater (FloatQuad a, FloatQuad b, FloatQuad x, FloatQuad y) noexcept
    {
        return choose (_mm_cmpgt_ps (a.quad, b.quad), x, y);
    }

    /** x where a is at least b, and y elsewhere. */
    [[nodiscard]] friend FloatQuad whereAtLeast (FloatQuad a, FloatQuad b, FloatQuad x, FloatQuad y) noexcept
    {
        return choose (_mm_cmpge_ps (a.quad, b.quad), x, y);
    }

private:
    explicit FloatQuad (__m128 newQuad) noexcept : quad (newQuad) {}

    [[nodiscard]] static FloatQuad choose (__m128 mask, FloatQuad x, FloatQuad y) noexcept
    {
        return FloatQuad (_mm_or_ps (_mm_and_ps (mask, x.quad), _mm_andnot_ps (mask, y.quad)));
    }

    __m128 quad;
#else
    FloatQuad() noexcept = default;
    FloatQuad (float a, float b, float c, float d) noexcept : quad { a, b, c, d } {}
    explicit FloatQuad (const Values& values) noexcept : quad (values) {}

    [[nodiscard]] static FloatQuad all (float x) noexcept { return { x, x, x, x }; }
    [[nodiscard]] Values values() const noexcept { return quad; }
    [[nodiscard]] float first() const noexcept { return quad[0]; }
    [[nodiscard]] FloatQuad withFirst (float x) const noexcept { return { x, quad[1], quad[2], quad[3] }; }

    [[nodiscard]] FloatQuad magnitude() const noexcept
    {
        return each ([this] (std::size_t i) { return std::abs (quad[i]); });
    }

    friend FloatQuad operator+ (FloatQuad a, FloatQuad b) noexcept
    {
        return each ([=] (std::size_t i) { return a.quad[i] + b.quad[i]; });
    }

    friend FloatQuad operator- (FloatQuad a, FloatQuad b) noexcept
    {
        return each ([=] (std::size_t i) { return a.quad[i] - b.quad[i]; });
    }

    friend FloatQuad operator* (FloatQuad a, FloatQuad b) noexcept
    {
        return each ([=] (std::size_t i) { return a.quad[i] * b.quad[i]; });
    }

    friend FloatQuad operator/ (FloatQuad a, FloatQuad b) noexcept
    {
        return each ([=] (std::size_t i) { return a.quad[i] / b.quad[i]; });
    }

    [[nodiscard]] friend FloatQuad lesserOf (FloatQuad a, FloatQuad b) noexcept
    {
        return each ([=] (std::size_t i) { return a.quad[i] < b.quad[i] ? a.quad[i] : b.quad[i]; });
    }

    [[nodiscard]] friend FloatQuad greaterOf (FloatQuad a, FloatQuad b) noexcept
    {
        return each ([=] (std::size_t i) { return a.quad[i] > b.quad[i] ? a.quad[i] : b.quad[i]; });
    }

    [[nodiscard]] friend FloatQuad whereGreater (FloatQuad a, FloatQuad b, FloatQuad x, FloatQuad y) noexcept
    {
        return each ([=] (std::size_t i) { return a.quad[i] > b.quad[i] ? x.quad[i] : y.quad[i]; });
    }

    [[nodiscard]] friend FloatQuad whereAtLeast (FloatQuad a, FloatQuad b, FloatQuad x, FloatQuad y) noexcept
    {
        return each ([=] (std::size_t i) { return a.quad[i] >= b.quad[i] ? x.quad[i] : y.quad[i]; });
    }

private:
    template <typename Result>
    [[nodiscard]] static FloatQuad each (Result result) noexcept
    {
        return { result (0), result (1), result (2), result (3) };
    }

    Values quad;
#endif
};
