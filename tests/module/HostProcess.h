// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <functional>

#include <juce_audio_basics/juce_audio_basics.h>

#include "support/ChildProcess.h"

/** kestrin-host as a process of its own, in a folder of its own that goes when the test does. */
class HostProcess
{
public:
    HostProcess();
    ~HostProcess();

    struct Result
    {
        /** 128 and the number of the signal if it was ended by one. */
        int exitCode = -1;
        juce::String output;
        juce::String errors;
    };

    /** Runs the host with the module under test and these arguments, in the folder. */
    [[nodiscard]] Result run (const juce::StringArray& arguments) const;

    /** The same, with an interrupt sent as soon as the condition holds. */
    [[nodiscard]] Result runAndInterrupt (const juce::StringArray& arguments, const std::function<bool()>& when) const;

    [[nodiscard]] juce::File file (const juce::String& name) const { return folder.getChildFile (name); }

    /** The names of all files in the folder, in order and with hidden ones. The files that caught the host's output are left
        out. */
    [[nodiscard]] juce::StringArray files() const;

    /** Writes noise as a WAV file of 16 bits. */
    void writeSound (const juce::String& name, int numChannels, int numFrames) const;

    /** Reads a WAV file of any kind. */
    [[nodiscard]] juce::AudioBuffer<float> readSound (const juce::String& name) const;

    /** For a process that goes on beside the test. */
    [[nodiscard]] ChildProcess::Options options (const juce::StringArray& arguments) const;

    /** Waits for such a process. */
    [[nodiscard]] Result finish (ChildProcess& process) const;

    /** What a process has written to its standard error. */
    [[nodiscard]] juce::String errors() const;

private:
    juce::File folder;
};
