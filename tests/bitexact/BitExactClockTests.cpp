// SPDX-License-Identifier: AGPL-3.0-or-later
// When ticks run: sleeping and waking, the clock of 65536 frames, and the operations of a frame called alone.
#include <array>
#include <gtest/gtest.h>
#include <limits>

#include "bitexact/DifferentialPlayer.h"

namespace
{
namespace Index = reference::Index;

constexpr std::array uneven { 0, 1, 31, 63, 65, 2, 127, 129, 700 };
constexpr int clockPeriod = 65536;

void setFilters (DifferentialPlayer& player, int family, int slope, float resonance)
{
    player.setSampleRate (48000.0);
    player.setChoice (Index::filtMode, family);
    player.setChoice (Index::hpMode, slope);
    player.setChoice (Index::lpMode, slope);
    player.setParameter (Index::hpReso, resonance);
    player.setParameter (Index::lpReso, resonance);
    player.setParameter (Index::hpFreq, 0.4f);
    player.setParameter (Index::lpFreq, 0.8f);
}
} // namespace

TEST (BitExact, WhileAsleepAcrossClockTicks)
{
    for (const auto channels : { DifferentialPlayer::Channels::mono, DifferentialPlayer::Channels::stereo })
        for (int family = 0; family < 3; ++family)
        {
            DifferentialPlayer player (channels);
            setFilters (player, family, 4, 0.6f);
            player.startAtRest();
            player.playNoise (1000);
            ASSERT_FALSE (player.referenceEngine.controlUpdatePending);
            const auto ticksBefore = player.numTicks();

            // Takes effect only when the clock wraps.
            player.setChoice (Index::hpMode, 2);
            player.setChoice (Index::lpMode, 1);
            player.playNoise (2 * clockPeriod, uneven);
            ASSERT_EQ (player.numTicks(), ticksBefore + 2);
            ASSERT_TRUE (player.isBitExact()) << "family " << family << "\n" << player.difference();
        }
}

TEST (BitExact, WhenTheClockWrapsWhileAwake)
{
    DifferentialPlayer player;
    setFilters (player, 0, 2, 0.3f);
    player.setParameter (Index::lfoToHpf (0), 0.8f);
    player.playNoise (clockPeriod + 100, uneven);
    player.setParameter (Index::lfoToHpf (0), 0.5f);
    player.playNoise (clockPeriod + 100, uneven);
    ASSERT_FALSE (player.referenceEngine.controlUpdatePending);
    ASSERT_TRUE (player.isBitExact()) << player.difference();
}

TEST (BitExact, WhenTheClockWrapsAtTheEdgeOfABlock)
{
    for (const auto lead : { clockPeriod - 2, clockPeriod - 1, clockPeriod, clockPeriod - 64, clockPeriod - 512 })
    {
        DifferentialPlayer player;
        setFilters (player, 0, 3, 0.0f);
        player.startAtRest();
        player.playNoise (lead, 4096);
        player.setChoice (Index::hpMode, 1);
        player.playNoise (1024, 512);
        ASSERT_TRUE (player.isBitExact()) << lead << "\n" << player.difference();
    }
}

TEST (BitExact, FromGlideToSleep)
{
    for (int family = 0; family < 2; ++family)
    {
        DifferentialPlayer player;
        setFilters (player, family, 4, 0.9f);
        player.playNoise (20000, uneven);
        ASSERT_FALSE (player.referenceEngine.controlUpdatePending) << "the glide is over";

        player.setParameter (Index::hpFreq, 0.1f);
        player.setParameter (Index::lpReso, 0.0f);
        player.playNoise (20000);
        ASSERT_FALSE (player.referenceEngine.controlUpdatePending);
        ASSERT_TRUE (player.isBitExact()) << "family " << family << "\n" << player.difference();
    }
}

