// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <vector>

#include <sndfile.h>

#include "host/AudioFiles.h"

/** All of a sound file, in its own number of channels.
    @throws HostError if it cannot be read */
[[nodiscard]] inline juce::AudioBuffer<float> readSound (const juce::File& file)
{
    AudioSource source (file, 0);
    juce::AudioBuffer<float> buffer (source.numChannels(), (int) source.numFrames());
    source.read (buffer, 0, buffer.getNumSamples());
    return buffer;
}

/** @throws HostError if it cannot be written */
inline void writeSound (const juce::File& file, Encoding encoding, const juce::AudioBuffer<float>& sound)
{
    AudioSink sink (file, encoding, 44100.0, sound.getNumChannels());
    sink.write (sound, sound.getNumSamples());
    sink.finish();
    sink.commit();
}

/** Vorbis of the highest quality, at 44.1 kHz. */
inline void writeOgg (const juce::File& file, const juce::AudioBuffer<float>& sound)
{
    SF_INFO info {};
    info.samplerate = 44100;
    info.channels = sound.getNumChannels();
    info.format = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    auto* output = sf_open (file.getFullPathName().toRawUTF8(), SFM_WRITE, &info);
    auto quality = 1.0;
    sf_command (output, SFC_SET_VBR_ENCODING_QUALITY, &quality, sizeof (quality));
    std::vector<float> frame ((std::size_t) sound.getNumChannels());

    for (int i = 0; i < sound.getNumSamples(); ++i)
    {
        for (int channel = 0; channel < sound.getNumChannels(); ++channel)
            frame[(std::size_t) channel] = sound.getSample (channel, i);

        sf_writef_float (output, frame.data(), 1);
    }

    sf_close (output);
}
