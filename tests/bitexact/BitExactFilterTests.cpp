// SPDX-License-Identifier: AGPL-3.0-or-later
// Both families with all slopes, resonances and rates, at rest and while the knobs move.
#include <array>
#include <gtest/gtest.h>
#include <limits>

#include "bitexact/DifferentialPlayer.h"

namespace
{
using reference::Index::filtMode, reference::Index::hpFreq, reference::Index::hpMode, reference::Index::hpReso;
using reference::Index::lpFreq, reference::Index::lpMode, reference::Index::lpReso;
using Channels = DifferentialPlayer::Channels;

constexpr std::array rates { 22050.0, 44100.0, 48000.0, 88200.0, 96000.0, 192000.0 };
constexpr std::array amounts { 0.0f, 0.05f, 0.5f, 1.0f };
constexpr int numSlopes = 5;

// From one frame at a time to blocks that are no multiple of anything.
constexpr std::array ones { 1 };
constexpr std::array sevens { 7 };
constexpr std::array sixtyFours { 64 };
constexpr std::array large { 512 };
constexpr std::array uneven { 0, 1, 31, 63, 65, 2, 127, 129 };
const std::array<std::span<const int>, 5> splits { ones, sevens, sixtyFours, large, uneven };

void setFilters (DifferentialPlayer& player, int family, int highpassSlope, int lowpassSlope, float resonance)
{
    player.setChoice (filtMode, family);
    player.setChoice (hpMode, highpassSlope);
    player.setChoice (lpMode, lowpassSlope);
    player.setParameter (hpReso, resonance);
    player.setParameter (lpReso, resonance);
}

/** Plays at rest, then moves both frequencies at once and plays the glide. */
void playRestAndGlide (DifferentialPlayer& player, std::span<const int> blockSizes)
{
    player.startAtRest();
    player.playNoise (150, blockSizes);
    player.setParameter (hpFreq, 0.45f);
    player.setParameter (lpFreq, 0.75f);
    player.playNoise (150, blockSizes);
    player.setParameter (lpReso, 0.7f);
    player.playNoise (100, blockSizes);
}
} // namespace

TEST (BitExact, WithEveryPairOfSlopesFamilyResonanceAndRate)
{
    std::size_t round = 0;

    for (const auto rate : rates)
        for (const auto channels : { Channels::mono, Channels::stereo })
            for (int family = 0; family < 2; ++family)
                for (const auto amount : amounts)
                    for (int slopes = 0; slopes < numSlopes * numSlopes; ++slopes)
                    {
                        DifferentialPlayer player (channels);
                        player.setSampleRate (rate);
                        player.setParameter (hpFreq, 0.3f);
                        player.setParameter (lpFreq, 0.9f);
                        setFilters (player, family, slopes / numSlopes, slopes % numSlopes, amount);
                        playRestAndGlide (player, splits[round++ % splits.size()]);
                        ASSERT_TRUE (player.isBitExact())
                            << rate << " Hz, " << (int) channels << " channels, family " << family << ", resonance "
                            << amount << ", slopes " << slopes / numSlopes << " and " << slopes % numSlopes << "\n"
                            << player.difference();
                    }
}

TEST (BitExact, WithEverySlopeInEverySplitIntoBlocks)
{
    for (const auto& split : splits)
        for (int family = 0; family < 2; ++family)
            for (int slope = 0; slope < numSlopes; ++slope)
            {
                DifferentialPlayer player;
                player.setSampleRate (48000.0);
                setFilters (player, family, slope, numSlopes - 1 - slope, 0.6f);
                playRestAndGlide (player, split);
                ASSERT_TRUE (player.isBitExact())
                    << "family " << family << ", slope " << slope << ", blocks of " << split.front() << "...\n"
                    << player.difference();
            }
}

TEST (BitExact, WithEveryCutoffUpToBeyondHalfTheRate)
{
    for (const auto rate : { 8000.0, 22050.0, 48000.0 })
        for (int family = 0; family < 2; ++family)
            for (int slope = 1; slope < numSlopes; ++slope)
                for (int tenth = 0; tenth <= 10; ++tenth)
                {
                    DifferentialPlayer player;
                    player.setSampleRate (rate);
                    player.setParameter (hpFreq, 0.1f * (float) tenth);
                    player.setParameter (lpFreq, 1.0f - 0.1f * (float) tenth);
                    setFilters (player, family, slope, slope, 0.8f);
                    player.startAtRest();
                    player.playNoise (200, uneven);
                    ASSERT_TRUE (player.isBitExact())
                        << rate << " Hz, family " << family << ", slope " << slope << ", tenth " << tenth << "\n"
                        << player.difference();
                }
}