TEST (BitExact, WhenWatchedParametersWakeTheEngine)
{
    constexpr std::array watched { Index::hpFreq, Index::lpFreq, Index::hpReso, Index::lpReso };

    for (unsigned moved = 1; moved < 16; ++moved)
        for (const auto distance : { 1e-7f, 0.0001f, 0.05f })
        {
            DifferentialPlayer player;
            setFilters (player, 0, 3, 0.5f);
            player.startAtRest();
            player.playNoise (600);
            ASSERT_FALSE (player.referenceEngine.controlUpdatePending);

            for (std::size_t i = 0; i < watched.size(); ++i)
                if ((moved >> i & 1u) != 0)
                    player.setParameter (watched[i], player.referenceEngine.getParameter (watched[i]) + distance);

            // Frame by frame, since each frame notices one of them.
            player.playNoise (8, 1);
            player.playNoise (600, uneven);
            ASSERT_TRUE (player.isBitExact()) << "moved " << moved << " by " << distance << "\n" << player.difference();
        }
}

TEST (BitExact, WhenWakingAndSleepingAlternate)
{
    scenario::Dice dice { 5 };
    DifferentialPlayer player;
    setFilters (player, 0, 4, 0.4f);
    player.startAtRest();
    std::int64_t sleeps = 0;

    for (int iteration = 0; iteration < 400; ++iteration)
    {
        const auto index = dice.oneOf (std::array { Index::hpFreq, Index::lpFreq, Index::hpReso, Index::lpReso });
        const auto nudged = player.referenceEngine.getParameter (index) + (float) dice.between (-0.0004, 0.0004);
        player.setParameter (index, nudged);

        if (dice.chance (0.1))
            player.requestUpdate();

        if (dice.chance (0.1))
            player.prepareToPlay();

        player.playNoise (1 + dice.below (1500), uneven);
        sleeps += player.referenceEngine.controlUpdatePending ? 0 : 1;
        ASSERT_TRUE (player.isBitExact()) << "iteration " << iteration << "\n" << player.difference();
    }

    EXPECT_GT (sleeps, 100);
    EXPECT_LT (sleeps, 400);
}

TEST (BitExact, WhenTheSampleRateChangesBetweenBlocks)
{
    DifferentialPlayer player;
    setFilters (player, 0, 4, 0.5f);
    player.setParameter (Index::lfoToLpf (0), 0.9f);

    for (const auto rate : { 44100.0, 0.0, 192000.0, 999.0, 999.5, 22050.0, 10000000001.0, 1e9, 96000.0, -1.0,
                             std::numeric_limits<double>::quiet_NaN(), 48000.0 })
    {
        player.setSampleRate (rate);
        player.playNoise (500, uneven);
        ASSERT_TRUE (player.isBitExact()) << rate << " Hz\n" << player.difference();
    }
}

TEST (BitExact, BeforeTheHostSetsASampleRate)
{
    DifferentialPlayer player;
    player.setParameter (Index::hpFreq, 0.6f);
    player.playNoise (1000, uneven);
    EXPECT_EQ (player.plugIn.hostSampleRate, 96000.0);
    ASSERT_TRUE (player.isBitExact()) << player.difference();
}

TEST (BitExact, WhenTheFrameCountSaturates)
{
    DifferentialPlayer player;
    setFilters (player, 0, 2, 0.0f);
    player.startAtRest();
    player.playNoise (10);
    player.setFramesSinceRequest (std::numeric_limits<std::int32_t>::max() - 100);
    player.playNoise (300, uneven);
    EXPECT_EQ (player.plugIn.framesSinceRequest, std::numeric_limits<std::int32_t>::max());
    ASSERT_TRUE (player.isBitExact()) << player.difference();
}

TEST (BitExact, InABlockThatIsProcessedInSeveralPieces)
{
    DifferentialPlayer player;
    setFilters (player, 0, 1, 0.0f);
    player.playNoise (600000, 600000);
    ASSERT_TRUE (player.isBitExact()) << player.difference();
}

