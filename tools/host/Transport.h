// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

/** The song position that the module is told, as a sequencer would. */
class Transport : public juce::AudioPlayHead
{
public:
    struct Settings
    {
        double tempo = 120.0;

        /** Position of the first frame in quarter notes. */
        double startBeat = 1.0;
        TimeSignature timeSignature;

        /** A stopped transport holds the position and says that it does not play. */
        bool playing = true;
    };

    Transport (const Settings& transportSettings, double framesPerSecond);

    /** @param frame  the frame of the file that the next block starts with */
    void moveTo (juce::int64 frame) noexcept { currentFrame = frame; }

    juce::Optional<PositionInfo> getPosition() const override;

private:
    [[nodiscard]] double beatsPerBar() const noexcept;

    Settings settings;
    double sampleRate;
    juce::int64 currentFrame = 0;
};
