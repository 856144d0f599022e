// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/NearestWord.h"

#include <gtest/gtest.h>

TEST (EditDistance, CountsLettersInsertedRemovedReplacedAndSwapped)
{
    EXPECT_EQ (editDistance ("render", "render"), 0u);
    EXPECT_EQ (editDistance ("rendr", "render"), 1u);
    EXPECT_EQ (editDistance ("rennder", "render"), 1u);
    EXPECT_EQ (editDistance ("rander", "render"), 1u);
    EXPECT_EQ (editDistance ("redner", "render"), 1u);
    EXPECT_EQ (editDistance ("", "state"), 5u);
    EXPECT_EQ (editDistance ("state", ""), 5u);
    EXPECT_EQ (editDistance ("kitten", "sitting"), 3u);
}

TEST (NearestWord, IsTheOneThatWasProbablyMeant)
{
    const std::vector<std::string> words { "render", "state", "preset", "window" };
    EXPECT_EQ (nearestWord ("rendre", words), "render");
    EXPECT_EQ (nearestWord ("presets", words), "preset");
    EXPECT_EQ (nearestWord ("windoow", words), "window");
}

TEST (NearestWord, IsNoneIfAllAreFar)
{
    const std::vector<std::string> words { "render", "state" };
    EXPECT_EQ (nearestWord ("sing", words), "");
    EXPECT_EQ (nearestWord ("stxxe", words), "") << "two edits are too many for five letters";
    EXPECT_EQ (nearestWord ("", words), "");
}
