// SPDX-License-Identifier: AGPL-3.0-or-later
// The reference engine needs no JUCE, so that the digests can be computed where JUCE cannot be built.
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "golden/GoldenSound.h"
#include "support/scenario/ReferencePlayer.h"

TEST (ReferenceSound, HasTheDigestsOfTheSoundOfTwoHundredRandomSessions)
{
    auto seed = golden::firstSeed;

    for (const auto& row : golden::rowsOf ("session"))
    {
        std::istringstream words (row);
        std::string kind, sound;
        words >> kind >> sound;

        scenario::ReferencePlayer player;
        EXPECT_EQ (golden::digestOf (scenario::play (golden::sessionOf (seed), player)), sound) << seed;
        ++seed;
    }

    EXPECT_EQ (seed, golden::lastSeed + 1);
}
