// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <fstream>

#include <malloc.h>
#include <unistd.h>

/** The memory that this process has in use, in megabytes. What the allocator keeps for later is given back first, so that it
    does not look like a leak. Linux with glibc only. */
[[nodiscard]] inline double processMemoryMegabytes()
{
    malloc_trim (0);

    std::ifstream file ("/proc/self/statm");
    double total = 0.0, resident = 0.0;
    file >> total >> resident;
    return resident * (double) sysconf (_SC_PAGESIZE) / 1.0e6;
}
