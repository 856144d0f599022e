// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/PretendedHostPath.h"

#include <atomic>
#include <cstddef>
#include <string_view>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{
std::atomic<const char*> pretendedPath { nullptr };
} // namespace

PretendedHostPath::PretendedHostPath (const char* path) noexcept { pretendedPath = path; }
PretendedHostPath::~PretendedHostPath() { pretendedPath = nullptr; }

// The linker takes this function from the executable before the C library's own.
extern "C" __attribute__ ((visibility ("default"))) ssize_t readlink (const char* path, char* buffer,
                                                                      std::size_t size) noexcept
{
    const auto* const pretended = pretendedPath.load();

    if (pretended == nullptr || std::string_view (path) != "/proc/self/exe")
        return syscall (SYS_readlinkat, AT_FDCWD, path, buffer, size);

    const std::string_view answer (pretended);
    return (ssize_t) answer.copy (buffer, size);
}
