// SPDX-License-Identifier: AGPL-3.0-or-later
// Random sessions: a patch, a host with its transport, rate and blocks, knobs that move, and a sound.
#include <gtest/gtest.h>

#include "bitexact/DuoPlayer.h"

namespace
{
using scenario::Options;
using scenario::Scenario;

DuoPlayer::Channels channelsOf (const Scenario& session)
{
    return session.stereo ? DuoPlayer::Channels::stereo : DuoPlayer::Channels::mono;
}

void playSessions (std::uint32_t firstSeed, int count, const Options& options)
{
    for (auto seed = firstSeed; seed < firstSeed + (std::uint32_t) count; ++seed)
    {
        const auto session = scenario::makeScenario (seed, options);
        DuoPlayer duo (channelsOf (session));
        scenario::play (session, duo);
        ASSERT_TRUE (duo.isSame()) << scenario::describe (session) << "\n" << duo.difference();
        ASSERT_EQ (duo.numFramesPlayed(), options.numFrames);
    }
}
} // namespace

TEST (SameBits, InThreeHundredRandomSessions) { playSessions (1, 300, {}); }

TEST (SameBits, InRandomSessionsOfAHostThatTellsNonsense)
{
    Options options;
    options.strangeTransport = true;
    playSessions (10001, 80, options);
}

TEST (SameBits, InRandomSessionsWithNanAndInfinityInTheSound)
{
    Options options;
    options.strangeSamples = true;
    playSessions (20001, 80, options);
}

TEST (SameBits, InLongRandomSessions)
{
    Options options;
    options.numFrames = 150000;
    playSessions (30001, 12, options);
}

TEST (SameBits, HoweverTheBlocksOfASessionAreCut)
{
    for (std::uint32_t seed = 40001; seed < 40061; ++seed)
    {
        const auto session = scenario::makeScenario (seed);
        DuoPlayer whole (channelsOf (session));
        DuoPlayer cut (channelsOf (session));
        const auto wholeOutput = scenario::play (session, whole);
        const auto cutOutput = scenario::play (scenario::splitFurther (session, seed), cut);
        ASSERT_TRUE (cut.isSame()) << scenario::describe (session) << "\n" << cut.difference();
        ASSERT_EQ (scenario::firstDifference (wholeOutput, cutOutput), -1) << scenario::describe (session);
    }
}
