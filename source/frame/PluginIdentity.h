// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

/** What the plug-in says of itself in the host, the saved state and the window. The class information's "1.0.0" and the
    module's version resource are two further numbers, kept by the build: the three are independent of each other. */
namespace pluginIdentity
{
inline constexpr const char* name = "Kestrin Tamsile Filter";

/** The only version number that a user sees: in the saved state and in the window's version line. */
inline constexpr int buildNumber = 235;

inline constexpr const char* webAddress = "https://kestrin.example";
} // namespace pluginIdentity
