// SPDX-License-Identifier: AGPL-3.0-or-later
// What the module does on the audio thread, seen from outside: the watch counts its calls into the C library.
#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <dlfcn.h>

#include <gmock/gmock.h>

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

vst::ProcessContext playingTransport()
{
    vst::ProcessContext transport {};
    transport.sampleRate = 48000.0;
    transport.tempo = 120.0;
    transport.timeSigNumerator = transport.timeSigDenominator = 4;
    transport.state = vst::ProcessContext::kPlaying | vst::ProcessContext::kTempoValid
                      | vst::ProcessContext::kProjectTimeMusicValid | vst::ProcessContext::kTimeSigValid;
    return transport;
}

/** What one block has done on its thread. */
struct Seen
{
    AudioThreadWatch::Counts counts;
    std::vector<const void*> mutexes;
};

Seen watchBlock (Instance& instance, Block& block)
{
    Seen seen;
    const AudioThreadWatch watch;
    EXPECT_EQ (instance.process (block), Steinberg::kResultOk);
    seen.counts = watch.counts();

    // Allocates, and so comes last.
    const auto mutexes = watch.lockedMutexes().first ((std::size_t) seen.counts.locks);
    seen.mutexes.assign (mutexes.begin(), mutexes.end());
    return seen;
}

/** Runs on a new thread, which ends with it. */
Seen watchBlockOnFreshThread (Instance& instance, Block& block)
{
    Seen seen;
    std::thread ([&] { seen = watchBlock (instance, block); }).join();
    return seen;
}

/** The two values that each parameter is sent to in turn: that of the regime, and the end of its range that is farther off. */
class ParameterMoves
{
public:
    ParameterMoves (Instance& instance, const Regime& regime)
    {
        for (int index = 0; index < instance.numParameters(); ++index)
        {
            ids.push_back (instance.parameter (index));
            home.push_back (instance.controller->getParamNormalized (ids.back()));
        }

        for (const auto& [index, value] : regime.settings)
            home[(std::size_t) index] = value;
    }

    [[nodiscard]] std::size_t size() const { return ids.size(); }
    void addHome (Block& block, std::size_t index) const { block.changes.add (ids[index], { { 0, home[index] } }); }

    void addAway (Block& block, std::size_t index) const
    {
        block.changes.add (ids[index], { { 0, home[index] < 0.5 ? 1.0 : 0.0 } });
    }

private:
    std::vector<vst::ParamID> ids;
    std::vector<double> home;
};

/** The framework's locks by name. A block without changes locks the callback lock and nothing else; a block that changes one
    parameter also locks that parameter's listeners. Any other mutex has no name. */
class KnownLocks
{
public:
    KnownLocks (Instance& instance, const ParameterMoves& moves)
    {
        Block still (2, 64);
        name (watchBlock (instance, still), "callback");

        for (std::size_t index = 0; index < moves.size(); ++index)
        {
            Block away (2, 64), home (2, 64);
            moves.addAway (away, index);
            moves.addHome (home, index);
            name (watchBlock (instance, away), listenersOf (index));
            name (watchBlock (instance, home), listenersOf (index));
        }
    }

    /** The names of what the block has locked. */
    [[nodiscard]] std::vector<std::string> namesIn (const Seen& seen) const
    {
        std::vector<std::string> result;

        for (const auto* mutex : seen.mutexes)
            result.push_back (names.count (mutex) != 0 ? names.at (mutex) : "a lock of another kind");

        return result;
    }

    [[nodiscard]] static std::vector<std::string> expectedFor (std::size_t numChanged)
    {
        std::vector<std::string> result { "callback" };

        for (std::size_t index = 0; index < numChanged; ++index)
            result.push_back (listenersOf (index));

        return result;
    }

private:
    static std::string listenersOf (std::size_t index) { return "listeners of parameter " + std::to_string (index); }

    /** Gives the name to the one mutex of the block that has none yet. */
    void name (const Seen& seen, const std::string& text)
    {
        for (const auto* mutex : seen.mutexes)
            names.emplace (mutex, text);

        const auto expected = text == "callback" ? std::vector { text } : std::vector<std::string> { "callback", text };
        EXPECT_THAT (namesIn (seen), testing::UnorderedElementsAreArray (expected));
    }

    std::map<const void*, std::string> names;
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

    auto transport = playingTransport();

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

TEST_P (ModuleAudioThread, CallsForNoMemoryInTheFirstBlockOfAFreshThread)
{
    Instance instance (module, context);
    ASSERT_TRUE (instance.setUp (48000.0, announcedFrames));
    instance.start();

    const auto editor =
        GetParam().editorIsOpen ? std::make_unique<Editor> (instance, context) : std::unique_ptr<Editor>();
    const ParameterMoves moves (instance, GetParam());

    // Away from the default, so that the settings of the regime are changes.
    Block toTheRegime (2, 64);

    for (std::size_t index = 0; index < moves.size(); ++index)
        moves.addHome (toTheRegime, index);

    ASSERT_EQ (instance.process (toTheRegime), Steinberg::kResultOk);
    const KnownLocks locks (instance, moves);
    auto transport = playingTransport();

    // Every parameter leaves the regime on one thread and comes back on the next.
    for (int number = 0; number < 100; ++number)
    {
        Block block (2, 512);
        block.fillWithNoise ((std::uint32_t) number);
        block.context = &transport;
        transport.projectTimeMusic = number * 0.1;

        for (std::size_t index = 0; index < moves.size(); ++index)
            number % 2 == 0 ? moves.addAway (block, index) : moves.addHome (block, index);

        const auto seen = watchBlockOnFreshThread (instance, block);

        EXPECT_EQ (seen.counts.allocations, 0) << "thread " << number;
        EXPECT_EQ (seen.counts.releases, 0) << "thread " << number;
        EXPECT_EQ (seen.counts.systemCalls, 0) << "thread " << number;
        EXPECT_THAT (locks.namesIn (seen), testing::UnorderedElementsAreArray (KnownLocks::expectedFor (moves.size())))
            << "thread " << number;

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

TEST_F (ModuleAudioThreadWatch, CountsWhatTheLoaderAllocatesOnAFreshThread)
{
    const std::unique_ptr<void, int (*) (void*)> library (dlopen (KESTRIN_THREAD_BLOCK_LIBRARY, RTLD_NOW), dlclose);
    ASSERT_NE (library, nullptr) << dlerror();
    auto* const touch = reinterpret_cast<char (*)()> (dlsym (library.get(), "touchThreadBlock"));
    long atFirstUse = 0, atSecondUse = 0;

    std::thread (
        [&]
        {
            const AudioThreadWatch watch;
            touch();
            atFirstUse = watch.counts().allocations;
            touch();
            atSecondUse = watch.counts().allocations;
        })
        .join();

    EXPECT_EQ (atFirstUse, 1);
    EXPECT_EQ (atSecondUse, 1);
}
