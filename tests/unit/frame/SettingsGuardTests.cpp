// SPDX-License-Identifier: AGPL-3.0-or-later
#include "common/SettingsGuard.h"

#include <algorithm>
#include <array>
#include <string>
#include <tuple>

#include <pthread.h>

#include <gtest/gtest.h>

#include "dsp/MainAudioProcessor.h"
#include "support/SettingsProbe.h"

namespace
{
std::string withValue (const std::string& value) { return settings::element ("unknown=\"" + value + "\""); }
std::string around (const std::string& content) { return "<settings>" + content + "</settings>"; }

/** As many elements in each other. */
std::string nested (std::size_t levels)
{
    return settings::repeated ("<a>", levels) + settings::repeated ("</a>", levels);
}

/** Elements with a name each. */
std::string namedElements (int number)
{
    std::string text;

    for (int index = 0; index < number; ++index)
        text += "<a" + std::to_string (index) + "/>";

    return text;
}

int depthOf (const juce::XmlElement& element)
{
    int deepest = 0;

    for (const auto* child : element.getChildIterator())
        deepest = std::max (deepest, child->isTextElement() ? 0 : depthOf (*child));

    return deepest + 1;
}

#if defined(__OPTIMIZE__) && ! defined(__SANITIZE_ADDRESS__) && ! defined(__SANITIZE_THREAD__) && ! defined(__clang__)
/** Half of the smallest stack that a window's thread has, a megabyte: the other half is the host's. */
constexpr std::size_t smallestStack = 512 << 10;
#else
/** Debug builds and sanitizers make the frames many times as large. */
constexpr std::size_t smallestStack = 8 << 20;
#endif

/** Ends the program if the stack does not suffice. */
void expectParsedOnSmallestStack (const std::string& text)
{
    ASSERT_TRUE (isSafeToParse (text));

    struct Parsing
    {
        static void* run (void* text)
        {
            return juce::parseXML (juce::String (*static_cast<const std::string*> (text))) != nullptr ? text : nullptr;
        }
    };

    pthread_attr_t attributes;
    pthread_t thread;
    auto copy = text;
    void* result = nullptr;

    ASSERT_EQ (pthread_attr_init (&attributes), 0);
    ASSERT_EQ (pthread_attr_setstacksize (&attributes, smallestStack), 0);
    ASSERT_EQ (pthread_create (&thread, &attributes, Parsing::run, &copy), 0);
    pthread_join (thread, &result);
    pthread_attr_destroy (&attributes);
    EXPECT_NE (result, nullptr);
}
} // namespace

TEST (SettingsGuard, LetsThroughWhatThePluginWrites)
{
    MainAudioProcessor processor;
    EXPECT_TRUE (isSafeToParse (settings::savedText (processor)));
}

TEST (SettingsGuard, LetsThroughAnyCharacterThatTheWriterEscapes)
{
    SettingsProbe probe;
    probe.extraAttributes["unknown"] = juce::String::fromUTF8 ("<&>\"' \xc3\xa9\xe2\x82\xac\xf0\x9f\x8e\xb9 = \t\n");

    const auto text = settings::savedText (probe);
    EXPECT_TRUE (isSafeToParse (text)) << text;
}

TEST (SettingsGuard, LetsThroughALongForeignValue)
{
    EXPECT_TRUE (isSafeToParse (withValue (std::string (1 << 20, 'x'))));
}

TEST (SettingsGuard, LetsThrough1024LevelsAndNotOneMore)
{
    EXPECT_TRUE (isSafeToParse (nested (1024)));
    EXPECT_FALSE (isSafeToParse (nested (1025)));

    // However the levels are written.
    for (const auto* tag : { "<a>", "< a>", "<a b='/>'>", "<a b=\"</a>\">", "<!-- </a> --><a>", "<![CDATA[</a>]]><a>",
                             "<a\n>", "<a/><a>", "x<a>", "&lt;/a&gt;<a>" })
    {
        EXPECT_TRUE (isSafeToParse ("<settings>" + settings::repeated (tag, 1023))) << tag;
        EXPECT_FALSE (isSafeToParse ("<settings>" + settings::repeated (tag, 1024))) << tag;
    }
}

TEST (SettingsGuard, CountsNoLevelThatIsClosedAgain)
{
    for (const auto* siblings : { "<a/>", "<a></a>", "<a b='>'/>", "<a>text</a>", "< a />", "<a b='1' c=\"2\"></ a >" })
        EXPECT_TRUE (isSafeToParse (around (settings::repeated (siblings, 100000)))) << siblings;

    // What stands behind the settings is not read.
    EXPECT_TRUE (isSafeToParse ("<settings/>" + settings::repeated ("<a>", 100000)));
}

