// SPDX-License-Identifier: AGPL-3.0-or-later
#include <cstdlib>

#include "editor/InterfaceFont.h"
#include "unit/editor/EditorFixture.h"

TEST (InterfaceFont, IsTheIntendedFaceWhereItIsInstalled)
{
    EXPECT_EQ (interfaceFont::chooseFamily ({ "Arial", "DejaVu Sans", "Microsoft Sans Serif", "Verdana" }),
               juce::String ("Microsoft Sans Serif"));
    EXPECT_EQ (interfaceFont::chooseFamily ({ "Microsoft Sans Serif" }), juce::String ("Microsoft Sans Serif"));
}

TEST (InterfaceFont, IsTheNearestInstalledFaceElsewhere)
{
    EXPECT_EQ (interfaceFont::chooseFamily ({ "DejaVu Sans", "Liberation Sans", "Liberation Serif" }),
               juce::String ("Liberation Sans"));
    EXPECT_EQ (interfaceFont::chooseFamily ({ "Noto Mono", "DejaVu Sans", "Verdana" }), juce::String ("DejaVu Sans"));
}

TEST (InterfaceFont, KeepsTheDefaultWhereAnotherSansSerifIsInstalled)
{
    EXPECT_EQ (interfaceFont::chooseFamily ({ "Cantarell", "Open Sans" }), juce::String {});
    EXPECT_EQ (interfaceFont::chooseFamily ({ "Ubuntu" }), juce::String {});
}

TEST (InterfaceFont, FallsBackToAnyFaceWhereNoneLooksLikeASansSerif)
{
    EXPECT_EQ (interfaceFont::chooseFamily ({ "Liberation Serif" }), juce::String ("Liberation Serif"));
    EXPECT_EQ (interfaceFont::chooseFamily ({ "", "Cantarell" }), juce::String ("Cantarell"));
}

TEST (InterfaceFont, KeepsTheDefaultWhereNothingIsInstalled)
{
    EXPECT_EQ (interfaceFont::chooseFamily ({}), juce::String {});
}

TEST (InterfaceFont, NeverNamesAFaceThatIsNotInstalled)
{
    const juce::StringArray all { "Arial", "Liberation Sans", "Cantarell", "Open Sans", "Liberation Serif" };

    for (auto set = 0; set < 32; ++set)
    {
        juce::StringArray installed;

        for (auto i = 0; i < all.size(); ++i)
            if ((set >> i & 1) != 0)
                installed.add (all[i]);

        const auto chosen = interfaceFont::chooseFamily (installed);
        EXPECT_TRUE (chosen.isEmpty() || installed.contains (chosen)) << chosen;
    }
}

TEST (InterfaceFont, UsesLegacyLineMetrics)
{
    EXPECT_EQ (interfaceFont::ofHeight (13.5f).getHeight(), 13.5f);
    EXPECT_EQ (interfaceFont::ofHeight (13.5f).getMetricsKind(), juce::TypefaceMetricsKind::legacy);
}

//======================================================================================================================
class WindowText : public EditorFixture
{
};

/** Also run by the test below, in processes that see one family each. */
TEST_F (WindowText, ShowsInEveryKindOfControl)
{
    set (parameters.seqHpf[0], 0.9f);
    editor().timerCallback();
    const auto image = picture (editor());

    // The header, the version, a caption, a knob's text, a switch's caption, the field, the button.
    for (const auto& area : { juce::Rectangle<int> { 100, 1, 400, 20 },
                              { 100, 24, 400, 12 },
                              { 20, 70, 80, 14 },
                              { 20, 178, 80, 16 },
                              { 34, 520, 80, 18 },
                              { 405, 92, 80, 12 },
                              { 410, 140, 78, 20 } })
    {
        auto numColours = 0;
        const auto first = image.getPixelAt (area.getX(), area.getY());

        for (auto y = area.getY(); y < area.getBottom(); ++y)
            for (auto x = area.getX(); x < area.getRight(); ++x)
                numColours += image.getPixelAt (x, y) != first ? 1 : 0;

        EXPECT_GT (numColours, 10) << area.toString();
    }
}

/** Also run by the test below, with common sans-serifs. */
TEST_F (WindowText, FitsItsBoxes)
{
    // JUCE squeezes a line to seven tenths of its width before it cuts it.
    constexpr auto narrowest = 0.7f;
    KestrinLookAndFeel lookAndFeel;
    const auto expectFit = [&lookAndFeel] (juce::Label& label, const juce::String& text)
    {
        const auto width = juce::GlyphArrangement::getStringWidth (lookAndFeel.getLabelFont (label), text);
        const auto room = label.getBorderSize().subtractedFrom (label.getLocalBounds()).getWidth();
        EXPECT_LE (width * narrowest, (float) room) << text;
    };

    for (auto* knob : allOf<ParameterSlider> (editor()))
    {
        auto* box = allOf<juce::Label> (*knob)[0];

        for (auto position = 0; position <= 200; ++position)
            expectFit (*box, knob->getTextFromValue (knob->getMaximum() * position / 200.0).trim());
    }

    for (auto* label : allOf<juce::Label> (editor()))
        expectFit (*label, label->getText().trim());
}

#if JUCE_LINUX
TEST (InterfaceFont, ShowsTextWithAnySingleFamilyInstalled)
{
    const auto program = juce::File::getSpecialLocation (juce::File::currentExecutableFile);
    const juce::File folder { KESTRIN_TEST_FONTS };
    const juce::File fonts { "/usr/share/fonts" };
    auto numTried = 0;

    struct Font
    {
        const char* name;
        int numTests;
    };

    // A monospaced face is too wide for some boxes, but shows.
    for (const auto& [name, numTests] :
         { Font { "LiberationSans-Regular.ttf", 2 }, Font { "LiberationSerif-Regular.ttf", 2 },
           Font { "LiberationMono-Regular.ttf", 1 }, Font { "DejaVuSans.ttf", 2 }, Font { "DejaVuSansMono.ttf", 1 } })
    {
        const juce::String filter { numTests == 2 ? "WindowText.*" : "WindowText.ShowsInEveryKindOfControl" };
        const auto found = fonts.findChildFiles (juce::File::findFiles, true, name);

        if (found.isEmpty())
            continue;

        ++numTried;
        ASSERT_TRUE (folder.deleteRecursively());
        ASSERT_TRUE (folder.createDirectory());
        ASSERT_TRUE (found[0].copyFileTo (folder.getChildFile (name)));

        juce::ChildProcess child;
        ASSERT_TRUE (child.start ({ "/usr/bin/env", "JUCE_FONT_PATH=" + folder.getFullPathName(),
                                    program.getFullPathName(), "--gtest_filter=" + filter }));
        const auto output = child.readAllProcessOutput();
        child.waitForProcessToFinish (60000);
        EXPECT_EQ (child.getExitCode(), 0u) << name << "\n" << output;
        EXPECT_TRUE (output.contains ("[  PASSED  ] " + juce::String (numTests) + " test")) << name << "\n" << output;
    }

    EXPECT_GT (numTried, 0);
}
#endif
