// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string_view>

/** True for a text that the XML parser can be given, wherever it comes from. Settings arrive from project files, which
    get damaged or forged, and the parser believes in its text: it recurses once per nested element, reads on behind the
    end of an unfinished character or character reference, follows entities that name themselves, stands still at an
    instruction inside an element, and walks all names or all of a value again for every further one. Whatever the plug-in
    itself has written passes.

    Looks at each byte a fixed number of times; never allocates. */
[[nodiscard]] bool isSafeToParse (std::string_view settingsText) noexcept;

/** True if the text consists of whole characters. JUCE's own test lets through a character whose second half is missing,
    and its strings are then read beyond their end. */
[[nodiscard]] bool isUtf8 (std::string_view text) noexcept;
