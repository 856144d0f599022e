// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/AudioThreadWatch.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define KESTRIN_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KESTRIN_ADDRESS_SANITIZER 1
#endif
#endif

#if defined(__SANITIZE_THREAD__)
#define KESTRIN_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KESTRIN_THREAD_SANITIZER 1
#endif
#endif

#if KESTRIN_ADDRESS_SANITIZER
// From the sanitizer's run-time library. Not every compiler that has the library has its header.
extern "C" int __sanitizer_install_malloc_and_free_hooks (void (*) (const volatile void*, std::size_t),
                                                          void (*) (const volatile void*));
#endif

#if defined(__GLIBC__)
#include <cstdarg>
#include <cstdio>
#include <dlfcn.h>
#include <poll.h>
#include <pthread.h>
#include <time.h>
#include <unistd.h>
#endif

namespace
{
thread_local bool watching = false;
thread_local AudioThreadWatch::Counts counted;

/** Of fixed size: a watch must not allocate. */
thread_local std::array<const void*, 512> mutexes {};

// Without counting these two have no callers.
[[maybe_unused]] void noteAllocation() noexcept
{
    if (watching)
        ++counted.allocations;
}

[[maybe_unused]] void noteRelease (const volatile void* memory) noexcept
{
    if (watching && memory != nullptr)
        ++counted.releases;
}

[[maybe_unused]] void noteLock (const void* mutex) noexcept
{
    if (! watching)
        return;

    if (const auto place = (std::size_t) counted.locks; place < mutexes.size())
        mutexes[place] = mutex;

    ++counted.locks;
}

#if KESTRIN_ADDRESS_SANITIZER
// The sanitizer owns malloc and reports every call.
const bool hooksAreInstalled =
    __sanitizer_install_malloc_and_free_hooks ([] (const volatile void*, std::size_t) { noteAllocation(); },
                                               [] (const volatile void* memory) { noteRelease (memory); })
    != 0;
#endif
} // namespace

AudioThreadWatch::AudioThreadWatch() noexcept
{
    counted = {};
    watching = true;
}

AudioThreadWatch::~AudioThreadWatch() { watching = false; }

AudioThreadWatch::Counts AudioThreadWatch::counts() const noexcept { return counted; }

std::span<const void* const> AudioThreadWatch::lockedMutexes() const noexcept
{
    return { mutexes.data(), std::min (mutexes.size(), (std::size_t) counted.locks) };
}

// The thread sanitizer must see the real calls, or it misses which thread waits for which. There nothing is counted.
#if KESTRIN_THREAD_SANITIZER

#elif defined(__GLIBC__)
#define KESTRIN_INTERPOSED extern "C" __attribute__ ((visibility ("default")))

namespace
{
/** The C library's own function of this name. */
template <typename Function>
[[nodiscard]] Function* realFunction (const char* name) noexcept
{
    return reinterpret_cast<Function*> (dlsym (RTLD_NEXT, name));
}

void noteSystemCall() noexcept
{
    if (watching)
        ++counted.systemCalls;
}
} // namespace

// The linker takes these from the executable before the C library's own.
KESTRIN_INTERPOSED int pthread_mutex_lock (pthread_mutex_t* mutex) noexcept
{
    noteLock (mutex);
    static auto* const real = realFunction<int (pthread_mutex_t*)> ("pthread_mutex_lock");
    return real (mutex);
}

KESTRIN_INTERPOSED int open (const char* path, int flags, ...)
{
    noteSystemCall();
    std::va_list arguments;
    va_start (arguments, flags);
    const auto mode = va_arg (arguments, unsigned int);
    va_end (arguments);
    return realFunction<int (const char*, int, unsigned int)> ("open") (path, flags, mode);
}

KESTRIN_INTERPOSED FILE* fopen (const char* path, const char* mode)
{
    noteSystemCall();
    return realFunction<FILE*(const char*, const char*)> ("fopen") (path, mode);
}

KESTRIN_INTERPOSED ssize_t read (int file, void* buffer, std::size_t size)
{
    noteSystemCall();
    static auto* const real = realFunction<ssize_t (int, void*, std::size_t)> ("read");
    return real (file, buffer, size);
}

KESTRIN_INTERPOSED ssize_t write (int file, const void* buffer, std::size_t size)
{
    noteSystemCall();
    static auto* const real = realFunction<ssize_t (int, const void*, std::size_t)> ("write");
    return real (file, buffer, size);
}

