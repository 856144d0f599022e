// SPDX-License-Identifier: AGPL-3.0-or-later
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "dsp/MainAudioProcessor.h"
#include "support/SettingsProbe.h"

namespace
{
constexpr std::uint32_t magic = 0x21324356;

/** A processor with known values that has loaded nothing yet. */
struct Settled : MainAudioProcessor
{
    Settled() { settings::setAll (*this, values); }

    [[nodiscard]] bool isUntouched() const { return settings::valuesOf (*this) == values; }

    const std::vector<float> values = settings::distinctValues();
};

/** A block with every parameter at 0.5. */
std::string otherBlock()
{
    MainAudioProcessor processor;
    settings::setAll (processor, std::vector<float> (55, 0.5f));
    return settings::savedBlock (processor);
}

/** " a0="1" a1="1"" and so on. */
std::string foreignAttributes (int number)
{
    std::string attributes;

    for (int index = 0; index < number; ++index)
        attributes += " a" + std::to_string (index) + "=\"1\"";

    return attributes;
}

std::string withoutDate (const std::string& text) { return settings::pinned (text, "date_modified", "now"); }

void expectUntouchedBy (const std::string& block, const char* what)
{
    Settled processor;
    settings::loadBlock (processor, block);
    EXPECT_TRUE (processor.isUntouched()) << what;
}

/** Each parameter's value as JUCE's own parser reads the block. Only for blocks that are safe to parse. */
std::vector<float> readPlainly (const std::string& block, const Settled& processor)
{
    auto values = processor.values;
    const auto element = juce::AudioProcessor::getXmlFromBinary (block.data(), (int) block.size());

    if (element == nullptr)
        return values;

    for (int index = 0; index < 55; ++index)
    {
        const auto& id = dynamic_cast<juce::AudioProcessorParameterWithID&> (*processor.getParameters()[index]).paramID;

        if (element->hasAttribute (id))
            values[(std::size_t) index] = (float) element->getDoubleAttribute (id);
    }

    return values;
}
} // namespace

TEST (DamagedSettings, OfNoBytesChangeNothing)
{
    Settled processor;

    processor.setStateInformation (nullptr, 0);
    processor.setStateInformation (nullptr, 1000);
    processor.setStateInformation ("", 0);
    processor.setStateInformation (otherBlock().data(), -1);

    EXPECT_TRUE (processor.isUntouched());
}

TEST (DamagedSettings, WithAnotherMagicNumberChangeNothing)
{
    const auto text = settings::element (R"(hp_freq="0.5")");
    const auto length = (std::uint32_t) text.size();

    for (const auto other : { 0u, 0x21324355u, 0x56433221u, ~magic })
        expectUntouchedBy (settings::blockOf (text, length, other), "magic");
}

TEST (DamagedSettings, WithALengthOfZeroOrBelowChangeNothing)
{
    const auto text = settings::element (R"(hp_freq="0.5")");

    for (const auto length : { 0u, 0xffffffffu, 0x80000000u })
        expectUntouchedBy (settings::blockOf (text, length), "length");
}

TEST (DamagedSettings, AreReadToTheirEndWhenTheirLengthIsTooLarge)
{
    const auto text = settings::element (R"(hp_freq="0.5")");

    for (const auto length : { (std::uint32_t) text.size() + 1, (std::uint32_t) text.size() + 100, 0x7fffffffu })
    {
        Settled processor;
        settings::loadBlock (processor, settings::blockOf (text, length));
        EXPECT_EQ (processor.parameters.hpFreq->get(), 0.5f) << length;
    }
}

TEST (DamagedSettings, WithALengthInTheMiddleOfAValueChangeNothing)
{
    expectUntouchedBy (settings::blockOf (R"(<settings hp_freq="0.5"/>)", 20), "length");
}

TEST (DamagedSettings, ThatAreNotXmlChangeNothing)
{
    for (const auto* text :
         { "x", "<", "<>", "<settings", "</settings>", "<settings hp_freq=\"0.5", "<settings hp_freq/>",
           "<settings hp_freq=\"0.5\"><a>", "<settings hp_freq=\"0.5\" \x01/>", "{}", "\xef\xbb\xbf" })
        expectUntouchedBy (settings::blockOf (text), text);
}

TEST (DamagedSettings, CutAnywhereLoadAsAPlainParserReadsThem)
{
    const auto block = otherBlock();
    Settled processor;

    for (std::size_t length = 0; length < block.size(); ++length)
    {
        settings::setAll (processor, processor.values);
        const auto cut = block.substr (0, length);
        settings::loadBlock (processor, cut);

        ASSERT_EQ (settings::valuesOf (processor), readPlainly (cut, processor)) << "cut to " << length;
    }
}

