// SPDX-License-Identifier: AGPL-3.0-or-later
#include "frame/AudioProcessorKestrin.h"

#include <cstddef>

namespace juce
{
void AudioProcessorKestrin::ensureDefaultProgram()
{
    if (programs.empty())
        programs.emplace_back ("Default", "");
}

int AudioProcessorKestrin::getNumPrograms()
{
    ensureDefaultProgram();
    return jmax (1, (int) programs.size());
}

int AudioProcessorKestrin::getCurrentProgram() { return currentProgram; }

const String AudioProcessorKestrin::getProgramName (int index)
{
    ensureDefaultProgram();
    return isPositiveAndBelow (index, programs.size()) ? programs[(std::size_t) index].first : String();
}

void AudioProcessorKestrin::changeProgramName (int, const String&) { ensureDefaultProgram(); }

void AudioProcessorKestrin::setCurrentProgram (int index)
{
    stateTouched = true;
    currentProgram = index;

    // While an update is pending the index is only recorded: settings may be on their way in right now.
    if (controlUpdatePending || getNumPrograms() <= 1 || currentProgram == loadedProgram)
        return;

    loadedProgram = currentProgram;

    if (! isPositiveAndBelow (index, programs.size()))
        return;

    const auto text =
        R"(<?xml version="1.0" encoding="UTF-8"?> <settings )" + programs[(std::size_t) index].second + " />";

    if (const auto parsed = XmlDocument (text).getDocumentElement())
    {
        const XmlElement settings (*parsed);
        copyXmlToBinary (settings, stateScratch);
        setStateInformation (stateScratch.getData(), (int) stateScratch.getSize());
    }
}
} // namespace juce
