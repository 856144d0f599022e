// SPDX-License-Identifier: AGPL-3.0-or-later
#include "gallery/PresetSession.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "dsp/MainAudioProcessor.h"
#include "host/Transport.h"

namespace
{
constexpr int blockSize = 512;
constexpr auto leadInBeats = 4.0;

/** The travel of a frequency knob: three decades from 20 Hz. */
[[nodiscard]] double hertzAt (float position) { return 20.0 * std::pow (1000.0, (double) position); }

[[nodiscard]] Transport::Settings song()
{
    Transport::Settings settings;
    settings.startBeat = 32.0 - leadInBeats;
    return settings;
}

/** A channel with as much of its end before it. */
[[nodiscard]] std::vector<float> withLeadIn (const std::vector<float>& channel, std::ptrdiff_t numFrames)
{
    std::vector<float> result (channel.end() - numFrames, channel.end());
    result.insert (result.end(), channel.begin(), channel.end());
    return result;
}
} // namespace

presetSession::Played presetSession::play (std::string_view state, const demo::Loop& loop)
{
    MainAudioProcessor plugIn;

    for (std::size_t i = 0; i < plugIn.lfo.size(); ++i)
        plugIn.lfo[i].rng.seed ((std::uint32_t) i);

    plugIn.setStateInformation (state.data(), (int) state.size());
    plugIn.setPlayConfigDetails (2, 2, loop.sampleRate, blockSize);
    plugIn.prepareToPlay (loop.sampleRate, blockSize);

    Transport transport (song(), loop.sampleRate);
    plugIn.setPlayHead (&transport);

    const auto leadIn = (int) (leadInBeats * 60.0 / song().tempo * loop.sampleRate);
    Played played { { loop.sampleRate, withLeadIn (loop.left, leadIn), withLeadIn (loop.right, leadIn) }, {} };
    juce::MidiBuffer noMidi;
    const auto numFrames = (int) played.sound.left.size();

    for (int done = 0; done < numFrames; done += blockSize)
    {
        float* const channels[] = { played.sound.left.data() + done, played.sound.right.data() + done };
        juce::AudioBuffer<float> block (channels, 2, std::min (blockSize, numFrames - done));
        transport.moveTo (done);
        plugIn.processBlock (block, noMidi);

        if (const auto end = done + block.getNumSamples(); end > leadIn)
            played.moments.push_back ({ (end - leadIn) / loop.sampleRate, hertzAt (plugIn.hpFreqSlew.current),
                                        hertzAt (plugIn.lpFreqSlew.current) });
    }

    for (auto* channel : { &played.sound.left, &played.sound.right })
        channel->erase (channel->begin(), channel->begin() + leadIn);

    return played;
}