TEST (DamagedSettings, KeepEveryParameterInRangeWithAnyBitFlipped)
{
    const auto block = otherBlock();
    MainAudioProcessor processor;

    for (std::size_t bit = 0; bit < block.size() * 8; ++bit)
    {
        auto damaged = block;
        damaged[bit / 8] = (char) (damaged[bit / 8] ^ (1 << bit % 8));
        settings::loadBlock (processor, damaged);

        for (const auto value : settings::valuesOf (processor))
            ASSERT_TRUE (value >= 0.0f && value <= 1.0f) << "bit " << bit;
    }

    // And it still saves.
    EXPECT_EQ (settings::attribute (settings::savedText (processor), "plugin"), "Kestrin Tamsile Filter");
}

TEST (DamagedSettings, KeepEveryParameterInRangeWithRandomBytes)
{
    constexpr juce::int64 seed = 99;
    const auto block = otherBlock();
    juce::Random random (seed);
    MainAudioProcessor processor;

    for (int round = 0; round < 20000; ++round)
    {
        auto damaged = block;

        for (int change = random.nextInt (8); change >= 0; --change)
            damaged[(std::size_t) (8 + random.nextInt ((int) block.size() - 8))] = "<>&;#x\"'=/!?- \x80\xf0\x00"
                                                                                   "e9"[random.nextInt (19)];

        damaged.resize ((std::size_t) (9 + random.nextInt ((int) block.size() - 9)));
        settings::loadBlock (processor, damaged);

        for (const auto value : settings::valuesOf (processor))
            ASSERT_TRUE (value >= 0.0f && value <= 1.0f) << "seed " << seed << ", round " << round;
    }
}

