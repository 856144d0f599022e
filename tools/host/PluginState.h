// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

/** The settings of an instance as bytes, as text and as files.

    A *block* is what a DAW keeps in its project: the bytes of the module's component. It begins with a small header and
    the settings as XML text; after them the module's framework may keep a few bytes of its own. */
namespace pluginState
{
/** The instance's block. Message thread only. */
[[nodiscard]] juce::MemoryBlock read (juce::AudioPluginInstance& instance);

/** Gives the instance a block unchanged, and brings the host's view of the parameters up to date. Message thread
    only. A module ignores what it does not understand, and says nothing. */
void apply (juce::AudioPluginInstance& instance, const juce::MemoryBlock& block);

/** The XML text in a block; empty if the block has another form. */
[[nodiscard]] juce::String settingsText (const juce::MemoryBlock& block);

/** The block around a text. */
[[nodiscard]] juce::MemoryBlock fromSettingsText (const juce::String& text);

/** All names in the settings, in the order of the text: the ids of the parameters, and others. */
[[nodiscard]] juce::StringArray settingsNames (const juce::String& text);

/** Gives the instance what a file holds: a block, the XML text alone, or a .vstpreset.
    @throws HostError if the file is missing or holds none of these */
void loadFile (juce::AudioPluginInstance& instance, const juce::File& file);

/** The bytes that a file of this name should hold: the XML text for .xml, a preset for .vstpreset, else a block.
    @throws HostError if the instance gives no settings */
[[nodiscard]] juce::MemoryBlock contentForFile (juce::AudioPluginInstance& instance, const juce::File& file);
} // namespace pluginState
