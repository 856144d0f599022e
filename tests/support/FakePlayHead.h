// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

/** A host's transport under a test's control: no position, an empty position, or a position with the fields that the test
    has set. */
class FakePlayHead : public juce::AudioPlayHead
{
public:
    juce::Optional<PositionInfo> getPosition() const override { return position; }

    /** A position with every field that the plug-in reads. */
    void moveTo (double beats, double bpm = 120.0, juce::AudioPlayHead::TimeSignature signature = {})
    {
        PositionInfo info;
        info.setPpqPosition (beats);
        info.setBpm (bpm);
        info.setTimeSignature (signature);
        position = info;
    }

    juce::Optional<PositionInfo> position;
};
