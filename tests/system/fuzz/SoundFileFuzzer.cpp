// SPDX-License-Identifier: AGPL-3.0-or-later
// The sound files that kestrin-host reads. The first byte says how many channels are asked for.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "host/AudioFiles.h"
#include "host/CompressedFiles.h"
#include "host/HostError.h"
#include "system/fuzz/FuzzedFile.h"
#include "system/fuzz/Invariant.h"

namespace
{
/** Gives each page of an Ogg file the checksum that fits: what the fuzzer changes would otherwise never get past it. */
void repairChecksums (std::vector<std::uint8_t>& bytes)
{
    constexpr std::size_t headerSize = 27, checksumPlace = 22, numSegmentsPlace = 26;

    for (std::size_t page = 0; page + headerSize <= bytes.size();)
    {
        const auto bodyPlace = page + headerSize + bytes[page + numSegmentsPlace];
        auto end = bodyPlace;

        for (auto segment = page + headerSize; segment < std::min (bodyPlace, bytes.size()); ++segment)
            end += bytes[segment];

        if (end > bytes.size())
            return;

        std::fill_n (bytes.begin() + (std::ptrdiff_t) (page + checksumPlace), 4, std::uint8_t { 0 });
        std::uint32_t checksum = 0;

        for (auto byte = page; byte < end; ++byte)
            for (int bit = 7; bit >= 0; --bit)
                checksum =
                    (checksum << 1) ^ (((checksum >> 31) ^ ((std::uint32_t) bytes[byte] >> bit & 1u)) * 0x04c11db7u);

        for (std::size_t i = 0; i < 4; ++i)
            bytes[page + checksumPlace + i] = (std::uint8_t) (checksum >> (8 * i));

        page = end;
    }
}

void readAll (const juce::File& file, int numChannels)
{
    AudioSource source (file, numChannels);
    require (source.numChannels() == 1 || source.numChannels() == 2, "one or two channels come out");
    require (source.numFrames() >= 0, "the length is no negative number");

    // Uncompressed, a sample is no smaller than a byte: more frames than bytes would be invented.
    require (compressedFiles::isOneOfThem (file) || source.numFrames() <= file.getSize(),
             "a file has no more frames than bytes");

    // A few bytes of FLAC can hold minutes of silence.
    constexpr juce::int64 mostFrames = 1 << 20;
    constexpr int blockSize = 512;
    const auto end = std::min (source.numFrames(), mostFrames);
    juce::AudioBuffer<float> buffer (source.numChannels(), blockSize);

    for (juce::int64 start = 0; start < end; start += blockSize)
        source.read (buffer, start, (int) std::min ((juce::int64) blockSize, end - start));
}
} // namespace

/** libsndfile forgets some kilobytes of an Ogg file whose head it refuses. kestrin-host ends then, so nothing gathers. */
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libvorbis.so\nleak:libogg.so\nleak:libsndfile.so\n";
}

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    static const FuzzedFile fuzzed (".wav");

    if (size == 0)
        return 0;

    std::vector<std::uint8_t> bytes (data + 1, data + size);

    if (bytes.size() > 4 && std::memcmp (bytes.data(), "OggS", 4) == 0)
        repairChecksums (bytes);

    const auto& file = fuzzed.fill (bytes.data(), bytes.size());

    try
    {
        readAll (file, data[0] % 3);
    }
    catch (const HostError& error)
    {
        require (*error.what() != '\0', "a refusal says why");
    }

    return 0;
}
