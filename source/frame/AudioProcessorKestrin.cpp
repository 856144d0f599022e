// SPDX-License-Identifier: AGPL-3.0-or-later
#include "frame/AudioProcessorKestrin.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <new>
#include <tuple>

namespace juce
{
namespace
{
constexpr std::size_t stateScratchBytes = 65536;

/** A longer block is cut into blocks of at most this many frames. */
constexpr int maxBlockFrames = 524288;

/** True if no magnitude is above the bound that both channels have in common. Nearly every block is like that. The magnitudes
    are compared as bits: that is fast, and a NaN is above every number. */
[[nodiscard]] bool areWithinBounds (const float* samples, int count) noexcept
{
    constexpr auto magnitudeMask = 0x7fffffff;
    constexpr auto bound = std::bit_cast<std::int32_t> (20.0f);
    std::int32_t numOutside = 0;

    for (int i = 0; i < count; ++i)
        numOutside += (std::bit_cast<std::int32_t> (samples[i]) & magnitudeMask) > bound ? 1 : 0;

    return numOutside == 0;
}

/** The first channel's bounds are not symmetric, and a NaN becomes the upper bound: projects depend on both. */
void clampFirstChannel (float* samples, int count) noexcept
{
    if (areWithinBounds (samples, count))
        return;

    for (int i = 0; i < count; ++i)
    {
        const auto raised = -30.0f > samples[i] ? -30.0f : samples[i];
        samples[i] = raised < 20.0f ? raised : 20.0f;
    }
}

/** The lower bound is nearer than the first channel's, and a NaN passes: both are meant. */
void clampSecondChannel (float* samples, int count) noexcept
{
    if (areWithinBounds (samples, count))
        return;

    for (int i = 0; i < count; ++i)
    {
        const auto raised = -20.0f > samples[i] ? -20.0f : samples[i];
        samples[i] = raised > 20.0f ? 20.0f : raised;
    }
}
} // namespace

/** Where the frames are read and written. Without a right input the left one feeds both sides. */
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
    : AudioProcessor (buses), stateScratch (stateScratchBytes), workBufferLeft (maxBlockFrames),
      workBufferRight (maxBlockFrames)
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

void AudioProcessorKestrin::processBlock (AudioBuffer<float>& buffer, MidiBuffer&)
{
    const ScopedNoDenormals noDenormals;
    const auto numSamples = buffer.getNumSamples();

    if (numSamples <= maxBlockFrames)
    {
        processLimitedBlock (buffer);
        return;
    }

    for (int start = 0; start < numSamples; start += maxBlockFrames)
    {
        AudioBuffer<float> part (buffer.getArrayOfWritePointers(), buffer.getNumChannels(), start,
                                 std::min (maxBlockFrames, numSamples - start));
        processLimitedBlock (part);
    }
}

void AudioProcessorKestrin::processLimitedBlock (AudioBuffer<float>& buffer)
{
    const auto numIn = getTotalNumInputChannels();
    const auto numOut = getTotalNumOutputChannels();
    const auto numSamples = buffer.getNumSamples();

    updateOversampler (buffer.getNumChannels());

    const auto roundedFrames = (int64) std::roundf ((float) oversamplingFactor * (float) numSamples);
    const auto frameCount = (int) std::min (roundedFrames, (int64) maxBlockFrames);
    const auto oversampled = numSamples != frameCount;

    for (int channel = numIn; channel < numOut; ++channel)
        buffer.clear (channel, 0, numSamples);

    beginBlock (buffer, frameCount);

    dsp::AudioBlock<float> block (buffer);

    if (! oversampled)
    {
        processInPlace (framesOf (block, numIn, numOut), frameCount);
        return;
    }

    auto raised = oversampler->processSamplesUp (block);
    processInPlace (framesOf (raised, numIn, numOut), (int) raised.getNumSamples());
    oversampler->processSamplesDown (block);
}

void AudioProcessorKestrin::processInPlace (const FramePointers& frames, int numFrames)
{
    std::array<float, maxFramesTogether> scratch;

    for (int start = 0; start < numFrames; start += maxFramesTogether)
    {
        const auto count = std::min (maxFramesTogether, numFrames - start);
        auto* const left = frames.left + start;

        // A right channel that is only read or only written must not be processed in place.
        auto* const right =
            frames.rightIn == frames.rightOut && frames.rightOut != nullptr ? frames.rightOut + start : scratch.data();

        clampFirstChannel (left, count);

        if (frames.rightIn == nullptr)
            std::copy_n (left, count, right);
        else if (frames.rightIn + start != right)
            std::copy_n (frames.rightIn + start, count, right);

        if (frames.rightIn != nullptr)
            clampSecondChannel (right, count);

        processFrames (left, right, count);

        if (frames.rightOut != nullptr && frames.rightOut + start != right)
            std::copy_n (right, count, frames.rightOut + start);
    }
}

void AudioProcessorKestrin::processFrames (float* left, float* right, int numFrames)
{
    for (int i = 0; i < numFrames; ++i)
    {
        if (advanceClock())
            updateControlRate();

        std::tie (left[i], right[i]) = processFrame (left[i], right[i]);
    }
}

void AudioProcessorKestrin::updateOversampler (int numChannels)
{
    if ((int) activeOversamplingFactor == oversamplingFactor)
        return;

    activeOversamplingFactor = (float) oversamplingFactor;
    oversampler.reset();

    std::size_t numStages = 0;

    for (auto factor = (unsigned) oversamplingFactor; factor > 1; factor >>= 1)
        ++numStages;

    using Oversampling = dsp::Oversampling<float>;
    oversampler = std::make_unique<Oversampling> ((std::size_t) numChannels, numStages,
                                                  Oversampling::filterHalfBandFIREquiripple, true, false);
    oversampler->reset();
    oversampler->initProcessing ((std::size_t) oversamplerBlockSize);
    setLatencySamples ((int) oversampler->getLatencyInSamples());
}
} // namespace juce
