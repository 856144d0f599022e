// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/PluginDriver.h"

#include <string>

PluginDriver::PluginDriver (Loop loopToUse) : loop (loopToUse) { setSampleRate (48000.0); }

void PluginDriver::setSampleRate (double hostRate) { engine.setRateAndBufferSizeDetails (hostRate, 512); }

juce::AudioProcessorParameter& PluginDriver::parameter (std::string_view id) const
{
    return *engine.getParameters()[reference::indexOfParameter (std::string (id))];
}

void PluginDriver::set (std::string_view id, float position) { parameter (id).setValue (position); }

float PluginDriver::get (std::string_view id) const { return parameter (id).getValue(); }

float PluginDriver::lastSeenValueOf (std::string_view id) const
{
    return dynamic_cast<juce::AudioParameterFloatKestrin&> (parameter (id)).lastSeenValue;
}

void PluginDriver::applyTransport (const reference::Transport& transport)
{
    host.transport = transport;
    engine.setPlayHead (transport.hasPlayHead ? &host : nullptr);
}

juce::Optional<juce::AudioPlayHead::PositionInfo> PluginDriver::Host::getPosition() const
{
    ++numQueries;

    if (! transport.hasPosition)
        return {};

    PositionInfo info;
    info.setBpm (transport.bpm);
    info.setPpqPosition (transport.ppqPosition);
    info.setTimeSignature (TimeSignature { transport.timeSigNumerator, transport.timeSigDenominator });
    return info;
}

void PluginDriver::process (float* left, float* right, int numFrames)
{
    if (loop == Loop::frameByFrame)
    {
        processFrameByFrame (left, right, numFrames);
        return;
    }

    float* const channels[] { left, right };
    juce::AudioBuffer<float> buffer (channels, 2, numFrames);
    juce::MidiBuffer midi;
    engine.processBlock (buffer, midi);
}

void PluginDriver::processFrameByFrame (float* left, float* right, int numFrames)
{
    const juce::ScopedNoDenormals noDenormals;

    for (int i = 0; i < numFrames; ++i)
    {
        ++engine.framesSinceRequest;
        clock = (clock + 1) & 0xffff;

        if (engine.controlUpdatePending || clock == 0)
        {
            engine.controlUpdatePending = false;
            engine.updateControlRate();
        }

        std::tie (left[i], right[i]) = engine.processFrame (left[i], right[i]);
    }
}
