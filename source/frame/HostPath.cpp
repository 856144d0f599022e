// SPDX-License-Identifier: AGPL-3.0-or-later
#include "frame/HostPath.h"

#include <algorithm>
#include <cstddef>
#include <sstream>

std::vector<std::string> splitPath (const std::string& text)
{
    std::vector<std::string> pieces;
    std::istringstream stream (text);

    for (std::string piece; std::getline (stream, piece, '/');)
        pieces.push_back (piece);

    return pieces;
}

std::string hostTail (std::string executablePath)
{
    std::replace (executablePath.begin(), executablePath.end(), '\\', '/');

    const auto pieces = splitPath (executablePath);
    const auto start = std::max<std::size_t> (1, pieces.size() / 2);
    std::string tail;

    for (auto index = start; index < pieces.size(); ++index)
        tail += (index == start ? "" : "/") + pieces[index];

    return tail;
}
