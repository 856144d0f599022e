// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/Render.h"

#include <algorithm>
#include <cmath>

#include "host/HostError.h"
#include "host/Interrupt.h"
#include "host/PluginState.h"

namespace render
{
namespace
{
/** Prepares the instance for processing, and releases it even after an exception. */
class Prepared
{
public:
    Prepared (juce::AudioPluginInstance& pluginInstance, double sampleRate, int largestBlock)
        : instance (pluginInstance)
    {
        instance.setNonRealtime (true);
        instance.prepareToPlay (sampleRate, largestBlock);
    }

    ~Prepared()
    {
        instance.releaseResources();
        instance.setPlayHead (nullptr);
    }

private:
    juce::AudioPluginInstance& instance;

    JUCE_DECLARE_NON_COPYABLE (Prepared)
};

/** Sends block after block through the instance, with the song position and the automation of each. */
class Renderer
{
public:
    Renderer (juce::AudioPluginInstance& pluginInstance, const Job& job, double sampleRate)
        : instance (pluginInstance), automation (job.automation, sampleRate)
    {
        if (job.transport.has_value())
            transport.emplace (*job.transport, sampleRate);

        instance.setPlayHead (transport.has_value() ? &*transport : nullptr);
    }

    /** Processes a block in place. It is cut where a parameter moves, because VST3 modules made with JUCE use the last value
        of a block for the whole block. */
    void process (juce::AudioBuffer<float>& buffer, int numFrames)
    {
        for (int done = 0; done < numFrames;)
        {
            automation.apply (position);
            const auto change = automation.nextChange (position);
            const auto remaining = (juce::int64) (numFrames - done);
            const auto length = (int) std::min (remaining, change.has_value() ? *change - position : remaining);

            if (transport.has_value())
                transport->moveTo (position);

            juce::AudioBuffer<float> part (buffer.getArrayOfWritePointers(), buffer.getNumChannels(), done, length);
            instance.processBlock (part, noMessages);
            noMessages.clear();
            done += length;
            position += length;
        }
    }

private:
    juce::AudioPluginInstance& instance;
    Automation automation;
    std::optional<Transport> transport;
    juce::MidiBuffer noMessages;
    juce::int64 position = 0;
};

/** The frames from there on. Silence follows the sound. */
void readWithTail (AudioSource& source, juce::AudioBuffer<float>& buffer, juce::int64 start, int numFrames)
{
    const auto numInSource = (int) std::clamp (source.numFrames() - start, (juce::int64) 0, (juce::int64) numFrames);

    if (numInSource > 0)
        source.read (buffer, start, numInSource);

    buffer.clear (numInSource, numFrames - numInSource);
}

void processFile (juce::AudioPluginInstance& instance, const Job& job, AudioSource& source, AudioSink& sink,
                  const Progress& progress)
{
    auto sizes = job.blockSizes;
    const Prepared prepared (instance, source.sampleRate(), sizes.maximum());
    Renderer renderer (instance, job, source.sampleRate());
    juce::AudioBuffer<float> buffer (source.numChannels(), sizes.maximum());

    const auto end = source.numFrames() + std::llround (job.tailSeconds * source.sampleRate());

    for (juce::int64 start = 0; start < end;)
    {
        interrupt::throwIfRequested();

        const auto numFrames = (int) std::min ((juce::int64) sizes.next(), end - start);
        readWithTail (source, buffer, start, numFrames);
        renderer.process (buffer, numFrames);
        sink.write (buffer, numFrames);
        start += numFrames;

        if (progress)
            progress ((double) start / (double) end);
    }

    sink.finish();
}
} // namespace

juce::int64 run (HostedModule& module, const Job& job, const Progress& progress)
{
    AudioSource source (job.input, job.numChannels);
    AudioSink sink (job.output, job.encoding, source.sampleRate(), source.numChannels());
    std::optional<StagedFile> state;

    if (job.savedState.has_value())
        state.emplace (*job.savedState);

    module.useChannels (source.numChannels());
    processFile (module.instance(), job, source, sink, progress);

    if (state.has_value())
    {
        const auto content = pluginState::contentForFile (module.instance(), *job.savedState);
        state->write (content.getData(), content.getSize());
    }

    sink.commit();

    if (state.has_value())
        state->commit();

    return sink.numClipped();
}
} // namespace render
