// SPDX-License-Identifier: AGPL-3.0-or-later
#include "common/PendingX11Events.h"

// The window system's own header comes with JUCE's only on demand.
#define JUCE_GUI_BASICS_INCLUDE_XHEADERS 1
#include <juce_gui_basics/juce_gui_basics.h>

#if JUCE_LINUX || JUCE_BSD
#include <juce_events/native/juce_EventLoopInternal_linux.h>
#endif

void pendingX11Events::handle()
{
#if JUCE_LINUX || JUCE_BSD
    const auto* windowSystem = juce::XWindowSystem::getInstanceWithoutCreating();

    if (windowSystem == nullptr || windowSystem->getDisplay() == nullptr)
        return;

    // JUCE makes this call when the connection has something to read. It handles all events in memory, too.
    const auto connection = juce::X11Symbols::getInstance()->xConnectionNumber (windowSystem->getDisplay());
    juce::LinuxEventLoopInternal::invokeEventLoopCallbackForFd (connection);
#endif
}
