// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/XDisplay.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

struct XDisplay::Connection
{
    Display* display = nullptr;
};

namespace
{
int ignoreError (Display*, XErrorEvent*) { return 0; }
} // namespace

XDisplay::XDisplay() : connection (std::make_unique<Connection>())
{
    XSetErrorHandler (ignoreError);
    connection->display = XOpenDisplay (nullptr);
}

XDisplay::~XDisplay()
{
    if (connected())
        XCloseDisplay (connection->display);
}

bool XDisplay::connected() const noexcept { return connection->display != nullptr; }

XDisplay::Pixels XDisplay::picture (WindowId window) const
{
    XWindowAttributes attributes {};
    Pixels pixels;

    if (XGetWindowAttributes (connection->display, window, &attributes) == 0)
        return pixels;

    auto* image = XGetImage (connection->display, window, 0, 0, (unsigned int) attributes.width,
                             (unsigned int) attributes.height, AllPlanes, ZPixmap);

    if (image == nullptr)
        return pixels;

    pixels.width = attributes.width;
    pixels.height = attributes.height;

    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x)
            pixels.colours.push_back ((std::uint32_t) (XGetPixel (image, x, y) & 0xffffff));

    XDestroyImage (image);
    return pixels;
}

void XDisplay::click (WindowId window, int x, int y) const
{
    auto* display = connection->display;

    // Down to the innermost window at this point, with the point in its own coordinates.
    for (Window inner = window; inner != None;)
    {
        const auto outer = window;
        window = inner;
        XTranslateCoordinates (display, outer, window, x, y, &x, &y, &inner);
    }

    XEvent event {};
    event.xbutton.type = ButtonPress;
    event.xbutton.display = display;
    event.xbutton.window = window;
    event.xbutton.root = DefaultRootWindow (display);
    event.xbutton.time = CurrentTime;
    event.xbutton.x = x;
    event.xbutton.y = y;
    event.xbutton.button = Button1;
    event.xbutton.same_screen = True;
    XTranslateCoordinates (display, window, event.xbutton.root, x, y, &event.xbutton.x_root, &event.xbutton.y_root,
                           &event.xbutton.subwindow);
    event.xbutton.subwindow = None;
    XSendEvent (display, window, True, ButtonPressMask, &event);

    event.xbutton.type = ButtonRelease;
    event.xbutton.state = Button1Mask;
    XSendEvent (display, window, True, ButtonReleaseMask, &event);
    XFlush (display);
}
