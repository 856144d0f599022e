// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/FactoryPresets.h"

#include "host/HostError.h"

namespace
{
/** Where presets may be, in the order in which they are looked for. */
[[nodiscard]] juce::Array<juce::File> folders()
{
    const juce::String below ("presets/Kestrin/Kestrin Tamsile Filter");
    juce::Array<juce::File> result;
    auto folder = juce::File::getSpecialLocation (juce::File::currentExecutableFile).getParentDirectory();

    for (; ! folder.isRoot(); folder = folder.getParentDirectory())
        result.add (folder.getChildFile ("presets"));

    result.add (juce::File::getSpecialLocation (juce::File::userHomeDirectory).getChildFile (".vst3/" + below));
    result.add (juce::File ("/usr/share/vst3/" + below));
    result.add (juce::File ("/usr/local/share/vst3/" + below));
    return result;
}
} // namespace

FactoryPresets::FactoryPresets()
{
    for (const auto& folder : folders())
        if (files.isEmpty())
            files = folder.findChildFiles (juce::File::findFiles, false, "*.vstpreset");

    files.sort();
}

int FactoryPresets::find (const juce::String& name) const
{
    juce::StringArray names;

    for (const auto& each : files)
        names.add (each.getFileNameWithoutExtension());

    if (const auto index = names.indexOf (name, true); index >= 0)
        return index;

    throw HostError ("there is no factory preset \"" + name + "\""
                     + (names.isEmpty() ? juce::String() : "; there are " + names.joinIntoString (", ")));
}
