// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "host/HostedModule.h"

/** Loads a preset as a DAW does: through the interface of the hosting side that takes a preset's bytes. */
[[nodiscard]] inline bool loadPreset (HostedModule& module, const juce::MemoryBlock& preset)
{
    struct Loader : juce::ExtensionsVisitor
    {
        explicit Loader (const juce::MemoryBlock& presetBytes) : bytes (presetBytes) {}

        void visitVST3Client (const VST3Client& client) override { loaded = client.setPreset (bytes); }

        const juce::MemoryBlock& bytes;
        bool loaded = false;
    };

    Loader loader (preset);
    module.instance().getExtensions (loader);
    return loader.loaded;
}
