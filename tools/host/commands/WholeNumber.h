// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <charconv>
#include <string>

/** Reads a whole number from all of a text.
    @returns false if the text is anything else */
template <typename Number>
[[nodiscard]] bool parseWhole (const std::string& text, Number& number)
{
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars (text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}
