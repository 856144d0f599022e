// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <atomic>
#include <limits>

#include <juce_audio_devices/juce_audio_devices.h>

#include "host/HostedModule.h"
#include "host/play/LoopingSong.h"
#include "host/play/PeakMeter.h"
#include "host/play/Recording.h"

/** What a sound device calls for each block: sends the song through the module to the device, and to a recording. On the audio
    thread it neither allocates nor locks nor prints. */
class LivePlayer : public juce::AudioIODeviceCallback
{
public:
    struct Settings
    {
        double sampleRate = 0.0;

        /** The longest block that the module is given; the device may ask for more at once. */
        int blockSize = 0;

        /** After so many frames there is silence. */
        juce::int64 numFrames = std::numeric_limits<juce::int64>::max();

        /** Not owned; may be nullptr. */
        Recording* recording = nullptr;
    };

    /** Prepares the module. It must outlive the player, as must the song. */
    LivePlayer (HostedModule& module, LoopingSong& songToPlay, const Settings& settings);
    ~LivePlayer() override;

    LivePlayer (const LivePlayer&) = delete;
    LivePlayer& operator= (const LivePlayer&) = delete;

    void audioDeviceIOCallbackWithContext (const float* const* inputs, int numInputs, float* const* outputs,
                                           int numOutputs, int numFrames,
                                           const juce::AudioIODeviceCallbackContext& context) override;
    void audioDeviceAboutToStart (juce::AudioIODevice*) override {}
    void audioDeviceStopped() override {}

    //==================================================================================================================
    // Any thread

    [[nodiscard]] bool isDone() const noexcept { return framesLeft == 0; }

    /** Changes with every block: a device that has gone asks for none. */
    [[nodiscard]] int numBlocks() const noexcept { return blocksPlayed; }

    [[nodiscard]] double loadInPercent() const { return load.getLoadAsPercentage(); }

    /** Blocks that took longer to make than to play. */
    [[nodiscard]] int numLateBlocks() const { return load.getXRunCount(); }

    PeakMeter inputLevel, outputLevel;

private:
    [[nodiscard]] int playPart (float* const* outputs, int numOutputs, int start, int mostFrames);
    void send (float* const* outputs, int numOutputs, int start, int numFrames) const noexcept;

    juce::AudioPluginInstance& instance;
    LoopingSong& song;
    Recording* const recording;
    juce::AudioBuffer<float> buffer;
    juce::MidiBuffer noMessages;
    juce::AudioProcessLoadMeasurer load;
    std::atomic<juce::int64> framesLeft;
    std::atomic<int> blocksPlayed { 0 };
};
