// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/Transport.h"

#include <gtest/gtest.h>

TEST (HostTransport, CountsQuarterNotesFromItsStart)
{
    Transport transport ({ 90.0, 4.0, { 4, 4 }, true }, 48000.0);
    transport.moveTo (64000);
    const auto position = *transport.getPosition();

    // 64000 frames are 4/3 seconds, at 90 per minute two quarter notes.
    EXPECT_DOUBLE_EQ (*position.getPpqPosition(), 6.0);
    EXPECT_EQ (*position.getBpm(), 90.0);
    EXPECT_TRUE (position.getIsPlaying());
}

TEST (HostTransport, KnowsWhereItsBarsBegin)
{
    Transport transport ({ 120.0, 0.0, { 6, 8 }, true }, 48000.0);

    // A bar of six eighths is three quarter notes; 96000 frames are four.
    transport.moveTo (96000);
    EXPECT_DOUBLE_EQ (*transport.getPosition()->getPpqPositionOfLastBarStart(), 3.0);
}

TEST (HostTransport, StaysAtItsStartWhileStopped)
{
    Transport transport ({ 120.0, 2.5, { 4, 4 }, false }, 48000.0);
    transport.moveTo (123456);
    const auto position = *transport.getPosition();

    EXPECT_EQ (*position.getPpqPosition(), 2.5);
    EXPECT_FALSE (position.getIsPlaying());
}
