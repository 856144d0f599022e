// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

/** The pieces between "/" characters. An empty text has none, a "/" at the end adds none, and two in a row enclose an
    empty one. */
[[nodiscard]] std::vector<std::string> splitPath (const std::string& text);

/** The second half of the path of a host's executable, with "/" between its pieces: enough to tell hosts and versions
    apart without the folder of the installation. The first piece is never part of it. */
[[nodiscard]] std::string hostTail (std::string executablePath);
