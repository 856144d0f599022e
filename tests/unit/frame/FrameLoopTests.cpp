// SPDX-License-Identifier: AGPL-3.0-or-later
#include "frame/AudioProcessorKestrin.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FloatingPointMode.h"
#include "support/RecordingProcessor.h"

namespace
{
using Frame = RecordingProcessor::Frame;
using testing::ElementsAre;

constexpr auto quietNaN = std::numeric_limits<float>::quiet_NaN();
constexpr auto infinity = std::numeric_limits<float>::infinity();
constexpr int longestBlock = 524288;

/** What processFrame receives of a single frame. */
[[nodiscard]] Frame receivedOf (float left, float right)
{
    RecordingProcessor processor;
    juce::AudioBuffer<float> buffer (2, 1);
    buffer.setSample (0, 0, left);
    buffer.setSample (1, 0, right);
    processor.run (buffer);
    return processor.received.at (0);
}

[[nodiscard]] Frame receivedOfMono (float sample)
{
    RecordingProcessor processor (1, 1);
    juce::AudioBuffer<float> buffer (1, 1);
    buffer.setSample (0, 0, sample);
    processor.run (buffer);
    return processor.received.at (0);
}

/** Allows denormals for its lifetime and restores the mode that it found. */
struct DenormalsAllowed
{
    DenormalsAllowed() { juce::FloatVectorOperations::disableDenormalisedNumberSupport (false); }
    ~DenormalsAllowed() { juce::FloatVectorOperations::disableDenormalisedNumberSupport (wereDisabled); }
    DenormalsAllowed (const DenormalsAllowed&) = delete;
    DenormalsAllowed& operator= (const DenormalsAllowed&) = delete;

    const bool wereDisabled = juce::FloatVectorOperations::areDenormalsDisabled();
};

/** A buffer in which every sample tells its channel and position. */
[[nodiscard]] juce::AudioBuffer<float> countingBuffer (int numChannels, int numSamples)
{
    juce::AudioBuffer<float> buffer (numChannels, numSamples);

    for (int channel = 0; channel < numChannels; ++channel)
        for (int i = 0; i < numSamples; ++i)
            buffer.setSample (channel, i, (float) (i % 1000) * 0.01f + (float) channel * 0.001f);

    return buffer;
}
} // namespace

TEST (FrameLoop, BeginsAnEmptyBlockAndProcessesNoFrame)
{
    RecordingProcessor processor;
    processor.runSilence (0);
    EXPECT_THAT (processor.runs, ElementsAre (0));
    EXPECT_EQ (processor.numFrames, 0u);
    EXPECT_TRUE (processor.ticks.empty());
    EXPECT_TRUE (processor.controlUpdatePending);
    EXPECT_EQ (processor.framesSinceRequest, 0);
}

TEST (FrameLoop, ProcessesEveryFrameOnceInOrderAndInPlace)
{
    RecordingProcessor processor;
    processor.answer = [] (float left, float right) { return Frame { right + 1.0f, left - 1.0f }; };
    auto buffer = countingBuffer (2, 300);
    const auto input = buffer;
    processor.run (buffer);

    ASSERT_EQ (processor.received.size(), 300u);

    for (int i = 0; i < 300; ++i)
    {
        ASSERT_EQ (processor.received[(std::size_t) i], Frame (input.getSample (0, i), input.getSample (1, i)));
        ASSERT_EQ (buffer.getSample (0, i), input.getSample (1, i) + 1.0f);
        ASSERT_EQ (buffer.getSample (1, i), input.getSample (0, i) - 1.0f);
    }
}

TEST (FrameLoop, FeedsBothSidesFromAMonoInput)
{
    EXPECT_EQ (receivedOfMono (0.25f), Frame (0.25f, 0.25f));
    EXPECT_EQ (receivedOfMono (25.0f), Frame (20.0f, 20.0f));
    EXPECT_EQ (receivedOfMono (-25.0f), Frame (-25.0f, -25.0f));
    EXPECT_EQ (receivedOfMono (-35.0f), Frame (-30.0f, -30.0f));
    EXPECT_EQ (receivedOfMono (quietNaN), Frame (20.0f, 20.0f));
}

