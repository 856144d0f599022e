// SPDX-License-Identifier: AGPL-3.0-or-later
// When ticks run: sleeping and waking, the clock of 65536 frames, and the operations of a frame called alone.
#include <array>
#include <gtest/gtest.h>
#include <limits>

#include "bitexact/DuoPlayer.h"

namespace
{
using namespace reference;

constexpr std::array uneven { 0, 1, 31, 63, 65, 2, 127, 129, 700 };
constexpr int clockPeriod = 65536;

void setFilters (DuoPlayer& duo, int family, int slope, float resonance)
{
    duo.setSampleRate (48000.0);
    duo.setChoice (Index::filtMode, family);
    duo.setChoice (Index::hpMode, slope);
    duo.setChoice (Index::lpMode, slope);
    duo.setParameter (Index::hpReso, resonance);
    duo.setParameter (Index::lpReso, resonance);
    duo.setParameter (Index::hpFreq, 0.4f);
    duo.setParameter (Index::lpFreq, 0.8f);
}
} // namespace

TEST (SameBits, AsleepThroughTheTicksOfTheClock)
{
    for (const auto channels : { DuoPlayer::Channels::mono, DuoPlayer::Channels::stereo })
        for (int family = 0; family < 3; ++family)
        {
            DuoPlayer duo (channels);
            setFilters (duo, family, 4, 0.6f);
            duo.startAtRest();
            duo.playNoise (1000);
            ASSERT_FALSE (duo.literal.controlUpdatePending);
            const auto ticksBefore = duo.numTicks();

            // Heard only when the clock comes round.
            duo.setChoice (Index::hpMode, 2);
            duo.setChoice (Index::lpMode, 1);
            duo.playNoise (2 * clockPeriod, uneven);
            ASSERT_EQ (duo.numTicks(), ticksBefore + 2);
            ASSERT_TRUE (duo.isSame()) << "family " << family << "\n" << duo.difference();
        }
}

TEST (SameBits, WhenTheClockComesRoundWhileTheEngineIsAwake)
{
    DuoPlayer duo;
    setFilters (duo, 0, 2, 0.3f);
    duo.setParameter (Index::lfoToHpf (0), 0.8f);
    duo.playNoise (clockPeriod + 100, uneven);
    duo.setParameter (Index::lfoToHpf (0), 0.5f);
    duo.playNoise (clockPeriod + 100, uneven);
    ASSERT_FALSE (duo.literal.controlUpdatePending);
    ASSERT_TRUE (duo.isSame()) << duo.difference();
}

TEST (SameBits, WhenTheClockFallsOnTheFirstOrLastFrameOfABlock)
{
    for (const auto lead : { clockPeriod - 2, clockPeriod - 1, clockPeriod, clockPeriod - 64, clockPeriod - 512 })
    {
        DuoPlayer duo;
        setFilters (duo, 0, 3, 0.0f);
        duo.startAtRest();
        duo.playNoise (lead, 4096);
        duo.setChoice (Index::hpMode, 1);
        duo.playNoise (1024, 512);
        ASSERT_TRUE (duo.isSame()) << lead << "\n" << duo.difference();
    }
}

TEST (SameBits, FromTheGlideIntoSleep)
{
    for (int family = 0; family < 2; ++family)
    {
        DuoPlayer duo;
        setFilters (duo, family, 4, 0.9f);
        duo.playNoise (20000, uneven);
        ASSERT_FALSE (duo.literal.controlUpdatePending) << "the glide is over";

        duo.setParameter (Index::hpFreq, 0.1f);
        duo.setParameter (Index::lpReso, 0.0f);
        duo.playNoise (20000);
        ASSERT_FALSE (duo.literal.controlUpdatePending);
        ASSERT_TRUE (duo.isSame()) << "family " << family << "\n" << duo.difference();
    }
}

