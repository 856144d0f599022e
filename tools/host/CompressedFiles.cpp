// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/CompressedFiles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include <sndfile.h>

#include "host/HostError.h"

namespace compressedFiles
{
namespace
{
struct Close
{
    void operator() (SNDFILE* file) const noexcept { sf_close (file); }
};

using Handle = std::unique_ptr<SNDFILE, Close>;

[[noreturn]] void refuse (const juce::File& file, const juce::String& reason)
{
    throw HostError (file.getFullPathName() + ": " + reason);
}

/** The first four bytes. */
[[nodiscard]] std::string kindOf (const juce::File& file)
{
    juce::FileInputStream stream (file);
    std::array<char, 4> start {};

    if (stream.openedOk())
        stream.read (start.data(), (int) start.size());

    return { start.begin(), start.end() };
}

//----------------------------------------------------------------------------------------------------------------------
// Ogg: pages with a checksum each. libsndfile skips a damaged one, and takes the first of several sounds for all.

constexpr std::size_t pageHeaderSize = 27, flagsPlace = 5, checksumPlace = 22, numSegmentsPlace = 26;
constexpr juce::uint8 firstPageFlag = 2;

/** CRC-32 of polynomial 0x04c11db7, the highest bit first, as of RFC 3533. */
[[nodiscard]] juce::uint32 checksumOf (const std::vector<juce::uint8>& page)
{
    juce::uint32 checksum = 0;

    for (const auto byte : page)
    {
        checksum ^= (juce::uint32) byte << 24;

        for (int bit = 0; bit < 8; ++bit)
            checksum = (checksum << 1) ^ ((checksum >> 31) * 0x04c11db7u);
    }

    return checksum;
}

/** Appends so many bytes of the stream to the page. */
[[nodiscard]] bool append (juce::InputStream& stream, std::vector<juce::uint8>& page, std::size_t numBytes)
{
    const auto before = page.size();
    page.resize (before + numBytes);
    return stream.read (page.data() + before, (int) numBytes) == (int) numBytes;
}

/** The next page, or nothing if it is damaged. */
[[nodiscard]] std::vector<juce::uint8> nextPage (juce::InputStream& stream)
{
    std::vector<juce::uint8> page;

    if (! append (stream, page, pageHeaderSize) || std::memcmp (page.data(), "OggS", 4) != 0
        || ! append (stream, page, page[numSegmentsPlace]))
        return {};

    std::size_t bodySize = 0;

    for (auto segment = pageHeaderSize; segment < page.size(); ++segment)
        bodySize += page[segment];

    if (! append (stream, page, bodySize))
        return {};

    const auto stated = juce::ByteOrder::littleEndianInt (page.data() + checksumPlace);
    std::fill_n (page.begin() + checksumPlace, 4, juce::uint8 { 0 });
    return checksumOf (page) == stated ? page : std::vector<juce::uint8> {};
}

void requireWholePages (const juce::File& file)
{
    juce::FileInputStream unbuffered (file);
    juce::BufferedInputStream stream (unbuffered, 1 << 16);
    int numSounds = 0;

    while (! stream.isExhausted())
    {
        const auto page = nextPage (stream);

        if (page.empty())
            refuse (file, "the file is damaged or cut short");

        numSounds += (page[flagsPlace] & firstPageFlag) != 0 ? 1 : 0;
    }

    if (numSounds != 1)
        refuse (file, "holds " + juce::String (numSounds) + " sounds; 1 is possible");
}

//----------------------------------------------------------------------------------------------------------------------

class Reader final : public juce::AudioFormatReader
{
public:
    explicit Reader (const juce::File& file) : AudioFormatReader (nullptr, "FLAC or Ogg")
    {
        SF_INFO info {};
        handle.reset (sf_open (file.getFullPathName().toRawUTF8(), SFM_READ, &info));

        if (handle == nullptr)
            refuse (file, juce::String ("not a FLAC or Ogg file that can be read: ") + sf_strerror (nullptr));

        // libsndfile gives the largest number if the file does not tell its end.
        if (info.frames < 0 || info.frames == SF_COUNT_MAX)
            refuse (file, "the file is damaged or cut short: its length is not known");

        sampleRate = info.samplerate;
        numChannels = (unsigned int) info.channels;
        lengthInSamples = info.frames;
        bitsPerSample = 32;
        usesFloatingPointData = true;
    }

    bool readSamples (int* const* channels, int numWanted, int offset, juce::int64 start, int numFrames) override
    {
        if (start != position && sf_seek (handle.get(), start, SEEK_SET) != start)
            return false;

        interleaved.resize ((std::size_t) numFrames * numChannels);
        const auto numRead = sf_readf_float (handle.get(), interleaved.data(), numFrames);
        position = start + numRead;

        // JUCE passes floats through pointers to int.
        for (int channel = 0; channel < std::min (numWanted, (int) numChannels); ++channel)
            if (auto* samples = reinterpret_cast<float*> (channels[channel]))
                for (int frame = 0; frame < (int) numRead; ++frame)
                    samples[offset + frame] = interleaved[(std::size_t) frame * numChannels + (std::size_t) channel];

        return numRead == numFrames;
    }

private:
    Handle handle;
    std::vector<float> interleaved;
    juce::int64 position = 0;
};

class FlacWriter final : public juce::AudioFormatWriter
{
public:
    FlacWriter (const juce::File& file, double rate, int channels)
        : AudioFormatWriter (nullptr, "FLAC", rate, (unsigned int) channels, 24)
    {
        SF_INFO info {};
        info.samplerate = (int) std::lround (rate);
        info.channels = channels;
        info.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_24;
        handle.reset (sf_open (file.getFullPathName().toRawUTF8(), SFM_WRITE, &info));

        if (handle == nullptr)
            throw HostError ("cannot write a FLAC file at " + juce::String (rate) + " Hz: " + sf_strerror (nullptr));
    }

    bool write (const int** channels, int numFrames) override
    {
        interleaved.clear();

        for (int frame = 0; frame < numFrames; ++frame)
            for (unsigned int channel = 0; channel < numChannels; ++channel)
                interleaved.push_back (channels[channel][frame]);

        return sf_writef_int (handle.get(), interleaved.data(), numFrames) == numFrames;
    }

    bool flush() override { return sf_close (handle.release()) == 0; }

private:
    Handle handle;
    std::vector<int> interleaved;
};
} // namespace

bool isOneOfThem (const juce::File& file)
{
    const auto kind = kindOf (file);
    return kind == "fLaC" || kind == "OggS";
}

std::unique_ptr<juce::AudioFormatReader> open (const juce::File& file)
{
    if (kindOf (file) == "OggS")
        requireWholePages (file);

    return std::make_unique<Reader> (file);
}

std::unique_ptr<juce::AudioFormatWriter> createFlacWriter (const juce::File& file, double sampleRate, int numChannels)
{
    return std::make_unique<FlacWriter> (file, sampleRate, numChannels);
}
} // namespace compressedFiles
