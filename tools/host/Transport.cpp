// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/Transport.h"

#include <cmath>

Transport::Transport (const Settings& transportSettings, double framesPerSecond)
    : settings (transportSettings), sampleRate (framesPerSecond)
{
}

double Transport::beatsPerBar() const noexcept
{
    return 4.0 * settings.timeSignature.numerator / settings.timeSignature.denominator;
}

juce::Optional<juce::AudioPlayHead::PositionInfo> Transport::getPosition() const
{
    const auto frame = settings.playing ? currentFrame : 0;
    const auto beats = settings.startBeat + (double) frame * settings.tempo / (60.0 * sampleRate);

    // The sequencer's own clock starts where its beats do, so that time and beats agree.
    const auto startFrame = std::llround (settings.startBeat * 60.0 * sampleRate / settings.tempo);

    PositionInfo position;
    position.setBpm (settings.tempo);
    position.setTimeSignature (settings.timeSignature);
    position.setPpqPosition (beats);
    position.setPpqPositionOfLastBarStart (std::floor (beats / beatsPerBar()) * beatsPerBar());
    position.setTimeInSamples (startFrame + frame);
    position.setTimeInSeconds ((double) (startFrame + frame) / sampleRate);
    position.setIsPlaying (settings.playing);
    return position;
}