KESTRIN_INTERPOSED std::size_t fwrite (const void* buffer, std::size_t size, std::size_t number, FILE* file)
{
    noteSystemCall();
    static auto* const real = realFunction<std::size_t (const void*, std::size_t, std::size_t, FILE*)> ("fwrite");
    return real (buffer, size, number, file);
}

KESTRIN_INTERPOSED int vfprintf (FILE* file, const char* format, std::va_list arguments)
{
    noteSystemCall();
    return realFunction<int (FILE*, const char*, std::va_list)> ("vfprintf") (file, format, arguments);
}

KESTRIN_INTERPOSED int fprintf (FILE* file, const char* format, ...)
{
    std::va_list arguments;
    va_start (arguments, format);
    const auto result = vfprintf (file, format, arguments);
    va_end (arguments);
    return result;
}

KESTRIN_INTERPOSED int printf (const char* format, ...)
{
    std::va_list arguments;
    va_start (arguments, format);
    const auto result = vfprintf (stdout, format, arguments);
    va_end (arguments);
    return result;
}

KESTRIN_INTERPOSED int fputs (const char* text, FILE* file)
{
    noteSystemCall();
    return realFunction<int (const char*, FILE*)> ("fputs") (text, file);
}

KESTRIN_INTERPOSED int puts (const char* text)
{
    noteSystemCall();
    return realFunction<int (const char*)> ("puts") (text);
}

KESTRIN_INTERPOSED int poll (pollfd* files, nfds_t number, int timeout)
{
    noteSystemCall();
    static auto* const real = realFunction<int (pollfd*, nfds_t, int)> ("poll");
    return real (files, number, timeout);
}

KESTRIN_INTERPOSED int nanosleep (const timespec* wanted, timespec* remaining)
{
    noteSystemCall();
    return realFunction<int (const timespec*, timespec*)> ("nanosleep") (wanted, remaining);
}

#if ! KESTRIN_ADDRESS_SANITIZER
extern "C"
{
    void* __libc_malloc (std::size_t);
    void* __libc_calloc (std::size_t, std::size_t);
    void* __libc_realloc (void*, std::size_t);
    void* __libc_memalign (std::size_t, std::size_t);
    void __libc_free (void*);
}

KESTRIN_INTERPOSED void* malloc (std::size_t size) noexcept
{
    noteAllocation();
    return __libc_malloc (size);
}

KESTRIN_INTERPOSED void* calloc (std::size_t number, std::size_t size) noexcept
{
    noteAllocation();
    return __libc_calloc (number, size);
}

KESTRIN_INTERPOSED void* realloc (void* memory, std::size_t size) noexcept
{
    noteAllocation();
    noteRelease (memory);
    return __libc_realloc (memory, size);
}

KESTRIN_INTERPOSED void* memalign (std::size_t alignment, std::size_t size) noexcept
{
    noteAllocation();
    return __libc_memalign (alignment, size);
}

KESTRIN_INTERPOSED void* aligned_alloc (std::size_t alignment, std::size_t size) noexcept
{
    noteAllocation();
    return __libc_memalign (alignment, size);
}

KESTRIN_INTERPOSED int posix_memalign (void** memory, std::size_t alignment, std::size_t size) noexcept
{
    constexpr auto outOfMemory = 12;

    noteAllocation();
    *memory = __libc_memalign (alignment, size);
    return *memory != nullptr ? 0 : outOfMemory;
}

KESTRIN_INTERPOSED void free (void* memory) noexcept
{
    noteRelease (memory);
    __libc_free (memory);
}
#endif

#elif ! KESTRIN_ADDRESS_SANITIZER

// Elsewhere the watch sees only C++'s own operators.
void* operator new (std::size_t size)
{
    noteAllocation();

    if (auto* const memory = std::malloc (size != 0 ? size : 1))
        return memory;

    throw std::bad_alloc();
}

void* operator new[] (std::size_t size) { return operator new (size); }

void operator delete (void* memory) noexcept
{
    noteRelease (memory);
    std::free (memory);
}

void operator delete (void* memory, std::size_t) noexcept { operator delete (memory); }
void operator delete[] (void* memory) noexcept { operator delete (memory); }
void operator delete[] (void* memory, std::size_t) noexcept { operator delete (memory); }
#endif