TEST (SettingsGuard, FindsTheDepthThatTheParserFinds)
{
    constexpr juce::int64 seed = 31;
    const std::array pieces { "<a>",
                              "<a>",
                              "<a b='>'>",
                              "</a>",
                              "</a>",
                              "<b/>",
                              "<b c=\"/>\"/>",
                              "<!-- <a> -->",
                              "<![CDATA[<a>]]>",
                              "text",
                              " ",
                              "&lt;",
                              "<?pi?>",
                              "<a b=c>",
                              "< a>",
                              "<",
                              ">",
                              "'",
                              "=",
                              "\"" };
    juce::Random random (seed);
    int numParsed = 0;

    for (int round = 0; round < 20000; ++round)
    {
        // Deep enough for the pieces to decide whether the border is crossed.
        auto text = settings::repeated ("<a>", 1018);

        for (int piece = random.nextInt (30); piece >= 0; --piece)
            text += pieces[(std::size_t) random.nextInt ((int) pieces.size())];

        text += settings::repeated ("</a>", 1040);

        // An instruction before text is a matter of its own.
        if (text.find ("<?") == std::string::npos)
        {
            if (const auto element = juce::parseXML (juce::String (text)))
            {
                ++numParsed;
                ASSERT_EQ (isSafeToParse (text), depthOf (*element) <= 1024) << "round " << round << ": " << text;
            }
        }
        else if (isSafeToParse (text))
        {
            // It comes to an end.
            std::ignore = juce::parseXML (juce::String (text));
        }
    }

    EXPECT_GT (numParsed, 500);
}

TEST (SettingsGuard, LetsThroughNoMoreLevelsThanFitOnTheSmallestStack)
{
    expectParsedOnSmallestStack (nested (1024));
    expectParsedOnSmallestStack (around (settings::repeated ("<a/>", 1000)));
}

TEST (SettingsGuard, LetsThrough4096AttributesAndNotOneMore)
{
    EXPECT_TRUE (isSafeToParse ("<settings " + settings::repeated ("a='' ", 4096) + "/>"));
    EXPECT_FALSE (isSafeToParse ("<settings " + settings::repeated ("a='' ", 4097) + "/>"));
}

TEST (SettingsGuard, CountsOnlyTheAttributesOfTheSettings)
{
    EXPECT_TRUE (isSafeToParse (withValue (std::string (100000, '='))));
    EXPECT_TRUE (isSafeToParse (around (std::string (100000, '='))));
    EXPECT_TRUE (isSafeToParse (around (settings::repeated ("<a b='1'/>", 100000))));
}

TEST (SettingsGuard, StopsReferencesThatWouldCopyTheirValueTooOften)
{
    // 2^32 bytes are 29,308 references of five.
    EXPECT_TRUE (isSafeToParse (withValue (settings::repeated ("&amp;", 29308))));
    EXPECT_FALSE (isSafeToParse (withValue (settings::repeated ("&amp;", 29309))));

    // Short values and texts are not copied again.
    EXPECT_TRUE (isSafeToParse (around (settings::repeated ("<a b='&amp;'/>", 100000))));
    EXPECT_TRUE (isSafeToParse (around (settings::repeated ("&amp;", 1000000))));
}

TEST (SettingsGuard, StopsMoreNamesThanTheParserSortsInASecond)
{
    EXPECT_TRUE (isSafeToParse (around (namedElements (50000))));
    EXPECT_FALSE (isSafeToParse (around (namedElements (70000))));
}

TEST (SettingsGuard, StopsMoreElementsThanFitIntoSomeHundredMegabytes)
{
    EXPECT_TRUE (isSafeToParse (around (settings::repeated ("<a/>", 4000000))));
    EXPECT_FALSE (isSafeToParse (around (settings::repeated ("<a/>", 4200000))));
}

TEST (SettingsGuard, StopsWhatTheParserWouldLookForAgainAndAgain)
{
    const std::string end (8 << 20, 'x');

    EXPECT_TRUE (isSafeToParse (settings::repeated ("<a>", 500) + "</a" + end));
    EXPECT_FALSE (isSafeToParse (settings::repeated ("<a>", 600) + "</a" + end));
    EXPECT_TRUE (isSafeToParse ("<settings " + settings::repeated ("<!--a=\"", 1000) + "x"));
    EXPECT_FALSE (isSafeToParse ("<settings " + settings::repeated ("<!--a=\"", 1000) + end));
    EXPECT_FALSE (isSafeToParse ("<settings " + settings::repeated ("<!--a=\"", 5000)));
}

