// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>

#include "host/XDisplay.h"

/** Where the pointer and the keyboard focus of the present desktop are, according to the X server. A test that has moved one
    of them waits for this before it goes on. */
class Pointer
{
public:
    Pointer();
    ~Pointer();

    /** True if the pointer is at this pixel of the window, over a window inside it, and nothing in front. */
    [[nodiscard]] bool isAt (XDisplay::WindowId window, int x, int y) const;

    /** True if what is typed goes to the window under the pointer. */
    [[nodiscard]] bool hasKeyboard() const;

private:
    struct Connection;
    std::unique_ptr<Connection> connection;
};
