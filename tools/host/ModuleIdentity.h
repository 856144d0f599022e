// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <vector>

#include <juce_core/juce_core.h>

/** What a module's factory says of itself, asked through the VST3 interfaces alone. */
struct ModuleIdentity
{
    struct ClassInfo
    {
        /** 32 hexadecimal digits. */
        juce::String id;
        juce::String name;
        juce::String category;
        juce::String subCategories;
        juce::String vendor;
        juce::String version;
        juce::String sdkVersion;
        juce::int32 cardinality = 0;
        juce::uint32 classFlags = 0;
    };

    juce::String vendor;
    juce::String url;
    juce::String email;
    juce::int32 factoryFlags = 0;
    std::vector<ClassInfo> classes;

    /** @throws HostError if the module cannot be loaded or has no factory */
    [[nodiscard]] static ModuleIdentity read (const juce::File& module);

    /** The same as lines for people, and as JSON for programs. */
    [[nodiscard]] juce::String toText() const;
    [[nodiscard]] juce::String toJson() const;
};
