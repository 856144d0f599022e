// SPDX-License-Identifier: AGPL-3.0-or-later
// Both families through all their slopes, resonances and rates, at rest and while the knobs move.
#include <array>
#include <gtest/gtest.h>
#include <limits>

#include "bitexact/DuoPlayer.h"

namespace
{
using reference::Index::filtMode, reference::Index::hpFreq, reference::Index::hpMode, reference::Index::hpReso;
using reference::Index::lpFreq, reference::Index::lpMode, reference::Index::lpReso;
using Channels = DuoPlayer::Channels;

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

void setFilters (DuoPlayer& duo, int family, int highpassSlope, int lowpassSlope, float resonance)
{
    duo.setChoice (filtMode, family);
    duo.setChoice (hpMode, highpassSlope);
    duo.setChoice (lpMode, lowpassSlope);
    duo.setParameter (hpReso, resonance);
    duo.setParameter (lpReso, resonance);
}

/** At rest, with both knobs pulled at once, and on into the glide. */
void playRestAndGlide (DuoPlayer& duo, std::span<const int> blockSizes)
{
    duo.startAtRest();
    duo.playNoise (150, blockSizes);
    duo.setParameter (hpFreq, 0.45f);
    duo.setParameter (lpFreq, 0.75f);
    duo.playNoise (150, blockSizes);
    duo.setParameter (lpReso, 0.7f);
    duo.playNoise (100, blockSizes);
}
} // namespace

TEST (SameBits, WithEveryPairOfSlopesFamilyResonanceAndRate)
{
    size_t round = 0;

    for (const auto rate : rates)
        for (const auto channels : { Channels::mono, Channels::stereo })
            for (int family = 0; family < 2; ++family)
                for (const auto amount : amounts)
                    for (int slopes = 0; slopes < numSlopes * numSlopes; ++slopes)
                    {
                        DuoPlayer duo (channels);
                        duo.setSampleRate (rate);
                        duo.setParameter (hpFreq, 0.3f);
                        duo.setParameter (lpFreq, 0.9f);
                        setFilters (duo, family, slopes / numSlopes, slopes % numSlopes, amount);
                        playRestAndGlide (duo, splits[round++ % splits.size()]);
                        ASSERT_TRUE (duo.isSame())
                            << rate << " Hz, " << (int) channels << " channels, family " << family << ", resonance "
                            << amount << ", slopes " << slopes / numSlopes << " and " << slopes % numSlopes << "\n"
                            << duo.difference();
                    }
}

TEST (SameBits, WithEverySlopeBesideEverySplitIntoBlocks)
{
    for (const auto& split : splits)
        for (int family = 0; family < 2; ++family)
            for (int slope = 0; slope < numSlopes; ++slope)
            {
                DuoPlayer duo;
                duo.setSampleRate (48000.0);
                setFilters (duo, family, slope, numSlopes - 1 - slope, 0.6f);
                playRestAndGlide (duo, split);
                ASSERT_TRUE (duo.isSame())
                    << "family " << family << ", slope " << slope << ", blocks of " << split.front() << "...\n"
                    << duo.difference();
            }
}

TEST (SameBits, WithCutoffsAtAllPlacesUpToBeyondHalfTheRate)
{
    for (const auto rate : { 8000.0, 22050.0, 48000.0 })
        for (int family = 0; family < 2; ++family)
            for (int slope = 1; slope < numSlopes; ++slope)
                for (int place = 0; place <= 10; ++place)
                {
                    DuoPlayer duo;
                    duo.setSampleRate (rate);
                    duo.setParameter (hpFreq, 0.1f * (float) place);
                    duo.setParameter (lpFreq, 1.0f - 0.1f * (float) place);
                    setFilters (duo, family, slope, slope, 0.8f);
                    duo.startAtRest();
                    duo.playNoise (200, uneven);
                    ASSERT_TRUE (duo.isSame())
                        << rate << " Hz, family " << family << ", slope " << slope << ", place " << place << "\n"
                        << duo.difference();
                }
}

TEST (SameBits, WhenSlopesAndFamilyChangeWhileTheFiltersMove)
{
    scenario::Dice dice { 11 };
    DuoPlayer duo;
    duo.setSampleRate (44100.0);
    duo.setParameter (hpReso, 0.6f);
    duo.setParameter (lpReso, 0.5f);

    for (int change = 0; change < 1000; ++change)
    {
        duo.setChoice (dice.oneOf (std::array { hpMode, lpMode, filtMode }), dice.below (dice.chance (0.8) ? 5 : 10));
        duo.setParameter (dice.oneOf (std::array { hpFreq, lpFreq, hpReso, lpReso }), dice.position());
        duo.playNoise (1 + dice.below (90), uneven);
        ASSERT_TRUE (duo.isSame()) << "change " << change << "\n" << duo.difference();
    }
}

