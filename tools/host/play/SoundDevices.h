// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>
#include <vector>

#include <juce_audio_devices/juce_audio_devices.h>

/** The machine's outputs for sound: those of a JACK server that runs, and ALSA's. PipeWire is either of them. A device must not
    outlive this. Message thread only. */
class SoundDevices
{
public:
    struct Wanted
    {
        /** As listed, or a part that only one of the names has; empty for the first in the list. */
        juce::String name {};

        /** In Hz and frames; 0 leaves them to the device. */
        double sampleRate = 0.0;
        int blockSize = 0;

        /** In Hz; taken if sampleRate is 0 and the device has it. */
        double preferredRate = 0.0;
    };

    SoundDevices();

    /** The names, such as "JACK: system". */
    [[nodiscard]] juce::StringArray names() const;

    /** Opens a device with up to two outputs. It plays silence until it is started.
        @throws HostError, which lists the devices there are, if there is none of that name, or if it is busy or refuses rate or
        block size */
    [[nodiscard]] std::unique_ptr<juce::AudioIODevice> open (const Wanted& wanted) const;

private:
    struct Output
    {
        juce::AudioIODeviceType* type = nullptr;
        juce::String name;

        [[nodiscard]] juce::String fullName() const { return type->getTypeName() + ": " + name; }
    };

    [[noreturn]] void refuse (const juce::String& reason) const;
    [[nodiscard]] const Output& find (const juce::String& name) const;

    std::vector<std::unique_ptr<juce::AudioIODeviceType>> types;
    std::vector<Output> outputs;
};
