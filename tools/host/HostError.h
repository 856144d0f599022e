// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <stdexcept>

#include <juce_core/juce_core.h>

/** An error that the user can fix. Its message is one line, names the file, parameter or option that it is about, and goes
    to stderr unchanged. */
class HostError : public std::runtime_error
{
public:
    explicit HostError (const juce::String& message) : std::runtime_error (message.toStdString()) {}
};