TEST (DamagedSettings, ThatEndInsideAReferenceOrCharacterChangeNothing)
{
    for (const auto* end : { "&", "&#", "&#x", "&#xf", "&#1", "&amp", "\xf0", "\xe2\x82", "\xc3" })
        expectUntouchedBy (settings::blockOf (std::string (R"(<settings hp_freq="0.5" a=")") + end), end);
}

TEST (DamagedSettings, WithEntitiesOfTheirOwnChangeNothing)
{
    for (const auto* text : { R"(<!DOCTYPE s [<!ENTITY a "&a;">]><settings hp_freq="0.5">&a;</settings>)",
                              R"(<!DOCTYPE s [<!ENTITY a "<x>&a;</x>">]><settings hp_freq="0.5">&a;</settings>)",
                              R"(<settings hp_freq="0.5">&<a b="&#x;</settings>)" })
        expectUntouchedBy (settings::blockOf (text), text);
}

TEST (DamagedSettings, WithAnInstructionBeforeTextChangeNothing)
{
    for (const auto* inside : { "<?pi?>text", "<?pi?> <!-- --> text", "<a/><?xml?>text" })
        expectUntouchedBy (settings::blockOf (R"(<settings hp_freq="0.5">)" + std::string (inside) + "</settings>"),
                           inside);
}

TEST (DamagedSettings, NestedAMillionDeepChangeNothing)
{
    constexpr std::size_t depth = 1000000;

    expectUntouchedBy (settings::blockOf (R"(<settings hp_freq="0.5">)" + settings::repeated ("<a>", depth)), "open");
    expectUntouchedBy (settings::blockOf (R"(<settings hp_freq="0.5">)" + settings::repeated ("<a>", depth)
                                          + settings::repeated ("</a>", depth) + "</settings>"),
                       "closed");
    expectUntouchedBy (settings::blockOf (settings::repeated ("<settings>", depth)), "settings");
}

TEST (DamagedSettings, OfSixtyFourMegabytesChangeNothing)
{
    constexpr std::size_t size = 64 << 20;

    for (const auto* filling : { "<a/>", "<a>" })
        expectUntouchedBy (settings::blockOf (R"(<settings hp_freq="0.5">)"
                                              + settings::repeated (filling, size / std::string (filling).size())
                                              + "</settings>"),
                           filling);

    expectUntouchedBy (
        settings::blockOf (R"(<settings hp_freq="0.5" a=")" + settings::repeated ("&amp;", size / 5) + "\"/>"),
        "references");

    expectUntouchedBy (std::string (size, '\0'), "zeros");
    expectUntouchedBy (settings::blockOf (std::string (size, 'x')), "letters");
}

TEST (DamagedSettings, FullOfUnfinishedMarkupChangeNoOtherParameter)
{
    constexpr std::size_t size = 2 << 20;

    for (const auto* filling :
         { "a='1' ", "a=", "&", "&#", "&#x", "&a;", "<!-- -->", "<!--", "<![CDATA[", "<?", "</", "<", "'", " " })
    {
        for (const auto* start : { " ", " a=\"", ">" })
        {
            Settled processor;
            settings::loadText (processor, R"(<settings hp_freq="0.5")" + std::string (start)
                                               + settings::repeated (filling, size / std::string (filling).size()));

            auto values = settings::valuesOf (processor);
            EXPECT_TRUE (values[0] == processor.values[0] || values[0] == 0.5f) << start << filling;
            values[0] = processor.values[0];
            EXPECT_EQ (values, processor.values) << start << filling;
        }
    }
}

TEST (DamagedSettings, WithAHugeForeignValueStillLoad)
{
    Settled processor;
    settings::loadText (processor,
                        settings::element (R"(hp_freq="0.5" foreign=")" + std::string (64 << 20, 'x') + "\""));

    EXPECT_EQ (processor.parameters.hpFreq->get(), 0.5f);
}

TEST (DamagedSettings, WithHarmlessForeignContentStillLoad)
{
    for (const auto& inside :
         { settings::repeated ("<a/>", 100000), settings::repeated ("<a>", 1023) + settings::repeated ("</a>", 1023),
           std::string ("<?pi?>"), std::string (100000, '='), std::string ("<!-- & -->"),
           settings::repeated ("&amp;", 1000000) })
    {
        Settled processor;
        settings::loadText (processor, "<!DOCTYPE settings><settings hp_freq=\"0.5\">" + inside + "</settings>");
        EXPECT_EQ (processor.parameters.hpFreq->get(), 0.5f) << inside.substr (0, 20);
    }
}

TEST (DamagedSettings, WithFourThousandForeignAttributesLoadAndSave)
{
    Settled processor;
    settings::loadText (processor, settings::element (R"(hp_freq="0.5")" + foreignAttributes (4000)));

    EXPECT_EQ (processor.parameters.hpFreq->get(), 0.5f);
    EXPECT_EQ (settings::attribute (settings::savedText (processor), "a3999"), "1");
}

TEST (DamagedSettings, WithAnyNumberOfForeignAttributesAreSavedSoThatTheyLoadAgain)
{
    // 55 parameters and six attributes are in every save; the rest of 4096 is free.
    for (const auto number : { 4034, 4035, 4036, 4094, 4095 })
    {
        Settled first, second;
        settings::loadText (first, settings::element (R"(hp_freq="0.5")" + foreignAttributes (number)));
        ASSERT_EQ (first.parameters.hpFreq->get(), 0.5f);

        const auto saved = settings::savedText (first);
        EXPECT_EQ (settings::attribute (saved, "a4033"), "1") << number;
        EXPECT_EQ (settings::attribute (saved, "a4034"), number > 4034 ? "1" : "(none)");
        EXPECT_EQ (settings::attribute (saved, "a4035"), "(none)") << number;

        settings::loadText (second, saved);
        EXPECT_EQ (second.parameters.hpFreq->get(), 0.5f) << number;
        EXPECT_EQ (withoutDate (settings::savedText (second)), withoutDate (saved)) << number;
    }
}

TEST (DamagedSettings, WithForeignValuesThatGrowInASaveAreSavedSoThatTheyLoadAgain)
{
    // Each character is written as a reference of six bytes.
    const auto value = [] (std::size_t length) { return "=\"" + settings::repeated ("\xc3\xa9", length) + "\""; };

    struct Case
    {
        std::string attributes;
        std::vector<std::string> kept, dropped;
    };

    const std::array cases {
        Case { " a" + value (18000), { "a" }, {} },
        Case { " a" + value (19000), {}, { "a" } },
        Case { " a" + value (30000), {}, { "a" } },
        Case { " a" + value (1000000), {}, { "a" } },
        Case { " a" + value (10000) + " b" + value (10000) + " c" + value (10000), { "a", "b", "c" }, {} },
        Case { " a" + value (15000) + " b" + value (15000) + " c" + value (1000), { "a", "c" }, { "b" } },
    };

    for (const auto& [attributes, kept, dropped] : cases)
    {
        Settled first, second;
        settings::loadText (first, settings::element (R"(hp_freq="0.5")" + attributes + R"( known="1")"));
        ASSERT_EQ (first.parameters.hpFreq->get(), 0.5f);

        const auto saved = settings::savedText (first);
        EXPECT_EQ (settings::attribute (saved, "known"), "1");

        for (const auto& name : kept)
            EXPECT_NE (settings::attribute (saved, name), "(none)") << name << " of " << attributes.size();

        for (const auto& name : dropped)
            EXPECT_EQ (settings::attribute (saved, name), "(none)") << name << " of " << attributes.size();

        settings::loadText (second, saved);
        EXPECT_EQ (second.parameters.hpFreq->get(), 0.5f) << attributes.size();
        EXPECT_EQ (withoutDate (settings::savedText (second)), withoutDate (saved)) << attributes.size();
    }
}

TEST (DamagedSettings, WithCharactersThatDoNotExistAreSavedSoThatTheyLoadAgain)
{
    for (const auto* code :
         { "0", "1", "9", "127", "128", "55296", "65535", "1114111", "1114112", "2097151", "2097152", "2147483647",
           "2147483648", "4294967295", "999999999999", "x7fffffff", "x80000000", "xffffffff" })
    {
        Settled first, second;
        settings::loadText (first, settings::element ("hp_freq=\"0.5\" foreign=\"x&#" + std::string (code) + ";x\""));
        settings::loadText (second, settings::savedText (first));
        EXPECT_EQ (second.parameters.hpFreq->get(), 0.5f) << code << ": " << settings::savedText (first);
    }
}
