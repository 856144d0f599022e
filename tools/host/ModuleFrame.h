// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>

#include <juce_audio_processors/juce_audio_processors.h>

#include "host/XDisplay.h"

/** The desktop's frame around a module's own window: as large as the module wishes, under its name. Needs a display. Message
    thread only. */
class ModuleFrame : public juce::DocumentWindow
{
public:
    /** Opens the window.
        @param scale  the content scale that the host announces
        @throws HostError if the module has no window */
    ModuleFrame (juce::AudioPluginInstance& instance, double scale);
    ~ModuleFrame() override;

    /** True once its button has been pressed; it is still there. */
    [[nodiscard]] bool isClosed() const noexcept { return closed; }

    [[nodiscard]] juce::Rectangle<int> moduleSize() const { return editor->getLocalBounds(); }

    /** The X server's number for the window that holds the module's. */
    [[nodiscard]] XDisplay::WindowId id() const;

private:
    void closeButtonPressed() override { closed = true; }

    std::unique_ptr<juce::AudioProcessorEditor> editor;
    bool closed = false;
};
