// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

/** A display for windows where there is none: starts a virtual X server (Xvfb) for the life of this object and points
    DISPLAY at it. Does nothing if DISPLAY is set already. Must be made before anything looks for a display, and must
    outlive everything that uses it. */
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

    /** The process id; below 1 if there is none. */
    int server = -1;
};
