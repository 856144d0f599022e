// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/ModuleFrame.h"

#include "host/HostError.h"

namespace
{
constexpr bool isOnDesktopAtOnce = false;
} // namespace

ModuleFrame::ModuleFrame (juce::AudioPluginInstance& instance, double scale)
    : juce::DocumentWindow (instance.getName(), juce::Colours::black, closeButton, isOnDesktopAtOnce),
      editor (instance.createEditorIfNeeded())
{
    if (editor == nullptr)
        throw HostError ("the module has no window");

    // The frame gets its size before the window manager sees it. A window manager that takes it over while it grows may
    // answer with the old size, and the frame would keep that.
    editor->setScaleFactor ((float) scale);
    setUsingNativeTitleBar (true);
    setContentNonOwned (editor.get(), true);
    centreWithSize (getWidth(), getHeight());
    addToDesktop();
    setVisible (true);
}

ModuleFrame::~ModuleFrame() { clearContentComponent(); }

XDisplay::WindowId ModuleFrame::id() const
{
    return reinterpret_cast<XDisplay::WindowId> (getPeer()->getNativeHandle());
}
