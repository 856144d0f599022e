// SPDX-License-Identifier: AGPL-3.0-or-later
#include "common/PendingX11Events.h"

// The window system's own header comes with JUCE's only on demand.
#define JUCE_GUI_BASICS_INCLUDE_XHEADERS 1
#include <juce_gui_basics/juce_gui_basics.h>

#if JUCE_LINUX || JUCE_BSD
#include <juce_events/native/juce_EventLoopInternal_linux.h>
#endif

void waitingEvents::handle()
{
#if JUCE_LINUX || JUCE_BSD
    const auto* windowSystem = juce::XWindowSystem::getInstanceWithoutCreating();

    if (windowSystem == nullptr || windowSystem->getDisplay() == nullptr)
        return;

    // The same call that follows when the connection has something to read; it handles all that is in memory too.
    const auto connection = juce::X11Symbols::getInstance()->xConnectionNumber (windowSystem->getDisplay());
    juce::LinuxEventLoopInternal::invokeEventLoopCallbackForFd (connection);
#endif
}
