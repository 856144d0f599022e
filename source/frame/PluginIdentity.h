// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

/** What the plug-in says of itself in the host, the saved state and the window. The version of the class information is a
    number of its own: that of the CMake project. */
namespace pluginIdentity
{
inline constexpr const char* name = "Kestrin Tamsile Filter";

/** The only version number that a user sees: in the saved state and in the window's version line. The version resource of
    the module on Windows ends in it, too. */
inline constexpr int buildNumber = 235;

inline constexpr const char* webAddress = "https://kestrin.example";
} // namespace pluginIdentity
