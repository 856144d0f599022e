// SPDX-License-Identifier: AGPL-3.0-or-later
#include "unit/dsp/math/MeasuredUlps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

#include "dsp/math/HyperbolicSine.h"
#include "dsp/math/Sine.h"
#include "dsp/math/Tangent.h"

namespace
{
constexpr double halfPi = 0x1.921fb54442d18p0;
constexpr double ln2 = 0x1.62e42fefa39efp-1;

/** A number of so many bits. */
class Mpfr
{
public:
    explicit Mpfr (mpfr_prec_t precision) { mpfr_init2 (value, precision); }
    ~Mpfr() { mpfr_clear (value); }
    Mpfr (const Mpfr&) = delete;
    Mpfr& operator= (const Mpfr&) = delete;

    operator mpfr_ptr() { return value; }

private:
    mpfr_t value;
};

/** Doubles m 2^exponent with m of 53 bits that lie unusually near to a multiple of pi / 2: the m are multiples of the denominators
    of the continued fraction of 2^exponent / (pi / 2). */
void addNearQuarterTurns (int exponent, std::vector<double>& arguments)
{
    Mpfr x (400), whole (400);
    mpfr_const_pi (x, MPFR_RNDN);
    mpfr_ui_div (x, 2, x, MPFR_RNDN);
    mpfr_mul_2si (x, x, exponent, MPFR_RNDN);

    constexpr auto limit = std::uint64_t { 1 } << 53;
    std::uint64_t before = 1, denominator = 0;

    while (true)
    {
        mpfr_floor (whole, x);
        const auto digit = mpfr_get_d (whole, MPFR_RNDN);

        if (digit * (double) denominator + (double) before >= (double) limit)
            return;

        const auto next = (std::uint64_t) digit * denominator + before;
        before = denominator;
        denominator = next;

        // Multiples and, since the nearest may lie between two denominators, sums.
        for (auto m = denominator; denominator >= limit / 4096 && m < limit; m += denominator)
        {
            arguments.push_back (std::ldexp ((double) m, exponent));

            if (m + before < limit)
                arguments.push_back (std::ldexp ((double) (m + before), exponent));
        }

        mpfr_sub (x, x, whole, MPFR_RNDN);
        mpfr_ui_div (x, 1, x, MPFR_RNDN);
    }
}
} // namespace

const std::vector<measuredUlps::Row>& measuredUlps::rows()
{
    static const std::vector<Row> all {
        { "tangent", elementary::tangent<double>, mpfr_tan, -1.57, 1.57, false },
        { "tangent, all sizes", elementary::tangent<double>, mpfr_tan, 1.0e-9, 1.57, true },
        { "sineWithinQuarterTurn", elementary::sineWithinQuarterTurn<double>, mpfr_sin, -halfPi, halfPi, false },
        { "sineWithinQuarterTurn, all sizes", elementary::sineWithinQuarterTurn<double>, mpfr_sin, 1.0e-9, halfPi,
          true },
        { "sine", elementary::sine<double>, mpfr_sin, -126.0, 126.0, false },
        { "sine, all sizes", elementary::sine<double>, mpfr_sin, 1.0e-9, 128.0, true },
        { "cosine", elementary::cosine<double>, mpfr_cos, -126.0, 126.0, false },
        { "cosine, all sizes", elementary::cosine<double>, mpfr_cos, 1.0e-9, 128.0, true },
        { "hyperbolicSine", elementary::hyperbolicSine<double>, mpfr_sinh, -3.0, 3.0, false },
        { "hyperbolicSine, all sizes", elementary::hyperbolicSine<double>, mpfr_sinh, 1.0e-300, 710.4758600739439,
          true }
    };

    return all;
}

measuredUlps::Worst measuredUlps::worstOf (const Row& row, const std::vector<double>& arguments)
{
    Worst worst;
    Mpfr argument (53), exact (160);

    for (const auto x : arguments)
    {
        mpfr_set_d (argument, x, MPFR_RNDN);
        row.exact (exact, argument, MPFR_RNDN);

        if (mpfr_zero_p (static_cast<mpfr_ptr> (exact)))
            continue;

        // The last place of a double with the exponent of the exact result.
        const auto lastPlace = std::max ((int) mpfr_get_exp (static_cast<mpfr_ptr> (exact)) - 53, -1074);
        mpfr_sub_d (exact, exact, row.function (x), MPFR_RNDN);
        const auto ulps = std::abs (std::ldexp (mpfr_get_d (exact, MPFR_RNDN), -lastPlace));

        if (! (ulps <= worst.ulps))
            worst = { std::isnan (ulps) ? std::numeric_limits<double>::infinity() : ulps, x };
    }

    return worst;
}

std::vector<double> measuredUlps::randomArguments (const Row& row, std::uint64_t seed, std::size_t count)
{
    std::mt19937_64 random (seed);
    std::vector<double> arguments;
    arguments.reserve (count);

    for (std::size_t i = 0; i < count; ++i)
    {
        const auto uniform = (double) (random() >> 11) * 0x1p-53;
        arguments.push_back (row.isLogarithmic ? row.first * std::pow (row.last / row.first, uniform)
                                               : row.first + (row.last - row.first) * uniform);
    }

    return arguments;
}

std::vector<double> measuredUlps::hardArguments (const Row& row)
{
    std::vector<double> centres { 0.0,  row.first, row.last,   0x1p-28,    0x1p-13,   halfPi / 2.0, halfPi,
                                  1.57, 0x1p-1022, 26.5 * ln2, 60.5 * ln2, 0x1p-1074, 710.0 };

    // The sine's kernel changes what it rounds between multiples of 2^-12.
    for (int i = 0; i < 6434; ++i)
        centres.push_back (((double) i + 0.5) * 0x1p-12);

    // Where the number of halvings or of quarter turns changes.
    for (int i = 1; i < 2100; ++i)
    {
        centres.push_back ((double) i * 0.5 * ln2);
        centres.push_back ((double) i * 0.5 * halfPi);
    }

    for (int exponent = -53; exponent <= -46; ++exponent)
        addNearQuarterTurns (exponent, centres);

    std::vector<double> arguments;

    for (const auto centre : centres)
        for (const auto sign : { -1.0, 1.0 })
        {
            auto x = sign * centre;

            for (int i = 0; i < 4; ++i)
                x = std::nextafter (x, -std::numeric_limits<double>::infinity());

            for (int i = 0; i < 9; ++i)
            {
                // A row with logarithms has positive numbers only, and the function both signs.
                const auto limit = std::max (std::abs (row.first), std::abs (row.last));

                if (std::abs (x) <= limit)
                    arguments.push_back (x);

                x = std::nextafter (x, std::numeric_limits<double>::infinity());
            }
        }

    return arguments;
}
