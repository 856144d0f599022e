// SPDX-License-Identifier: AGPL-3.0-or-later
// The window, while audio runs, in a host that opens, resizes and closes it as it likes.
#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "module/RawEditor.h"

namespace
{
namespace vst = Steinberg::Vst;
using rawHost::Block;
using rawHost::Context;
using rawHost::Editor;
using rawHost::Flaws;
using rawHost::Instance;
using rawHost::Module;

class HostileWindow : public testing::Test
{
protected:
    void startAudio()
    {
        ASSERT_TRUE (instance.setUp (48000.0, 256));
        instance.start();

        audio = std::thread (
            [this]
            {
                Block block (2, 256);
                block.fillWithNoise (1);

                for (unsigned int number = 0; ! isDone; ++number)
                {
                    block.changes.clear();

                    for (int index = 0; index < 6; ++index)
                        block.changes.add (instance.parameter (index), { { 0, (double) (number % 101) / 100.0 } });

                    EXPECT_EQ (instance.process (block), Steinberg::kResultOk);
                    EXPECT_EQ (flawsIn (block), Flaws {});
                    ++numBlocks;
                }
            });
    }

    void TearDown() override
    {
        isDone = true;

        if (audio.joinable())
            audio.join();

        EXPECT_GT (numBlocks, 0);
    }

    Context context;
    Module module = rawHost::loadWithDisplay (KESTRIN_MODULE_LIBRARY);
    Instance instance { module, context };
    std::atomic<bool> isDone { false };
    std::atomic<int> numBlocks { 0 };
    std::thread audio;
};
} // namespace

TEST_F (HostileWindow, MayBeOpenedResizedAndClosedWhileAudioRuns)
{
    startAudio();

    for (int i = 0; i < 8; ++i)
    {
        Editor editor (instance, context);
        ASSERT_TRUE (editor.isOpen);

        for (const auto size : { 1, 100, 266, 520, 546, 3000 })
            editor.resize (size, 2 * size);
    }
}

TEST_F (HostileWindow, MayBeOpenWhileStatesAreLoadedAndSaved)
{
    startAudio();
    Editor editor (instance, context);
    ASSERT_TRUE (editor.isOpen);
    const auto state = instance.state();

    for (int i = 0; i < 50; ++i)
    {
        EXPECT_EQ (instance.load (state), Steinberg::kResultOk);
        EXPECT_FALSE (instance.state().empty());
        context.runMessages (3);
    }
}

TEST_F (HostileWindow, MayBeCreatedAndNeverShown)
{
    startAudio();

    for (int i = 0; i < 20; ++i)
    {
        const Steinberg::IPtr<Steinberg::IPlugView> view (instance.controller->createView (vst::ViewType::kEditor),
                                                          false);
        Steinberg::ViewRect size;
        EXPECT_EQ (view->getSize (&size), Steinberg::kResultOk);
        EXPECT_GT (size.getWidth(), 200);
    }
}

// JUCE sometimes reads an event of the display without handling it, and from then on nothing tells the host that one is
// waiting. A host that never reports events has the same effect.
TEST_F (HostileWindow, HandlesAClickThatTheHostNeverReports)
{
    constexpr int narrow = 266, wide = 520;
    constexpr int mostRounds = 1000;

    startAudio();
    Editor editor (instance, context);
    ASSERT_TRUE (editor.isOpen);
    ASSERT_EQ (editor.width(), narrow);

    context.watchesDisplay = false;
    editor.click (17, 529);

    for (int round = 0; round < mostRounds && editor.width() == narrow; ++round)
        context.runMessages (10);

    EXPECT_EQ (editor.width(), wide);
}
