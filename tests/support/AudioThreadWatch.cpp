// SPDX-License-Identifier: AGPL-3.0-or-later
#include "AudioThreadWatch.h"

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

#if KESTRIN_ADDRESS_SANITIZER
#include <sanitizer/allocator_interface.h>
#endif

#if defined(__GLIBC__)
#include <dlfcn.h>
#include <pthread.h>
#endif

namespace
{
thread_local bool watching = false;
thread_local AudioThreadWatch::Counts counted;

void noteAllocation() noexcept
{
    if (watching)
        ++counted.allocations;
}

void noteRelease (const volatile void* memory) noexcept
{
    if (watching && memory != nullptr)
        ++counted.releases;
}

#if KESTRIN_ADDRESS_SANITIZER
// The sanitizer owns malloc, and tells of every call.
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

#if defined(__GLIBC__)
#define KESTRIN_INTERPOSED extern "C" __attribute__ ((visibility ("default")))

namespace
{
using LockFunction = int (*) (pthread_mutex_t*);

[[nodiscard]] LockFunction realLock() noexcept
{
    static LockFunction function = nullptr;

    if (function == nullptr)
        function = reinterpret_cast<LockFunction> (dlsym (RTLD_NEXT, "pthread_mutex_lock"));

    return function;
}
} // namespace

// Standing in the executable, these come before the C library's own.
KESTRIN_INTERPOSED int pthread_mutex_lock (pthread_mutex_t* mutex) noexcept
{
    if (watching)
        ++counted.locks;

    return realLock() (mutex);
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

// Elsewhere only what goes through C++'s own operators is seen.
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
