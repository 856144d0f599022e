// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <atomic>
#include <cmath>
#include <thread>

#include <gtest/gtest.h>

#include "dsp/MainAudioProcessor.h"
#include "support/FakePlayHead.h"

/** A host's audio thread: prepares a processor and plays noise through it for the life of this object, with a running song,
    and may automate all parameters before every block. The test fails if a sample is not finite. */
class RunningAudio
{
public:
    explicit RunningAudio (MainAudioProcessor& processorToRun, bool shouldAutomate = false)
        : processor (processorToRun), automates (shouldAutomate)
    {
        processor.setRateAndBufferSizeDetails (48000.0, numFrames);
        processor.prepareToPlay (48000.0, numFrames);
        processor.setPlayHead (&transport);
        thread = std::thread ([this] { run(); });
    }

    ~RunningAudio()
    {
        stopped = true;
        thread.join();
        processor.setPlayHead (nullptr);
        EXPECT_TRUE (onlyFinite);
    }

    RunningAudio (const RunningAudio&) = delete;
    RunningAudio& operator= (const RunningAudio&) = delete;

    [[nodiscard]] bool hasPlayed (int wantedBlocks) const { return numBlocks >= wantedBlocks; }

private:
    void run()
    {
        juce::AudioBuffer<float> buffer (2, numFrames);
        juce::MidiBuffer noMessages;
        juce::Random random (1);

        for (; ! stopped; ++numBlocks)
        {
            for (int channel = 0; channel < 2; ++channel)
                for (int frame = 0; frame < numFrames; ++frame)
                    buffer.setSample (channel, frame, random.nextFloat() - 0.5f);

            if (automates)
                for (auto* const parameter : processor.getParameters())
                    parameter->setValueNotifyingHost (random.nextFloat());

            transport.moveTo (numBlocks * 0.01);
            processor.processBlock (buffer, noMessages);
            onlyFinite = onlyFinite && std::isfinite (buffer.getMagnitude (0, numFrames));
            std::this_thread::yield();
        }
    }

    static constexpr int numFrames = 64;

    MainAudioProcessor& processor;
    const bool automates;
    FakePlayHead transport;
    std::atomic<bool> stopped { false };
    std::atomic<int> numBlocks { 0 };
    bool onlyFinite = true;
    std::thread thread;
};
