// SPDX-License-Identifier: AGPL-3.0-or-later
// The module's window while the sound plays, used with a pointer on a desktop of its own.
#include <array>
#include <cstdio>
#include <memory>

#include <gtest/gtest.h>

#include "module/ModuleUnderTest.h"
#include "support/SoundFiles.h"
#include "system/play/CloseButton.h"
#include "system/play/JackServer.h"
#include "system/play/LiveHost.h"
#include "system/window/Pointer.h"

namespace
{
/** The words of xdotool's answer; empty if it finds no window yet. */
juce::StringArray windowsOfTheModule()
{
    std::array<char, 4096> bytes {};
    const std::unique_ptr<std::FILE, int (*) (std::FILE*)> answer (
        popen ("xdotool search --onlyvisible --name '^Kestrin Tamsile Filter$' 2>/dev/null", "r"), pclose);
    const auto numBytes = std::fread (bytes.data(), 1, bytes.size(), answer.get());
    return juce::StringArray::fromTokens (juce::String (bytes.data(), numBytes).trim(), "\n", "");
}

class PlayWindow : public testing::Test
{
protected:
    /** Longer than the test takes. */
    PlayWindow() { folder.writeSound ("in.wav", 2, 180 * JackServer::sampleRate); }

    /** Brings the pointer to a pixel of the window. */
    void moveTo (LiveHost& live, int x, int y) const
    {
        const auto target = window.toStdString() + " " + std::to_string (x) + " " + std::to_string (y);
        const auto id = (XDisplay::WindowId) window.getLargeIntValue();

        ASSERT_TRUE (live.waitUntil (
            [&]
            {
                Desktop::perform ("mousemove --window " + target);
                return pointer.isAt (id, x, y);
            }))
            << live.errors();
    }

    [[nodiscard]] bool waitForWindow (LiveHost& live)
    {
        return live.waitUntil (
            [&]
            {
                window = windowsOfTheModule()[0];
                return window.isNotEmpty();
            });
    }

    const HostProcess folder;
    const Desktop desktop {};
    const Pointer pointer {};
    JackServer server;
    juce::String window;
};

/** The first frame in which two sounds differ; the length of the shorter one if they do not. */
int firstDifference (const juce::AudioBuffer<float>& first, const juce::AudioBuffer<float>& second)
{
    const auto length = std::min (first.getNumSamples(), second.getNumSamples());

    for (int frame = 0; frame < length; ++frame)
        if (first.getSample (0, frame) != second.getSample (0, frame))
            return frame;

    return length;
}
} // namespace

TEST_F (PlayWindow, AKnobThatIsTurnedIsHeard)
{
    LiveHost live (folder, { "--in", "in.wav", "--record", "heard.wav", "--save-state", "end.xml" },
                   { { "JACK_DEFAULT_SERVER", server.name() } });
    ASSERT_TRUE (waitForWindow (live)) << live.errors();
    ASSERT_TRUE (live.waitForSound (JackServer::sampleRate)) << live.errors();

    // The lowpass's frequency, down by half its range. What has arrived is in the sound soon after.
    constexpr int x = 195, y = 127, way = 125;
    moveTo (live, x, y);
    Desktop::perform ("mousedown 1");
    moveTo (live, x, y + way / 5);
    moveTo (live, x, y + way);
    Desktop::perform ("mouseup 1");
    ASSERT_TRUE (live.waitForSound (3 * JackServer::sampleRate)) << live.errors();
    live.press ("q");
    ASSERT_EQ (live.end(), 0) << live.errors();

    EXPECT_TRUE (folder.file ("end.xml").loadFileAsString().contains ("lp_freq=\"0.5"))
        << folder.file ("end.xml").loadFileAsString();

    ASSERT_EQ (folder.run ({ "render", "--in", "in.wav", "--out", "untouched.wav", "--start-beat", "32" }).exitCode, 0);
    const auto heard = folder.readSound ("heard.wav"), untouched = folder.readSound ("untouched.wav");
    const auto turned = firstDifference (heard, untouched);

    EXPECT_GT (turned, JackServer::sampleRate) << "until the knob is turned it is the untouched sound";
    ASSERT_LT (turned, heard.getNumSamples() - JackServer::sampleRate);

    // Noise through a lowpass at a thirtieth of the band.
    const auto lastSecond = heard.getNumSamples() - JackServer::sampleRate;
    const auto before = heard.getRMSLevel (0, 0, JackServer::sampleRate);
    const auto after = heard.getRMSLevel (0, lastSecond, JackServer::sampleRate);
    EXPECT_LT (after, before * 0.5f);
}

TEST_F (PlayWindow, EndsWhenTheWindowIsClosed)
{
    LiveHost live (folder, { "--in", "in.wav", "--record", "heard.wav" }, { { "JACK_DEFAULT_SERVER", server.name() } });
    ASSERT_TRUE (waitForWindow (live)) << live.errors();
    ASSERT_TRUE (live.waitForSound (JackServer::sampleRate)) << live.errors();
    pressCloseButton ((XDisplay::WindowId) window.getLargeIntValue());

    EXPECT_EQ (live.end(), 0) << live.errors();
    EXPECT_GT (folder.readSound ("heard.wav").getNumSamples(), JackServer::sampleRate);
}
