// SPDX-License-Identifier: AGPL-3.0-or-later
#include <limits>

#include <gtest/gtest.h>

#include "host/HostError.h"
#include "module/ModuleUnderTest.h"
#include "support/SoundFiles.h"

namespace
{
void expectRefused (const juce::MemoryBlock& bytes, const juce::String& reason = "damaged")
{
    const juce::TemporaryFile file (".wav");
    ASSERT_TRUE (file.getFile().replaceWithData (bytes.getData(), bytes.getSize()));

    try
    {
        static_cast<void> (readSound (file.getFile()));
        FAIL() << "it is read";
    }
    catch (const HostError& error)
    {
        EXPECT_TRUE (juce::String (error.what()).contains (reason)) << error.what();
    }
}

/** An AIFF file of two channels that has a header and nothing else. */
[[nodiscard]] juce::MemoryBlock withHeader (int numFrames, short bitsPerSample)
{
    juce::MemoryOutputStream bytes;
    bytes << "FORM";
    bytes.writeIntBigEndian (30);
    bytes << "AIFFCOMM";
    bytes.writeIntBigEndian (18);
    bytes.writeShortBigEndian (2);
    bytes.writeIntBigEndian (numFrames);
    bytes.writeShortBigEndian (bitsPerSample);

    // 44100 as an 80-bit float.
    for (const auto byte : { 0x40, 0x0e, 0xac, 0x44, 0, 0, 0, 0, 0, 0 })
        bytes.writeByte ((char) byte);

    return bytes.getMemoryBlock();
}

/** A second of noise, as the bytes of a file that is written like this. */
template <typename Write>
[[nodiscard]] juce::MemoryBlock bytesOfNoise (int numChannels, Write write)
{
    const juce::TemporaryFile file (".sound");
    write (file.getFile(), makeNoise (numChannels, 44100));
    juce::MemoryBlock bytes;
    file.getFile().loadFileAsData (bytes);
    return bytes;
}

[[nodiscard]] juce::MemoryBlock flac()
{
    return bytesOfNoise (2, [] (const auto& file, const auto& sound) { writeSound (file, Encoding::flac24, sound); });
}

[[nodiscard]] juce::MemoryBlock ogg (int numChannels)
{
    return bytesOfNoise (numChannels, [] (const auto& file, const auto& sound) { writeOgg (file, sound); });
}

/** Refused with a byte changed and cut short, at many places. */
void expectEveryDamageRefused (const juce::MemoryBlock& whole)
{
    constexpr std::size_t numPlaces = 40;

    for (std::size_t place = 0; place < numPlaces; ++place)
    {
        const auto position = whole.getSize() * (2 * place + 1) / (2 * numPlaces);
        SCOPED_TRACE (position);

        auto changed = whole;
        changed[position] = (char) (changed[position] ^ 0x10);
        expectRefused (changed);
        expectRefused ({ whole.getData(), position });
    }
}
} // namespace

TEST (DamagedSoundFile, IsRefusedWhenAChunkIsLargerThanTheFile)
{
    // Two gigabytes would otherwise be taken, and filled, for a file of a few bytes.
    juce::MemoryOutputStream bytes;
    bytes << "RIFF";
    bytes.writeInt (100);
    bytes << "WAVEbext";
    bytes.writeInt (0x7fffff00);
    bytes << "ab";
    expectRefused (bytes.getMemoryBlock());
}

TEST (DamagedSoundFile, IsRefusedWithANegativeLength)
{
    expectRefused (withHeader (std::numeric_limits<int>::min(), 16), "damaged");
}

TEST (DamagedSoundFile, IsRefusedWithZeroOrTwoBitsPerSample)
{
    // A frame of two channels of two bits has no whole byte: any number of them would fit into any file.
    expectRefused (withHeader (1000000, 0), "0 bits");
    expectRefused (withHeader (8, 2), "2 bits");
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
        expectRefused (bytes.getMemoryBlock());
    }
}

TEST (DamagedSoundFile, IsRefusedWhenItsXmlChunkIsNotUtf8)
{
    for (const auto* notes : { "axml", "iXML" })
    {
        juce::MemoryOutputStream bytes;
        bytes << "RIFF";
        bytes.writeInt (100);
        bytes << "WAVE" << notes;
        bytes.writeInt (4);
        bytes.write ("<a>\xf0", 4);
        expectRefused (bytes.getMemoryBlock());
    }
}

TEST (DamagedSoundFile, IsRefusedWhereverAFlacFileIsDamaged) { expectEveryDamageRefused (flac()); }

TEST (DamagedSoundFile, IsRefusedWhereverAnOggFileIsDamaged) { expectEveryDamageRefused (ogg (2)); }

TEST (DamagedSoundFile, IsRefusedWhenAnOggFileHoldsASecondSound)
{
    auto both = ogg (2);
    const auto second = ogg (1);
    both.append (second.getData(), second.getSize());
    expectRefused (both, "holds 2 sounds; 1 is possible");
}
