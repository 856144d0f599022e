// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

/** Events that the X server has sent to the windows of this process and that have not been handled.

    On Linux JUCE handles events only when the connection to the server has something to read. It also reads from the
    connection on other occasions, for example to see whether a picture has arrived on the screen. Events that come along
    then are kept in memory, and as the connection has nothing left to read, nothing wakes JUCE up for them. An uncovered
    part of a window stays blank, and a click has no effect, until the next event arrives; that may be the next move of the
    pointer.

    A window that handles them at regular intervals is late by one interval at most. */
namespace pendingX11Events
{
/** Handles all of them before it returns. An event may close the window that calls this, so the caller must not touch its
    object afterwards. Does nothing on other systems. Message thread only. */
void handle();
} // namespace pendingX11Events
