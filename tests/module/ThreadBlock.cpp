// SPDX-License-Identifier: AGPL-3.0-or-later
// A library whose thread-local block the loader makes on each thread at its first use there.

namespace
{
/** Larger than what the loader keeps free for libraries that are opened later. */
thread_local volatile char block[1 << 16];
} // namespace

extern "C" __attribute__ ((visibility ("default"))) char touchThreadBlock();

char touchThreadBlock() { return block[0]; }
