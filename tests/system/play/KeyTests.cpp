// SPDX-License-Identifier: AGPL-3.0-or-later
// What the keys do, typed at a terminal.
#include <gtest/gtest.h>

#include "host/PluginState.h"
#include "module/ModuleUnderTest.h"
#include "system/play/JackServer.h"
#include "system/play/LiveHost.h"

namespace
{
class Keys : public testing::Test
{
protected:
    /** Eight bars, so that no bar comes twice while a test looks. */
    Keys() { folder.writeSound ("in.wav", 2, 8 * 88200); }

    [[nodiscard]] std::unique_ptr<LiveHost> start (const juce::StringArray& arguments = {}) const
    {
        juce::StringArray words ("--no-window", "--in", "in.wav", "--save-state", "end.xml");
        words.addArray (arguments);
        return std::make_unique<LiveHost> (folder, words,
                                           LiveHost::Variables { { "JACK_DEFAULT_SERVER", server.name() } });
    }

    /** Ends it by its key. */
    void quit (LiveHost& live) const
    {
        live.press ("q");
        EXPECT_EQ (live.end(), 0) << live.errors();
    }

    /** The bar in the status line; 0 before there is one. */
    [[nodiscard]] static int barOf (const LiveHost& live)
    {
        auto words = juce::StringArray::fromTokens (live.status(), " ", "");
        words.removeEmptyStrings();
        return words[1].getIntValue();
    }

    const HostProcess folder;
    const JackServer server;
};
} // namespace

TEST_F (Keys, SpaceHaltsAndGoesOn)
{
    const auto live = start();
    ASSERT_TRUE (live->waitForStatus ("playing")) << live->errors();
    live->press (" ");
    ASSERT_TRUE (live->waitForStatus ("halted"));
    ASSERT_TRUE (live->waitForStatus ("in  -inf")) << live->status();
    live->press (" ");
    ASSERT_TRUE (live->waitForStatus ("playing"));
    quit (*live);
}

TEST_F (Keys, ArrowsMoveByABarAndAroundTheEnds)
{
    const auto live = start();
    ASSERT_TRUE (live->waitForStatus ("playing")) << live->errors();
    live->press (" ");
    ASSERT_TRUE (live->waitForStatus ("halted"));
    const auto bar = barOf (*live);
    const auto after = [bar] (int moves) { return 9 + (bar - 9 + moves + 8) % 8; };

    // Both forms in which terminals send arrows, and one that comes in two parts.
    live->press ("\033[C");
    ASSERT_TRUE (live->waitUntil ([&] { return barOf (*live) == after (1); })) << live->status();
    live->press ("\033OD\033[D");
    ASSERT_TRUE (live->waitUntil ([&] { return barOf (*live) == after (-1); })) << live->status();
    live->press ("\033");
    live->press ("[C");
    ASSERT_TRUE (live->waitUntil ([&] { return barOf (*live) == after (0); })) << live->status();
    quit (*live);
}

TEST_F (Keys, LLoopsTheBarThatPlays)
{
    const auto live = start();
    ASSERT_TRUE (live->waitForStatus ("playing")) << live->errors();
    live->press ("l");
    ASSERT_TRUE (live->waitForStatus ("bar loop"));
    const auto bar = barOf (*live);

    // Past the end of the bar: its first beat comes again, after its fourth.
    ASSERT_TRUE (live->waitForStatus (std::to_string (bar) + ".4")) << live->status();
    ASSERT_TRUE (live->waitForStatus (std::to_string (bar) + ".1")) << live->status();
    live->press ("l");
    ASSERT_TRUE (live->waitUntil ([&] { return barOf (*live) == bar + 1; })) << live->status();
    quit (*live);
}

TEST_F (Keys, BBypassesAtTheSamePlaceThroughTheModulesOwnBypass)
{
    const auto live = start ({ "--set", "lp_freq=0.1", "--record", "heard.wav" });
    ASSERT_TRUE (live->waitForStatus ("playing")) << live->errors();
    live->press ("b");
    ASSERT_TRUE (live->waitForStatus ("bypass"));

    // Longer than its way into the sound and from there into the file.
    ASSERT_TRUE (live->waitForSound (2 * JackServer::sampleRate));
    quit (*live);

    const auto input = folder.readSound ("in.wav"), heard = folder.readSound ("heard.wav");
    const auto last = heard.getNumSamples() - 1;
    EXPECT_NE (heard.getSample (0, 0), input.getSample (0, 0));

    for (int frame = last - 1000; frame <= last; ++frame)
        ASSERT_EQ (heard.getSample (0, frame), input.getSample (0, frame % input.getNumSamples())) << frame;
}

TEST_F (Keys, BEndsTheBypass)
{
    const auto live = start ({ "--set", "byps=1" });
    ASSERT_TRUE (live->waitForStatus ("bypass")) << live->errors();
    live->press ("b");
    ASSERT_TRUE (live->waitUntil ([&] { return live->status().find ("bypass") == std::string::npos; }));
    quit (*live);
}

TEST_F (Keys, PStepsThroughThePresets)
{
    auto presets = juce::File (KESTRIN_BUILT_PRESETS).findChildFiles (juce::File::findFiles, false, "*.vstpreset");
    presets.sort();
    ASSERT_GT (presets.size(), 3);
    const auto nameOf = [&] (int index) { return presets[index].getFileNameWithoutExtension().toStdString() + "\r\n"; };

    const auto live = start ({ "--preset", presets[0].getFileNameWithoutExtension().toUpperCase() });
    ASSERT_TRUE (live->waitForStatus ("playing")) << live->errors();
    live->press ("p");
    ASSERT_TRUE (live->waitUntil ([&] { return live->shown().find (nameOf (1)) != std::string::npos; }));
    live->press ("PP");
    ASSERT_TRUE (
        live->waitUntil ([&] { return live->shown().find (nameOf (presets.size() - 1)) != std::string::npos; }));
    live->press ("Pp");
    quit (*live);

    // It ends with the last of all, and the module has its settings.
    ModuleUnderTest expected, found;
    pluginState::loadFile (expected.instance(), presets.getLast());
    pluginState::loadFile (found.instance(), folder.file ("end.xml"));

    for (const auto& parameter : expected.parameters().all())
        EXPECT_EQ (found.get (parameter.id), expected.get (parameter.id)) << parameter.id;
}

TEST_F (Keys, EveryOtherKeyIsIgnored)
{
    const auto live = start();
    ASSERT_TRUE (live->waitForStatus ("playing")) << live->errors();
    live->press ("xyz\t\n\033[A\033[B\0331");
    quit (*live);
    EXPECT_TRUE (live->terminalIsOrdinary());
}
