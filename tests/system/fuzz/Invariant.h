// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdio>
#include <cstdlib>

/** Ends the fuzzer with the sentence that is not true; libFuzzer keeps the bytes that led there. */
inline void require (bool holds, const char* sentence)
{
    if (holds)
        return;

    std::fprintf (stderr, "does not hold: %s\n", sentence);
    std::abort();
}
