// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "host/XDisplay.h"

/** Tells a window of the present desktop what a window manager tells it when somebody presses its close button. */
void pressCloseButton (XDisplay::WindowId window);
