// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/** The most attributes of a settings element: each parameter is one. This many are read and written again in a fraction of a
    second, which grows with their square. */
inline constexpr std::size_t maxSettingsAttributes = 4096;

/** The most bytes that the parser may read again: about a second. */
inline constexpr std::uint64_t maxRereadBytes = (std::uint64_t) 1 << 32;

/** True for a text that JUCE's XML parser reads to its end without harm to the host. Settings come from project files, which
    may be damaged or forged, and the parser trusts its text. Refused is what would

    - exhaust the stack: more than 1,024 levels of elements, as the parser recurses once per level;
    - never end: a document type that declares entities, which may name each other, and an instruction before text in an
      element;
    - be read beyond its end: an unfinished character or character reference;
    - take the host's time or memory: more than maxSettingsAttributes, or more than about a second of work that grows with the
      square of something (references in a value, different names, elements with an unfinished end, words of a document
      type) or some four million elements.

    All else is the parser's matter, also what it calls an error. Where a name goes beyond ASCII, the host's locale decides how
    the parser reads the text behind it: then that must be harmless in either way, which refuses a little more.

    Looks at each byte a few times; never allocates. */
[[nodiscard]] bool isSafeToParse (std::string_view settingsText) noexcept;

/** The bytes that the parser reads again in an attribute's value: at each character reference it goes through all of the value
    that it has so far. (Counted as if that were the whole value.)
    @param writtenValue  as it stands in the text, or with more around it */
[[nodiscard]] std::uint64_t rereadBytes (std::string_view writtenValue) noexcept;

/** True if the text consists of whole UTF-8 characters. JUCE's own test accepts a character whose second half is missing,
    and its strings are then read beyond their end. */
[[nodiscard]] bool isUtf8 (std::string_view text) noexcept;
