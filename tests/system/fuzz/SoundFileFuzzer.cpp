// SPDX-License-Identifier: AGPL-3.0-or-later
// The sound files that kestrin-host reads. The first byte says how many channels are asked for.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "host/AudioFiles.h"
#include "host/HostError.h"
#include "system/fuzz/FuzzedFile.h"
#include "system/fuzz/Invariant.h"

namespace
{
void readAll (const juce::File& file, int numChannels)
{
    AudioSource source (file, numChannels);
    require (source.numChannels() == 1 || source.numChannels() == 2, "one or two channels come out");
    require (source.numFrames() >= 0, "the length is no negative number");

    // A sample is no smaller than a byte: more frames than bytes would be invented.
    require (source.numFrames() <= file.getSize(), "a file has no more frames than bytes");

    constexpr int blockSize = 512;
    juce::AudioBuffer<float> buffer (source.numChannels(), blockSize);

    for (juce::int64 start = 0; start < source.numFrames(); start += blockSize)
        source.read (buffer, start, (int) std::min ((juce::int64) blockSize, source.numFrames() - start));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    static const FuzzedFile fuzzed (".wav");

    if (size == 0)
        return 0;

    const auto& file = fuzzed.fill (data + 1, size - 1);

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
