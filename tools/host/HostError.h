// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <stdexcept>

#include <juce_core/juce_core.h>

/** Something that the user can put right. Its message is one line, names the file, parameter or option it is about, and
    goes to stderr as it stands. */
class HostError : public std::runtime_error
{
public:
    explicit HostError (const juce::String& message) : std::runtime_error (message.toStdString()) {}
};
