// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "host/HostedModule.h"

/** A module's own window on the desktop, for people and for programs that act like them. */
namespace openWindow
{
struct Job
{
    /** The content scale that the host announces. */
    double scale = 1.0;

    /** Print lines to standard output: "window" with the number of the X server's window that holds the module's, once;
        "size" with width and height in pixels, at first and whenever they change; and the id and the position of each
        parameter that the module changes. */
    bool reportChanges = false;
};

/** Shows the window until it is closed or standard input ends. Needs a display. Message thread only.
    @throws HostError, Interrupted */
void show (HostedModule& module, const Job& job);
} // namespace openWindow
