// SPDX-License-Identifier: AGPL-3.0-or-later
#include "frame/LongBlocks.h"

#include <algorithm>
#include <array>

#include <pluginterfaces/vst/ivstaudioprocessor.h>

namespace vst = Steinberg::Vst;
using Steinberg::int32;
using Steinberg::tresult;
using Steinberg::uint32;

/** What the host gets in place of the client's own interface. References to it are counted as references to the client. */
class LongBlocks::Splitter : public vst::IAudioProcessor
{
public:
    Splitter (vst::IAudioProcessor& clientToUse, const juce::AudioProcessor& processorToAsk)
        : client (clientToUse), processor (processorToAsk)
    {
    }

    virtual ~Splitter() = default;

    tresult PLUGIN_API queryInterface (const Steinberg::TUID wanted, void** object) override
    {
        return client.queryInterface (wanted, object);
    }

    uint32 PLUGIN_API addRef() override { return client.addRef(); }

    // The last release destroys this object with the client.
    uint32 PLUGIN_API release() override { return client.release(); }

    tresult PLUGIN_API setBusArrangements (vst::SpeakerArrangement* inputs, int32 numInputs,
                                           vst::SpeakerArrangement* outputs, int32 numOutputs) override
    {
        return client.setBusArrangements (inputs, numInputs, outputs, numOutputs);
    }

    tresult PLUGIN_API getBusArrangement (vst::BusDirection direction, int32 index,
                                          vst::SpeakerArrangement& arrangement) override
    {
        return client.getBusArrangement (direction, index, arrangement);
    }

    tresult PLUGIN_API canProcessSampleSize (int32 size) override { return client.canProcessSampleSize (size); }
    uint32 PLUGIN_API getLatencySamples() override { return client.getLatencySamples(); }
    tresult PLUGIN_API setupProcessing (vst::ProcessSetup& setup) override { return client.setupProcessing (setup); }
    tresult PLUGIN_API setProcessing (Steinberg::TBool state) override { return client.setProcessing (state); }
    uint32 PLUGIN_API getTailSamples() override { return client.getTailSamples(); }

    tresult PLUGIN_API process (vst::ProcessData& data) override
    {
        const auto longest = processor.getBlockSize();

        if (data.numSamples <= longest)
            return client.process (data);

        if (longest <= 0)
            return Steinberg::kResultFalse;

        auto piece = data;
        tresult result = Steinberg::kResultOk;

        for (int32 start = 0; start < data.numSamples && result == Steinberg::kResultOk; start += longest)
        {
            Bus input (data.inputs, data.numInputs, start), output (data.outputs, data.numOutputs, start);
            piece.numInputs = input.number;
            piece.numOutputs = output.number;
            piece.inputs = &input.buffers;
            piece.outputs = &output.buffers;
            piece.numSamples = std::min (longest, data.numSamples - start);
            result = client.process (piece);
            piece.inputParameterChanges = nullptr;
        }

        return result;
    }

private:
    /** The first bus of one direction, beginning at a frame. A bus or channel that the host leaves out is left out here too. */
    struct Bus
    {
        Bus (const vst::AudioBusBuffers* buses, int32 numBuses, int32 start)
        {
            if (buses == nullptr || numBuses <= 0)
                return;

            number = 1;
            buffers = *buses;
            buffers.numChannels = std::clamp (buses->numChannels, (int32) 0, (int32) channels.size());
            buffers.channelBuffers32 = buses->channelBuffers32 != nullptr ? channels.data() : nullptr;

            if (buses->channelBuffers32 != nullptr)
                std::transform (buses->channelBuffers32, buses->channelBuffers32 + buffers.numChannels,
                                channels.begin(),
                                [start] (float* channel) { return channel != nullptr ? channel + start : nullptr; });
        }

        std::array<float*, 2> channels {};
        vst::AudioBusBuffers buffers;
        int32 number = 0;
    };

    vst::IAudioProcessor& client;
    const juce::AudioProcessor& processor;
};

LongBlocks::LongBlocks (juce::AudioProcessor& owner) : processor (owner) {}

LongBlocks::~LongBlocks() = default;

std::int32_t LongBlocks::queryIAudioProcessor (const Steinberg::TUID wanted, void** object)
{
    *object = nullptr;

    if (! Steinberg::FUnknownPrivate::iidEqual (wanted, vst::IAudioProcessor_iid))
        return Steinberg::kNoInterface;

    // The client is also the processor's play head, and there is no other way to reach it.
    auto* const client = dynamic_cast<vst::IAudioProcessor*> (processor.getPlayHead());

    if (client == nullptr)
        return Steinberg::kNoInterface;

    if (splitter == nullptr)
        splitter = std::make_unique<Splitter> (*client, processor);

    splitter->addRef();
    *object = static_cast<vst::IAudioProcessor*> (splitter.get());
    return Steinberg::kResultOk;
}
