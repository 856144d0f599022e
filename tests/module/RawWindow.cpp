// SPDX-License-Identifier: AGPL-3.0-or-later
#include "module/RawWindow.h"

#include <stdexcept>

#include <X11/Xlib.h>

#include "host/XDisplay.h"

struct RawWindow::Connection
{
    Display* display = nullptr;
    Window window = 0;
};

namespace
{
// Without a window manager some requests are refused, which harms nothing.
int ignoreError (Display*, XErrorEvent*) { return 0; }
} // namespace

RawWindow::RawWindow (int width, int height) : connection (new Connection)
{
    XSetErrorHandler (ignoreError);
    connection->display = XOpenDisplay (nullptr);

    if (connection->display == nullptr)
        throw std::runtime_error ("no display");

    const auto root = DefaultRootWindow (connection->display);
    connection->window =
        XCreateSimpleWindow (connection->display, root, 0, 0, (unsigned int) width, (unsigned int) height, 0, 0, 0);
    XMapWindow (connection->display, connection->window);
    XSync (connection->display, False);
}

RawWindow::~RawWindow()
{
    XDestroyWindow (connection->display, connection->window);
    XCloseDisplay (connection->display);
    delete connection;
}

void* RawWindow::handle() const noexcept { return reinterpret_cast<void*> (connection->window); }

void RawWindow::resize (int width, int height) const
{
    XResizeWindow (connection->display, connection->window, (unsigned int) width, (unsigned int) height);
    XSync (connection->display, False);
}

void RawWindow::click (int x, int y) const { XDisplay().click (connection->window, x, y); }
