// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include <juce_audio_basics/juce_audio_basics.h>

#include "support/ChildProcess.h"

/** Ardour as Debian packages it, driven without a screen, in a home folder of its own that holds nothing but the
    module under test. The folder goes with this object. */
class Ardour
{
public:
    /** Copies the module into the home folder and has Ardour scan it.
        @throws HostError if Ardour is not installed or the scan fails */
    Ardour();
    ~Ardour();

    Ardour (const Ardour&) = delete;
    Ardour& operator= (const Ardour&) = delete;

    static constexpr double sampleRate = 48000.0;

    /** A time in frames of the session, and a position. */
    struct Point
    {
        int frame = 0;
        double position = 0.0;
    };

    /** A session of one track, from its start on. */
    struct Song
    {
        juce::AudioBuffer<float> sound;
        bool withPlugin = true;
        bool bypassed = false;
        std::vector<std::pair<int, float>> positions;
        std::vector<std::pair<int, std::vector<Point>>> lanes;
    };

    /** Makes the song's session, and saves and closes it.
        @throws HostError if Ardour does not do what it is told */
    void make (const Song& song);

    /** Opens the session again, notes what Ardour says of the plug-in's parameters, and saves it.
        @returns one line per parameter: its index, name, lowest and highest value, default and value, between tabs */
    [[nodiscard]] juce::StringArray reopen();

    /** Exports the whole session as 32-bit floats. Ardour 7.3's exporter races with itself, also with no plug-in in the
        session: now and then it damages its memory while it ends, or waits for itself for ever. It is then started again,
        which is told on the console.
        @throws HostError if it fails ten times */
    [[nodiscard]] juce::AudioBuffer<float> render();

    /** Ardour with its windows on the present display, the session in it and the plug-in's window open, at this scale of its
        interface. It asks nothing of anybody.
        @returns what a ChildProcess is started with */
    [[nodiscard]] ChildProcess::Options withWindows (double scale) const;

    //==================================================================================================================
    /** What the scan found, as Ardour keeps it. */
    [[nodiscard]] juce::String scanResult() const;

    /** What the module has given as its state, out of the saved session: a preset's bytes. */
    [[nodiscard]] juce::MemoryBlock savedPreset() const;

    /** A file below the home folder, for what a test needs beside the session. */
    [[nodiscard]] juce::File file (const juce::String& name) const { return home.getChildFile (name); }

    /** Runs kestrin-host with the module under test.
        @throws HostError */
    void runHost (const juce::StringArray& arguments) const;

    void writeSound (const juce::File& file, const juce::AudioBuffer<float>& sound) const;

private:
    [[nodiscard]] std::vector<std::pair<std::string, std::string>> environment() const;
    [[nodiscard]] juce::String run (const std::vector<std::string>& words) const;
    void runExporter (const juce::File& rendered) const;
    void runScript (const juce::String& script);
    void writeJob (const Song& song) const;
    void putSoundIntoSession (const juce::AudioBuffer<float>& sound) const;
    void writeWindowSettings (double scale) const;
    void leaveWindowOpen() const;
    [[nodiscard]] juce::File session() const;
    void setRangeOfSession (int numFrames) const;

    juce::File home, programs;
    juce::String series;
};
