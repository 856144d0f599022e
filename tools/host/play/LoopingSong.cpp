// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/play/LoopingSong.h"

#include <algorithm>
#include <cmath>
#include <utility>

LoopingSong::LoopingSong (juce::AudioBuffer<float> loopedSound, double rate, const Transport::Settings& settings)
    : sound (std::move (loopedSound)), song (settings), framesPerBeat (60.0 * rate / settings.tempo),
      beatsPerBar (4.0 * settings.timeSignature.numerator / settings.timeSignature.denominator),
      transport (settings, rate), loop (0, sound.getNumSamples())
{
}

//======================================================================================================================
int LoopingSong::barAt (juce::int64 frame) const noexcept
{
    // From the middle of the frame, so that rounding does not put the first frame of a bar into the one before.
    return (int) std::floor ((song.startBeat + ((double) frame + 0.5) / framesPerBeat) / beatsPerBar);
}

juce::int64 LoopingSong::startOfBar (int bar) const noexcept
{
    return std::llround ((bar * beatsPerBar - song.startBeat) * framesPerBeat);
}

juce::Range<juce::int64> LoopingSong::loopAt (juce::int64 frame) const noexcept
{
    const juce::Range<juce::int64> whole (0, sound.getNumSamples());
    const auto bar = barAt (frame);
    return barLooped ? whole.getIntersectionWith ({ startOfBar (bar), startOfBar (bar + 1) }) : whole;
}

LoopingSong::Place LoopingSong::place() const noexcept
{
    const auto frame = nextFrame.load();
    const auto bar = barAt (frame);
    const auto framesPerUnit = framesPerBeat * 4.0 / song.timeSignature.denominator;
    const auto beat = std::floor (((double) (frame - startOfBar (bar)) + 0.5) / framesPerUnit);
    return { bar + 1, (int) beat + 1 };
}

//======================================================================================================================
void LoopingSong::followRequests() noexcept
{
    const auto numBars = barsToMove.exchange (0);
    const auto moved = nextFrame + std::llround (numBars * beatsPerBar * framesPerBeat);
    const juce::int64 length = sound.getNumSamples();

    nextFrame = (moved % length + length) % length;
    playing = ! halted;

    if (numBars != 0 || barLooped != barWanted)
    {
        barLooped = barWanted;
        loop = loopAt (nextFrame);
    }
}

int LoopingSong::read (juce::AudioBuffer<float>& buffer, int mostFrames) noexcept
{
    followRequests();
    const auto frame = nextFrame.load();
    transport.moveTo (frame);

    if (! playing)
    {
        buffer.clear (0, mostFrames);
        return mostFrames;
    }

    const auto numFrames = (int) std::min ((juce::int64) mostFrames, loop.getEnd() - frame);

    for (int channel = 0; channel < sound.getNumChannels(); ++channel)
        buffer.copyFrom (channel, 0, sound, channel, (int) frame, numFrames);

    nextFrame = frame + numFrames == loop.getEnd() ? loop.getStart() : frame + numFrames;
    return numFrames;
}

juce::Optional<juce::AudioPlayHead::PositionInfo> LoopingSong::getPosition() const
{
    auto position = transport.getPosition();
    position->setIsPlaying (playing);
    return position;
}
