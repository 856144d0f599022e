// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <juce_core/juce_core.h>

/** The factory presets as files, in alphabetical order: those of the build in which this program lies, else those installed for
    the user, else those for all users. */
class FactoryPresets
{
public:
    FactoryPresets();

    [[nodiscard]] int size() const noexcept { return files.size(); }
    [[nodiscard]] juce::File file (int index) const { return files[index]; }

    /** The preset of this name, in large or small letters.
        @throws HostError, which lists the names, if there is none */
    [[nodiscard]] int find (const juce::String& name) const;

private:
    juce::Array<juce::File> files;
};
