// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "host/PrivateDisplay.h"
#include "support/ChildProcess.h"

/** Nothing here takes a second on an idle machine. A busy one may take its time; what has not come by now will not come. */
inline constexpr std::chrono::seconds patience { 60 };

/** An X server with a window manager and nothing else, for the life of this object; DISPLAY points at it. */
class Desktop
{
public:
    /** @throws HostError in one line if Xvfb, openbox or xdotool is missing or does not start */
    Desktop();
    ~Desktop();

    Desktop (const Desktop&) = delete;
    Desktop& operator= (const Desktop&) = delete;

    /** Lets a real pointer and keyboard do what these words of xdotool say.
        @throws HostError if that fails */
    static void perform (const std::string& words);

private:
    std::optional<PrivateDisplay> display;
    std::optional<ChildProcess> windowManager;
};
