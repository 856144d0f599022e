// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gtest/gtest.h>

#include "AudioFiles.h"
#include "HostError.h"

TEST (DamagedSoundFile, IsRefusedWhenAPartOfItClaimsMoreThanTheFileHolds)
{
    // Two gigabytes would otherwise be taken, and filled, for a file of a few bytes.
    const juce::TemporaryFile file (".wav");
    juce::MemoryOutputStream bytes;
    bytes << "RIFF";
    bytes.writeInt (100);
    bytes << "WAVEbext";
    bytes.writeInt (0x7fffff00);
    bytes << "ab";
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
