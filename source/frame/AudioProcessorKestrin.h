// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <juce_audio_processors/juce_audio_processors.h>
#include <juce_dsp/juce_dsp.h>

#include "frame/LongBlocks.h"

namespace juce
{
/** The host's side of the plug-in: every call of the host enters here. This class clamps the samples of a block, counts its
    frames on the control clock, and saves and loads the settings. It does not know what processes the frames.

    Audio is in single precision and is processed in place. processFrames is the sample loop. Here it calls processFrame
    once for each stereo frame, and before it updateControlRate if controlUpdatePending has been raised, or if 65536 frames
    have passed, wherever the blocks begin. The plug-in overrides the loop with one that takes many frames together and
    gives the same bits.

    The public fields are shared between audio and message thread as plain members, on purpose: a lost request costs one
    late update, which the clock bounds. */
class AudioProcessorKestrin : public AudioProcessor
{
public:
    /** @param buses  as JUCE's base takes them */
    explicit AudioProcessorKestrin (const BusesProperties& buses);
    ~AudioProcessorKestrin() override;

    void prepareToPlay (double sampleRate, int maximumExpectedSamplesPerBlock) override;
    void releaseResources() override {}
    bool isBusesLayoutSupported (const BusesLayout&) const override { return true; }
    void processBlock (AudioBuffer<float>& buffer, MidiBuffer& midi) override;
    using AudioProcessor::processBlock;
    VST3ClientExtensions* getVST3ClientExtensions() override { return &longBlocks; }

    int getNumPrograms() override;
    int getCurrentProgram() override;
    void setCurrentProgram (int index) override;
    const String getProgramName (int index) override;
    void changeProgramName (int index, const String& newName) override;

    void getStateInformation (MemoryBlock& destData) override;
    void setStateInformation (const void* data, int sizeInBytes) override;

    /** Brings everything that follows from time, transport and parameters up to date. Audio thread only. */
    virtual void updateControlRate() = 0;

    /** Processes one stereo frame at the processing rate. Audio thread only.
        @returns the processed left and right sample */
    virtual std::pair<float, float> processFrame (float left, float right) = 0;

    /** Called before each block, and for each part of a block that is too long to be processed at once. Audio thread only.
        @param frameCount  frames at the processing rate */
    virtual void beginBlock (AudioBuffer<float>& buffer, int frameCount);

    /** Asks for updateControlRate before the next frame. Any thread. */
    void requestControlUpdate() noexcept
    {
        controlUpdatePending = true;
        framesSinceRequest = 0;
    }

    /** Takes over the host's sample rate if it is plausible, and otherwise keeps the last plausible one. */
    void refreshHostSampleRate() noexcept
    {
        const auto rate = getSampleRate();

        if (rate > lowestImplausibleRate && rate < highestImplausibleRate)
            hostSampleRate = rate;
    }

    /** Frames per second of the internal loop. */
    [[nodiscard]] double processingRate() const noexcept { return (double) oversamplingFactor * hostSampleRate; }

    /** The most frames that processFrames is given at once. */
    static constexpr int maxFramesTogether = 512;

    /** The last plausible sample rate seen from the host, in Hz. */
    double hostSampleRate = 96000.0;

    /** A power of two. Nothing changes it: the plug-in runs at factor 1. */
    int oversamplingFactor = 1;

    bool controlUpdatePending = true;

    /** Frames processed since controlUpdatePending was last raised; stops at its largest value. */
    std::int32_t framesSinceRequest = 0;

protected:
    /** A preset bank of a derived plug-in: name, and the attributes of the settings element as text. */
    std::vector<std::pair<String, String>> programs;
    int currentProgram = 0;
    int loadedProgram = -1;

    /** The attributes of the last loaded or saved settings that are not parameters: they survive into the next save. */
    std::map<String, String> extraAttributes;

    /** For a derived class that needs random numbers; this class draws none. */
    Random random;

    /** Processes frames with clamped samples in place: counts each frame on the clock, runs the update where it is due,
        and processes the frame. An override may take frames together, but must give the same output and the same state as
        this loop over updateControlRate and processFrame.
        @param numFrames  1 to maxFramesTogether */
    virtual void processFrames (float* left, float* right, int numFrames);

    /** The number of frames before the next update that the clock itself asks for. */
    [[nodiscard]] int framesUntilClockedUpdate() const noexcept { return (int) (controlCounterMask - controlCounter); }

    /** True if the next frame starts with an update. */
    [[nodiscard]] bool isControlUpdateDue() const noexcept
    {
        return controlUpdatePending || framesUntilClockedUpdate() == 0;
    }

    /** Counts frames that start without an update. */
    void skipClock (int numFrames) noexcept
    {
        const auto room = std::numeric_limits<std::int32_t>::max() - framesSinceRequest;

        framesSinceRequest += std::min (room, numFrames);
        controlCounter = (controlCounter + (std::uint32_t) numFrames) & controlCounterMask;
    }

    /** Counts one frame.
        @returns true if the frame starts with an update. The request is cleared first, because the update itself may ask
                 for the next one */
    [[nodiscard]] bool advanceClock() noexcept
    {
        const auto isDue = isControlUpdateDue();
        skipClock (1);

        if (isDue)
            controlUpdatePending = false;

        return isDue;
    }

private:
    struct FramePointers;

    [[nodiscard]] static FramePointers framesOf (dsp::AudioBlock<float>& block, int numIn, int numOut);
    void applyParameters (const XmlElement& settings);
    void keepExtraAttributes (const XmlElement& settings);
    void setExtraAttribute (String key, String value);
    void ensureDefaultProgram();
    void updateOversampler (int numChannels);
    void processLimitedBlock (AudioBuffer<float>& buffer);
    void processInPlace (const FramePointers& frames, int numFrames);

    static constexpr std::uint32_t controlCounterMask = 0xffff;

    // A host that reports a rate outside these bounds has not decided yet.
    static constexpr double lowestImplausibleRate = 999.0;
    static constexpr double highestImplausibleRate = 10000000001.0;

    std::uint32_t controlCounter = 0;
    int oversamplerBlockSize = 32768;

    // Written by prepareToPlay and read by nothing: part of the frozen layout.
    int preparedBlockSize = 8192;

    float activeOversamplingFactor = 1.0f;
    std::unique_ptr<dsp::Oversampling<float>> oversampler;
    MemoryBlock stateScratch;

    // Unused after construction, part of the frozen layout. Their size is the limit of frames that are processed at once.
    std::vector<float> workBufferLeft;
    std::vector<float> workBufferRight;

    LongBlocks longBlocks { *this };

    // Raised by every load of settings or of a program, and read by nothing: part of the frozen layout.
    bool stateTouched = true;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (AudioProcessorKestrin)
};
} // namespace juce
