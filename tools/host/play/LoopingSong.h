// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <atomic>

#include <juce_audio_basics/juce_audio_basics.h>

#include "host/Transport.h"

/** A sound that goes round and round, and the song position that the module is told meanwhile: when the sound begins again, so
    does the song, as with a DAW's cycle. The audio thread reads it; the message thread may halt it, move it and loop one bar. */
class LoopingSong : public juce::AudioPlayHead
{
public:
    /** A place as musicians count it: from 1. */
    struct Place
    {
        int bar = 1;
        int beat = 1;
    };

    /** @param loopedSound  at least one frame
        @param rate         of the sound, in Hz
        @param settings     tempo and signature, and the position of the first frame */
    LoopingSong (juce::AudioBuffer<float> loopedSound, double rate, const Transport::Settings& settings);

    //==================================================================================================================
    // Message thread

    void toggleHalt() noexcept { halted = ! halted; }
    [[nodiscard]] bool isHalted() const noexcept { return halted; }

    /** Repeats the bar that plays, until it is called again. */
    void toggleBarLoop() noexcept { barWanted = ! barWanted; }
    [[nodiscard]] bool isBarLooped() const noexcept { return barWanted; }

    /** Moves on, or back if negative, at the same place within the bar. The end leads to the beginning. */
    void moveByBars (int numBars) noexcept { barsToMove += numBars; }

    [[nodiscard]] Place place() const noexcept;
    [[nodiscard]] int numChannels() const noexcept { return sound.getNumChannels(); }

    //==================================================================================================================
    // Audio thread

    /** Writes the next frames to the start of a buffer with the sound's number of channels; silence while halted.
        @returns how many it has written, 1 to mostFrames: a block ends where the loop does */
    [[nodiscard]] int read (juce::AudioBuffer<float>& buffer, int mostFrames) noexcept;

    /** The position of the first frame of the last read. While halted it stays, and the song does not play. */
    juce::Optional<PositionInfo> getPosition() const override;

private:
    [[nodiscard]] int barAt (juce::int64 frame) const noexcept;
    [[nodiscard]] juce::int64 startOfBar (int bar) const noexcept;
    [[nodiscard]] juce::Range<juce::int64> loopAt (juce::int64 frame) const noexcept;
    void followRequests() noexcept;

    const juce::AudioBuffer<float> sound;
    const Transport::Settings song;
    const double framesPerBeat;
    const double beatsPerBar;

    std::atomic<bool> halted { false };
    std::atomic<bool> barWanted { false };
    std::atomic<int> barsToMove { 0 };
    std::atomic<juce::int64> nextFrame { 0 };

    Transport transport;
    juce::Range<juce::int64> loop;
    bool playing = true;
    bool barLooped = false;
};
