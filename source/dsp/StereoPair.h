// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#if defined (__SSE2__) && ! defined (TAMSILE_PLAIN_STEREO)
#include <emmintrin.h>
#else
#include <cmath>
#endif

/** One number for the left channel and one for the right, on which every operation works alike.

    With SSE2 the two lie in one register and every operation costs what it costs for one channel; elsewhere, and with
    TAMSILE_PLAIN_STEREO defined, they are two doubles. Both give the same bits: the operations are the same, each
    rounded once. */
class StereoPair
{
public:
#if defined (__SSE2__) && ! defined (TAMSILE_PLAIN_STEREO)
    StereoPair() noexcept : pair (_mm_setzero_pd()) {}
    StereoPair (double left, double right) noexcept : pair (_mm_set_pd (right, left)) {}

    [[nodiscard]] static StereoPair both (double x) noexcept { return StereoPair (_mm_set1_pd (x)); }

    [[nodiscard]] double left() const noexcept { return _mm_cvtsd_f64 (pair); }
    [[nodiscard]] double right() const noexcept { return _mm_cvtsd_f64 (_mm_unpackhi_pd (pair, pair)); }

    [[nodiscard]] StereoPair magnitude() const noexcept
    {
        return StereoPair (_mm_andnot_pd (_mm_set1_pd (-0.0), pair));
    }

    friend StereoPair operator+ (StereoPair a, StereoPair b) noexcept { return StereoPair (_mm_add_pd (a.pair, b.pair)); }
    friend StereoPair operator- (StereoPair a, StereoPair b) noexcept { return StereoPair (_mm_sub_pd (a.pair, b.pair)); }
    friend StereoPair operator* (StereoPair a, StereoPair b) noexcept { return StereoPair (_mm_mul_pd (a.pair, b.pair)); }
    friend StereoPair operator/ (StereoPair a, StereoPair b) noexcept { return StereoPair (_mm_div_pd (a.pair, b.pair)); }

private:
    explicit StereoPair (__m128d newPair) noexcept : pair (newPair) {}

    __m128d pair;
#else
    StereoPair() noexcept = default;
    StereoPair (double left, double right) noexcept : l (left), r (right) {}

    [[nodiscard]] static StereoPair both (double x) noexcept { return { x, x }; }

    [[nodiscard]] double left() const noexcept { return l; }
    [[nodiscard]] double right() const noexcept { return r; }
    [[nodiscard]] StereoPair magnitude() const noexcept { return { std::abs (l), std::abs (r) }; }

    friend StereoPair operator+ (StereoPair a, StereoPair b) noexcept { return { a.l + b.l, a.r + b.r }; }
    friend StereoPair operator- (StereoPair a, StereoPair b) noexcept { return { a.l - b.l, a.r - b.r }; }
    friend StereoPair operator* (StereoPair a, StereoPair b) noexcept { return { a.l * b.l, a.r * b.r }; }
    friend StereoPair operator/ (StereoPair a, StereoPair b) noexcept { return { a.l / b.l, a.r / b.r }; }

private:
    double l = 0.0;
    double r = 0.0;
#endif
};
