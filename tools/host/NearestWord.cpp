// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/NearestWord.h"

#include <algorithm>
#include <numeric>
#include <utility>

std::size_t editDistance (const std::string& one, const std::string& other)
{
    // Row i holds the distances of the first i letters of one word from all beginnings of the other.
    using Row = std::vector<std::size_t>;
    Row earlier, previous, current (other.size() + 1);
    std::iota (current.begin(), current.end(), std::size_t { 0 });

    for (std::size_t i = 1; i <= one.size(); ++i)
    {
        earlier = std::exchange (previous, current);
        current[0] = i;

        for (std::size_t j = 1; j <= other.size(); ++j)
        {
            const std::size_t replaced = one[i - 1] == other[j - 1] ? 0 : 1;
            current[j] = std::min ({ previous[j] + 1, current[j - 1] + 1, previous[j - 1] + replaced });

            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1])
                current[j] = std::min (current[j], earlier[j - 2] + 1);
        }
    }

    return current.back();
}

std::string nearestWord (const std::string& typed, const std::vector<std::string>& words)
{
    std::string nearest;
    std::size_t smallest = 3;

    for (const auto& word : words)
    {
        const auto distance = editDistance (typed, word);

        if (distance < smallest && 3 * distance <= word.size())
        {
            smallest = distance;
            nearest = word;
        }
    }

    return nearest;
}
