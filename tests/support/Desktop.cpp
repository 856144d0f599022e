// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/Desktop.h"

#include <cstdlib>
#include <memory>
#include <thread>

#include <X11/Xlib.h>

#include "host/HostError.h"

namespace
{
void requireProgram (const std::string& name)
{
    if (std::system (("command -v " + name + " >/dev/null").c_str()) != 0)
        throw HostError (("the tests of the window need " + name + ": run scripts/setup").c_str());
}

bool hasProperty (Display* display, Window window, Atom property)
{
    Atom type = None;
    int format = 0;
    unsigned long numItems = 0, bytesLeft = 0;
    unsigned char* data = nullptr;

    XGetWindowProperty (display, window, property, 0, 1, False, AnyPropertyType, &type, &format, &numItems, &bytesLeft,
                        &data);

    if (data != nullptr)
        XFree (data);

    return numItems > 0;
}

void send (Display* display, Window window, Atom message)
{
    XEvent event {};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = message;
    event.xclient.format = 32;
    XSendEvent (display, DefaultRootWindow (display), False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
}

/** Asks for the size of a window's frame until there is an answer. A window manager announces itself while it is still
    starting. A request that comes in between may stay unanswered until the next one, and that may be a test's window. */
bool waitForWindowManager()
{
    const std::unique_ptr<Display, int (*) (Display*)> display (XOpenDisplay (nullptr), XCloseDisplay);
    const auto deadline = std::chrono::steady_clock::now() + patience;

    if (display == nullptr)
        return false;

    const auto window = XCreateSimpleWindow (display.get(), DefaultRootWindow (display.get()), 0, 0, 1, 1, 0, 0, 0);
    const auto question = XInternAtom (display.get(), "_NET_REQUEST_FRAME_EXTENTS", False);
    const auto answer = XInternAtom (display.get(), "_NET_FRAME_EXTENTS", False);

    while (std::chrono::steady_clock::now() < deadline)
    {
        send (display.get(), window, question);

        if (hasProperty (display.get(), window, answer))
            return true;

        std::this_thread::sleep_for (std::chrono::milliseconds (5));
    }

    return false;
}
} // namespace

Desktop::Desktop()
{
    for (const auto* program : { "Xvfb", "openbox", "xdotool" })
        requireProgram (program);

    // Never the user's own desktop.
    unsetenv ("DISPLAY");
    display.emplace();
    windowManager.emplace (
        ChildProcess::Options { .words = { "openbox", "--sm-disable", "--config-file", KESTRIN_OPENBOX_CONFIGURATION },
                                .errorsFile = "/dev/null" });

    if (! waitForWindowManager())
        throw HostError ("openbox does not start");
}

Desktop::~Desktop()
{
    // The next desktop is a new one.
    unsetenv ("DISPLAY");
}

void Desktop::perform (const std::string& words)
{
    if (std::system (("xdotool " + words).c_str()) != 0)
        throw HostError (("xdotool fails: " + words).c_str());
}