TEST (SameBits, WhenSlopesAndFamilyChangeWhileTheEngineSleeps)
{
    for (int family = 0; family < 10; ++family)
    {
        DuoPlayer duo;
        duo.setSampleRate (48000.0);
        setFilters (duo, 0, 4, 4, 0.5f);
        duo.startAtRest();
        duo.playNoise (500);
        ASSERT_FALSE (duo.literal.controlUpdatePending);

        duo.setChoice (filtMode, family);
        duo.playNoise (300, uneven);
        ASSERT_FALSE (duo.literal.controlUpdatePending) << "nothing has woken it";
        duo.setChoice (hpMode, 1);
        duo.setChoice (lpMode, 9);
        duo.playNoise (300, uneven);

        duo.requestUpdate();
        duo.playNoise (300, uneven);
        duo.setChoice (filtMode, 1 - std::min (family, 1));
        duo.playNoise (300, sevens);
        duo.requestUpdate();
        duo.playNoise (300, sevens);
        ASSERT_TRUE (duo.isSame()) << "family " << family << "\n" << duo.difference();
    }
}

TEST (SameBits, WithFamiliesAndSlopesBeyondTheirTexts)
{
    for (int family = 2; family < 10; ++family)
        for (int slope = 4; slope < 10; ++slope)
        {
            DuoPlayer duo;
            duo.setSampleRate (48000.0);
            setFilters (duo, family, slope, slope, 0.5f);
            playRestAndGlide (duo, uneven);
            duo.setChoice (filtMode, 0);
            duo.playNoise (100, uneven);
            duo.setChoice (filtMode, 1);
            duo.playNoise (100, uneven);
            ASSERT_TRUE (duo.isSame()) << "family " << family << ", slope " << slope << "\n" << duo.difference();
        }
}

TEST (SameBits, WithANanInAParameter)
{
    constexpr auto notANumber = std::numeric_limits<float>::quiet_NaN();

    for (const auto& info : reference::parameterTable())
    {
        if (info.isBool)
            continue;

        DuoPlayer duo;
        duo.setSampleRate (48000.0);
        setFilters (duo, 0, 3, 3, 0.5f);
        duo.playNoise (100);
        duo.setParameter (reference::indexOfParameter (info.id), notANumber);
        duo.playNoise (300, uneven);
        duo.setParameter (reference::indexOfParameter (info.id), 0.4f);
        duo.playNoise (300, uneven);
        ASSERT_TRUE (duo.isSame()) << info.id << "\n" << duo.difference();
    }
}

TEST (SameBits, WithNanAndInfinityInTheSoundOfEachFamilyAndChannel)
{
    constexpr auto infinity = std::numeric_limits<float>::infinity();
    constexpr auto notANumber = std::numeric_limits<float>::quiet_NaN();

    for (const auto channels : { Channels::mono, Channels::stereo })
        for (int family = 0; family < 2; ++family)
            for (int slope = 0; slope < numSlopes; ++slope)
                for (const auto amount : amounts)
                {
                    DuoPlayer duo (channels);
                    duo.setSampleRate (48000.0);
                    setFilters (duo, family, slope, slope, amount);
                    duo.startAtRest();
                    duo.playNoise (50);

                    std::array left { 25.0f, -25.0f, infinity, 0.1f, -infinity, notANumber, 0.2f, -31.0f, 1e-40f };
                    std::array right { -25.0f, 25.0f, 0.1f, infinity, -20.0f, -infinity, -0.0f, notANumber, 1e-45f };
                    duo.process (left.data(), channels == Channels::stereo ? right.data() : nullptr, (int) left.size());
                    duo.compareFields();
                    duo.playNoise (200, uneven);
                    ASSERT_TRUE (duo.isSame()) << (int) channels << " channels, family " << family << ", slope "
                                               << slope << ", resonance " << amount << "\n"
                                               << duo.difference();
                }
}

TEST (SameBits, WhileASoundDiesAwayIntoDenormals)
{
    for (int family = 0; family < 2; ++family)
        for (int slope = 1; slope < numSlopes; ++slope)
        {
            DuoPlayer duo;
            duo.setSampleRate (44100.0);
            duo.setParameter (hpFreq, 0.05f);
            duo.setParameter (lpFreq, 0.3f);
            setFilters (duo, family, slope, slope, 0.4f);
            duo.startAtRest();
            duo.playNoise (500);

            for (int block = 0; block < 200; ++block)
            {
                std::vector<float> left (500, 0.0f), right (500, -0.0f);
                duo.process (left.data(), right.data(), 500);
                duo.compareFields();
            }

            ASSERT_TRUE (duo.isSame()) << "family " << family << ", slope " << slope << "\n" << duo.difference();
        }
}
