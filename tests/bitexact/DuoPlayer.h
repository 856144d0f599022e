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
#include "support/scenario/Playback.h"
#include "support/scenario/Scenario.h"

/** The plug-in and the second engine side by side: whatever is done to the one is done to the other, and what they give
    must be the same in every bit. Every output sample is compared, and after every block every field that both hold.

    The first difference is kept, and nothing is compared after it. It has the operations that scenario::play asks for. */
class DuoPlayer
{
public:
    enum class Channels
    {
        mono = 1,
        stereo = 2
    };

    explicit DuoPlayer (Channels channelsToUse = Channels::stereo);

    void seedLfo (int index, std::uint32_t seed);
    void setParameter (int index, float position);
    void setChoice (int index, int choice);
    void setSampleRate (double hostRate);
    void prepareToPlay();
    void requestUpdate();

    /** The same answer to every query from now on. */
    void setTransport (const reference::Transport& transport);

    /** A host whose position moves with every query. It is asked with the number of queries made before, by each engine
        for itself: an engine that asks once too often gets another answer. A play head is always there. */
    using TransportScript = std::function<reference::Transport (std::int64_t query)>;
    void setTransport (TransportScript script);

    struct Turn
    {
        int index;
        float position;
    };

    /** A host that turns a knob while it is asked for its transport, which is the one way to turn one in the middle of a
        block on the audio thread itself. For a transport that follows a script. */
    void turnWhileAsked (std::function<std::optional<Turn> (std::int64_t query)> script);

    /** One block. The plug-in's output replaces the input.
        @param rightOrNull  null in mono */
    void process (float* left, float* rightOrNull, int numFrames);

    void blockDone (int) { compareFields(); }

    /** The operations of a frame, called without a block around them. */
    void updateControlRate();
    std::pair<float, float> processFrame (float left, float right);

    /** Plays noise that never repeats, in blocks of these sizes, over and over. */
    void playNoise (int numFrames, std::span<const int> blockSizes);
    void playNoise (int numFrames, int blockSize = 512) { playNoise (numFrames, std::span (&blockSize, 1)); }

    /** Sets the count of both, as if so many frames had passed. */
    void setFramesSinceRequest (std::int32_t frames);

    /** Puts the four slews of both where the knobs stand, as if the glide were over: without movement the engines then
        sleep from their first tick on. */
    void startAtRest();

    void compareFields();

    /** What differed first, and where; empty as long as all is the same. */
    [[nodiscard]] const std::string& difference() const noexcept { return firstDifference; }
    [[nodiscard]] bool isSame() const noexcept { return firstDifference.empty(); }

    [[nodiscard]] std::int64_t numFramesPlayed() const noexcept { return framesPlayed; }

    /** Of the second engine, which counts them. */
    [[nodiscard]] std::int64_t numTicks() const noexcept { return literal.tickCount; }

    MainAudioProcessor product;
    reference::Engine literal;

private:
    /** One engine's view of the host. */
    struct Host : juce::AudioPlayHead
    {
        juce::Optional<PositionInfo> getPosition() const override;
        [[nodiscard]] reference::Transport next() const;

        reference::Transport standing;
        TransportScript script;
        std::function<void (std::int64_t query)> turn;
        mutable std::int64_t queries = 0;
    };

    template <typename Value>
    void same (const char* name, Value ours, Value theirs, int index = -1, int channel = -1);

    void samePair (const char* name, const StereoPair& ours, double theirLeft, double theirRight, int index = -1);
    void compareSlew (const char* name, const SlewValue& ours, const reference::SlewValue& theirs);
    void compareLfo (int index);
    void compareFilter (const char* name, const ButterworthFilter& ours, const reference::ButterworthFilter& theirs);
    void compareLadder (const char* name, const GrungeLadder& ours, const reference::GrungeLadder& theirs);
    void comparePeak (const char* name, const ResonancePeak& ours, const reference::ResonancePeak& theirs);
    void compareSample (const char* channel, float ours, float theirs, std::int64_t frame);
    void note (const std::string& text);

    Channels channels;
    Host productsHost, literalsHost;
    juce::MidiBuffer noMidi;
    std::vector<float> literalLeft, literalRight;
    scenario::Dice noise { 1 };
    std::int64_t framesPlayed = 0;
    std::string place;
    std::string firstDifference;
};
