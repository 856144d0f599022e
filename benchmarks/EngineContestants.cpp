// SPDX-License-Identifier: AGPL-3.0-or-later
#include "EngineContestants.h"

#include <algorithm>

namespace
{
/** Longer than any glide: whoever can sleep does so at its end. */
constexpr double settlingSeconds = 0.5;

void settle (Contestant& contestant, double rate)
{
    constexpr std::size_t stretch = 4096;
    Noise noise;

    for (auto frames = 0.0; frames < settlingSeconds * rate; frames += (double) stretch)
    {
        contestant.take (noise.next (stretch));
        contestant.run();
    }
}
} // namespace

juce::Optional<juce::AudioPlayHead::PositionInfo> PlayingTransport::getPosition() const
{
    PositionInfo info;
    info.setBpm (120.0);
    info.setPpqPosition (beats);
    info.setTimeSignature (TimeSignature { 4, 4 });
    return info;
}

reference::Transport PlayingTransport::position() const
{
    reference::Transport transport;
    transport.hasPlayHead = true;
    transport.hasPosition = true;
    transport.ppqPosition = beats;
    return transport;
}

//======================================================================================================================
ProductContestant::ProductContestant (const Patch& patch, Running running)
    : transport (running.rate), blockSize (running.blockSize)
{
    for (const auto& setting : patch.settings)
        processor.getParameters()[setting.index]->setValue (setting.position);

    processor.setRateAndBufferSizeDetails (running.rate, blockSize);
    processor.setPlayHead (&transport);
    processor.prepareToPlay (running.rate, blockSize);
    settle (*this, running.rate);
}

void ProductContestant::take (const Noise::Stretch& stretch)
{
    const auto numFrames = (int) stretch.left.size();
    stretchBuffer.setSize (2, numFrames, false, false, true);
    stretchBuffer.copyFrom (0, 0, stretch.left.data(), numFrames);
    stretchBuffer.copyFrom (1, 0, stretch.right.data(), numFrames);
}

void ProductContestant::run()
{
    for (int start = 0; start < stretchBuffer.getNumSamples(); start += blockSize)
    {
        const auto numFrames = std::min (blockSize, stretchBuffer.getNumSamples() - start);
        juce::AudioBuffer<float> block (stretchBuffer.getArrayOfWritePointers(), 2, start, numFrames);
        processor.processBlock (block, noMidi);
        transport.moveOn (numFrames);
    }
}

//======================================================================================================================
LiteralContestant::LiteralContestant (const Patch& patch, Running running)
    : transport (running.rate), blockSize (running.blockSize)
{
    for (const auto& setting : patch.settings)
        engine.setParameter (setting.index, setting.position);

    engine.setSampleRate (running.rate);
    engine.transport = [this] { return transport.position(); };
    engine.prepareToPlay();
    settle (*this, running.rate);
}

void LiteralContestant::take (const Noise::Stretch& stretch)
{
    left.assign (stretch.left.begin(), stretch.left.end());
    right.assign (stretch.right.begin(), stretch.right.end());
}

void LiteralContestant::run()
{
    const auto total = (int) left.size();

    for (int start = 0; start < total; start += blockSize)
    {
        const auto numFrames = std::min (blockSize, total - start);
        engine.process (left.data() + start, right.data() + start, numFrames);
        transport.moveOn (numFrames);
    }
}

//======================================================================================================================
ManyInstances::ManyInstances (int count, const Patch& patch)
{
    for (int i = 0; i < count; ++i)
        instances.push_back (std::make_unique<ProductContestant> (patch));
}

void ManyInstances::take (const Noise::Stretch& stretch)
{
    for (auto& instance : instances)
        instance->take (stretch);
}

void ManyInstances::run()
{
    for (auto& instance : instances)
        instance->run();
}