TEST (BitExact, WithTicksCalledDirectly)
{
    DifferentialPlayer player;
    setFilters (player, 0, 4, 0.7f);
    player.setParameter (Index::lfoToHpf (0), 0.9f);
    player.setParameter (Index::lfoToLpr (1), 0.8f);
    player.setParameter (Index::seqHpf (2), 0.7f);
    player.setTransport (
        [] (std::int64_t query) {
            return reference::Transport { true, true, 120.0, 1.0 + 0.001 * (double) query };
        });

    for (int tick = 0; tick < 3000; ++tick)
    {
        player.updateControlRate();
        player.compareFields();
        ASSERT_TRUE (player.isBitExact()) << "tick " << tick << "\n" << player.difference();
    }
}

TEST (BitExact, WithFramesCalledDirectly)
{
    for (int family = 0; family < 3; ++family)
        for (int slope = 0; slope < 5; ++slope)
        {
            scenario::Dice dice { 3 };
            DifferentialPlayer player;
            setFilters (player, family, slope, 0.6f);

            // Before the first tick nothing is designed.
            for (int frame = 0; frame < 20; ++frame)
                player.processFrame ((float) dice.between (-1.0, 1.0), (float) dice.between (-1.0, 1.0));

            player.updateControlRate();

            for (int frame = 0; frame < 500; ++frame)
                player.processFrame ((float) dice.between (-1.0, 1.0), (float) dice.between (-1.0, 1.0));

            player.compareFields();
            ASSERT_TRUE (player.isBitExact()) << "family " << family << ", slope " << slope << "\n"
                                              << player.difference();
        }
}

TEST (BitExact, WithBlocksTicksAndFramesInAnyOrder)
{
    for (std::uint32_t seed = 1; seed <= 40; ++seed)
    {
        scenario::Dice dice { seed };
        DifferentialPlayer player;
        setFilters (player, dice.below (2), dice.below (5), dice.oneOf (std::array { 0.0f, 0.5f, 1.0f }));

        if (dice.chance (0.5))
            player.setParameter (Index::lfoToHpf (0), dice.position());

        if (dice.chance (0.5))
            player.startAtRest();

        player.setTransport (reference::Transport { true, true, 128.0, 7.5 });

        for (int step = 0; step < 200; ++step)
        {
            switch (dice.below (4))
            {
                case 0:
                    player.playNoise (dice.below (300), uneven);
                    break;
                case 1:
                    player.updateControlRate();
                    break;
                case 2:
                    for (int frame = dice.below (70); frame > 0; --frame)
                        player.processFrame ((float) dice.between (-1.0, 1.0), (float) dice.between (-1.0, 1.0));
                    break;
                default:
                    player.setParameter (dice.below (Index::count), dice.position());
                    break;
            }

            player.compareFields();
            ASSERT_TRUE (player.isBitExact()) << "seed " << seed << ", step " << step << "\n" << player.difference();
        }
    }
}

// The comparison itself must see a single bit anywhere.
TEST (DifferentialPlayer, ReportsOneDifferentBitInASampleAndInAField)
{
    DifferentialPlayer sample;
    setFilters (sample, 0, 2, 0.0f);
    sample.startAtRest();
    sample.playNoise (100);
    ASSERT_TRUE (sample.isBitExact());
    sample.referenceEngine.lpFilter.sectionGain[0] =
        std::nextafter (sample.referenceEngine.lpFilter.sectionGain[0], 1.0) + 1e-7;
    sample.playNoise (100);
    EXPECT_NE (sample.difference().find ("frame 10"), std::string::npos) << sample.difference();

    DifferentialPlayer field;
    field.playNoise (10);
    ASSERT_TRUE (field.isBitExact());
    field.referenceEngine.lpFilter.w2Right[0] = std::nextafter (field.referenceEngine.lpFilter.w2Right[0], 1.0);
    field.compareFields();
    EXPECT_NE (field.difference().find ("lpFilter.w2[0] right"), std::string::npos) << field.difference();
}
