// SPDX-License-Identifier: AGPL-3.0-or-later
#include <limits>

#include <gtest/gtest.h>

#include "AudioFiles.h"
#include "HostError.h"

namespace
{
void expectRefused (const juce::MemoryOutputStream& bytes)
{
    const juce::TemporaryFile file (".wav");
    ASSERT_TRUE (file.getFile().replaceWithData (bytes.getData(), bytes.getDataSize()));

    try
    {
        const AudioSource source (file.getFile(), 0);
        FAIL() << "it is read";
    }
    catch (const HostError& error)
    {
        EXPECT_TRUE (juce::String (error.what()).contains ("damaged")) << error.what();
    }
}
} // namespace

TEST (DamagedSoundFile, IsRefusedWhenAPartOfItClaimsMoreThanTheFileHolds)
{
    // Two gigabytes would otherwise be taken, and filled, for a file of a few bytes.
    juce::MemoryOutputStream bytes;
    bytes << "RIFF";
    bytes.writeInt (100);
    bytes << "WAVEbext";
    bytes.writeInt (0x7fffff00);
    bytes << "ab";
    expectRefused (bytes);
}

TEST (DamagedSoundFile, IsRefusedWhenItsLengthIsANegativeNumber)
{
    juce::MemoryOutputStream bytes;
    bytes << "FORM";
    bytes.writeIntBigEndian (32);
    bytes << "AIFFCOMM";
    bytes.writeIntBigEndian (18);
    bytes.writeShortBigEndian (2);
    bytes.writeIntBigEndian (std::numeric_limits<int>::min());
    bytes.writeShortBigEndian (16);

    // 44100 as a number of ten bytes.
    for (const auto byte : { 0x40, 0x0e, 0xac, 0x44, 0, 0, 0, 0, 0, 0 })
        bytes.writeByte ((char) byte);

    expectRefused (bytes);
}

TEST (DamagedSoundFile, IsRefusedWhenAListHasMoreEntriesThanRoom)
{
    for (const auto* list : { "MARK", "COMT" })
    {
        juce::MemoryOutputStream bytes;
        bytes << "FORM";
        bytes.writeIntBigEndian (30);
        bytes << "AIFF" << list;
        bytes.writeIntBigEndian (10);
        bytes.writeShortBigEndian (2);
        bytes.writeInt64BigEndian (0);
        expectRefused (bytes);
    }
}
