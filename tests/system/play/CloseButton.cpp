// SPDX-License-Identifier: AGPL-3.0-or-later
#include "system/play/CloseButton.h"

#include <X11/Xlib.h>

void pressCloseButton (XDisplay::WindowId window)
{
    auto* const display = XOpenDisplay (nullptr);

    if (display == nullptr)
        return;

    XEvent event {};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom (display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = (long) XInternAtom (display, "WM_DELETE_WINDOW", False);
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent (display, window, False, NoEventMask, &event);
    XCloseDisplay (display);
}
