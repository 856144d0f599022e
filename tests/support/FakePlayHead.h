// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

/** A host's transport that says what a test wants it to say: nothing at all, a position with nothing in it, or a position
    with those fields that the test has set. */
class FakePlayHead : public juce::AudioPlayHead
{
public:
    juce::Optional<PositionInfo> getPosition() const override { return position; }

    /** A host that gives everything that the plug-in looks at. */
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
