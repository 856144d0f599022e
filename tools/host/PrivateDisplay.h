// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

/** A display for windows where there is none: starts a virtual X server (Xvfb) for the life of this object and points
    DISPLAY at it. Does nothing where DISPLAY is set already. To be made before anything looks for a display, and to
    outlive everything that has found it. */
class PrivateDisplay
{
public:
    /** @throws HostError if there is no display and no Xvfb */
    PrivateDisplay();
    ~PrivateDisplay();

    PrivateDisplay (const PrivateDisplay&) = delete;
    PrivateDisplay& operator= (const PrivateDisplay&) = delete;

private:
    [[nodiscard]] std::string startServer (int displayNumber);
    void stopServer() noexcept;

    /** The process; none is below 1. */
    int server = -1;
};
