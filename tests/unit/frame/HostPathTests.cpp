// SPDX-License-Identifier: AGPL-3.0-or-later
#include "frame/HostPath.h"

#include <gtest/gtest.h>

using Pieces = std::vector<std::string>;

TEST (SplitPath, GivesThePiecesBetweenTheSlashes)
{
    EXPECT_EQ (splitPath (""), Pieces {});
    EXPECT_EQ (splitPath ("a"), (Pieces { "a" }));
    EXPECT_EQ (splitPath ("a/b"), (Pieces { "a", "b" }));
}

TEST (SplitPath, IgnoresATrailingSlash)
{
    EXPECT_EQ (splitPath ("a/b/"), (Pieces { "a", "b" }));
    EXPECT_EQ (splitPath ("/"), (Pieces { "" }));
}

TEST (SplitPath, KeepsEmptyPiecesBetweenSlashesAndBeforeTheFirst)
{
    EXPECT_EQ (splitPath ("a//b"), (Pieces { "a", "", "b" }));
    EXPECT_EQ (splitPath ("/a"), (Pieces { "", "a" }));
    EXPECT_EQ (splitPath ("//"), (Pieces { "", "" }));
}

TEST (HostTail, KeepsTheSecondHalfOfThePathButNeverTheFirstPiece)
{
    EXPECT_EQ (hostTail (""), "");
    EXPECT_EQ (hostTail ("app.exe"), "");
    EXPECT_EQ (hostTail ("C:/app.exe"), "app.exe");
    EXPECT_EQ (hostTail ("C:/App/app.exe"), "App/app.exe");
    EXPECT_EQ (hostTail ("C:/Studio/App/app.exe"), "App/app.exe");
    EXPECT_EQ (hostTail ("C:/Program Files/Studio/App/app.exe"), "Studio/App/app.exe");
    EXPECT_EQ (hostTail ("C:/Program Files/Studio/App/bin/app.exe"), "App/bin/app.exe");
}

TEST (HostTail, TakesBackslashesForSlashes)
{
    EXPECT_EQ (hostTail ("C:\\Program Files\\Studio\\App\\app.exe"), "Studio/App/app.exe");
    EXPECT_EQ (hostTail ("C:\\Studio/App\\app.exe"), "App/app.exe");
}

TEST (HostTail, CountsTheEmptyPieceBeforeASlashAtTheStart)
{
    EXPECT_EQ (hostTail ("/app"), "app");
    EXPECT_EQ (hostTail ("/bin/app"), "bin/app");
    EXPECT_EQ (hostTail ("/usr/bin/app"), "bin/app");
    EXPECT_EQ (hostTail ("/usr/local/bin/app"), "local/bin/app");
    EXPECT_EQ (hostTail ("/Applications/Studio.app/Contents/MacOS/Studio"), "Contents/MacOS/Studio");
}

TEST (HostTail, KeepsEmptyPiecesInTheMiddle) { EXPECT_EQ (hostTail ("a/b//c"), "/c"); }
