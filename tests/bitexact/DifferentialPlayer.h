// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "dsp/MainAudioProcessor.h"
#include "support/scenario/Dice.h"
#include "support/scenario/Scenario.h"

/** Plays the plug-in and the reference engine side by side: each operation goes to both, and the results must be equal in
    every bit. It compares every output sample, and after every block every field that both engines have.

    It keeps the first difference and then compares no more. It has the operations that scenario::play asks for. */
class DifferentialPlayer
{
public:
    enum class Channels
    {
        mono = 1,
        stereo = 2
    };

    explicit DifferentialPlayer (Channels channelsToUse = Channels::stereo);

    void seedLfo (int index, std::uint32_t seed);
    void setParameter (int index, float position);
    void setChoice (int index, int choice);
    void setSampleRate (double hostRate);
    void prepareToPlay();
    void requestUpdate();

    /** The same answer to every query from now on. */
    void setTransport (const reference::Transport& transport);

    /** A host whose position moves with every query. The script gets the number of the query. Each engine's queries are
        counted separately, so that one query too many changes the answers. A play head is always there. */
    using TransportScript = std::function<reference::Transport (std::int64_t query)>;
    void setTransport (TransportScript script);

    struct KnobMove
    {
        int index;
        float position;
    };

    /** A host that moves a parameter during a transport query. On the audio thread this is the only way to move one in the
        middle of a block. Needs a transport that follows a script. */
    void moveDuringQueries (std::function<std::optional<KnobMove> (std::int64_t query)> moves);

    /** One block. The plug-in's output replaces the input.
        @param rightOrNull  null in mono */
    void process (float* left, float* rightOrNull, int numFrames);

    void blockDone (int) { compareFields(); }

    /** The operations of a frame, called without a block around them. */
    void updateControlRate();
    std::pair<float, float> processFrame (float left, float right);

    /** Plays noise that never repeats, in blocks of these sizes in rotation. */
    void playNoise (int numFrames, std::span<const int> blockSizes);
    void playNoise (int numFrames, int blockSize = 512) { playNoise (numFrames, std::span (&blockSize, 1)); }

    /** Sets the frame count of both. */
    void setFramesSinceRequest (std::int32_t frames);

    /** Puts the four slews of both at their parameters, as if the glide were over. Where nothing modulates, the engines
        then sleep after their first ticks. */
    void startAtRest();

    /** Compares every field that both engines have. */
    void compareFields();

    /** The first difference and its place, with the plug-in's value before the reference engine's; empty without one. */
    [[nodiscard]] const std::string& difference() const noexcept { return firstDifference; }
    [[nodiscard]] bool isBitExact() const noexcept { return firstDifference.empty(); }

    [[nodiscard]] std::int64_t numFramesPlayed() const noexcept { return framesPlayed; }

    /** Ticks of the reference engine, which counts them. */
    [[nodiscard]] std::int64_t numTicks() const noexcept { return referenceEngine.tickCount; }

    MainAudioProcessor plugIn;
    reference::Engine referenceEngine;

private:
    /** One engine's view of the host. */
    struct Host : juce::AudioPlayHead
    {
        juce::Optional<PositionInfo> getPosition() const override;
        [[nodiscard]] reference::Transport next() const;

        reference::Transport standing;
        TransportScript script;
        std::function<void (std::int64_t query)> beforeAnswer;
        mutable std::int64_t queries = 0;
    };

    template <typename Value>
    void compare (const char* name, Value actual, Value expected, int index = -1, int channel = -1);

    void comparePair (const char* name, const StereoPair& actual, double expectedLeft, double expectedRight,
                      int index = -1);
    void compareSlew (const char* name, const SlewValue& actual, const reference::SlewValue& expected);
    void compareLfo (int index);
    void compareFilter (const char* name, const ButterworthFilter& actual,
                        const reference::ButterworthFilter& expected);
    void compareLadder (const char* name, const GrungeLadder& actual, const reference::GrungeLadder& expected);
    void comparePeak (const char* name, const ResonancePeak& actual, const reference::ResonancePeak& expected);
    void compareSample (const char* channel, float actual, float expected, std::int64_t frame);
    void note (const std::string& text);

    Channels channels;
    Host plugInHost, referenceHost;
    juce::MidiBuffer noMidi;
    std::vector<float> referenceLeft, referenceRight;
    scenario::Dice noise { 1 };
    std::int64_t framesPlayed = 0;
    std::string place;
    std::string firstDifference;
};
