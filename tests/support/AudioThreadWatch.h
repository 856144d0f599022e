// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <span>

/** Counts what an audio thread must not do. While a watch lives, it counts on its own thread every allocation and release
    of memory, also by the loader, every lock of a mutex, and every system call for a file, the console or a wait. It ignores
    other threads. */
class AudioThreadWatch
{
public:
    struct Counts
    {
        long allocations = 0;
        long releases = 0;
        long locks = 0;
        long systemCalls = 0;

        [[nodiscard]] bool operator== (const Counts&) const = default;
    };

    AudioThreadWatch() noexcept;
    ~AudioThreadWatch();
    AudioThreadWatch (const AudioThreadWatch&) = delete;
    AudioThreadWatch& operator= (const AudioThreadWatch&) = delete;

    [[nodiscard]] Counts counts() const noexcept;

    /** The mutexes that were locked, in this order; the first few hundred. Valid until the next watch of this thread. */
    [[nodiscard]] std::span<const void* const> lockedMutexes() const noexcept;
};
