// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string_view>

/** True for a text that is safe to give to JUCE's XML parser. Settings come from project files, which may be damaged or
    forged, and the parser trusts its text. It recurses once per nested element and follows entities that name themselves.
    It reads past the end of an unfinished character or character reference, and never returns from an instruction inside
    an element. Its time grows with the square of the number of attributes, and of the references in a value. Every text
    that the plug-in itself has written passes.

    Looks at each byte a fixed number of times; never allocates. */
[[nodiscard]] bool isSafeToParse (std::string_view settingsText) noexcept;

/** True if the text consists of whole UTF-8 characters. JUCE's own test accepts a character whose second half is missing.
    A string with such an end is read beyond it. */
[[nodiscard]] bool isUtf8 (std::string_view text) noexcept;
