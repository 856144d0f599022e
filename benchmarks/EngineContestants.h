// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>
#include <vector>

#include "Contest.h"
#include "dsp/MainAudioProcessor.h"
#include "Patch.h"
#include "reference/ReferenceEngine.h"

/** How a host runs an engine. */
struct Running
{
    double rate = 48000.0;
    int blockSize = 512;
};

/** A transport that plays at 120 bpm and moves on from block to block, as hosts' transports do. */
class PlayingTransport : public juce::AudioPlayHead
{
public:
    explicit PlayingTransport (double hostRate) : beatsPerFrame (2.0 / hostRate) {}

    void moveOn (int numFrames) noexcept { beats += beatsPerFrame * numFrames; }
    juce::Optional<PositionInfo> getPosition() const override;
    [[nodiscard]] reference::Transport position() const;

private:
    double beatsPerFrame;
    double beats = 1.0;
};

/** The plug-in, through processBlock. */
class PluginContestant : public Contestant
{
public:
    explicit PluginContestant (const Patch& patch, Running running = {});

    void take (const Noise::Block& block) override;
    void run() override;

private:
    MainAudioProcessor processor;
    PlayingTransport transport;
    int blockSize;
    juce::AudioBuffer<float> buffer;
    juce::MidiBuffer noMidi;
};

/** The reference engine of the tests. */
class ReferenceContestant : public Contestant
{
public:
    explicit ReferenceContestant (const Patch& patch, Running running = {});

    void take (const Noise::Block& block) override;
    void run() override;

private:
    reference::Engine engine;
    PlayingTransport transport;
    int blockSize;
    std::vector<float> left, right;
};

/** Many instances of the plug-in that take turns, block by block, as the tracks of a song do. */
class ManyInstances : public Contestant
{
public:
    ManyInstances (int count, const Patch& patch);

    void take (const Noise::Block& block) override;
    void run() override;

private:
    std::vector<std::unique_ptr<PluginContestant>> instances;
};
