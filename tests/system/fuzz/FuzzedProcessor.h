// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cmath>

#include "dsp/MainAudioProcessor.h"
#include "system/fuzz/Invariant.h"

/** What must be true of the plug-in after any input. */
namespace fuzzedProcessor
{
inline void requireValuesInRange (const juce::AudioProcessor& processor)
{
    for (const auto* const parameter : processor.getParameters())
        require (parameter->getValue() >= 0.0f && parameter->getValue() <= 1.0f, "every value lies in 0 to 1");
}

/** The saved text without the date. */
[[nodiscard]] inline juce::String savedText (juce::AudioProcessor& processor)
{
    juce::MemoryBlock block;
    processor.getStateInformation (block);
    const auto text =
        juce::String::fromUTF8 (static_cast<const char*> (block.getData()) + 8, (int) block.getSize() - 9);
    const auto settings = juce::parseXML (text);
    require (settings != nullptr, "what is saved is XML");

    const auto date = settings->getStringAttribute ("date_modified");
    return text.replace ("date_modified=\"" + date + "\"", "date_modified=\"\"");
}

/** A state that is saved, loaded into another processor and saved there must give the same text. What the other processor held
    before must not matter. */
inline void requireStableRoundTrip (juce::AudioProcessor& processor)
{
    juce::MemoryBlock block;
    processor.getStateInformation (block);

    // Only one for all inputs: to make a processor takes longer than all the rest.
    static MainAudioProcessor other;
    other.setRateAndBufferSizeDetails (processor.getSampleRate(), processor.getBlockSize());
    other.setStateInformation (block.getData(), (int) block.getSize());
    require (savedText (other) == savedText (processor), "save, load and save gives the same text");
}
} // namespace fuzzedProcessor
