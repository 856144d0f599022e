// SPDX-License-Identifier: AGPL-3.0-or-later
#include "system/window/Pointer.h"

#include <algorithm>
#include <vector>

#include <X11/Xlib.h>

struct Pointer::Connection
{
    /** The windows under the pointer, from the whole screen to the innermost. */
    [[nodiscard]] std::vector<Window> windowsUnderIt() const
    {
        std::vector<Window> windows;

        for (Window inner = DefaultRootWindow (display); inner != None;)
        {
            Window root = None, next = None;
            int rootX = 0, rootY = 0, x = 0, y = 0;
            unsigned int buttons = 0;

            windows.push_back (inner);

            // A window may be gone by the time it is asked.
            if (XQueryPointer (display, inner, &root, &next, &rootX, &rootY, &x, &y, &buttons) == 0)
                return {};

            inner = next;
        }

        return windows;
    }

    Display* display = XOpenDisplay (nullptr);
};

Pointer::Pointer() : connection (std::make_unique<Connection>()) {}

Pointer::~Pointer()
{
    if (connection->display != nullptr)
        XCloseDisplay (connection->display);
}

bool Pointer::isAt (XDisplay::WindowId window, int x, int y) const
{
    Window root = None, child = None;
    int rootX = 0, rootY = 0, windowX = 0, windowY = 0;
    unsigned int buttons = 0;

    if (connection->display == nullptr
        || XQueryPointer (connection->display, window, &root, &child, &rootX, &rootY, &windowX, &windowY, &buttons)
               == 0)
        return false;

    const auto windows = connection->windowsUnderIt();
    const auto place = std::find (windows.begin(), windows.end(), window);

    return windowX == x && windowY == y && place != windows.end() && place + 1 != windows.end();
}

bool Pointer::hasKeyboard() const
{
    Window focused = None;
    int revertsTo = 0;

    if (connection->display == nullptr)
        return false;

    XGetInputFocus (connection->display, &focused, &revertsTo);
    const auto windows = connection->windowsUnderIt();
    return ! windows.empty() && windows.back() == focused;
}