TEST (FrameLoop, DropsTheRightResultOnAMonoOutput)
{
    RecordingProcessor processor (1, 1);
    processor.answer = [] (float, float) { return Frame { 0.5f, 0.25f }; };
    juce::AudioBuffer<float> buffer (1, 3);
    buffer.clear();
    processor.run (buffer);

    for (int i = 0; i < 3; ++i)
        EXPECT_EQ (buffer.getSample (0, i), 0.5f);
}

TEST (FrameLoop, ClampsEachChannelToItsOwnBounds)
{
    EXPECT_EQ (receivedOf (-25.0f, -25.0f), Frame (-25.0f, -20.0f));
    EXPECT_EQ (receivedOf (25.0f, 25.0f), Frame (20.0f, 20.0f));
    EXPECT_EQ (receivedOf (-30.5f, -20.5f), Frame (-30.0f, -20.0f));
    EXPECT_EQ (receivedOf (-30.0f, -20.0f), Frame (-30.0f, -20.0f));
    EXPECT_EQ (receivedOf (20.0f, 20.0f), Frame (20.0f, 20.0f));
    EXPECT_EQ (receivedOf (infinity, infinity), Frame (20.0f, 20.0f));
    EXPECT_EQ (receivedOf (-infinity, -infinity), Frame (-30.0f, -20.0f));
    EXPECT_EQ (receivedOf (0.1f, -0.1f), Frame (0.1f, -0.1f));
}

TEST (FrameLoop, TurnsNaNIntoTwentyOnTheFirstChannelOnly)
{
    EXPECT_EQ (receivedOf (quietNaN, 0.5f), Frame (20.0f, 0.5f));
    EXPECT_EQ (receivedOf (0.5f, quietNaN).first, 0.5f);
    EXPECT_TRUE (std::isnan (receivedOf (0.5f, quietNaN).second));
}

TEST (FrameLoop, DoesNotClampItsOutput)
{
    RecordingProcessor processor;
    processor.answer = [] (float, float) { return Frame { 1000.0f, -infinity }; };
    juce::AudioBuffer<float> buffer (2, 1);
    buffer.clear();
    processor.run (buffer);
    EXPECT_EQ (buffer.getSample (0, 0), 1000.0f);
    EXPECT_EQ (buffer.getSample (1, 0), -infinity);
}

TEST (FrameLoop, TicksBeforeTheFirstFrameAndThenEvery65536Frames)
{
    std::mt19937 generator (1);

    for (const auto split : { 200000, 65536, 4096, 1000, 7, 0 })
    {
        RecordingProcessor processor;
        processor.keepFrames = false;

        for (int done = 0; done < 200000;)
        {
            // A split of 0 means random sizes, with empty blocks among them.
            const auto wanted = split > 0 ? split : (int) (generator() % 3000u) * (int) (generator() % 4u != 0);
            const auto size = std::min (wanted, 200000 - done);
            processor.runSilence (size);
            done += size;
        }

        EXPECT_THAT (processor.ticks, ElementsAre (0u, 65535u, 131071u, 196607u)) << "blocks of " << split;
    }
}

TEST (FrameLoop, TicksBeforeTheNextFrameOnRequestAndKeepsTheClock)
{
    RecordingProcessor processor;
    processor.runSilence (100);
    processor.requestControlUpdate();
    EXPECT_EQ (processor.framesSinceRequest, 0);
    processor.runSilence (0);
    EXPECT_TRUE (processor.controlUpdatePending);
    processor.runSilence (65536);
    EXPECT_THAT (processor.ticks, ElementsAre (0u, 100u, 65535u));
    EXPECT_FALSE (processor.controlUpdatePending);
}

