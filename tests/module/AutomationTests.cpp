// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/Automation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/HostError.h"
#include "module/ModuleUnderTest.h"

namespace
{
constexpr double sampleRate = 1000.0;

Automation automate (const ModuleUnderTest& module, const char* text)
{
    return Automation ({ Automation::parse (module.parameters(), text) }, sampleRate);
}

/** All frames up to 2000 at which a host would stop, starting with the first. */
std::vector<juce::int64> stops (const Automation& automation)
{
    std::vector<juce::int64> frames;

    for (auto frame = automation.nextChange (-1); frame.has_value() && frames.size() < 2000;
         frame = automation.nextChange (*frame))
        frames.push_back (*frame);

    return frames;
}
} // namespace

TEST (Automation, ChangesNothingBeforeItsFirstPoint)
{
    const ModuleUnderTest module;
    module.parameters().find ("lp_freq").parameter->setValue (0.9f);
    auto automation = automate (module, "lp_freq@0.5=0.2");

    automation.apply (499);
    EXPECT_EQ (module.get ("lp_freq"), 0.9f);
    automation.apply (500);
    EXPECT_EQ (module.get ("lp_freq"), 0.2f);
}

TEST (Automation, InterpolatesBetweenPointsAndHoldsTheLast)
{
    const ModuleUnderTest module;
    auto automation = automate (module, "lp_freq@0=0,0.32=0.5");

    automation.apply (160);
    EXPECT_FLOAT_EQ (module.get ("lp_freq"), 0.25f);
    automation.apply (320);
    EXPECT_EQ (module.get ("lp_freq"), 0.5f);
    automation.apply (5000);
    EXPECT_EQ (module.get ("lp_freq"), 0.5f);
}

TEST (Automation, HoldsItsValueBetweenTheStepsOfARamp)
{
    const ModuleUnderTest module;
    auto automation = automate (module, "lp_freq@0=0,0.32=0.5");

    automation.apply (159);
    const auto before = module.get ("lp_freq");
    automation.apply (128);
    EXPECT_EQ (module.get ("lp_freq"), before);
}

TEST (Automation, JumpsBetweenPointsAtTheSameTime)
{
    const ModuleUnderTest module;
    auto automation = automate (module, "lp_mode@0=6 dB/oct,1=6 dB/oct,1=48 dB/oct");

    automation.apply (999);
    EXPECT_EQ (module.get ("lp_mode"), 1.0f / 9.0f);
    automation.apply (1000);
    EXPECT_EQ (module.get ("lp_mode"), 4.0f / 9.0f);
    EXPECT_THAT (stops (automation), testing::ElementsAre (0, 1000));
}

TEST (Automation, ChangesAtPointsAndOnTheGridOfRamps)
{
    const ModuleUnderTest module;
    const auto automation = automate (module, "lp_freq@0.01=0,0.1=0.5,0.15=0.5");
    EXPECT_THAT (stops (automation), testing::ElementsAre (10, 32, 64, 96, 100, 150));
}

TEST (Automation, RefusesTextItCannotRead)
{
    const ModuleUnderTest module;

    for (const auto* text : { "lp_freq", "lp_freq@", "lp_freq@x=1", "lp_freq@-1=1", "lp_freq@1", "lp_freq@1=",
                              "lp_freq@1=2", "lp_freq@2=0,1=1", "nothing@0=1", "lp_freq@nan=1", "lp_freq@0=1,,1=1" })
        EXPECT_THROW ([[maybe_unused]] const auto lane = Automation::parse (module.parameters(), text), HostError)
            << text;
}