TEST (BitExact, WhenSlopesAndFamilyChangeDuringAGlide)
{
    scenario::Dice dice { 11 };
    DifferentialPlayer player;
    player.setSampleRate (44100.0);
    player.setParameter (hpReso, 0.6f);
    player.setParameter (lpReso, 0.5f);

    for (int change = 0; change < 1000; ++change)
    {
        player.setChoice (dice.oneOf (std::array { hpMode, lpMode, filtMode }),
                          dice.below (dice.chance (0.8) ? 5 : 10));
        player.setParameter (dice.oneOf (std::array { hpFreq, lpFreq, hpReso, lpReso }), dice.position());
        player.playNoise (1 + dice.below (90), uneven);
        ASSERT_TRUE (player.isBitExact()) << "change " << change << "\n" << player.difference();
    }
}

TEST (BitExact, WhenSlopesAndFamilyChangeWhileAsleep)
{
    for (int family = 0; family < 10; ++family)
    {
        DifferentialPlayer player;
        player.setSampleRate (48000.0);
        setFilters (player, 0, 4, 4, 0.5f);
        player.startAtRest();
        player.playNoise (500);
        ASSERT_FALSE (player.referenceEngine.controlUpdatePending);

        player.setChoice (filtMode, family);
        player.playNoise (300, uneven);
        ASSERT_FALSE (player.referenceEngine.controlUpdatePending) << "nothing has woken it";
        player.setChoice (hpMode, 1);
        player.setChoice (lpMode, 9);
        player.playNoise (300, uneven);

        player.requestUpdate();
        player.playNoise (300, uneven);
        player.setChoice (filtMode, 1 - std::min (family, 1));
        player.playNoise (300, sevens);
        player.requestUpdate();
        player.playNoise (300, sevens);
        ASSERT_TRUE (player.isBitExact()) << "family " << family << "\n" << player.difference();
    }
}

TEST (BitExact, WithFamiliesAndSlopesThatHaveNoText)
{
    for (int family = 2; family < 10; ++family)
        for (int slope = 4; slope < 10; ++slope)
        {
            DifferentialPlayer player;
            player.setSampleRate (48000.0);
            setFilters (player, family, slope, slope, 0.5f);
            playRestAndGlide (player, uneven);
            player.setChoice (filtMode, 0);
            player.playNoise (100, uneven);
            player.setChoice (filtMode, 1);
            player.playNoise (100, uneven);
            ASSERT_TRUE (player.isBitExact()) << "family " << family << ", slope " << slope << "\n"
                                              << player.difference();
        }
}

TEST (BitExact, WithNaNInAParameter)
{
    constexpr auto quietNaN = std::numeric_limits<float>::quiet_NaN();

    for (const auto& info : reference::parameterTable())
    {
        if (info.isBool)
            continue;

        DifferentialPlayer player;
        player.setSampleRate (48000.0);
        setFilters (player, 0, 3, 3, 0.5f);
        player.playNoise (100);
        player.setParameter (reference::indexOfParameter (info.id), quietNaN);
        player.playNoise (300, uneven);
        player.setParameter (reference::indexOfParameter (info.id), 0.4f);
        player.playNoise (300, uneven);
        ASSERT_TRUE (player.isBitExact()) << info.id << "\n" << player.difference();
    }
}

TEST (BitExact, WithNaNAndInfinityInEachFamilyAndChannel)
{
    constexpr auto infinity = std::numeric_limits<float>::infinity();
    constexpr auto quietNaN = std::numeric_limits<float>::quiet_NaN();

    for (const auto channels : { Channels::mono, Channels::stereo })
        for (int family = 0; family < 2; ++family)
            for (int slope = 0; slope < numSlopes; ++slope)
                for (const auto amount : amounts)
                {
                    DifferentialPlayer player (channels);
                    player.setSampleRate (48000.0);
                    setFilters (player, family, slope, slope, amount);
                    player.startAtRest();
                    player.playNoise (50);

                    std::array left { 25.0f, -25.0f, infinity, 0.1f, -infinity, quietNaN, 0.2f, -31.0f, 1e-40f };
                    std::array right { -25.0f, 25.0f, 0.1f, infinity, -20.0f, -infinity, -0.0f, quietNaN, 1e-45f };
                    player.process (left.data(), channels == Channels::stereo ? right.data() : nullptr,
                                    (int) left.size());
                    player.compareFields();
                    player.playNoise (200, uneven);
                    ASSERT_TRUE (player.isBitExact()) << (int) channels << " channels, family " << family << ", slope "
                                                      << slope << ", resonance " << amount << "\n"
                                                      << player.difference();
                }
}

TEST (BitExact, WhileASoundDecaysIntoDenormals)
{
    for (int family = 0; family < 2; ++family)
        for (int slope = 1; slope < numSlopes; ++slope)
        {
            DifferentialPlayer player;
            player.setSampleRate (44100.0);
            player.setParameter (hpFreq, 0.05f);
            player.setParameter (lpFreq, 0.3f);
            setFilters (player, family, slope, slope, 0.4f);
            player.startAtRest();
            player.playNoise (500);

            for (int block = 0; block < 200; ++block)
            {
                std::vector<float> left (500, 0.0f), right (500, -0.0f);
                player.process (left.data(), right.data(), 500);
                player.compareFields();
            }

            ASSERT_TRUE (player.isBitExact()) << "family " << family << ", slope " << slope << "\n"
                                              << player.difference();
        }
}
