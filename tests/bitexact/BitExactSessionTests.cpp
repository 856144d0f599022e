// SPDX-License-Identifier: AGPL-3.0-or-later
// Random sessions: a patch, a host with its transport, rate and blocks, knobs that move, and a sound.
#include <gtest/gtest.h>

#include "bitexact/DifferentialPlayer.h"
#include "support/scenario/Playback.h"

namespace
{
using scenario::Options;
using scenario::Scenario;

DifferentialPlayer::Channels channelsOf (const Scenario& session)
{
    return session.stereo ? DifferentialPlayer::Channels::stereo : DifferentialPlayer::Channels::mono;
}

void playSessions (std::uint32_t firstSeed, int count, const Options& options)
{
    for (auto seed = firstSeed; seed < firstSeed + (std::uint32_t) count; ++seed)
    {
        const auto session = scenario::makeScenario (seed, options);
        DifferentialPlayer player (channelsOf (session));
        scenario::play (session, player);
        ASSERT_TRUE (player.isBitExact()) << scenario::describe (session) << "\n" << player.difference();
        ASSERT_EQ (player.numFramesPlayed(), options.numFrames);
    }
}
} // namespace

TEST (BitExact, InThreeHundredRandomSessions) { playSessions (1, 300, {}); }

TEST (BitExact, InRandomSessionsOfAHostThatSendsNonsense)
{
    Options options;
    options.strangeTransport = true;
    playSessions (10001, 80, options);
}

TEST (BitExact, InRandomSessionsWithNaNAndInfinityInTheSound)
{
    Options options;
    options.strangeSamples = true;
    playSessions (20001, 80, options);
}

TEST (BitExact, InLongRandomSessions)
{
    Options options;
    options.numFrames = 150000;
    playSessions (30001, 12, options);
}

TEST (BitExact, InAnySplitOfASessionIntoBlocks)
{
    for (std::uint32_t seed = 40001; seed < 40061; ++seed)
    {
        const auto session = scenario::makeScenario (seed);
        DifferentialPlayer whole (channelsOf (session));
        DifferentialPlayer cut (channelsOf (session));
        const auto wholeOutput = scenario::play (session, whole);
        const auto cutOutput = scenario::play (scenario::splitFurther (session, seed), cut);
        ASSERT_TRUE (cut.isBitExact()) << scenario::describe (session) << "\n" << cut.difference();
        ASSERT_EQ (scenario::firstDifference (wholeOutput, cutOutput), -1) << scenario::describe (session);
    }
}
