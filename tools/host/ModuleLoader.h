// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>

#include <juce_audio_processors/juce_audio_processors.h>

/** Finds and loads built modules. */
namespace moduleLoader
{
/** The module to use when none is named: the one that the environment variable KESTRIN_PLUGIN names, else the one built
    beside this program, else the one installed for the user, else the one for all users.
    @throws HostError if there is none */
[[nodiscard]] juce::File findModule();

/** Makes an instance through the module's factory. Message thread only.
    @throws HostError if the module cannot be loaded or holds no effect */
[[nodiscard]] std::unique_ptr<juce::AudioPluginInstance> load (const juce::File& module);

/** The shared library inside a module's bundle. */
[[nodiscard]] juce::File libraryOf (const juce::File& module);
} // namespace moduleLoader
