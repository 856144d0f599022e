// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "dsp/MainAudioProcessor.h"
#include "support/EngineDriver.h"

/** The plug-in in process, without a module around it. */
class PluginDriver : public EngineDriver
{
public:
    /** How the frames reach the engine. */
    enum class Loop
    {
        frameByFrame, // updateControlRate and processFrame, called by a loop of the driver's own
        inBlocks      // processBlock, which takes frames and ticks together
    };

    explicit PluginDriver (Loop loopToUse);

    void setSampleRate (double hostRate) override;
    void set (std::string_view id, float position) override;
    [[nodiscard]] float get (std::string_view id) const override;
    [[nodiscard]] float lastSeenValueOf (std::string_view id) const override;
    [[nodiscard]] std::int64_t numQueries() const override { return host.numQueries; }
    void requestUpdate() override { engine.requestControlUpdate(); }
    [[nodiscard]] bool isUpdatePending() const override { return engine.controlUpdatePending; }
    void clearPendingUpdate() override { engine.controlUpdatePending = false; }
    [[nodiscard]] std::int32_t framesSinceRequest() const override { return engine.framesSinceRequest; }

    [[nodiscard]] ButterworthFilter& hpFilter() { return *engine.hpFilter; }
    [[nodiscard]] ButterworthFilter& lpFilter() { return *engine.lpFilter; }
    [[nodiscard]] GrungeLadder& hpLadder() { return *engine.hpLadder; }
    [[nodiscard]] GrungeLadder& lpLadder() { return *engine.lpLadder; }
    [[nodiscard]] ResonancePeak& hpResonator() { return *engine.hpResonator; }
    [[nodiscard]] ResonancePeak& lpResonator() { return *engine.lpResonator; }

protected:
    void applyTransport (const reference::Transport& transport) override;
    void process (float* left, float* right, int numFrames) override;

private:
    struct Host : juce::AudioPlayHead
    {
        juce::Optional<PositionInfo> getPosition() const override;

        reference::Transport transport;
        mutable std::int64_t numQueries = 0;
    };

    [[nodiscard]] juce::AudioProcessorParameter& parameter (std::string_view id) const;
    void processFrameByFrame (float* left, float* right, int numFrames);

    const Loop loop;
    std::uint32_t clock = 0;

    // The processor keeps a pointer to the play head.
    Host host;

public:
    MainAudioProcessor engine;
};