TEST (SettingsGuard, JudgesNamesBeyondAsciiWithoutKnowingTheLocale)
{
    EXPECT_TRUE (isSafeToParse ("<settings \xc3\xa9='1' b='&amp;'><a/></settings>"));
    EXPECT_TRUE (isSafeToParse ("<settings>" + settings::repeated ("<\xc3\xa9>", 1000)));

    // The parser may take them for text, and what follows for tags.
    EXPECT_FALSE (isSafeToParse ("<settings \xc3\xa9='" + settings::repeated ("<a>", 1025) + "'/>"));
    EXPECT_FALSE (isSafeToParse ("<settings \xc3\xa9='" + settings::repeated ("a='1' ", 4097) + "'/>"));
    EXPECT_FALSE (isSafeToParse ("<settings><\xc3\xa9 b='<?pi?>text'/></settings>"));
    EXPECT_FALSE (isSafeToParse ("<settings><\xc3\xa9>&#x</settings>"));
}

TEST (SettingsGuard, StopsUnfinishedReferences)
{
    for (const auto* start : { "&", "&#", "&#x", "&#x1", "&amp", "&<a b=\"&#x;", "& ;", "&a b;" })
        EXPECT_FALSE (isSafeToParse (std::string ("<settings a=\"") + start)) << start;

    EXPECT_FALSE (isSafeToParse (withValue ("&" + std::string (40, 'a') + ";")));
}

TEST (SettingsGuard, FindsReferencesOnlyWhereTheParserDoes)
{
    EXPECT_TRUE (isSafeToParse ("<!-- & --><settings><!-- a & b --><![CDATA[&]]></settings><a b='&'/>"));
    EXPECT_FALSE (isSafeToParse ("<settings>&</settings>"));
    EXPECT_FALSE (isSafeToParse ("<settings><a b='&'/></settings>"));
}

TEST (SettingsGuard, StopsDocumentTypesThatDeclareSomething)
{
    EXPECT_FALSE (isSafeToParse (R"(<!DOCTYPE s [<!ENTITY a "&a;">]><settings>&a;</settings>)"));
    EXPECT_FALSE (isSafeToParse (R"(<?xml version="1.0"?> <!-- --> <!DOCTYPE s [<!ELEMENT a ANY>]><settings/>)"));
}

TEST (SettingsGuard, LetsThroughDocumentTypesThatDeclareNothing)
{
    for (const auto* type : { "settings", "settings []", "settings SYSTEM \"settings.dtd\"", "" })
        EXPECT_TRUE (isSafeToParse ("<?xml version='1.0'?>\n<!DOCTYPE " + std::string (type) + "><settings a='&b;'/>"))
            << type;

    // Each reference is looked for in it.
    const auto words = [] (std::size_t number) { return "<!DOCTYPE s [" + settings::repeated ("a ", number) + "]>"; };
    EXPECT_TRUE (isSafeToParse (words (30000) + around (settings::repeated ("&b;", 10000))));
    EXPECT_FALSE (isSafeToParse (words (30000) + around (settings::repeated ("&b;", 20000))));
    EXPECT_FALSE (isSafeToParse (words (40000) + around ("&b;")));
}

TEST (SettingsGuard, StopsInstructionsBeforeTextInAnElement)
{
    // The parser would begin with the instruction again and again.
    EXPECT_FALSE (isSafeToParse ("<settings><?pi?>text</settings>"));
    EXPECT_FALSE (isSafeToParse ("<settings>text<?pi?>text</settings>"));
    EXPECT_FALSE (isSafeToParse ("<?xml version='1.0'?> <settings><a/> <?pi?> <!-- --> text</settings>"));
    EXPECT_FALSE (isSafeToParse ("< settings><?pi?>text</settings>"));
    EXPECT_FALSE (isSafeToParse ("<settings><?pi?>&amp;</settings>"));
}

TEST (SettingsGuard, LetsThroughInstructionsThatTheParserGetsPast)
{
    EXPECT_TRUE (isSafeToParse ("<?xml version='1.0'?><!-- ? --><?pi?><settings><!-- < ? --><a>text</a></settings>"));

    for (const auto* inside : { "<?pi?>", "<?pi?> <?pi?> <!-- --> <a/>", "text<?pi?><a/>text", "<a b='<?pi?>text'/>",
                                "<![CDATA[<?pi?>text]]>", "<!-- <?pi?>text -->" })
    {
        ASSERT_TRUE (isSafeToParse (around (inside))) << inside;
        EXPECT_NE (juce::parseXML (juce::String (around (inside))), nullptr) << inside;
    }
}

TEST (SettingsGuard, StopsWhatIsNotUtf8)
{
    for (const auto* bytes :
         { "\xf0", "\xe2\x82", "\xc3", "\x80", "\xc0\xaf", "\xff", "\xf8\x88\x80\x80\x80", "\xc3(" })
        EXPECT_FALSE (isSafeToParse (withValue (bytes)) || isSafeToParse (bytes)) << bytes;

    EXPECT_TRUE (isSafeToParse (withValue ("\xc3\xa9\xe2\x82\xac\xf0\x9f\x8e\xb9")));
}
