// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/modulation/SlewValue.h"

#include <cmath>

#include <gtest/gtest.h>

#include "reference/ReferenceLfo.h"

namespace
{
template <typename Slew>
[[nodiscard]] Slew slewAt (float current, float target, float step, std::int32_t mode = 0)
{
    Slew slew;
    slew.mode = mode;
    slew.current = current;
    slew.target = target;
    slew.step = step;
    return slew;
}

template <typename SlewValue>
class SlewValues : public testing::Test
{
};

using SlewValueTypes = testing::Types<SlewValue, reference::SlewValue>;
TYPED_TEST_SUITE (SlewValues, SlewValueTypes);
} // namespace

TYPED_TEST (SlewValues, StartsAtRest)
{
    const TypeParam slew;
    EXPECT_EQ (slew.mode, 0);
    EXPECT_EQ (slew.target, 0.0f);
    EXPECT_EQ (slew.current, 0.0f);
    EXPECT_EQ (slew.step, 0.0001f);
    EXPECT_EQ (slew.stiffness, 0.0f);
    EXPECT_EQ (slew.damping, 0.0f);
}

TYPED_TEST (SlewValues, MovesByOneStepTowardItsTarget)
{
    for (const auto direction : { 1.0f, -1.0f })
    {
        auto slew = slewAt<TypeParam> (0.0f, direction, 0.25f);
        slew.advance();
        EXPECT_EQ (slew.current, 0.25f * direction);
        slew.advance();
        EXPECT_EQ (slew.current, 0.5f * direction);
    }
}

TYPED_TEST (SlewValues, LandsOnItsTargetInsteadOfPassingIt)
{
    for (const auto direction : { 1.0f, -1.0f })
    {
        auto slew = slewAt<TypeParam> (0.0f, direction, 0.4f);

        for (int i = 0; i < 3; ++i)
            slew.advance();

        EXPECT_EQ (slew.current, direction);
        slew.advance();
        EXPECT_EQ (slew.current, direction);
    }

    auto far = slewAt<TypeParam> (0.0f, 1.0f, 1.0e20f);
    far.advance();
    EXPECT_EQ (far.current, 1.0f);
}

TYPED_TEST (SlewValues, LeavesEverythingAloneOnItsTarget)
{
    auto slew = slewAt<TypeParam> (0.5f, 0.5f, 0.1f);
    slew.advance();
    EXPECT_EQ (slew.current, 0.5f);
    EXPECT_EQ (slew.step, 0.1f);
}

TYPED_TEST (SlewValues, StaysWhereItIsWithoutAStep)
{
    auto slew = slewAt<TypeParam> (0.25f, 1.0f, 0.0f);
    slew.advance();
    EXPECT_EQ (slew.current, 0.25f);
}

TYPED_TEST (SlewValues, MovesLinearlyInEveryModeButTheSpring)
{
    for (const auto mode : { -1, 0, 1, 2, 4, 100 })
    {
        auto slew = slewAt<TypeParam> (0.0f, 1.0f, 0.25f, mode);
        slew.stiffness = 0.5f;
        slew.damping = 0.5f;
        slew.advance();
        EXPECT_EQ (slew.current, 0.25f) << mode;
        EXPECT_EQ (slew.step, 0.25f) << mode;
    }
}

TYPED_TEST (SlewValues, SwingsLikeADampedSpringInModeThree)
{
    auto slew = slewAt<TypeParam> (0.25f, 1.0f, 0.5f, SlewValue::springMode);
    slew.stiffness = 0.25f;
    slew.damping = 2.0f;

    // (1 - (0.5 * 2 + 0.25)) * 0.25 + 0.5, and then 0.25 more.
    slew.advance();
    EXPECT_EQ (slew.step, 0.4375f);
    EXPECT_EQ (slew.current, 0.6875f);

    for (int i = 0; i < 200; ++i)
        slew.advance();

    EXPECT_NEAR (slew.current, 1.0f, 1.0e-5f);
    EXPECT_NEAR (slew.step, 0.0f, 1.0e-5f);
}

TYPED_TEST (SlewValues, IgnoresANaNTarget)
{
    auto slew = slewAt<TypeParam> (0.25f, std::nanf (""), 0.1f);
    slew.advance();
    EXPECT_EQ (slew.current, 0.25f);
}
