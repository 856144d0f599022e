// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/Interrupt.h"

#include <csignal>

namespace interrupt
{
namespace
{
volatile std::sig_atomic_t requested = 0;

extern "C" void raiseRequest (int) { requested = 1; }
} // namespace

void watch()
{
    std::signal (SIGINT, raiseRequest);
    std::signal (SIGTERM, raiseRequest);
    std::signal (SIGHUP, raiseRequest);
}

bool isRequested() noexcept { return requested != 0; }

void throwIfRequested()
{
    if (isRequested())
        throw Interrupted();
}
} // namespace interrupt
