// SPDX-License-Identifier: AGPL-3.0-or-later
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "unit/dsp/math/MeasuredUlps.h"

namespace
{
class Accuracy : public testing::TestWithParam<measuredUlps::Row>
{
protected:
    void expectAtMostOneUlp (const std::vector<double>& arguments)
    {
        const auto worst = measuredUlps::worstOf (GetParam(), arguments);
        std::printf ("%s, %zu arguments: %.3f ulp at %a\n", GetParam().name, arguments.size(), worst.ulps,
                     worst.argument);
        EXPECT_LE (worst.ulps, 1.0) << worst.argument;
    }
};

[[nodiscard]] std::string nameOf (const testing::TestParamInfo<measuredUlps::Row>& row)
{
    std::string name;

    for (const auto* c = row.param.name; *c != 0; ++c)
        if (*c != ' ' && *c != ',')
            name += *c;

    return name;
}
} // namespace

TEST_P (Accuracy, IsWithinOneUlpAtRandomArguments)
{
    constexpr std::uint64_t seed = 1;
    expectAtMostOneUlp (measuredUlps::randomArguments (GetParam(), seed, 200000));
}

TEST_P (Accuracy, IsWithinOneUlpWhereSomethingChanges)
{
    expectAtMostOneUlp (measuredUlps::hardArguments (GetParam()));
}

INSTANTIATE_TEST_SUITE_P (Functions, Accuracy, testing::ValuesIn (measuredUlps::rows()), nameOf);
