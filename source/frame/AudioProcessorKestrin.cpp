// SPDX-License-Identifier: AGPL-3.0-or-later
#include "AudioProcessorKestrin.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace juce
{
namespace
{
constexpr size_t stateScratchBytes = 65536;

/** Frames of one run of the sample loop at the most; a longer block is processed in several runs. */
constexpr int maxFramesPerRun = 524288;

constexpr std::uint32_t controlCounterMask = 0xffff;

// A rate outside these bounds is taken for a host that has not made up its mind.
constexpr double lowestImplausibleRate = 999.0;
constexpr double highestImplausibleRate = 10000000001.0;

/** The first channel's bounds are not symmetric, and a NaN becomes the upper one: projects sound like that. */
[[nodiscard]] float clampFirstChannel (float sample) noexcept
{
    if (-30.0f > sample)
        return -30.0f;

    return sample < 20.0f ? sample : 20.0f;
}

/** Narrower below than the first channel's, and a NaN passes: both are meant. */
[[nodiscard]] float clampSecondChannel (float sample) noexcept
{
    if (-20.0f > sample)
        return -20.0f;

    return sample > 20.0f ? 20.0f : sample;
}
} // namespace

/** Where the frames are read and written. A missing input on the right is fed by the left. */
struct AudioProcessorKestrin::FramePointers
{
    float* left = nullptr;
    const float* rightIn = nullptr;
    float* rightOut = nullptr;
};

// The second channel is asked for only where there is one.
AudioProcessorKestrin::FramePointers AudioProcessorKestrin::framesOf (dsp::AudioBlock<float>& block, int numIn,
                                                                      int numOut)
{
    if (block.getNumSamples() == 0)
        return {};

    return { block.getChannelPointer (0), numIn > 1 ? block.getChannelPointer (1) : nullptr,
             numOut > 1 ? block.getChannelPointer (1) : nullptr };
}

AudioProcessorKestrin::AudioProcessorKestrin (const BusesProperties& buses)
    : AudioProcessor (buses),
      stateScratch (stateScratchBytes),
      workBufferLeft (maxFramesPerRun),
      workBufferRight (maxFramesPerRun)
{
    if (stateScratch.getData() == nullptr)
        throw std::bad_alloc();
}

AudioProcessorKestrin::~AudioProcessorKestrin() = default;

void AudioProcessorKestrin::prepareToPlay (double, int maximumExpectedSamplesPerBlock)
{
    preparedBlockSize = maximumExpectedSamplesPerBlock;
    oversamplerBlockSize = maximumExpectedSamplesPerBlock;
    requestControlUpdate();
}

void AudioProcessorKestrin::beginBlock (AudioBuffer<float>&, int) {}

void AudioProcessorKestrin::refreshHostSampleRate() noexcept
{
    const auto rate = getSampleRate();

    if (rate > lowestImplausibleRate && rate < highestImplausibleRate)
        hostSampleRate = rate;
}

void AudioProcessorKestrin::processBlock (AudioBuffer<float>& buffer, MidiBuffer&)
{
    const ScopedNoDenormals noDenormals;
    const auto numSamples = buffer.getNumSamples();

    if (numSamples <= maxFramesPerRun)
    {
        processRun (buffer);
        return;
    }

    for (int start = 0; start < numSamples; start += maxFramesPerRun)
    {
        AudioBuffer<float> run (buffer.getArrayOfWritePointers(), buffer.getNumChannels(), start,
                                std::min (maxFramesPerRun, numSamples - start));
        processRun (run);
    }
}

void AudioProcessorKestrin::processRun (AudioBuffer<float>& buffer)
{
    const auto numIn = getTotalNumInputChannels();
    const auto numOut = getTotalNumOutputChannels();
    const auto numSamples = buffer.getNumSamples();

    updateOversampler (buffer.getNumChannels());

    const auto roundedFrames = (int64) std::roundf ((float) oversamplingFactor * (float) numSamples);
    const auto frameCount = (int) std::min (roundedFrames, (int64) maxFramesPerRun);
    const auto oversampled = numSamples != frameCount;

    for (int channel = numIn; channel < numOut; ++channel)
        buffer.clear (channel, 0, numSamples);

    beginBlock (buffer, frameCount);

    dsp::AudioBlock<float> block (buffer);

    if (! oversampled)
    {
        processFrames (framesOf (block, numIn, numOut), frameCount);
        return;
    }

    auto raised = oversampler->processSamplesUp (block);
    processFrames (framesOf (raised, numIn, numOut), (int) raised.getNumSamples());
    oversampler->processSamplesDown (block);
}

void AudioProcessorKestrin::processFrames (const FramePointers& frames, int numFrames)
{
    for (int i = 0; i < numFrames; ++i)
    {
        const auto left = clampFirstChannel (frames.left[i]);
        const auto right = frames.rightIn != nullptr ? clampSecondChannel (frames.rightIn[i]) : left;

        if (advanceClock())
            updateControlRate();

        const auto processed = processFrame (left, right);
        frames.left[i] = processed.first;

        if (frames.rightOut != nullptr)
            frames.rightOut[i] = processed.second;
    }
}

bool AudioProcessorKestrin::advanceClock() noexcept
{
    if (framesSinceRequest < std::numeric_limits<std::int32_t>::max())
        ++framesSinceRequest;

    controlCounter = (controlCounter + 1) & controlCounterMask;

    if (! controlUpdatePending && controlCounter != 0)
        return false;

    // Cleared before the update, so that the update can ask for the next one.
    controlUpdatePending = false;
    return true;
}

void AudioProcessorKestrin::updateOversampler (int numChannels)
{
    if ((int) activeOversamplingFactor == oversamplingFactor)
        return;

    activeOversamplingFactor = (float) oversamplingFactor;
    oversampler.reset();

    size_t numStages = 0;

    for (auto factor = (unsigned) oversamplingFactor; factor > 1; factor >>= 1)
        ++numStages;

    using Oversampling = dsp::Oversampling<float>;
    oversampler = std::make_unique<Oversampling> ((size_t) numChannels, numStages,
                                                  Oversampling::filterHalfBandFIREquiripple, true, false);
    oversampler->reset();
    oversampler->initProcessing ((size_t) oversamplerBlockSize);
    setLatencySamples ((int) oversampler->getLatencyInSamples());
}
} // namespace juce