TEST (SameBits, WokenByEachWatchedParameterAndByAllAtOnce)
{
    constexpr std::array watched { Index::hpFreq, Index::lpFreq, Index::hpReso, Index::lpReso };

    for (unsigned moved = 1; moved < 16; ++moved)
        for (const auto distance : { 1e-7f, 0.0001f, 0.05f })
        {
            DuoPlayer duo;
            setFilters (duo, 0, 3, 0.5f);
            duo.startAtRest();
            duo.playNoise (600);
            ASSERT_FALSE (duo.literal.controlUpdatePending);

            for (size_t i = 0; i < watched.size(); ++i)
                if ((moved >> i & 1u) != 0)
                    duo.setParameter (watched[i], duo.literal.getParameter (watched[i]) + distance);

            // Frame by frame, since one frame takes note of one of them.
            duo.playNoise (8, 1);
            duo.playNoise (600, uneven);
            ASSERT_TRUE (duo.isSame()) << "moved " << moved << " by " << distance << "\n" << duo.difference();
        }
}

TEST (SameBits, WhenWakingAndSleepingTakeTurns)
{
    scenario::Dice dice { 5 };
    DuoPlayer duo;
    setFilters (duo, 0, 4, 0.4f);
    duo.startAtRest();
    std::int64_t sleeps = 0;

    for (int turn = 0; turn < 400; ++turn)
    {
        const auto index = dice.oneOf (std::array { Index::hpFreq, Index::lpFreq, Index::hpReso, Index::lpReso });
        const auto nudged = duo.literal.getParameter (index) + (float) dice.between (-0.0004, 0.0004);
        duo.setParameter (index, nudged);

        if (dice.chance (0.1))
            duo.requestUpdate();

        if (dice.chance (0.1))
            duo.prepareToPlay();

        duo.playNoise (1 + dice.below (1500), uneven);
        sleeps += duo.literal.controlUpdatePending ? 0 : 1;
        ASSERT_TRUE (duo.isSame()) << "turn " << turn << "\n" << duo.difference();
    }

    EXPECT_GT (sleeps, 100);
    EXPECT_LT (sleeps, 400);
}

TEST (SameBits, WhenTheHostChangesItsRateBetweenBlocks)
{
    DuoPlayer duo;
    setFilters (duo, 0, 4, 0.5f);
    duo.setParameter (Index::lfoToLpf (0), 0.9f);

    for (const auto rate : { 44100.0, 0.0, 192000.0, 999.0, 999.5, 22050.0, 10000000001.0, 1e9, 96000.0, -1.0,
                             std::numeric_limits<double>::quiet_NaN(), 48000.0 })
    {
        duo.setSampleRate (rate);
        duo.playNoise (500, uneven);
        ASSERT_TRUE (duo.isSame()) << rate << " Hz\n" << duo.difference();
    }
}

TEST (SameBits, BeforeTheHostHasToldItsRate)
{
    DuoPlayer duo;
    duo.setParameter (Index::hpFreq, 0.6f);
    duo.playNoise (1000, uneven);
    EXPECT_EQ (duo.product.hostSampleRate, 96000.0);
    ASSERT_TRUE (duo.isSame()) << duo.difference();
}

TEST (SameBits, WhenTheCountOfFramesReachesItsEnd)
{
    DuoPlayer duo;
    setFilters (duo, 0, 2, 0.0f);
    duo.startAtRest();
    duo.playNoise (10);
    duo.setFramesSinceRequest (std::numeric_limits<std::int32_t>::max() - 100);
    duo.playNoise (300, uneven);
    EXPECT_EQ (duo.product.framesSinceRequest, std::numeric_limits<std::int32_t>::max());
    ASSERT_TRUE (duo.isSame()) << duo.difference();
}

TEST (SameBits, InABlockOfMoreFramesThanOneRunTakes)
{
    DuoPlayer duo;
    setFilters (duo, 0, 1, 0.0f);
    duo.playNoise (600000, 600000);
    ASSERT_TRUE (duo.isSame()) << duo.difference();
}

