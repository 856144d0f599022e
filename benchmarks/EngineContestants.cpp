// SPDX-License-Identifier: AGPL-3.0-or-later
#include "EngineContestants.h"

#include <algorithm>

namespace
{
/** Longer than any glide: an engine that can sleep does so at its end. */
constexpr double settlingSeconds = 0.5;

void settle (Contestant& contestant, double rate)
{
    constexpr std::size_t blockFrames = 4096;
    Noise noise;

    for (auto frames = 0.0; frames < settlingSeconds * rate; frames += (double) blockFrames)
    {
        contestant.take (noise.next (blockFrames));
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
PluginContestant::PluginContestant (const Patch& patch, Running running)
    : transport (running.rate), blockSize (running.blockSize)
{
    for (const auto& setting : patch.settings)
        processor.getParameters()[setting.index]->setValue (setting.position);

    processor.setRateAndBufferSizeDetails (running.rate, blockSize);
    processor.setPlayHead (&transport);
    processor.prepareToPlay (running.rate, blockSize);
    settle (*this, running.rate);
}

void PluginContestant::take (const Noise::Block& block)
{
    const auto numFrames = (int) block.left.size();
    buffer.setSize (2, numFrames, false, false, true);
    buffer.copyFrom (0, 0, block.left.data(), numFrames);
    buffer.copyFrom (1, 0, block.right.data(), numFrames);
}

void PluginContestant::run()
{
    for (int start = 0; start < buffer.getNumSamples(); start += blockSize)
    {
        const auto numFrames = std::min (blockSize, buffer.getNumSamples() - start);
        juce::AudioBuffer<float> block (buffer.getArrayOfWritePointers(), 2, start, numFrames);
        processor.processBlock (block, noMidi);
        transport.moveOn (numFrames);
    }
}

//======================================================================================================================
ReferenceContestant::ReferenceContestant (const Patch& patch, Running running)
    : transport (running.rate), blockSize (running.blockSize)
{
    for (const auto& setting : patch.settings)
        engine.setParameter (setting.index, setting.position);

    engine.setSampleRate (running.rate);
    engine.transport = [this] { return transport.position(); };
    engine.prepareToPlay();
    settle (*this, running.rate);
}

void ReferenceContestant::take (const Noise::Block& block)
{
    left.assign (block.left.begin(), block.left.end());
    right.assign (block.right.begin(), block.right.end());
}

void ReferenceContestant::run()
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
        instances.push_back (std::make_unique<PluginContestant> (patch));
}

void ManyInstances::take (const Noise::Block& block)
{
    for (auto& instance : instances)
        instance->take (block);
}

void ManyInstances::run()
{
    for (auto& instance : instances)
        instance->run();
}
