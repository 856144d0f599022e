// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/HostedModule.h"

#include "host/ModuleLoader.h"

HostedModule::HostedModule (const juce::File& module) : plugin (moduleLoader::load (module)), list (*plugin) {}

void HostedModule::deliverParameters()
{
    // A block of no frames carries parameter changes and nothing else.
    juce::AudioBuffer<float> noFrames (plugin->getTotalNumInputChannels(), 0);
    juce::MidiBuffer noMessages;

    plugin->prepareToPlay (48000.0, 512);
    plugin->processBlock (noFrames, noMessages);
    plugin->releaseResources();
}
