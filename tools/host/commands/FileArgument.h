// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

#include <juce_core/juce_core.h>

/** The file that an argument of the command line names, as UTF-8, from the working directory on. */
[[nodiscard]] inline juce::File fileNamed (const std::string& path)
{
    return juce::File::getCurrentWorkingDirectory().getChildFile (juce::String::fromUTF8 (path.c_str()));
}
