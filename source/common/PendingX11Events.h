// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

/** What the X server has sent to the windows of this process and nobody has looked at yet.

    On Linux JUCE looks for such events only when the connection to the server has something to read. It also reads from
    the connection on other occasions, while it looks whether a picture has arrived on the screen, for one; what comes
    along then is kept in memory, and as the connection has nothing left to read, nobody is woken. An uncovered part of a
    window stays blank and a click without effect until the next event, which may be the pointer's next move.

    A window that handles them now and then is never late by more than the time in between. */
namespace waitingEvents
{
/** Handles all of them. Whatever they say is done before this comes back: the caller may be gone by then. Nothing to do
    on other systems. Message thread only. */
void handle();
} // namespace waitingEvents
