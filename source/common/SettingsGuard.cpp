// SPDX-License-Identifier: AGPL-3.0-or-later
#include "common/SettingsGuard.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace
{
/** Settings are one element. This many nested ones fit on the smallest stack that a host gives to a thread. */
constexpr std::ptrdiff_t maxElements = 256;

/** Each parameter is one attribute. This many are stored and written again in a fraction of a second. */
constexpr std::ptrdiff_t maxAttributes = 4096;

/** Bytes that the parser walks again for the character references of values, added up: about a second. */
constexpr std::uint64_t maxReferenceCost = (std::uint64_t) 1 << 32;

constexpr std::size_t maxReferenceLength = 32;

/** The number of bytes of a character that starts with this byte, or 0 if no character does. */
std::size_t utf8Length (unsigned char first) noexcept
{
    if (first < 0x80)
        return 1;

    if (first >= 0xc2 && first < 0xe0)
        return 2;

    if (first >= 0xe0 && first < 0xf0)
        return 3;

    return first >= 0xf0 && first < 0xf5 ? 4 : 0;
}

bool isContinuation (char c) noexcept { return ((unsigned char) c & 0xc0) == 0x80; }

bool isReferenceCharacter (char c) noexcept
{
    return c == '#' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/** True if every "&" begins a reference that has an end. */
bool hasWholeReferences (std::string_view text) noexcept
{
    for (auto start = text.find ('&'); start != std::string_view::npos; start = text.find ('&', start + 1))
    {
        const auto rest = text.substr (start + 1, maxReferenceLength);
        const auto end = std::find_if_not (rest.begin(), rest.end(), isReferenceCharacter);

        if (end == rest.end() || *end != ';')
            return false;
    }

    return true;
}

/** An upper bound for the number of elements: counts every "<" that can open one. */
std::ptrdiff_t countElements (std::string_view text) noexcept
{
    std::ptrdiff_t count = 0;

    for (auto start = text.find ('<'); start != std::string_view::npos; start = text.find ('<', start + 1))
        if (const auto next = text.substr (start + 1, 1); next != "/" && next != "!" && next != "?")
            ++count;

    return count;
}

bool hasCheapReferences (std::string_view text) noexcept
{
    const auto references = (std::uint64_t) std::count (text.begin(), text.end(), '&');
    return references * text.size() <= maxReferenceCost;
}

/** A document type can declare entities. Settings never have one. */
bool hasDocumentType (std::string_view text) noexcept { return text.find ("<!DOCTYPE") != std::string_view::npos; }

/** The parser never gets past an instruction before text in an element. An instruction before all elements, as the header is,
    does no harm. */
bool hasInstructionInElement (std::string_view text) noexcept
{
    auto start = text.find ('<');

    while (start != std::string_view::npos && (text.substr (start + 1, 1) == "?" || text.substr (start + 1, 1) == "!"))
        start = text.find ('<', start + 1);

    return start != std::string_view::npos && text.find ("<?", start) != std::string_view::npos;
}
} // namespace

bool isSafeToParse (std::string_view settingsText) noexcept
{
    return countElements (settingsText) <= maxElements
           && std::count (settingsText.begin(), settingsText.end(), '=') <= maxAttributes
           && hasCheapReferences (settingsText) && hasWholeReferences (settingsText) && ! hasDocumentType (settingsText)
           && ! hasInstructionInElement (settingsText) && isUtf8 (settingsText);
}

bool isUtf8 (std::string_view text) noexcept
{
    while (! text.empty())
    {
        const auto length = utf8Length ((unsigned char) text.front());

        if (length == 0 || length > text.size())
            return false;

        if (const auto rest = text.substr (1, length - 1); ! std::all_of (rest.begin(), rest.end(), isContinuation))
            return false;

        text.remove_prefix (length);
    }

    return true;
}
