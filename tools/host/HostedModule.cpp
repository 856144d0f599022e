// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/HostedModule.h"

#include "host/HostError.h"
#include "host/ModuleLoader.h"

HostedModule::HostedModule (const juce::File& module) : plugin (moduleLoader::load (module)), list (*plugin) {}

void HostedModule::useChannels (int numChannels)
{
    const auto channels = numChannels == 1 ? juce::AudioChannelSet::mono() : juce::AudioChannelSet::stereo();
    juce::AudioProcessor::BusesLayout layout;
    layout.inputBuses.add (channels);
    layout.outputBuses.add (channels);

    if (! plugin->setBusesLayout (layout))
        throw HostError ("the module does not take " + channels.getDescription().toLowerCase());
}

void HostedModule::deliverParameters()
{
    // A block of no frames carries parameter changes and nothing else.
    juce::AudioBuffer<float> noFrames (plugin->getTotalNumInputChannels(), 0);
    juce::MidiBuffer noMessages;

    plugin->prepareToPlay (48000.0, 512);
    plugin->processBlock (noFrames, noMessages);
    plugin->releaseResources();
}