TEST (FrameLoop, TicksInTheMiddleOfABlockWhenAFrameAsksForIt)
{
    RecordingProcessor processor;
    processor.answer = [&] (float left, float right)
    {
        if (processor.numFrames == 41 || processor.numFrames == 60)
            processor.requestControlUpdate();

        return Frame { left, right };
    };
    processor.runSilence (100);
    EXPECT_THAT (processor.ticks, ElementsAre (0u, 41u, 60u));
    EXPECT_EQ (processor.framesSinceRequest, 40);
}

TEST (FrameLoop, TicksBeforeEachFrameWhileTheTickAsksForTheNext)
{
    RecordingProcessor processor;
    processor.onTick = [&]
    {
        EXPECT_FALSE (processor.controlUpdatePending);

        if (processor.ticks.size() < 10)
            processor.requestControlUpdate();
    };
    processor.runSilence (100);
    EXPECT_EQ (processor.ticks.size(), 10u);
    EXPECT_EQ (processor.ticks.back(), 9u);
}

TEST (FrameLoop, CountsTheFramesSinceTheLastRequest)
{
    RecordingProcessor processor;
    processor.runSilence (1000);
    EXPECT_EQ (processor.framesSinceRequest, 1000);

    // The clock's own tick is no request.
    processor.runSilence (70000);
    EXPECT_EQ (processor.framesSinceRequest, 71000);
    processor.requestControlUpdate();
    processor.runSilence (5);
    EXPECT_EQ (processor.framesSinceRequest, 5);
}

TEST (FrameLoop, StopsCountingFramesAtTheLargestInt)
{
    RecordingProcessor processor;
    processor.framesSinceRequest = std::numeric_limits<std::int32_t>::max() - 2;
    processor.runSilence (1);
    EXPECT_EQ (processor.framesSinceRequest, std::numeric_limits<std::int32_t>::max() - 1);
    processor.runSilence (10);
    EXPECT_EQ (processor.framesSinceRequest, std::numeric_limits<std::int32_t>::max());
}

TEST (FrameLoop, ClearsOutputsBeyondTheInputsAndWritesOnlyTwo)
{
    RecordingProcessor processor (1, 4);
    processor.answer = [] (float left, float) { return Frame { left, 0.5f }; };
    juce::AudioBuffer<float> buffer (4, 8);

    for (int channel = 0; channel < 4; ++channel)
        for (int i = 0; i < 8; ++i)
            buffer.setSample (channel, i, 9.0f);

    processor.run (buffer);

    for (int i = 0; i < 8; ++i)
    {
        EXPECT_EQ (processor.received[(std::size_t) i], Frame (9.0f, 9.0f));
        EXPECT_EQ (buffer.getSample (0, i), 9.0f);
        EXPECT_EQ (buffer.getSample (1, i), 0.5f);
        EXPECT_EQ (buffer.getSample (2, i), 0.0f);
        EXPECT_EQ (buffer.getSample (3, i), 0.0f);
    }
}

TEST (FrameLoop, LeavesFurtherInputChannelsAlone)
{
    RecordingProcessor processor (4, 4);
    auto buffer = countingBuffer (4, 8);
    const auto input = buffer;
    processor.answer = [] (float, float) { return Frame { 0.0f, 0.0f }; };
    processor.run (buffer);

    for (int i = 0; i < 8; ++i)
    {
        EXPECT_EQ (buffer.getSample (0, i), 0.0f);
        EXPECT_EQ (buffer.getSample (1, i), 0.0f);
        EXPECT_EQ (buffer.getSample (2, i), input.getSample (2, i));
        EXPECT_EQ (buffer.getSample (3, i), input.getSample (3, i));
    }
}

