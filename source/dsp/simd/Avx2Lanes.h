// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <immintrin.h>

class DoubleQuad;

/** The bit patterns of four doubles, as integers. */
class BitQuad
{
public:
    /** The same pattern four times. */
    [[nodiscard]] static BitQuad all (std::uint64_t bits) noexcept
    {
        return BitQuad (_mm256_set1_epi64x ((long long) bits));
    }

    /** Lane by lane, without carry from one to the other. */
    friend BitQuad operator+ (BitQuad a, BitQuad b) noexcept { return BitQuad (_mm256_add_epi64 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitQuad operator- (BitQuad a, BitQuad b) noexcept { return BitQuad (_mm256_sub_epi64 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitQuad operator& (BitQuad a, BitQuad b) noexcept { return BitQuad (_mm256_and_si256 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitQuad operator| (BitQuad a, BitQuad b) noexcept { return BitQuad (_mm256_or_si256 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitQuad operator^ (BitQuad a, BitQuad b) noexcept { return BitQuad (_mm256_xor_si256 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitQuad operator<< (BitQuad a, int count) noexcept { return BitQuad (_mm256_slli_epi64 (a.v, count)); }

private:
    friend class DoubleQuad;
    friend BitQuad bitsOf (DoubleQuad a) noexcept;
    friend DoubleQuad numbersOf (BitQuad bits) noexcept;

    explicit BitQuad (__m256i newBits) noexcept : v (newBits) {}

    __m256i v;
};

/** Four doubles in one register, for processors that have such registers. Every operation gives the bits of a StereoPair's. */
class DoubleQuad
{
public:
    static constexpr std::size_t size = 4;

    /** The bit patterns that go with it. */
    using Bits = BitQuad;

    /** The same number four times. */
    [[nodiscard]] static DoubleQuad all (double x) noexcept { return DoubleQuad (_mm256_set1_pd (x)); }

    /** Four numbers from memory. */
    [[nodiscard]] static DoubleQuad load (const double* values) noexcept
    {
        return DoubleQuad (_mm256_loadu_pd (values));
    }

    /** A pair from memory, twice. */
    [[nodiscard]] static DoubleQuad pair (const double* both) noexcept { return pairs (both, both); }

    /** Two pairs from memory. */
    [[nodiscard]] static DoubleQuad pairs (const double* first, const double* second) noexcept
    {
        return joined (_mm_loadu_pd (first), _mm_loadu_pd (second));
    }

    /** A number from memory twice, and then another. */
    [[nodiscard]] static DoubleQuad twiceEach (const double* first, const double* second) noexcept
    {
        return DoubleQuad (_mm256_blend_pd (_mm256_broadcast_sd (first), _mm256_broadcast_sd (second), 0b1100));
    }

    /** Two samples, exactly, as the first pair. */
    [[nodiscard]] static DoubleQuad widened (float left, float right) noexcept
    {
        return DoubleQuad (
            _mm256_castpd128_pd256 (_mm_cvtps_pd (_mm_unpacklo_ps (_mm_set_ss (left), _mm_set_ss (right)))));
    }

    /** The first pair of either. */
    [[nodiscard]] static DoubleQuad firstAndFirst (DoubleQuad a, DoubleQuad b) noexcept
    {
        return joined (a.first(), b.first());
    }

    /** The second pair of one, and then the first of another. */
    [[nodiscard]] static DoubleQuad secondAndFirst (DoubleQuad a, DoubleQuad b) noexcept
    {
        return DoubleQuad (_mm256_permute2f128_pd (a.v, b.v, 0x21));
    }

    /** All four, to memory. */
    void store (double* values) const noexcept { _mm256_storeu_pd (values, v); }

    /** The first pair, to memory. */
    void storeFirst (double* pair) const noexcept { _mm_storeu_pd (pair, first()); }

    /** The second pair, to memory. */
    void storeSecond (double* pair) const noexcept { _mm_storeu_pd (pair, second()); }

    /** One of both, to memory. */
    template <bool ofSecond>
    void storeHalf (double* pair) const noexcept
    {
        ofSecond ? storeSecond (pair) : storeFirst (pair);
    }

    /** Rounds one pair. */
    template <bool ofSecond>
    void narrow (float& left, float& right) const noexcept
    {
        const auto narrow = _mm_cvtpd_ps (ofSecond ? second() : first());
        left = _mm_cvtss_f32 (narrow);
        right = _mm_cvtss_f32 (_mm_shuffle_ps (narrow, narrow, 1));
    }

    /** Lane by lane. */
    friend DoubleQuad operator+ (DoubleQuad a, DoubleQuad b) noexcept { return DoubleQuad (_mm256_add_pd (a.v, b.v)); }
    /** Lane by lane. */
    friend DoubleQuad operator- (DoubleQuad a, DoubleQuad b) noexcept { return DoubleQuad (_mm256_sub_pd (a.v, b.v)); }
    /** Lane by lane. */
    friend DoubleQuad operator* (DoubleQuad a, DoubleQuad b) noexcept { return DoubleQuad (_mm256_mul_pd (a.v, b.v)); }
    /** Lane by lane. */
    friend DoubleQuad operator/ (DoubleQuad a, DoubleQuad b) noexcept { return DoubleQuad (_mm256_div_pd (a.v, b.v)); }

    /** a where it is less than b, and b elsewhere. */
    [[nodiscard]] friend DoubleQuad lesserOf (DoubleQuad a, DoubleQuad b) noexcept
    {
        return DoubleQuad (_mm256_min_pd (a.v, b.v));
    }

    /** a where it is greater than b, and b elsewhere. */
    [[nodiscard]] friend DoubleQuad greaterOf (DoubleQuad a, DoubleQuad b) noexcept
    {
        return DoubleQuad (_mm256_max_pd (a.v, b.v));
    }

    /** x where a is greater than b, and y elsewhere. */
    [[nodiscard]] friend DoubleQuad whereGreater (DoubleQuad a, DoubleQuad b, DoubleQuad x, DoubleQuad y) noexcept
    {
        return DoubleQuad (_mm256_blendv_pd (y.v, x.v, _mm256_cmp_pd (a.v, b.v, _CMP_GT_OS)));
    }

    /** x where a is at least b, and y elsewhere. */
    [[nodiscard]] friend DoubleQuad whereAtLeast (DoubleQuad a, DoubleQuad b, DoubleQuad x, DoubleQuad y) noexcept
    {
        return DoubleQuad (_mm256_blendv_pd (y.v, x.v, _mm256_cmp_pd (a.v, b.v, _CMP_GE_OS)));
    }

    /** Each without its sign. */
    [[nodiscard]] friend DoubleQuad magnitudeOf (DoubleQuad a) noexcept
    {
        return DoubleQuad (_mm256_andnot_pd (_mm256_set1_pd (-0.0), a.v));
    }

    /** The patterns of four numbers. */
    [[nodiscard]] friend BitQuad bitsOf (DoubleQuad a) noexcept { return BitQuad (_mm256_castpd_si256 (a.v)); }

    friend DoubleQuad numbersOf (BitQuad bits) noexcept;

private:
    explicit DoubleQuad (__m256d newQuad) noexcept : v (newQuad) {}

    [[nodiscard]] static DoubleQuad joined (__m128d first, __m128d second) noexcept
    {
        return DoubleQuad (_mm256_insertf128_pd (_mm256_castpd128_pd256 (first), second, 1));
    }

    [[nodiscard]] __m128d first() const noexcept { return _mm256_castpd256_pd128 (v); }
    [[nodiscard]] __m128d second() const noexcept { return _mm256_extractf128_pd (v, 1); }

    __m256d v;
};

/** The numbers of four patterns. */
[[nodiscard]] inline DoubleQuad numbersOf (BitQuad bits) noexcept { return DoubleQuad (_mm256_castsi256_pd (bits.v)); }
