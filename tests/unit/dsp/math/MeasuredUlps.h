// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <mpfr.h>

/** The elementary functions in double against MPFR, which computes each of them with 160 bits. */
namespace measuredUlps
{

/** A function and a range of its arguments. */
struct Row
{
    const char* name;
    double (*function) (double);
    int (*exact) (mpfr_t, const mpfr_t, mpfr_rnd_t);
    double first, last;

    /** The arguments are spread evenly over their logarithms, which takes all sizes alike; first is above 0 then. */
    bool isLogarithmic;
};

/** The rows over which each function is measured. */
[[nodiscard]] const std::vector<Row>& rows();

/** The largest error, in units of the last place of the exact result, and the argument that has it. */
struct Worst
{
    double ulps = 0.0;
    double argument = 0.0;
};

/** The worst of these arguments. Infinite where the function gives NaN and MPFR a number. */
[[nodiscard]] Worst worstOf (const Row& row, const std::vector<double>& arguments);

/** Random arguments of a row. */
[[nodiscard]] std::vector<double> randomArguments (const Row& row, std::uint64_t seed, std::size_t count);

/** The arguments of a row near which something changes: ends, folds, borders of what is rounded, and the doubles that come
    nearest to multiples of pi / 2, with some neighbours on both sides of each. */
[[nodiscard]] std::vector<double> hardArguments (const Row& row);

} // namespace measuredUlps