TEST (FrameLoop, SplitsALongBlockWithoutLosingFrames)
{
    for (const auto numSamples : { longestBlock, longestBlock + 1, 2 * longestBlock, 2 * longestBlock + 12345 })
    {
        RecordingProcessor processor;
        processor.keepFrames = false;
        processor.answer = [] (float left, float right) { return Frame { left + 0.5f, right - 0.5f }; };
        auto buffer = countingBuffer (2, numSamples);
        const auto input = buffer;
        processor.run (buffer);

        EXPECT_EQ (processor.numFrames, (std::size_t) numSamples);
        EXPECT_EQ (std::accumulate (processor.runs.begin(), processor.runs.end(), 0), numSamples);
        EXPECT_THAT (processor.runs, testing::Each (testing::Le (longestBlock)));

        for (int i = 0; i < numSamples; ++i)
        {
            ASSERT_EQ (buffer.getSample (0, i), input.getSample (0, i) + 0.5f) << i;
            ASSERT_EQ (buffer.getSample (1, i), input.getSample (1, i) - 0.5f) << i;
        }

        // The clock does not notice the pieces.
        EXPECT_EQ (processor.ticks.size(), 1u + (std::size_t) numSamples / 65536u);
    }
}

TEST (FrameLoop, FlushesDenormalsAndRestoresTheFloatingPointMode)
{
    const DenormalsAllowed denormalsAllowed;
    const auto before = floatingPointMode();

    RecordingProcessor processor;
    auto numFlushed = 0;
    processor.answer = [&] (float left, float right)
    {
        numFlushed += juce::FloatVectorOperations::areDenormalsDisabled() ? 1 : 0;
        return Frame { left, right };
    };
    processor.runSilence (10);
    EXPECT_EQ (numFlushed, 10);
    EXPECT_FALSE (juce::FloatVectorOperations::areDenormalsDisabled());
    EXPECT_EQ (floatingPointMode(), before);

    processor.answer = [] (float, float) -> Frame { throw std::runtime_error ("out of the middle"); };
    EXPECT_THROW (processor.runSilence (10), std::runtime_error);
    EXPECT_EQ (floatingPointMode(), before);
}

TEST (FrameLoop, IgnoresMidi)
{
    RecordingProcessor processor;
    juce::AudioBuffer<float> buffer (2, 4);
    buffer.clear();
    juce::MidiBuffer midi;
    midi.addEvent (juce::MidiMessage::noteOn (1, 60, 1.0f), 2);
    processor.processBlock (buffer, midi);
    EXPECT_EQ (midi.getNumEvents(), 1);
    EXPECT_EQ (processor.numFrames, 4u);
}

TEST (FrameLoop, RequestsATickWhenPrepared)
{
    RecordingProcessor processor;
    processor.runSilence (10);
    processor.prepareToPlay (44100.0, 64);
    EXPECT_TRUE (processor.controlUpdatePending);
    EXPECT_EQ (processor.framesSinceRequest, 0);
    processor.releaseResources();
    processor.runSilence (10);
    EXPECT_THAT (processor.ticks, ElementsAre (0u, 10u));
}

TEST (FrameLoop, AcceptsOnlyPlausibleSampleRates)
{
    RecordingProcessor processor;
    EXPECT_EQ (processor.hostSampleRate, 96000.0);

    const auto offer = [&] (double rate)
    {
        processor.setRateAndBufferSizeDetails (rate, 64);
        processor.refreshHostSampleRate();
        return processor.hostSampleRate;
    };

    EXPECT_EQ (offer (0.0), 96000.0);
    EXPECT_EQ (offer (999.0), 96000.0);
    EXPECT_EQ (offer (10000000001.0), 96000.0);
    EXPECT_EQ (offer (std::numeric_limits<double>::quiet_NaN()), 96000.0);
    EXPECT_EQ (offer (999.5), 999.5);
    EXPECT_EQ (offer (999.0), 999.5);
    EXPECT_EQ (offer (10000000000.5), 10000000000.5);
    EXPECT_EQ (processor.processingRate(), 10000000000.5);
}
