// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>

#include <juce_audio_processors/juce_audio_processors.h>

/** Lets a host send longer blocks than it has announced. JUCE's client copies each block into memory of the announced size
    and would write past its end, so it is given such a block in pieces that fit. The first piece carries the automation, and
    all pieces have the song position of the whole block. */
class LongBlocks : public juce::VST3ClientExtensions
{
public:
    /** @param owner  outlives this object, and knows the announced size */
    explicit LongBlocks (juce::AudioProcessor& owner);
    ~LongBlocks() override;

    std::int32_t queryIAudioProcessor (const Steinberg::TUID wanted, void** object) override;

private:
    class Splitter;

    juce::AudioProcessor& processor;
    std::unique_ptr<Splitter> splitter;
};
