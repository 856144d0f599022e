// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <arm_neon.h>
#include <array>
#include <cstddef>
#include <cstdint>

class StereoPair;

/** The bit patterns of two doubles, as integers. */
class BitPair
{
public:
    /** The same pattern on both sides. */
    [[nodiscard]] static BitPair both (std::uint64_t bits) noexcept { return BitPair (vdupq_n_u64 (bits)); }

    /** Lane by lane, without carry from one to the other. */
    friend BitPair operator+ (BitPair a, BitPair b) noexcept { return BitPair (vaddq_u64 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitPair operator- (BitPair a, BitPair b) noexcept { return BitPair (vsubq_u64 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitPair operator& (BitPair a, BitPair b) noexcept { return BitPair (vandq_u64 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitPair operator| (BitPair a, BitPair b) noexcept { return BitPair (vorrq_u64 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitPair operator^ (BitPair a, BitPair b) noexcept { return BitPair (veorq_u64 (a.v, b.v)); }
    /** Lane by lane. */
    friend BitPair operator<< (BitPair a, int count) noexcept { return shifted (a, count); }
    /** Lane by lane; zeros come in. */
    friend BitPair operator>> (BitPair a, int count) noexcept { return shifted (a, -count); }

    /** The entry of a table for each lane. */
    template <std::size_t size>
    [[nodiscard]] friend BitPair lookUp (const std::array<std::uint64_t, size>& table, BitPair index) noexcept
    {
        const auto first = vld1_u64 (&table[vgetq_lane_u64 (index.v, 0)]);
        return BitPair (vcombine_u64 (first, vld1_u64 (&table[vgetq_lane_u64 (index.v, 1)])));
    }

private:
    friend class StereoPair;

    explicit BitPair (uint64x2_t newBits) noexcept : v (newBits) {}

    /** To the left, or to the right by a negative count. */
    [[nodiscard]] static BitPair shifted (BitPair a, int count) noexcept
    {
        return BitPair (vshlq_u64 (a.v, vdupq_n_s64 (count)));
    }

    uint64x2_t v;
};

/** One number for the left channel and one for the right. They lie in one register, so that every operation costs what it
    costs for one channel. */
class StereoPair
{
public:
    /** Not initialised, unless by braces: whole blocks are filled at once. */
    StereoPair() noexcept = default;

    /** The two sides. */
    StereoPair (double left, double right) noexcept : v (vsetq_lane_f64 (right, vdupq_n_f64 (left), 1)) {}

    /** The same number on both sides. */
    [[nodiscard]] static StereoPair both (double x) noexcept { return StereoPair (vdupq_n_f64 (x)); }

    /** Two samples, exactly. */
    [[nodiscard]] static StereoPair widened (float left, float right) noexcept
    {
        return StereoPair (vcvt_f64_f32 (vset_lane_f32 (right, vdup_n_f32 (left), 1)));
    }

    /** Rounds both sides. */
    void narrowTo (float& left, float& right) const noexcept
    {
        const auto narrow = vcvt_f32_f64 (v);
        left = vget_lane_f32 (narrow, 0);
        right = vget_lane_f32 (narrow, 1);
    }

    /** The left side alone. */
    [[nodiscard]] double left() const noexcept { return vgetq_lane_f64 (v, 0); }

    /** The right side alone. */
    [[nodiscard]] double right() const noexcept { return vgetq_lane_f64 (v, 1); }

    /** Each side without its sign. */
    [[nodiscard]] StereoPair magnitude() const noexcept { return StereoPair (vabsq_f64 (v)); }

    /** Lane by lane. */
    friend StereoPair operator+ (StereoPair a, StereoPair b) noexcept { return StereoPair (vaddq_f64 (a.v, b.v)); }
    /** Lane by lane. */
    friend StereoPair operator- (StereoPair a, StereoPair b) noexcept { return StereoPair (vsubq_f64 (a.v, b.v)); }
    /** Lane by lane. */
    friend StereoPair operator* (StereoPair a, StereoPair b) noexcept { return StereoPair (vmulq_f64 (a.v, b.v)); }
    /** Lane by lane. */
    friend StereoPair operator/ (StereoPair a, StereoPair b) noexcept { return StereoPair (vdivq_f64 (a.v, b.v)); }

    // The processor's own minimum and maximum are not used: they give NaN wherever one number is NaN, and -0 before 0.

    /** a where it is less than b, and b elsewhere. */
    [[nodiscard]] friend StereoPair lesserOf (StereoPair a, StereoPair b) noexcept
    {
        return choose (vcltq_f64 (a.v, b.v), a, b);
    }

    /** a where it is greater than b, and b elsewhere. */
    [[nodiscard]] friend StereoPair greaterOf (StereoPair a, StereoPair b) noexcept
    {
        return choose (vcgtq_f64 (a.v, b.v), a, b);
    }

    /** x where a is greater than b, and y elsewhere. */
    [[nodiscard]] friend StereoPair whereGreater (StereoPair a, StereoPair b, StereoPair x, StereoPair y) noexcept
    {
        return choose (vcgtq_f64 (a.v, b.v), x, y);
    }

    /** x where a is at least b, and y elsewhere. */
    [[nodiscard]] friend StereoPair whereAtLeast (StereoPair a, StereoPair b, StereoPair x, StereoPair y) noexcept
    {
        return choose (vcgeq_f64 (a.v, b.v), x, y);
    }

    /** True if a is at least b on either side. */
    [[nodiscard]] friend bool isAnyAtLeast (StereoPair a, StereoPair b) noexcept
    {
        return vmaxvq_u32 (vreinterpretq_u32_u64 (vcgeq_f64 (a.v, b.v))) != 0;
    }

    /** The patterns of two numbers. */
    [[nodiscard]] BitPair bits() const noexcept { return BitPair (vreinterpretq_u64_f64 (v)); }

    /** The numbers of two patterns. */
    [[nodiscard]] static StereoPair ofBits (BitPair bits) noexcept
    {
        return StereoPair (vreinterpretq_f64_u64 (bits.v));
    }

    /** Converts the samples of four frames to double. */
    friend void widenFour (const float* left, const float* right, StereoPair* pairs) noexcept
    {
        const auto l = vld1q_f32 (left);
        const auto r = vld1q_f32 (right);
        const auto first = vzip1q_f32 (l, r);
        const auto second = vzip2q_f32 (l, r);
        pairs[0].v = vcvt_f64_f32 (vget_low_f32 (first));
        pairs[1].v = vcvt_high_f64_f32 (first);
        pairs[2].v = vcvt_f64_f32 (vget_low_f32 (second));
        pairs[3].v = vcvt_high_f64_f32 (second);
    }

    /** Converts four frames back to float. */
    friend void narrowFour (const StereoPair* pairs, float* left, float* right) noexcept
    {
        const auto first = vcvt_high_f32_f64 (vcvt_f32_f64 (pairs[0].v), pairs[1].v);
        const auto second = vcvt_high_f32_f64 (vcvt_f32_f64 (pairs[2].v), pairs[3].v);
        vst1q_f32 (left, vuzp1q_f32 (first, second));
        vst1q_f32 (right, vuzp2q_f32 (first, second));
    }

private:
    friend class FloatQuad;

    explicit StereoPair (float64x2_t newPair) noexcept : v (newPair) {}

    [[nodiscard]] static StereoPair choose (uint64x2_t mask, StereoPair x, StereoPair y) noexcept
    {
        return StereoPair (vbslq_f64 (mask, x.v, y.v));
    }

    float64x2_t v;
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
    FloatQuad (float a, float b, float c, float d) noexcept
        : v (vsetq_lane_f32 (d, vsetq_lane_f32 (c, vsetq_lane_f32 (b, vdupq_n_f32 (a), 1), 2), 3))
    {
    }

    /** The four of an array. */
    explicit FloatQuad (const Values& values) noexcept : v (vld1q_f32 (values.data())) {}

    /** The same number four times. */
    [[nodiscard]] static FloatQuad all (float x) noexcept { return FloatQuad (vdupq_n_f32 (x)); }

    /** All four. */
    [[nodiscard]] Values values() const noexcept
    {
        Values result;
        vst1q_f32 (result.data(), v);
        return result;
    }

    /** The number of one lane. */
    template <std::size_t lane>
    [[nodiscard]] float get() const noexcept
    {
        return vgetq_lane_f32 (v, (int) lane);
    }

    /** The same but for one lane. */
    template <std::size_t lane>
    [[nodiscard]] FloatQuad with (float x) const noexcept
    {
        return FloatQuad (vsetq_lane_f32 (x, v, (int) lane));
    }

    /** Lanes 0 and 1 as doubles, exactly. */
    [[nodiscard]] StereoPair firstHalf() const noexcept { return StereoPair (vcvt_f64_f32 (vget_low_f32 (v))); }

    /** Lanes 2 and 3 as doubles, exactly. */
    [[nodiscard]] StereoPair secondHalf() const noexcept { return StereoPair (vcvt_high_f64_f32 (v)); }

    /** Four doubles, rounded. */
    [[nodiscard]] static FloatQuad narrowed (StereoPair first, StereoPair second) noexcept
    {
        return FloatQuad (vcvt_high_f32_f64 (vcvt_f32_f64 (first.v), second.v));
    }

    /** Each without its sign. */
    [[nodiscard]] FloatQuad magnitude() const noexcept { return FloatQuad (vabsq_f32 (v)); }

    /** Lane by lane. */
    friend FloatQuad operator+ (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (vaddq_f32 (a.v, b.v)); }
    /** Lane by lane. */
    friend FloatQuad operator- (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (vsubq_f32 (a.v, b.v)); }
    /** Lane by lane. */
    friend FloatQuad operator* (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (vmulq_f32 (a.v, b.v)); }
    /** Lane by lane. */
    friend FloatQuad operator/ (FloatQuad a, FloatQuad b) noexcept { return FloatQuad (vdivq_f32 (a.v, b.v)); }

    /** a where it is less than b, and b elsewhere. */
    [[nodiscard]] friend FloatQuad lesserOf (FloatQuad a, FloatQuad b) noexcept
    {
        return choose (vcltq_f32 (a.v, b.v), a, b);
    }

    /** a where it is greater than b, and b elsewhere. */
    [[nodiscard]] friend FloatQuad greaterOf (FloatQuad a, FloatQuad b) noexcept
    {
        return choose (vcgtq_f32 (a.v, b.v), a, b);
    }

    /** x where a is greater than b, and y elsewhere. */
    [[nodiscard]] friend FloatQuad whereGreater (FloatQuad a, FloatQuad b, FloatQuad x, FloatQuad y) noexcept
    {
        return choose (vcgtq_f32 (a.v, b.v), x, y);
    }

    /** x where a is at least b, and y elsewhere. */
    [[nodiscard]] friend FloatQuad whereAtLeast (FloatQuad a, FloatQuad b, FloatQuad x, FloatQuad y) noexcept
    {
        return choose (vcgeq_f32 (a.v, b.v), x, y);
    }

private:
    explicit FloatQuad (float32x4_t newQuad) noexcept : v (newQuad) {}

    [[nodiscard]] static FloatQuad choose (uint32x4_t mask, FloatQuad x, FloatQuad y) noexcept
    {
        return FloatQuad (vbslq_f32 (mask, x.v, y.v));
    }

    float32x4_t v;
};
