// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

/** Makes this process believe that its program lies at another path, for the life of this object: JUCE asks the C library
    where /proc/self/exe leads, and the answer is this path. Linux only, one at a time. */
class PretendedHostPath
{
public:
    /** @param path  must live as long as this */
    explicit PretendedHostPath (const char* path) noexcept;
    ~PretendedHostPath();

    PretendedHostPath (const PretendedHostPath&) = delete;
    PretendedHostPath& operator= (const PretendedHostPath&) = delete;
};
