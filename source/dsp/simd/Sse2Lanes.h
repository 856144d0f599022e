// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <emmintrin.h>

class StereoPair;

/** The bit patterns of two doubles, as integers. */
class BitPair
{
public:
    /** The same pattern on both sides. */
    [[nodiscard]] static BitPair both (std::uint64_t bits) noexcept
    {
        return BitPair (_mm_set1_epi64x ((long long) bits));
    }

    /** Lane by lane, without carry from one to the other. */
    friend BitPair operator+ (BitPair a, BitPair b) noexcept { return BitPair (_mm_add_epi64 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitPair operator- (BitPair a, BitPair b) noexcept { return BitPair (_mm_sub_epi64 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitPair operator& (BitPair a, BitPair b) noexcept { return BitPair (_mm_and_si128 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitPair operator| (BitPair a, BitPair b) noexcept { return BitPair (_mm_or_si128 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitPair operator^ (BitPair a, BitPair b) noexcept { return BitPair (_mm_xor_si128 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitPair operator<< (BitPair a, int count) noexcept { return BitPair (_mm_slli_epi64 (a.v, count)); }
    /** Lane by lane; zeros come in. */
    friend BitPair operator>> (BitPair a, int count) noexcept { return BitPair (_mm_srli_epi64 (a.v, count)); }

    /** The entry of a table for each lane. */
    template <std::size_t size>
    [[nodiscard]] friend BitPair lookUp (const std::array<std::uint64_t, size>& table, BitPair index) noexcept
    {
        return BitPair (_mm_unpacklo_epi64 (load (&table[index.low<0>()]), load (&table[index.low<4>()])));
    }

private:
    friend class StereoPair;

    explicit BitPair (__m128i newBits) noexcept : v (newBits) {}

    [[nodiscard]] static __m128i load (const std::uint64_t* p) noexcept
    {
        return _mm_loadl_epi64 (reinterpret_cast<const __m128i*> (p));
    }

    /** A number below 65536, from one of the eight sixteenths. */
    template <int sixteenth>
    [[nodiscard]] std::size_t low() const noexcept
    {
        return (std::size_t) _mm_extract_epi16 (v, sixteenth);
    }

    __m128i v;
};

/** One number for the left channel and one for the right. They lie in one register, so that every operation costs what it
    costs for one channel. */
class StereoPair
{
public:
    /** Not initialised, unless by braces: whole blocks are filled at once. */
    StereoPair() noexcept = default;

    /** The two sides. */
    StereoPair (double left, double right) noexcept : v (_mm_set_pd (right, left)) {}

    /** The same number on both sides. */
    [[nodiscard]] static StereoPair both (double x) noexcept { return StereoPair (_mm_set1_pd (x)); }

    /** Two samples, exactly. */
    [[nodiscard]] static StereoPair widened (float left, float right) noexcept
    {
        return StereoPair (_mm_cvtps_pd (_mm_unpacklo_ps (_mm_set_ss (left), _mm_set_ss (right))));
    }

    /** Rounds both sides. */
    void narrowTo (float& left, float& right) const noexcept
    {
        const auto narrow = _mm_cvtpd_ps (v);
        left = _mm_cvtss_f32 (narrow);
        right = _mm_cvtss_f32 (_mm_shuffle_ps (narrow, narrow, 1));
    }

    /** The left side alone. */
    [[nodiscard]] double left() const noexcept { return _mm_cvtsd_f64 (v); }

    /** The right side alone. */
    [[nodiscard]] double right() const noexcept { return _mm_cvtsd_f64 (_mm_unpackhi_pd (v, v)); }

    /** Each side without its sign. */
    [[nodiscard]] StereoPair magnitude() const noexcept { return StereoPair (_mm_andnot_pd (_mm_set1_pd (-0.0), v)); }

    /** Lane by lane. */
    friend StereoPair operator+ (StereoPair a, StereoPair b) noexcept { return StereoPair (_mm_add_pd (a.v, b.v)); }
    /** Lane by lane. */
    friend StereoPair operator- (StereoPair a, StereoPair b) noexcept { return StereoPair (_mm_sub_pd (a.v, b.v)); }
    /** Lane by lane. */
    friend StereoPair operator* (StereoPair a, StereoPair b) noexcept { return StereoPair (_mm_mul_pd (a.v, b.v)); }
    /** Lane by lane. */
    friend StereoPair operator/ (StereoPair a, StereoPair b) noexcept { return StereoPair (_mm_div_pd (a.v, b.v)); }

    /** a where it is less than b, and b elsewhere. */
    [[nodiscard]] friend StereoPair lesserOf (StereoPair a, StereoPair b) noexcept
    {
        return StereoPair (_mm_min_pd (a.v, b.v));
    }

    /** a where it is greater than b, and b elsewhere. */
    [[nodiscard]] friend StereoPair greaterOf (StereoPair a, StereoPair b) noexcept
    {
        return StereoPair (_mm_max_pd (a.v, b.v));
    }

    /** x where a is greater than b, and y elsewhere. */
    [[nodiscard]] friend StereoPair whereGreater (StereoPair a, StereoPair b, StereoPair x, StereoPair y) noexcept
    {
        return choose (_mm_cmpgt_pd (a.v, b.v), x, y);
    }

    /** x where a is at least b, and y elsewhere. */
    [[nodiscard]] friend StereoPair whereAtLeast (StereoPair a, StereoPair b, StereoPair x, StereoPair y) noexcept
    {
        return choose (_mm_cmpge_pd (a.v, b.v), x, y);
    }

    /** True if a is at least b on either side. */
    [[nodiscard]] friend bool isAnyAtLeast (StereoPair a, StereoPair b) noexcept
    {
        return _mm_movemask_pd (_mm_cmpge_pd (a.v, b.v)) != 0;
    }

    /** The patterns of two numbers. */
    [[nodiscard]] BitPair bits() const noexcept { return BitPair (_mm_castpd_si128 (v)); }

    /** The numbers of two patterns. */
    [[nodiscard]] static StereoPair ofBits (BitPair bits) noexcept { return StereoPair (_mm_castsi128_pd (bits.v)); }

    /** Converts the samples of four frames to double. */
    friend void widenFour (const float* left, const float* right, StereoPair* pairs) noexcept
    {
        const auto l = _mm_loadu_ps (left);
        const auto r = _mm_loadu_ps (right);
        const auto first = _mm_unpacklo_ps (l, r);
        const auto second = _mm_unpackhi_ps (l, r);
        pairs[0].v = _mm_cvtps_pd (first);
        pairs[1].v = _mm_cvtps_pd (_mm_movehl_ps (first, first));
        pairs[2].v = _mm_cvtps_pd (second);
        pairs[3].v = _mm_cvtps_pd (_mm_movehl_ps (second, second));
    }

    /** Converts four frames back to float. */
    friend void narrowFour (const StereoPair* pairs, float* left, float* right) noexcept
    {
        const auto first = _mm_movelh_ps (_mm_cvtpd_ps (pairs[0].v), _mm_cvtpd_ps (pairs[1].v));
        const auto second = _mm_movelh_ps (_mm_cvtpd_ps (pairs[2].v), _mm_cvtpd_ps (pairs[3].v));
        _mm_storeu_ps (left, _mm_shuffle_ps (first, second, _MM_SHUFFLE (2, 0, 2, 0)));
        _mm_storeu_ps (right, _mm_shuffle_ps (first, second, _MM_SHUFFLE (3, 1, 3, 1)));
    }

private:
    friend class FloatQuad;

    explicit StereoPair (__m128d newPair) noexcept : v (newPair) {}

    [[nodiscard]] static StereoPair choose (__m128d mask, StereoPair x, StereoPair y) noexcept
    {
        return StereoPair (_mm_or_pd (_mm_and_pd (mask, x.v), _mm_andnot_pd (mask, y.v)));
    }

    __m128d v;
};

/** Four floats in one register. What the control side has four of, it moves together. */
class FloatQuad
{
public:
    static constexpr std::size_t size = 4;
    using Values = std::array<float, size>;

    /** Not initialised, unless by braces. */
    FloatQuad() noexcept = default;

    /** One number for each lane. */
    FloatQuad (float a, float b, float c, float d) noexcept : v (_mm_setr_ps (a, b, c, d)) {}
    /** The four of an array. */
    explicit FloatQuad (const Values& values) noexcept : v (_mm_loadu_ps (values.data())) {}

    /** The same number four times. */
    [[nodiscard]] static FloatQuad all (float x) noexcept { return FloatQuad (_mm_set1_ps (x)); }

    /** All four. */
    [[nodiscard]] Values values() const noexcept
    {
        Values result;
        _mm_storeu_ps (result.data(), v);
        return result;
    }

    /** The number of one lane. */
    template <std::size_t lane>
    [[nodiscard]] float get() const noexcept
    {
        return _mm_cvtss_f32 (_mm_shuffle_ps (v, v, (int) lane));
    }

    /** The same but for one lane. */
    template <std::size_t lane>
    [[nodiscard]] FloatQuad with (float x) const noexcept
    {
        auto changed = values();
        changed[lane] = x;
        return FloatQuad (changed);
    }

    /** Lanes 0 and 1 as doubles, exactly. */
    [[nodiscard]] StereoPair firstHalf() const noexcept { return StereoPair (_mm_cvtps_pd (v)); }

    /** Lanes 2 and 3 as doubles, exactly. */
    [[nodiscard]] StereoPair secondHalf() const noexcept { return StereoPair (_mm_cvtps_pd (_mm_movehl_ps (v, v))); }

    /** Four doubles, rounded. */
    [[nodiscard]] static FloatQuad narrowed (StereoPair first, StereoPair second) noexcept
    {
        return FloatQuad (_mm_movelh_ps (_mm_cvtpd_ps (first.v), _mm_cvtpd_ps (second.v)));
    }

    /** Each without its sign. */
    [[nodiscard]] FloatQuad magnitude() const noexcept { return FloatQuad (_mm_andnot_ps (_mm_set1_ps (-0.0f), v)); }

    /** Lane by lane. */
    friend FloatQuad operator+ (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (_mm_add_ps (a.v, b.v)); }
    /** Lane by lane. */
    friend FloatQuad operator- (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (_mm_sub_ps (a.v, b.v)); }
    /** Lane by lane. */
    friend FloatQuad operator* (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (_mm_mul_ps (a.v, b.v)); }
    /** Lane by lane. */
    friend FloatQuad operator/ (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (_mm_div_ps (a.v, b.v)); }

    /** a where it is less than b, and b elsewhere. */
    [[nodiscard]] friend FloatQuad lesserOf (FloatQuad a, FloatQuad b) noexcept
    {
        return FloatQuad (_mm_min_ps (a.v, b.v));
    }

    /** a where it is greater than b, and b elsewhere. */
    [[nodiscard]] friend FloatQuad greaterOf (FloatQuad a, FloatQuad b) noexcept
    {
        return FloatQuad (_mm_max_ps (a.v, b.v));
    }

    /** x where a is greater than b, and y elsewhere. */
    [[nodiscard]] friend FloatQuad whereGreater (FloatQuad a, FloatQuad b, FloatQuad x, FloatQuad y) noexcept
    {
        return choose (_mm_cmpgt_ps (a.v, b.v), x, y);
    }

    /** x where a is at least b, and y elsewhere. */
    [[nodiscard]] friend FloatQuad whereAtLeast (FloatQuad a, FloatQuad b, FloatQuad x, FloatQuad y) noexcept
    {
        return choose (_mm_cmpge_ps (a.v, b.v), x, y);
    }

private:
    explicit FloatQuad (__m128 newQuad) noexcept : v (newQuad) {}

    [[nodiscard]] static FloatQuad choose (__m128 mask, FloatQuad x, FloatQuad y) noexcept
    {
        return FloatQuad (_mm_or_ps (_mm_and_ps (mask, x.v), _mm_andnot_ps (mask, y.v)));
    }

    __m128 v;
};
