// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <memory>

#include "host/XDisplay.h"

/** Where pointer and keyboard of the present desktop are, as the X server knows it. Whoever moves one of them and goes on
    at once is sometimes too early: the answer is here. */
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
