// SPDX-License-Identifier: AGPL-3.0-or-later
// What the module does on the audio thread, seen from outside: the watch counts its calls into the C library.
#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "module/RawEditor.h"
#include "support/AudioThreadWatch.h"

namespace
{
namespace vst = Steinberg::Vst;
using rawHost::Block;
using rawHost::Context;
using rawHost::Editor;
using rawHost::Instance;
using rawHost::Module;

/** What keeps the module busy, if anything. */
struct Regime
{
    const char* name;
    std::vector<std::pair<int, double>> settings;

    /** What the host adds to a block; not watched. */
    std::function<void (Instance&, Block&, int)> automate = nullptr;
    bool editorIsOpen = false;
};

void PrintTo (const Regime& regime, std::ostream* stream) { *stream << regime.name; }

void automateAll (Instance& instance, Block& block, int number)
{
    for (int index = 0; index < instance.numParameters() - 1; ++index)
        block.changes.add (instance.parameter (index),
                           { { 0, ((number * 31 + index * 17) % 101) * 0.01 }, { 100000, 0.5 } });
}

constexpr int hpFreq = 0, hpReso = 1, hpMode = 2, lpFreq = 3, lpReso = 4, lpMode = 5, filtMode = 30;

const std::vector<std::pair<int, double>> resonant { { hpFreq, 0.3 }, { hpReso, 0.95 }, { hpMode, 0.5 },
                                                     { lpFreq, 0.6 }, { lpReso, 0.95 }, { lpMode, 0.5 } };
const std::vector<std::pair<int, double>> ladder {
    { filtMode, 0.11 }, { lpFreq, 0.6 }, { lpReso, 1.0 }, { lpMode, 0.5 }
};

constexpr int announcedFrames = 4096;

const Regime regimes[] {
    { "Untouched", {} },
    { "Resonant", resonant },
    { "Ladder", ladder },
    { "Automated", {}, automateAll },
    { "WithItsWindowOpen", resonant, nullptr, true },
    { "AutomatedWithItsWindowOpen", resonant, automateAll, true },
};

class ModuleAudioThreadWatch : public testing::Test
{
protected:
    Context context;
    Module module = rawHost::loadWithDisplay (KESTRIN_MODULE_LIBRARY);
};

class ModuleAudioThread : public ModuleAudioThreadWatch, public testing::WithParamInterface<Regime>
{
};
} // namespace

TEST_P (ModuleAudioThread, NeverAllocatesFreesTouchesFilesOrTakesItsOwnLocks)
{
    Instance instance (module, context);
    ASSERT_TRUE (instance.setUp (48000.0, announcedFrames));
    instance.start();

    const auto editor =
        GetParam().editorIsOpen ? std::make_unique<Editor> (instance, context) : std::unique_ptr<Editor>();

    vst::ProcessContext transport {};
    transport.sampleRate = 48000.0;
    transport.tempo = 120.0;
    transport.timeSigNumerator = transport.timeSigDenominator = 4;
    transport.state = vst::ProcessContext::kPlaying | vst::ProcessContext::kTempoValid
                      | vst::ProcessContext::kProjectTimeMusicValid | vst::ProcessContext::kTimeSigValid;

    for (int number = 0; number < 60; ++number)
    {
        // None, one and many frames, and more than were announced; together they reach a wrap of the clock.
        constexpr int sizes[] { 512, 0, 1, 4096, 17, 9000 };
        Block block (2, sizes[number % 6]);
        block.fillWithNoise ((std::uint32_t) number);
        block.context = number % 5 == 0 ? nullptr : &transport;
        transport.projectTimeMusic = number * 0.1;

        if (number == 0)
            for (const auto& [index, value] : GetParam().settings)
                block.changes.add (instance.parameter (index), { { 0, value } });
        else if (GetParam().automate != nullptr)
            GetParam().automate (instance, block, number);

        AudioThreadWatch::Counts counts;

        {
            const AudioThreadWatch watch;
            EXPECT_EQ (instance.process (block), Steinberg::kResultOk);
            counts = watch.counts();
        }

        EXPECT_EQ (counts.allocations, 0) << "block " << number;
        EXPECT_EQ (counts.releases, 0) << "block " << number;
        EXPECT_EQ (counts.systemCalls, 0) << "block " << number;

        // The framework's own: its callback lock around each piece of the announced size, and the lock of a parameter's
        // listeners around a change. They are held for moments. The plug-in itself takes none.
        const auto numPieces = std::max (1, (block.numFrames + announcedFrames - 1) / announcedFrames);
        EXPECT_LE (counts.locks, numPieces + block.changes.getParameterCount()) << "block " << number;

        if (editor != nullptr)
            context.runMessages (4);
    }
}

INSTANTIATE_TEST_SUITE_P (Regimes, ModuleAudioThread, testing::ValuesIn (regimes),
                          [] (const auto& instance) { return std::string (instance.param.name); });

TEST_F (ModuleAudioThreadWatch, CountsAllocationsAndSystemCalls)
{
    const AudioThreadWatch watch;
    const std::vector<char> memory (1000);
    const auto afterAllocation = watch.counts();
    const std::unique_ptr<std::FILE, int (*) (std::FILE*)> file (std::fopen ("/dev/null", "w"), std::fclose);
    EXPECT_GT (afterAllocation.allocations, 0);
    EXPECT_EQ (afterAllocation.systemCalls, 0);
    EXPECT_GT (watch.counts().systemCalls, 0);
}

TEST_F (ModuleAudioThreadWatch, CountsAllocationsInsideTheModule)
{
    Instance instance (module, context);
    vst::String128 text {};
    const AudioThreadWatch watch;

    // The module formats the value, which it never does on the audio thread.
    EXPECT_EQ (instance.controller->getParamStringByValue (instance.parameter (hpFreq), 0.5, text),
               Steinberg::kResultOk);
    EXPECT_GT (watch.counts().allocations, 0);
    EXPECT_GT (watch.counts().releases, 0);
}
