// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

/** The X server's side of a window. A hosted editor is a window of the module inside a window of the host, and only the
    server has both of them as one picture. No JUCE here: its names and Xlib's macros do not go together. */
class XDisplay
{
public:
    using WindowId = unsigned long;

    struct Pixels
    {
        int width = 0;
        int height = 0;

        /** 0x00RRGGBB, line by line; empty if the server refused. */
        std::vector<std::uint32_t> colours;
    };

    /** Connects to the server that DISPLAY names; connected() tells whether that worked. From then on an error of the X
        protocol does not end the program: windows without a window manager cause harmless errors. */
    XDisplay();
    ~XDisplay();

    [[nodiscard]] bool connected() const noexcept;

    /** What the window shows, with everything inside it. The window must be on the screen, with nothing in front of it. */
    [[nodiscard]] Pixels picture (WindowId window) const;

    /** Presses and releases the first mouse button at a pixel of the window, in the innermost window at that place. */
    void click (WindowId window, int x, int y) const;

private:
    struct Connection;
    std::unique_ptr<Connection> connection;
};
