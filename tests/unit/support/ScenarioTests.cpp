// SPDX-License-Identifier: AGPL-3.0-or-later
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "support/scenario/Playback.h"
#include "support/scenario/ReferencePlayer.h"
#include "support/scenario/Scenario.h"

using scenario::describe;
using scenario::makeScenario;
using scenario::Options;
using scenario::play;
using scenario::ReferencePlayer;

TEST (Scenario, IsTheSameForTheSameSeed)
{
    const auto a = makeScenario (7);
    const auto b = makeScenario (7);
    EXPECT_EQ (a.positions, b.positions);
    EXPECT_EQ (a.left, b.left);
    EXPECT_EQ (a.blocks.size(), b.blocks.size());
    EXPECT_NE (a.positions, makeScenario (8).positions);
}

TEST (Scenario, HasBlocksForExactlyItsFrames)
{
    for (std::uint32_t seed = 0; seed < 50; ++seed)
    {
        const auto scenario = makeScenario (seed);
        int sum = 0;

        for (const auto& block : scenario.blocks)
            sum += block.numFrames;

        EXPECT_EQ (sum, 8000) << describe (scenario);
        EXPECT_EQ (scenario.left.size(), 8000u);
        EXPECT_EQ (scenario.right.size(), scenario.stereo ? 8000u : 0u);
    }
}

TEST (Scenario, ReachesEveryThemeTransportShapeSlopeAndFamilyWithinTwoHundredSeeds)
{
    std::map<std::string, int> themes;
    std::map<std::string, int> transports;
    std::map<int, int> shapes;
    std::map<int, int> slopes;
    std::map<int, int> families;
    std::map<int, int> syncs;
    std::map<int, int> modes;
    int slept = 0;
    Options options;
    options.numFrames = 4000;

    for (std::uint32_t seed = 0; seed < 200; ++seed)
    {
        const auto scenario = makeScenario (seed, options);
        ++themes[scenario.theme];
        ++transports[scenario.transport];
        ReferencePlayer player;

        for (int i = 0; i < reference::Index::count; ++i)
            player.engine.setParameter (i, scenario.positions[(std::size_t) i]);

        for (int lfo = 0; lfo < 2; ++lfo)
        {
            ++shapes[player.engine.getChoiceIndex (reference::Index::lfoShape (lfo))];
            ++syncs[player.engine.getChoiceIndex (reference::Index::lfoSync (lfo))];
            ++modes[player.engine.getChoiceIndex (reference::Index::lfoMode (lfo))];
        }

        ++slopes[player.engine.getChoiceIndex (reference::Index::hpMode)];
        ++families[player.engine.getChoiceIndex (reference::Index::filtMode)];

        ReferencePlayer listener;
        play (scenario, listener);
        slept += listener.engine.tickCount < listener.engine.frameCount ? 1 : 0;
    }

    EXPECT_EQ (themes.size(), 8u);
    EXPECT_EQ (transports.size(), 11u);
    EXPECT_EQ (syncs.size(), 10u);
    EXPECT_EQ (modes.size(), 17u);
    EXPECT_EQ (slopes.size(), 10u);

    for (int shape = 0; shape <= 7; ++shape)
        EXPECT_GT (shapes[shape], 0) << shape;

    EXPECT_GT (families[0], 20);
    EXPECT_GT (families[1], 20);
    EXPECT_GT (slept, 10);
    EXPECT_LT (slept, 190);
}

TEST (Scenario, SoundsTheSameInAnySplitOfItsBlocks)
{
    for (std::uint32_t seed = 100; seed < 140; ++seed)
    {
        const auto scenario = makeScenario (seed);
        ReferencePlayer one;
        ReferencePlayer other;
        const auto expected = play (scenario, one);
        const auto actual = play (splitFurther (scenario, seed), other);
        EXPECT_EQ (firstDifference (expected, actual), -1) << describe (scenario);
        EXPECT_EQ (one.engine.tickCount, other.engine.tickCount) << describe (scenario);
    }
}

TEST (Scenario, KeepsTheSlewsInRangeWithAHostThatSendsNonsense)
{
    Options options;
    options.strangeSamples = true;
    options.strangeTransport = true;
    options.numFrames = 1500;

    for (std::uint32_t seed = 500; seed < 600; ++seed)
    {
        const auto scenario = makeScenario (seed, options);
        ReferencePlayer player;
        play (scenario, player);

        for (const auto* slew : { &player.engine.hpFreqSlew, &player.engine.lpFreqSlew, &player.engine.hpResoSlew,
                                  &player.engine.lpResoSlew })
        {
            EXPECT_GE (slew->current, 0.0f) << describe (scenario);
            EXPECT_LE (slew->current, 1.0f) << describe (scenario);
        }
    }
}

TEST (Scenario, LeavesOutTheBrownianShapeOnRequest)
{
    Options options;
    options.brownian = false;
    options.numFrames = 1000;

    for (std::uint32_t seed = 0; seed < 100; ++seed)
    {
        const auto scenario = makeScenario (seed, options);
        ReferencePlayer player;
        play (scenario, player);
        EXPECT_NE (player.engine.lfo[0].shape, 5);
        EXPECT_NE (player.engine.lfo[1].shape, 5);
    }
}
