// SPDX-License-Identifier: AGPL-3.0-or-later
// The settings block, as a project file that may be damaged hands it over. One input in two is taken for the block itself,
// the other for its text, which would otherwise rarely get past the header.
#include <cstddef>
#include <cstdint>

#include "system/fuzz/FuzzedProcessor.h"

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    static const juce::ScopedJuceInitialiser_GUI juceIsUp;
    static MainAudioProcessor processor;

    if (size == 0)
        return 0;

    juce::MemoryOutputStream block;

    if (data[0] % 2 == 0)
    {
        block.writeInt (0x21324356);
        block.writeInt ((int) size);
    }

    block.write (data + 1, size - 1);
    block.writeByte (0);

    processor.controlUpdatePending = false;
    processor.setStateInformation (block.getData(), (int) block.getDataSize());
    require (processor.controlUpdatePending, "every load wakes the engine");
    fuzzedProcessor::requireValuesInRange (processor);
    fuzzedProcessor::requireStableRoundTrip (processor);
    return 0;
}
