// SPDX-License-Identifier: AGPL-3.0-or-later
#include "reference/ReferenceMath.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace reference
{

namespace
{
// Adding it rounds a double to an integer, which then stands in the lowest bits.
constexpr double integerShift = 0x1.8p52;

constexpr std::uint64_t signBit = 0x8000000000000000u;

std::uint64_t bitsOf (double x) { return std::bit_cast<std::uint64_t> (x); }

double numberOf (std::uint64_t bits) { return std::bit_cast<double> (bits); }

// x with its sign bit set where that of the other is.
double withSignOf (double x, double other) { return numberOf (bitsOf (x) | (bitsOf (other) & signBit)); }

// The first 26 binary digits. A product of two such numbers is exact.
double shortened (double x) { return numberOf (bitsOf (x) & 0xfffffffff8000000u); }

// Every second coefficient, from the last one down to c[first], by Horner's rule.
double everySecond (std::span<const double> c, std::size_t first, double z)
{
    std::size_t i = first + (c.size() - 1 - first) / 2 * 2;
    double sum = c[i];

    while (i > first)
    {
        i = i - 2;
        sum = sum * z + c[i];
    }

    return sum;
}

// c[0] + c[1] y + c[2] y^2 + ..., the even and the odd powers apart. Takes two coefficients or more.
double polynomial (double y, std::span<const double> c)
{
    const double z = y * y;
    return everySecond (c, 0, z) + everySecond (c, 1, z) * y;
}
} // namespace

//======================================================================================================================
// Sine and cosine.

namespace
{
constexpr double sineSeries[] = { -0x1.555555555548ep-17, 0x1.1111111111107p-7,   -0x1.a01a01a018abp-13,
                                  0x1.71de3a54569c6p-19,  -0x1.ae6455a1f41eep-26, 0x1.61240164d1e34p-33,
                                  -0x1.ae513bb460ad7p-41, 0x1.89a4e179e0303p-49 };

constexpr double shortCosineSeries[] = { 1.0, -0.4957, 0.0368 };

// The sine of x + low within a quarter turn. h has so few digits that h - h^3 / 6 is exact.
double sineOfSum (double x, double low)
{
    const double h = (x + 0x1.8p40) - 0x1.8p40;
    const double d = x - h;
    const double e = h - (0x1.555p-3 * (h * h)) * h;
    const double s = x * x;
    const double g = 0x1.555p-3 * (h * (x + h) + s);
    const double t = polynomial (s, sineSeries);
    double r = (s * x) * t - d * g;

    if (low != 0.0)
        r = r + low * polynomial (s, shortCosineSeries);

    return withSignOf (e + (d + r), x);
}

// The sine of x - q pi / 2, with its sign changed where u ends in an odd integer.
double sineLessQuarterTurns (double x, double q, double u)
{
    const double a = q * 0x1.921fb544p0;
    const double b = q * 0x1.0b4611a6p-34;
    const double c = q * 0x1.3198a2e037073p-69;

    const double y = x - a;
    const double v = y - x;
    const double w = (x - (y - v)) - (a + v);
    const double r = y - b;
    const double low = ((y - r) - b) + (w - c);

    const double result = sineOfSum (r, low);

    if ((bitsOf (u) & 1u) != 0)
        return -result;

    return result;
}

bool isWithinDomain (double angle) { return 128.0 >= std::fabs (angle); }
} // namespace

double sineWithinQuarterTurn (double angle) { return sineOfSum (angle, 0.0); }

double sine (double angle)
{
    if (! isWithinDomain (angle))
        return std::numeric_limits<double>::quiet_NaN();

    const double u = angle * 0x1.45f306dc9c883p-2 + integerShift;
    const double n = u - integerShift;
    return sineLessQuarterTurns (angle, n + n, u);
}

double cosine (double angle)
{
    if (! isWithinDomain (angle))
        return std::numeric_limits<double>::quiet_NaN();

    const double u = (angle * 0x1.45f306dc9c883p-2 + 0.5) + integerShift;
    const double n = u - integerShift;
    return sineLessQuarterTurns (angle, (n + n) - 1.0, u);
}

//======================================================================================================================
// Tangent.

namespace
{
constexpr double tangentSeries[] = { 0x1.55555555554c3p-16, 0x1.6c16c16c16c45p-6,  0x1.1566abc00c878p-9,
                                     0x1.bbd7793981594p-13, 0x1.66a8f0b90f21ep-16, 0x1.2280be7b63ffap-19,
                                     0x1.d6c51b0fee4bdp-23, 0x1.7f2fe839e2aacp-26, 0x1.24d94908d43ffp-29,
                                     0x1.5981e529373bcp-32 };
} // namespace

double tangent (double angle)
{
    const double m = std::fabs (angle);
    const bool folded = m > 0x1.921fb54442d18p-1;
    double r = m;
    double rLow = 0.0;

    if (folded)
    {
        r = 0x1.921fb54442d18p0 - m;
        rLow = 0x1.1a62633145c07p-54;
    }

    // c + cLow is r / tan (r).
    const double s = r * r;
    const double h = (s + 0x1.8p26) - 0x1.8p26;
    const double t = polynomial (s, tangentSeries);
    const double e = 1.0 - 0x1.555p-2 * h;
    const double l = 0x1.555p-2 * (s - h) + s * t;
    const double c = e - l;
    const double cLow = ((e - c) - l) - (r * rLow) * 0.7;

    double over = r;
    double overLow = rLow;
    double under = c;
    double underLow = cLow;

    if (folded)
    {
        over = c;
        overLow = cLow;
        under = r;
        underLow = rLow;
    }

    const double i = 1.0 / under;
    const double q = shortened (over * i);
    const double underHigh = shortened (under);
    const double w = ((over - q * underHigh) - q * (under - underHigh)) + (overLow - q * underLow);
    return withSignOf (q + w * i, angle);
}

//======================================================================================================================
// Hyperbolic sine.

namespace
{
constexpr double hyperbolicSineSeries[] = { 0x1.5555555555556p-3, 0x1.111111111070bp-7, 0x1.a01a01a9023a5p-13,
                                            0x1.71de0a3cc24aep-19, 0x1.af3f0692fc77dp-26 };

constexpr double hyperbolicCosineSeries[] = { 0x1p-1,
                                              0x1.5555555555556p-5,
                                              0x1.6c16c16c15ffap-10,
                                              0x1.a01a01a818b6ap-16,
                                              0x1.27e4d81784c6dp-22,
                                              0x1.1f78e2ac93699p-29 };
} // namespace

double hyperbolicSine (double x)
{
    const double m = std::fabs (x);
    double a = m;

    if (m > 710.5)
        a = 710.5;

    const double u = a * 0x1.71547652b82fep0 + integerShift;
    const double k = u - integerShift;
    const double up = numberOf (0x3fd0000000000000u + (bitsOf (u) << 52));
    double down = numberOf (0x3fd0000000000000u - (bitsOf (u) << 52));

    if (k > 60.0)
        down = 0.0;

    const double sk = up - down;
    const double skLow = (up - sk) - down;
    const double ck = up + down;

    const double b = a - k * 0x1.62e42fefa4p-1;
    const double l = k * -0x1.8432a1b0e2634p-43;
    const double r = b - l;
    const double h = shortened (r);
    const double t = (b - h) - l;
    const double s = r * r;
    const double v = up * h;
    const double y = sk + v;
    const double yLow = (sk - y) + v;

    const double A = (s * r) * polynomial (s, hyperbolicSineSeries);
    const double B = s * polynomial (s, hyperbolicCosineSeries);
    const double w = (ck * (t + A) + sk * B) + (skLow + yLow);
    const double z = y + (down * h + w);

    if (m < 0x1p-28)
        return withSignOf (m, x);

    return withSignOf (z + z, x);
}

//======================================================================================================================
// Exponential and power.

namespace
{
// The pattern of 2^(i / 32), less i << 47.
constexpr std::uint64_t powersOfTwo[32] = {
    0x3ff0000000000000, 0x3fefd9b0d3158574, 0x3fefb5586cf9890f, 0x3fef9301d0125b51, 0x3fef72b83c7d517b,
    0x3fef54873168b9aa, 0x3fef387a6e756238, 0x3fef1e9df51fdee1, 0x3fef06fe0a31b715, 0x3feef1a7373aa9cb,
    0x3feedea64c123422, 0x3feece086061892d, 0x3feebfdad5362a27, 0x3feeb42b569d4f82, 0x3feeab07dd485429,
    0x3feea47eb03a5585, 0x3feea09e667f3bcd, 0x3fee9f75e8ec5f74, 0x3feea11473eb0187, 0x3feea589994cce13,
    0x3feeace5422aa0db, 0x3feeb737b0cdc5e5, 0x3feec49182a3f090, 0x3feed503b23e255d, 0x3feee89f995ad3ad,
    0x3feeff76f2fb5e47, 0x3fef199bdd85529c, 0x3fef3720dcef9069, 0x3fef5818dcfba487, 0x3fef7c97337b9b5f,
    0x3fefa4afa2a490da, 0x3fefd0765b6e4540
};

// 2 to the power of the 32nds in the lowest bits of u, and of r n-ths.
double powerOfTwo (double u, double r, double n)
{
    const double p = numberOf (powersOfTwo[bitsOf (u) & 31u] + (bitsOf (u) << 47));
    const double v = (0x1.c6af84b912394p-5 / (n * n * n)) * r + 0x1.ebfce50fac4f3p-3 / (n * n);
    const double w = (0x1.62e42ff0c52d6p-1 / n) * r + 1.0;
    return (v * (r * r) + w) * p;
}

// For each of 16 parts of the numbers from 0.7 to 1.4: the inverse of a number in it, and that number's logarithm to base 2.
struct LogarithmPart
{
    double inverse;
    double logarithm;
};

constexpr LogarithmPart logarithmParts[16] = {
    { 0x1.661ec79f8f3bep+0, -0x1.efec65b963019p-2 }, { 0x1.571ed4aaf883dp+0, -0x1.b0b6832d4fca4p-2 },
    { 0x1.49539f0f010bp+0, -0x1.7418b0a1fb77bp-2 },  { 0x1.3c995b0b80385p+0, -0x1.39de91a6dcf7bp-2 },
    { 0x1.30d190c8864a5p+0, -0x1.01d9bf3f2b631p-2 }, { 0x1.25e227b0b8eap+0, -0x1.97c1d1b3b7afp-3 },
    { 0x1.1bb4a4a1a343fp+0, -0x1.2f9e393af3c9fp-3 }, { 0x1.12358f08ae5bap+0, -0x1.960cbbf788d5cp-4 },
    { 0x1.0953f419900a7p+0, -0x1.a6f9db6475fcep-5 }, { 0x1p+0, 0.0 },
    { 0x1.e608cfd9a47acp-1, 0x1.338ca9f24f53dp-4 },  { 0x1.ca4b31f026aap-1, 0x1.476a9543891bap-3 },
    { 0x1.b2036576afce6p-1, 0x1.e840b4ac4e4d2p-3 },  { 0x1.9c2d163a1aa2dp-1, 0x1.40645f0c6651cp-2 },
    { 0x1.886e6037841edp-1, 0x1.88e9c2c1b9ff8p-2 },  { 0x1.767dcf5534862p-1, 0x1.ce0a44eb17bccp-2 }
};

// The logarithm to base 2 of a float that is not negative, as a double.
double logarithm (double x)
{
    if (std::isnan (x))
        return x;

    if (x == 0.0)
        return -std::numeric_limits<double>::infinity();

    if (x == std::numeric_limits<double>::infinity())
        return x;

    const std::uint64_t f = bitsOf (x) - 0x3fe6600000000000u;
    const std::uint64_t i = (f >> 48) & 15u;
    const std::uint64_t o = f & 0xfff0000000000000u;
    const double z = numberOf (bitsOf (x) - o);
    const double k = numberOf (((o + 0x4000000000000000u) >> 52) | 0x4330000000000000u) - (0x1p52 + 1024.0);

    const double r = z * logarithmParts[i].inverse - 1.0;
    const double s = r * r;
    const double a = 0x1.27616c9496e0bp-2 * r + -0x1.71969a075c67ap-2;
    const double b = 0x1.ec70a6ca7baddp-2 * r + -0x1.7154748bef6c8p-1;
    const double c = 0x1.71547652ab82bp0 * r + (logarithmParts[i].logarithm + k);
    return a * (s * s) + (b * s + c);
}
} // namespace

float exponential (float x)
{
    double kept = (double) x;

    if (kept < -110.0)
        kept = -110.0;

    if (kept > 100.0)
        kept = 100.0;

    const double a = 0x1.7154765p5 * kept;
    const double b = 0x1.5c17fp-26 * kept;
    const double u = (a + b) + integerShift;
    return (float) powerOfTwo (u, (a - (u - integerShift)) + b, 32.0);
}

float power (float base, float exponent)
{
    const double y = (double) exponent;
    const double g = logarithm ((double) base);

    // 1 to any power and anything to the power of 0 are 1, NaN included.
    double e = y * g;

    if (y == 0.0 || g == 0.0)
        e = 0.0;

    // Far enough for 0 and for infinity as floats.
    if (e <= -150.0)
        e = -160.0;

    if (e > 130.0)
        e = 130.0;

    const double u = e + 0x1.8p47;
    return (float) powerOfTwo (u, e - (u - 0x1.8p47), 1.0);
}

//======================================================================================================================
// Sine of a float.

namespace
{
// 2 / pi, each 8 bits further.
constexpr std::uint32_t twoOverPi[24] = { 0x000000a2, 0x0000a2f9, 0x00a2f983, 0xa2f9836e, 0xf9836e4e, 0x836e4e44,
                                          0x6e4e4415, 0x4e441529, 0x441529fc, 0x1529fc27, 0x29fc2757, 0xfc2757d1,
                                          0x2757d1f5, 0x57d1f534, 0xd1f534dd, 0xf534ddc0, 0x34ddc0db, 0xddc0db62,
                                          0xc0db6295, 0xdb629599, 0x6295993c, 0x95993c43, 0x993c4390, 0x3c439041 };

// The sine of x + q pi / 2, with x within an eighth of a turn.
double sineWithQuarterTurns (double x, std::uint64_t q)
{
    const double s = x * x;
    const double f = s * s;
    double result = 0.0;

    if ((q & 1u) == 0)
    {
        const double c = x * s;
        const double a =
            (x + c * -0x1.555545995a603p-3) + (c * s) * (0x1.1107605230bc4p-7 + s * -0x1.994eb3774cf24p-13);
        result = withSignOf (a, x); // -0 stays -0
    }
    else
    {
        const double b = (1.0 + s * -0x1.ffffffd0c621cp-2) + f * 0x1.55553e1068f19p-5;
        result = b + (f * s) * (-0x1.6c087e89a359dp-10 + s * 0x1.99343027bf8c3p-16);
    }

    if ((q & 2u) != 0)
        return -result;

    return result;
}

double sineOfSmallAngle (double x)
{
    const double u = x * 0x1.45f306dc9c883p-1 + integerShift;
    const double n = u - integerShift;
    return sineWithQuarterTurns ((x - n * 0x1.921fb544p0) - n * 0x1.0b46p-34, bitsOf (u) & 3u);
}

// For 120 and more: the quarter turns in 64 bits, two in front of the binary point and 62 behind it.
double sineOfLargeAngle (float x)
{
    const std::uint32_t w = std::bit_cast<std::uint32_t> (x);
    const std::uint32_t j = (w >> 23) & 255u;

    if (j == 255u)
        return std::numeric_limits<double>::quiet_NaN();

    const std::uint32_t m = ((w & 0x7fffffu) | 0x800000u) << (j & 7u);
    const std::uint32_t i = (j >> 3) & 15u;

    const std::uint64_t wide = m;
    const std::uint64_t high = (wide * twoOverPi[i]) & 0xffffffffu;
    const std::uint64_t p = (high << 32) + wide * twoOverPi[i + 4] + ((wide * twoOverPi[i + 8]) >> 32);
    const std::uint64_t q = (p + (std::uint64_t { 1 } << 61)) >> 62;
    const double d = (double) ((std::int64_t) (p - (q << 62)));

    const double result = sineWithQuarterTurns (d * 0x1.921fb54442d18p-62, q);

    if (x < 0.0f)
        return -result;

    return result;
}
} // namespace

float sine (float angle)
{
    if (std::fabs (angle) >= 120.0f)
        return (float) sineOfLargeAngle (angle);

    return (float) sineOfSmallAngle ((double) angle);
}

} // namespace reference
