// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/ReferenceDriver.h"

#include <string>

ReferenceDriver::ReferenceDriver()
{
    engine.transport = [this] { return transport; };
    setSampleRate (48000.0);
}

void ReferenceDriver::set (std::string_view id, float position)
{
    engine.setParameter (reference::indexOfParameter (std::string (id)), position);
}

float ReferenceDriver::get (std::string_view id) const
{
    return engine.getParameter (reference::indexOfParameter (std::string (id)));
}

float ReferenceDriver::lastSeenValueOf (std::string_view id) const
{
    return engine.lastSeenValue[(std::size_t) reference::indexOfParameter (std::string (id))];
}