TEST (SameBits, WithTicksCalledAlone)
{
    DuoPlayer duo;
    setFilters (duo, 0, 4, 0.7f);
    duo.setParameter (Index::lfoToHpf (0), 0.9f);
    duo.setParameter (Index::lfoToLpr (1), 0.8f);
    duo.setParameter (Index::seqHpf (2), 0.7f);
    duo.setTransport (
        [] (std::int64_t query) {
            return Transport { true, true, 120.0, 1.0 + 0.001 * (double) query };
        });

    for (int tick = 0; tick < 3000; ++tick)
    {
        duo.updateControlRate();
        duo.compareFields();
        ASSERT_TRUE (duo.isSame()) << "tick " << tick << "\n" << duo.difference();
    }
}

TEST (SameBits, WithFramesCalledAlone)
{
    for (int family = 0; family < 3; ++family)
        for (int slope = 0; slope < 5; ++slope)
        {
            scenario::Dice dice { 3 };
            DuoPlayer duo;
            setFilters (duo, family, slope, 0.6f);

            // Before the first tick nothing is designed.
            for (int frame = 0; frame < 20; ++frame)
                duo.processFrame ((float) dice.between (-1.0, 1.0), (float) dice.between (-1.0, 1.0));

            duo.updateControlRate();

            for (int frame = 0; frame < 500; ++frame)
                duo.processFrame ((float) dice.between (-1.0, 1.0), (float) dice.between (-1.0, 1.0));

            duo.compareFields();
            ASSERT_TRUE (duo.isSame()) << "family " << family << ", slope " << slope << "\n" << duo.difference();
        }
}

TEST (SameBits, WithBlocksTicksAndFramesInAnyMixture)
{
    for (std::uint32_t seed = 1; seed <= 40; ++seed)
    {
        scenario::Dice dice { seed };
        DuoPlayer duo;
        setFilters (duo, dice.below (2), dice.below (5), dice.oneOf (std::array { 0.0f, 0.5f, 1.0f }));

        if (dice.chance (0.5))
            duo.setParameter (Index::lfoToHpf (0), dice.position());

        if (dice.chance (0.5))
            duo.startAtRest();

        duo.setTransport (Transport { true, true, 128.0, 7.5 });

        for (int step = 0; step < 200; ++step)
        {
            switch (dice.below (4))
            {
                case 0:
                    duo.playNoise (dice.below (300), uneven);
                    break;
                case 1:
                    duo.updateControlRate();
                    break;
                case 2:
                    for (int frame = dice.below (70); frame > 0; --frame)
                        duo.processFrame ((float) dice.between (-1.0, 1.0), (float) dice.between (-1.0, 1.0));
                    break;
                default:
                    duo.setParameter (dice.below (Index::count), dice.position());
                    break;
            }

            duo.compareFields();
            ASSERT_TRUE (duo.isSame()) << "seed " << seed << ", step " << step << "\n" << duo.difference();
        }
    }
}

// The comparison itself: it must see a single bit, wherever it is.
TEST (DuoPlayer, SeesOneBitInASampleAndInAField)
{
    DuoPlayer sample;
    setFilters (sample, 0, 2, 0.0f);
    sample.startAtRest();
    sample.playNoise (100);
    ASSERT_TRUE (sample.isSame());
    sample.literal.lpFilter.sectionGain[0] = std::nextafter (sample.literal.lpFilter.sectionGain[0], 1.0) + 1e-7;
    sample.playNoise (100);
    EXPECT_NE (sample.difference().find ("frame 10"), std::string::npos) << sample.difference();

    DuoPlayer field;
    field.playNoise (10);
    ASSERT_TRUE (field.isSame());
    field.literal.lpFilter.w2Right[0] = std::nextafter (field.literal.lpFilter.w2Right[0], 1.0);
    field.compareFields();
    EXPECT_NE (field.difference().find ("lpFilter.w2[0] right"), std::string::npos) << field.difference();
}
