// SPDX-License-Identifier: AGPL-3.0-or-later
// What a test has no time for: the functions of floats against the C library at every float, the power at a billion pairs, and the
// functions of doubles against MPFR at many millions of arguments. Some minutes. Fails if a float differs or a double is more than
// one ulp off.
#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include "dsp/math/FloatExponential.h"
#include "dsp/math/FloatPower.h"
#include "dsp/math/FloatSine.h"
#include "unit/dsp/math/MeasuredUlps.h"

namespace
{
constexpr std::size_t numParts = 256;

/** Calls work (part) for all parts, on all processors. */
template <typename Work>
void inParallel (Work work)
{
    std::atomic<std::size_t> next { 0 };
    std::vector<std::thread> threads;

    for (unsigned i = 0; i < std::max (1u, std::thread::hardware_concurrency()); ++i)
        threads.emplace_back (
            [&]
            {
                for (auto part = next++; part < numParts; part = next++)
                    work (part);
            });

    for (auto& thread : threads)
        thread.join();
}

[[nodiscard]] bool areSame (float a, float b)
{
    return (std::isnan (a) && std::isnan (b)) || std::bit_cast<std::uint32_t> (a) == std::bit_cast<std::uint32_t> (b);
}

[[nodiscard]] bool report (const char* what, std::uint64_t numTried, std::uint64_t numDifferent)
{
    std::printf ("%s: %llu tried, %llu differ from the C library\n", what, (unsigned long long) numTried,
                 (unsigned long long) numDifferent);
    std::fflush (stdout);
    return numDifferent == 0;
}

template <typename OfFour, typename OfLibrary>
[[nodiscard]] bool areEqualAtEveryFloat (const char* what, OfFour ofFour, OfLibrary ofLibrary)
{
    constexpr auto perPart = (std::uint64_t { 1 } << 32) / numParts;
    std::atomic<std::uint64_t> numDifferent { 0 };

    inParallel (
        [&] (std::size_t part)
        {
            for (auto pattern = part * perPart; pattern < (part + 1) * perPart; pattern += FloatQuad::size)
            {
                FloatQuad::Values x;

                for (std::size_t i = 0; i < x.size(); ++i)
                    x[i] = std::bit_cast<float> ((std::uint32_t) (pattern + i));

                const auto results = ofFour (FloatQuad (x)).values();

                for (std::size_t i = 0; i < x.size(); ++i)
                    numDifferent += areSame (results[i], ofLibrary (x[i])) ? 0u : 1u;
            }
        });

    return report (what, perPart * numParts, numDifferent);
}

[[nodiscard]] std::uint64_t countDifferent (const std::array<float, 4>& bases, const std::array<float, 4>& exponents)
{
    const auto results = elementary::power (FloatQuad (bases), FloatQuad (exponents)).values();
    std::uint64_t numDifferent = 0;

    for (std::size_t i = 0; i < results.size(); ++i)
        numDifferent += areSame (results[i], std::pow (bases[i], exponents[i])) ? 0u : 1u;

    return numDifferent;
}

/** Half of the pairs within the curve stage, base 0 to 1 and exponent 1 to 6, and half over all floats. */
[[nodiscard]] bool isEqualAtABillionPairs()
{
    constexpr std::uint64_t perPart = 1000000000 / numParts / 4 + 1;
    std::atomic<std::uint64_t> numDifferent { 0 };

    inParallel (
        [&] (std::size_t part)
        {
            std::mt19937_64 random (part);
            std::array<float, 4> bases, exponents;

            for (std::uint64_t i = 0; i < perPart; ++i)
            {
                for (std::size_t lane = 0; lane < 4; ++lane)
                {
                    const auto bits = random();

                    if (i % 2 == 0)
                    {
                        bases[lane] = (float) (bits & 0xffffff) * 0x1p-24f;
                        exponents[lane] = 1.0f + 5.0f * (float) ((bits >> 24) & 0xffffff) * 0x1p-24f;
                    }
                    else
                    {
                        bases[lane] = std::bit_cast<float> ((std::uint32_t) (bits & 0x7fffffff));
                        exponents[lane] = std::bit_cast<float> ((std::uint32_t) (bits >> 32));
                    }
                }

                numDifferent += countDifferent (bases, exponents);
            }
        });

    return report ("power, random pairs", perPart * 4 * numParts, numDifferent);
}

/** Each position of the curve knob with each base of a grid of 2^20. */
[[nodiscard]] bool isEqualAtEveryCurve()
{
    constexpr std::size_t numPositions = 201;
    constexpr std::uint64_t numBases = 1 << 20;
    std::atomic<std::uint64_t> numDifferent { 0 };

    inParallel (
        [&] (std::size_t position)
        {
            if (position >= numPositions)
                return;

            const auto knob = (float) position / 200.0f;
            const auto curve = 1.0f / std::exp ((float) ((double) (knob * 2.0f - 1.0f) * 1.7));
            const auto exponent = curve > 1.0f ? curve : 1.0f / curve;

            for (std::uint64_t i = 0; i < numBases; i += 4)
            {
                std::array<float, 4> bases;

                for (std::size_t lane = 0; lane < 4; ++lane)
                    bases[lane] = (float) (i + lane + 1) / (float) numBases;

                numDifferent += countDifferent (bases, { exponent, exponent, exponent, exponent });
            }
        });

    return report ("power, curves of the knob", numPositions * numBases, numDifferent);
}

[[nodiscard]] bool isWithinOneUlp (const measuredUlps::Row& row)
{
    constexpr std::size_t perPart = 40000;
    auto worst = measuredUlps::worstOf (row, measuredUlps::hardArguments (row));
    std::mutex mutex;

    inParallel (
        [&] (std::size_t part)
        {
            const auto found = measuredUlps::worstOf (row, measuredUlps::randomArguments (row, 1000 + part, perPart));
            const std::scoped_lock lock (mutex);

            if (found.ulps > worst.ulps)
                worst = found;
        });

    std::printf ("%s: %zu arguments, at most %.4f ulp, at %a\n", row.name, perPart * numParts, worst.ulps,
                 worst.argument);
    std::fflush (stdout);
    return worst.ulps <= 1.0;
}
} // namespace

int main()
{
    auto isGood = areEqualAtEveryFloat (
        "exponential", [] (FloatQuad x) { return elementary::exponential (x); }, [] (float x) { return std::exp (x); });
    isGood &= areEqualAtEveryFloat (
        "sine", [] (FloatQuad x) { return elementary::sine (x); }, [] (float x) { return std::sin (x); });
    isGood &= isEqualAtEveryCurve();
    isGood &= isEqualAtABillionPairs();

    for (const auto& row : measuredUlps::rows())
        isGood &= isWithinOneUlp (row);

    return isGood ? 0 : 1;
}
