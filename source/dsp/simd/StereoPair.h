// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstddef>
#include <span>

#if defined(__SSE2__) && ! defined(TAMSILE_PLAIN_STEREO)
#define TAMSILE_SSE2_STEREO 1
#include <emmintrin.h>
#endif

/** One number for the left channel and one for the right, on which every operation works alike.

    With SSE2 the two lie in one register and every operation costs what it costs for one channel; elsewhere, and with
    TAMSILE_PLAIN_STEREO defined, they are two doubles. Both give the same bits: the operations are the same, each
    rounded once. */
class StereoPair
{
public:
#if TAMSILE_SSE2_STEREO
    /** Not initialised, unless by braces: runs of frames are filled at once. */
    StereoPair() noexcept = default;

    /** The two sides. */
    StereoPair (double left, double right) noexcept : pair (_mm_set_pd (right, left)) {}

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
        const auto narrow = _mm_cvtpd_ps (pair);
        left = _mm_cvtss_f32 (narrow);
        right = _mm_cvtss_f32 (_mm_shuffle_ps (narrow, narrow, 1));
    }

    /** The left side alone. */
    [[nodiscard]] double left() const noexcept { return _mm_cvtsd_f64 (pair); }

    /** The right side alone. */
    [[nodiscard]] double right() const noexcept { return _mm_cvtsd_f64 (_mm_unpackhi_pd (pair, pair)); }

    /** Each side without its sign. */
    [[nodiscard]] StereoPair magnitude() const noexcept
    {
        return StereoPair (_mm_andnot_pd (_mm_set1_pd (-0.0), pair));
    }

    /** Each side by itself. */
    friend StereoPair operator+ (StereoPair a, StereoPair b) noexcept
    {
        return StereoPair (_mm_add_pd (a.pair, b.pair));
    }

    /** Each side by itself. */
    friend StereoPair operator- (StereoPair a, StereoPair b) noexcept
    {
        return StereoPair (_mm_sub_pd (a.pair, b.pair));
    }

    /** Each side by itself. */
    friend StereoPair operator* (StereoPair a, StereoPair b) noexcept
    {
        return StereoPair (_mm_mul_pd (a.pair, b.pair));
    }

    /** Each side by itself. */
    friend StereoPair operator/ (StereoPair a, StereoPair b) noexcept
    {
        return StereoPair (_mm_div_pd (a.pair, b.pair));
    }

private:
    explicit StereoPair (__m128d newPair) noexcept : pair (newPair) {}

    friend void widen (const float* left, const float* right, std::span<StereoPair> pairs) noexcept;
    friend void narrow (std::span<const StereoPair> pairs, float* left, float* right) noexcept;

    __m128d pair;
#else
    StereoPair() noexcept = default;
    StereoPair (double left, double right) noexcept : l (left), r (right) {}

    [[nodiscard]] static StereoPair both (double x) noexcept { return { x, x }; }
    /** Two samples, exactly. */
    [[nodiscard]] static StereoPair widened (float left, float right) noexcept
    {
        return { (double) left, (double) right };
    }

    /** Rounds both sides. */
    void narrowTo (float& left, float& right) const noexcept
    {
        left = (float) l;
        right = (float) r;
    }

    [[nodiscard]] double left() const noexcept { return l; }
    [[nodiscard]] double right() const noexcept { return r; }
    [[nodiscard]] StereoPair magnitude() const noexcept { return { std::abs (l), std::abs (r) }; }

    friend StereoPair operator+ (StereoPair a, StereoPair b) noexcept { return { a.l + b.l, a.r + b.r }; }
    friend StereoPair operator- (StereoPair a, StereoPair b) noexcept { return { a.l - b.l, a.r - b.r }; }
    friend StereoPair operator* (StereoPair a, StereoPair b) noexcept { return { a.l * b.l, a.r * b.r }; }
    friend StereoPair operator/ (StereoPair a, StereoPair b) noexcept { return { a.l / b.l, a.r / b.r }; }

private:
    double l, r;
#endif
};

/** Fills pairs with as many samples of each side. */
inline void widen (const float* left, const float* right, std::span<StereoPair> pairs) noexcept
{
    std::size_t i = 0;

#if TAMSILE_SSE2_STEREO
    for (; i + 4 <= pairs.size(); i += 4)
    {
        const auto l = _mm_loadu_ps (left + i);
        const auto r = _mm_loadu_ps (right + i);
        const auto first = _mm_unpacklo_ps (l, r);
        const auto second = _mm_unpackhi_ps (l, r);
        pairs[i].pair = _mm_cvtps_pd (first);
        pairs[i + 1].pair = _mm_cvtps_pd (_mm_movehl_ps (first, first));
        pairs[i + 2].pair = _mm_cvtps_pd (second);
        pairs[i + 3].pair = _mm_cvtps_pd (_mm_movehl_ps (second, second));
    }
#endif

    for (; i < pairs.size(); ++i)
        pairs[i] = StereoPair::widened (left[i], right[i]);
}

/** Rounds pairs to samples of each side. */
inline void narrow (std::span<const StereoPair> pairs, float* left, float* right) noexcept
{
    std::size_t i = 0;

#if TAMSILE_SSE2_STEREO
    for (; i + 4 <= pairs.size(); i += 4)
    {
        const auto first = _mm_movelh_ps (_mm_cvtpd_ps (pairs[i].pair), _mm_cvtpd_ps (pairs[i + 1].pair));
        const auto second = _mm_movelh_ps (_mm_cvtpd_ps (pairs[i + 2].pair), _mm_cvtpd_ps (pairs[i + 3].pair));
        _mm_storeu_ps (left + i, _mm_shuffle_ps (first, second, _MM_SHUFFLE (2, 0, 2, 0)));
        _mm_storeu_ps (right + i, _mm_shuffle_ps (first, second, _MM_SHUFFLE (3, 1, 3, 1)));
    }
#endif

    for (; i < pairs.size(); ++i)
        pairs[i].narrowTo (left[i], right[i]);
}
