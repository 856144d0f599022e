// SPDX-License-Identifier: AGPL-3.0-or-later
#include "common/SettingsGuard.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace
{
/** The parser recurses once per level and takes 336 bytes of stack for it as g++ 12 compiles it for x86-64 with optimisation, and
    416 as g++ 14 does. 1,024 levels are less than half a megabyte. The smallest stack of a window's thread is a megabyte, that of
    Windows; the other half is the host's. */
constexpr std::size_t maxDepth = 1024;

/** Bytes that the parser would walk beyond reading each one once: about a second. */
constexpr std::uint64_t maxCost = maxRereadBytes;

/** An element of four characters becomes an object of a few dozen bytes, and takes as long as walking this many. */
constexpr std::uint64_t costOfElement = 1024;

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
bool isAscii (char c) noexcept { return (unsigned char) c < 0x80; }
bool isBlank (char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool isLetterOrDigit (char c) noexcept
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isNameCharacter (char c) noexcept { return isLetterOrDigit (c) || c == '_' || c == '-' || c == ':' || c == '.'; }

bool isReferenceCharacter (char c) noexcept { return c == '#' || isLetterOrDigit (c); }

/** The length of the reference at the start of a text that begins with "&"; 0 if it has no end. */
std::size_t referenceLength (std::string_view text) noexcept
{
    const auto name = text.substr (1, maxReferenceLength);
    const auto end = std::find_if_not (name.begin(), name.end(), isReferenceCharacter);

    return end != name.end() && *end == ';' ? (std::size_t) (end - name.begin()) + 2 : 0;
}

bool hasWholeReferences (std::string_view text) noexcept
{
    for (auto start = text.find ('&'); start != std::string_view::npos; start = text.find ('&', start + 1))
        if (referenceLength (text.substr (start)) == 0)
            return false;

    return true;
}

std::size_t countOf (char c, std::string_view text) noexcept
{
    return (std::size_t) std::count (text.begin(), text.end(), c);
}

/** Reads a text in the parser's steps, without its recursion, and stops where the parser would come to harm. Each function
    reads what the parser's function of the same purpose does, also where that goes on after an error. */
class ParserWalk
{
public:
    explicit ParserWalk (std::string_view text) noexcept : rest (text) {}

    [[nodiscard]] bool isHarmless() noexcept
    {
        skipBlanks();
        skipDocumentType();

        if (isReading() && rest.starts_with ('<'))
            readTag();

        // Nothing is read behind the first element.
        while (isReading() && depth > 0)
            readChild();

        return verdict != Verdict::harmful;
    }

private:
    enum class Verdict
    {
        reading,
        harmless,
        harmful
    };

    [[nodiscard]] bool isReading() const noexcept { return verdict == Verdict::reading; }

    void stopAs (Verdict end) noexcept
    {
        if (isReading())
            verdict = end;
    }

    void spend (std::uint64_t bytes) noexcept
    {
        cost += bytes;

        if (cost > maxCost)
            stopAs (Verdict::harmful);
    }

    /** For a rest that the parser reads in a way that is not followed here: it must be harmless in whatever way it is read. */
    void judgeRest() noexcept
    {
        const auto openings = countOf ('<', rest), references = countOf ('&', rest);
        spend ((std::uint64_t) (openings + references + depth + 1) * (rest.size() + documentTypeSize));

        if (depth + openings > maxDepth || numAttributes + countOf ('=', rest) > maxSettingsAttributes
            || ! hasWholeReferences (rest) || rest.find ("<?") != std::string_view::npos)
            stopAs (Verdict::harmful);

        stopAs (Verdict::harmless);
    }

    /** Goes behind the next occurrence of the end. Without one the parser stays where it is and looks again and again. */
    void skipBehind (std::string_view end) noexcept
    {
        if (const auto place = rest.find (end); place != std::string_view::npos)
            rest.remove_prefix (place + end.size());
        else
            judgeRest();
    }

    /** Skips blanks, comments and instructions.
        @returns whether there was an instruction */
    bool skipBlanks() noexcept
    {
        auto sawInstruction = false;

        while (isReading())
        {
            rest.remove_prefix ((std::size_t) (std::find_if_not (rest.begin(), rest.end(), isBlank) - rest.begin()));

            if (rest.starts_with ("<!--"))
            {
                rest.remove_prefix (4);
                skipBehind ("-->");
            }
            else if (rest.starts_with ("<?"))
            {
                rest.remove_prefix (2);
                skipBehind ("?>");
                sawInstruction = true;
            }
            else
            {
                break;
            }
        }

        return sawInstruction;
    }

    /** A document type that declares entities can make them name each other for ever. One without a declaration is looked
        through for each reference. */
    void skipDocumentType() noexcept
    {
        constexpr std::string_view start = "<!DOCTYPE";

        if (! isReading() || ! rest.starts_with (start))
            return;

        const auto end = rest.find_first_of ("<>", start.size());

        if (end == std::string_view::npos)
            return stopAs (Verdict::harmless);

        if (rest[end] == '<')
            return stopAs (Verdict::harmful);

        documentTypeSize = end;
        spend ((std::uint64_t) end * end);
        rest.remove_prefix (end + 1);
        skipBlanks();
    }

    /** The parser keeps every name that it has met in one sorted array, into which a new one is inserted. */
    void noteName (std::string_view name) noexcept
    {
        auto& known = knownNames[std::hash<std::string_view>() (name) % knownNames.size()];

        if (known != name)
        {
            known = name;
            spend (2 * ++numNames);
        }
    }

    /** @returns whether there is a name. Beyond ASCII the host's locale decides what may stand in one. */
    bool readName() noexcept
    {
        const auto end = std::find_if_not (rest.begin(), rest.end(), isNameCharacter);
        const auto length = (std::size_t) (end - rest.begin());

        if (end != rest.end() && ! isAscii (*end))
            judgeRest();
        else if (length > 0)
            noteName (rest.substr (0, length));

        rest.remove_prefix (length);
        return length > 0;
    }

    /** From one "<" to where the children begin, or to where the parser has done with the element. */
    void readTag() noexcept
    {
        if (depth == maxDepth)
            return stopAs (Verdict::harmful);

        rest.remove_prefix (1);

        if (! readName())
        {
            skipBlanks();

            // Without a name there is no element, and then the parser takes the one around it for closed.
            if (isReading() && ! readName())
            {
                depth -= depth > 0 ? 1 : 0;
                return;
            }
        }

        spend (costOfElement);

        while (isReading())
        {
            skipBlanks();

            if (! isReading())
                return;

            if (rest.starts_with ("/>"))
                return rest.remove_prefix (2);

            if (rest.starts_with ('>'))
            {
                rest.remove_prefix (1);
                ++depth;
                return;
            }

            if (! readName() || ! readValue())
                return;
        }
    }

    /** @returns whether the element may have another attribute */
    bool readValue() noexcept
    {
        skipBlanks();

        if (! isReading() || rest.empty())
            return false;

        // What stands in the place of the "=" is read in any case.
        const auto sign = rest.front();

        if (! isAscii (sign))
            judgeRest();

        rest.remove_prefix (1);

        if (sign != '=')
            return false;

        skipBlanks();

        if (! isReading() || ! (rest.starts_with ('"') || rest.starts_with ('\'')))
            return false;

        const auto quote = rest.front();
        rest.remove_prefix (1);
        const auto value = rest.substr (0, rest.find (quote));

        if (! hasWholeReferences (value))
            stopAs (Verdict::harmful);

        if (depth == 0 && ++numAttributes > maxSettingsAttributes)
            stopAs (Verdict::harmful);

        spend (rereadBytes (value) + (std::uint64_t) countOf ('&', value) * documentTypeSize);
        rest.remove_prefix (std::min (rest.size(), value.size() + 1));
        return true;
    }

    /** One child of the innermost element, or its end. */
    void readChild() noexcept
    {
        const auto start = rest;
        const auto sawInstruction = skipBlanks();

        if (! isReading())
            return;

        if (rest.empty())
            return stopAs (Verdict::harmless);

        if (rest.starts_with ("</"))
            return readEndTag();

        if (rest.starts_with ("<![CDATA["))
            return skipBehind ("]]>");

        if (rest.starts_with ('<'))
            return readTag();

        // The parser goes back to the blanks before a text, and never gets past an instruction among them.
        if (sawInstruction)
            return stopAs (Verdict::harmful);

        rest = start;
        readText();
    }

    void readEndTag() noexcept
    {
        if (const auto end = rest.find ('>'); end != std::string_view::npos)
        {
            rest.remove_prefix (end + 1);
            --depth;
        }
        else
        {
            // Looked for once per open element.
            spend ((std::uint64_t) depth * rest.size());
            stopAs (Verdict::harmless);
        }
    }

    /** Up to the next tag or instruction. */
    void readText() noexcept
    {
        while (isReading())
        {
            rest.remove_prefix (std::min (rest.size(), rest.find_first_of ("<&")));

            if (rest.starts_with ("<!--"))
            {
                rest.remove_prefix (4);
                skipBehind ("-->");
            }
            else if (rest.starts_with ('&'))
            {
                const auto length = referenceLength (rest);

                if (length == 0)
                    stopAs (Verdict::harmful);

                spend (documentTypeSize);
                rest.remove_prefix (length);
            }
            else
            {
                return;
            }
        }
    }

    std::string_view rest;
    Verdict verdict = Verdict::reading;
    std::size_t depth = 0;
    std::size_t numAttributes = 0;
    std::size_t documentTypeSize = 0;
    std::uint64_t cost = 0;
    std::uint64_t numNames = 0;

    /** The last names that have been met: a name that comes again and again is new once. */
    std::array<std::string_view, 256> knownNames {};
};
} // namespace

bool isSafeToParse (std::string_view settingsText) noexcept
{
    return isUtf8 (settingsText) && ParserWalk (settingsText.substr (0, settingsText.find ('\0'))).isHarmless();
}

std::uint64_t rereadBytes (std::string_view writtenValue) noexcept
{
    return (std::uint64_t) countOf ('&', writtenValue) * writtenValue.size();
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
