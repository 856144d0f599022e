// SPDX-License-Identifier: AGPL-3.0-or-later
// A host that does what no host would do on purpose, against the VST3 interfaces themselves.
#include <algorithm>
#include <array>
#include <atomic>
#include <numeric>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "module/RawHost.h"
#include "support/FloatingPointMode.h"

namespace
{
namespace vst = Steinberg::Vst;
using rawHost::Block;
using rawHost::Context;
using rawHost::Flaws;
using rawHost::Instance;
using rawHost::Module;
using rawHost::Point;

/** Positions in the module's list of parameters. */
constexpr int hpFreq = 0, hpReso = 1, hpMode = 2, lpFreq = 3, lpReso = 4, lpMode = 5;

class HostileHost : public testing::Test
{
protected:
    Context context;
    Module module { KESTRIN_MODULE_LIBRARY };
};

/** At 48 kHz. */
void setUpAndStart (Instance& instance, int largestBlock = 512)
{
    ASSERT_TRUE (instance.setUp (48000.0, largestBlock));
    instance.start();
}

/** Sets parameters as a host does: with a block that carries nothing else. */
void set (Instance& instance, std::initializer_list<std::pair<int, double>> values)
{
    Block nothing (2, 0);

    for (const auto& [index, value] : values)
        nothing.changes.add (instance.parameter (index), { { 0, value } });

    ASSERT_EQ (instance.process (nothing), Steinberg::kResultOk);
}

/** Both filters steep and resonant, in the first family. */
void setResonant (Instance& instance)
{
    set (instance,
         { { hpFreq, 0.3 }, { hpReso, 0.9 }, { hpMode, 0.5 }, { lpFreq, 0.7 }, { lpReso, 0.95 }, { lpMode, 0.5 } });
}

/** Everything moves: random positions, the same for the same seed. */
void setAtRandom (Instance& instance, std::uint32_t seed)
{
    std::mt19937 generator (seed);
    Block nothing (2, 0);

    // The last of the list is the host's own bypass.
    for (int index = 0; index < instance.numParameters() - 1; ++index)
        nothing.changes.add (instance.parameter (index), { { 0, (double) generator() / 4294967296.0 } });

    ASSERT_EQ (instance.process (nothing), Steinberg::kResultOk);
}

/** Renders the noise in blocks; the function gives the size of each. */
template <typename NextSize>
[[nodiscard]] std::vector<float> render (Instance& instance, const std::vector<float>& noise, NextSize nextSize)
{
    std::vector<float> result;

    for (std::size_t start = 0; start < noise.size();)
    {
        const auto size = std::min ((std::size_t) nextSize(), noise.size() - start);
        Block block (2, (int) size);

        for (auto& channel : block.input)
            std::copy_n (noise.begin() + (std::ptrdiff_t) start, size, channel.begin());

        EXPECT_EQ (instance.process (block), Steinberg::kResultOk);
        EXPECT_EQ (flawsIn (block), Flaws {});
        result.insert (result.end(), block.output[0].begin(), block.output[0].end());
        start += size;
    }

    return result;
}

[[nodiscard]] std::vector<float> makeNoise (int numFrames, std::uint32_t seed = 1)
{
    Block block (1, numFrames);
    block.fillWithNoise (seed);
    return block.input[0];
}

[[nodiscard]] float peakOf (const std::vector<float>& samples)
{
    return std::accumulate (samples.begin(), samples.end(), 0.0f,
                            [] (float peak, float sample) { return std::max (peak, std::abs (sample)); });
}
} // namespace

TEST_F (HostileHost, MaySendEmptyBlocks)
{
    Instance instance (module, context);
    setUpAndStart (instance);

    for (int i = 0; i < 100; ++i)
    {
        Block block (2, 0);
        EXPECT_EQ (instance.process (block), Steinberg::kResultOk);
    }
}

TEST_F (HostileHost, MaySendEmptyBlocksWithoutBuffers)
{
    Instance instance (module, context);
    setUpAndStart (instance);

    float* nowhere[] { nullptr, nullptr };
    vst::AudioBusBuffers noPointers, nullPointers;
    noPointers.numChannels = nullPointers.numChannels = 2;
    nullPointers.channelBuffers32 = nowhere;

    for (auto* const bus : { static_cast<vst::AudioBusBuffers*> (nullptr), &noPointers, &nullPointers })
    {
        vst::ProcessData data;
        data.processMode = vst::kRealtime;
        data.symbolicSampleSize = vst::kSample32;
        data.numInputs = data.numOutputs = bus != nullptr ? 1 : 0;
        data.inputs = data.outputs = bus;
        EXPECT_EQ (instance.processor->process (data), Steinberg::kResultOk);
    }
}

TEST_F (HostileHost, HearsTheSameForAllBlockSizes)
{
    // Resonant and awake at first, asleep later: both paths through the engine meet all sizes.
    const auto noise = makeNoise (1 << 20);
    std::vector<float> expected;

    for (const auto seed : { 0u, 1u, 2u })
    {
        Instance instance (module, context);
        setUpAndStart (instance, 8191);
        setResonant (instance);

        std::mt19937 generator (seed);
        int next = 0;
        const auto nextSize = [&]() -> int
        {
            // Every size once from 1 to 512, then any.
            if (seed == 1)
                return ++next <= 512 ? next : 1 + (int) (generator() % 8191);

            return seed == 0 ? 512 : 8191;
        };

        const auto output = render (instance, noise, nextSize);

        if (expected.empty())
            expected = output;

        EXPECT_TRUE (output == expected) << "seed " << seed;
    }

    EXPECT_GT (peakOf (expected), 0.1f);
}

TEST_F (HostileHost, MaySendLongerBlocksThanItAnnounced)
{
    const auto noise = makeNoise (100000);
    std::vector<float> expected;

    for (const auto announced : { 100000, 1, 512 })
    {
        Instance instance (module, context);
        setUpAndStart (instance, announced);
        setResonant (instance);
        const auto output = render (instance, noise, [] { return 50000; });

        if (expected.empty())
            expected = output;

        EXPECT_TRUE (output == expected) << "announced " << announced;
    }
}

TEST_F (HostileHost, MayRunAtAnyRate)
{
    const auto noise = makeNoise (20000);

    for (const auto rate :
         { 1234.5678, 8000.0, 22050.0, 44100.0, 48000.0, 88200.0, 96000.0, 192000.0, 384000.0, 768000.0, 1234567.8 })
    {
        for (const auto seed : { 0u, 1u, 2u, 3u })
        {
            SCOPED_TRACE (testing::Message() << rate << " Hz, seed " << seed);
            Instance instance (module, context);
            ASSERT_TRUE (instance.setUp (rate, 1000));
            instance.start();

            if (seed == 0)
                setResonant (instance);
            else
                setAtRandom (instance, seed);

            EXPECT_LT (peakOf (render (instance, noise, [] { return 1000; })), 1000.0f);
        }
    }
}

TEST_F (HostileHost, MayChangeTheRateBetweenStarts)
{
    Instance instance (module, context);
    const auto noise = makeNoise (3000);

    for (const auto rate : { 44100.0, 1234567.8, 1234.5678, 96000.0, 44100.0 })
    {
        ASSERT_TRUE (instance.setUp (rate, 333));
        instance.start();
        setResonant (instance);
        EXPECT_GT (peakOf (render (instance, noise, [] { return 333; })), 0.0f) << rate;
        instance.stop();
    }
}

TEST_F (HostileHost, MaySetUpAndStartInEveryOrder)
{
    using Step = void (*) (Instance&);
    constexpr std::array<Step, 9> steps {
        [] (Instance& instance) { EXPECT_TRUE (instance.setUp (44100.0, 512)); },
        [] (Instance& instance) { EXPECT_TRUE (instance.setUp (96000.0, 64, vst::kOffline)); },
        [] (Instance& instance) { EXPECT_TRUE (instance.setChannels (1)); },
        [] (Instance& instance) { EXPECT_TRUE (instance.setChannels (2)); },
        [] (Instance& instance) { instance.component->activateBus (vst::kAudio, vst::kInput, 0, true); },
        [] (Instance& instance) { instance.component->activateBus (vst::kAudio, vst::kOutput, 0, true); },
        [] (Instance& instance) { EXPECT_EQ (instance.load (instance.state()), Steinberg::kResultOk); },
        [] (Instance& instance) { instance.component->setActive (false); },
        [] (Instance& instance) { instance.processor->setProcessing (false); },
    };

    std::mt19937 generator (7);
    Instance instance (module, context);

    for (int round = 0; round < 200; ++round)
    {
        SCOPED_TRACE (round);
        std::array<std::size_t, steps.size()> order {};
        std::iota (order.begin(), order.end(), std::size_t { 0 });
        std::shuffle (order.begin(), order.end(), generator);

        for (const auto step : order)
            steps[step](instance);

        vst::SpeakerArrangement arrangement = 0;
        ASSERT_EQ (instance.processor->getBusArrangement (vst::kInput, 0, arrangement), Steinberg::kResultOk);
        const auto isMono = arrangement == vst::SpeakerArr::kMono;

        // Once or twice, with and without setProcessing.
        for (int times = 0; times <= round % 2; ++times)
            instance.component->setActive (true);

        if (round % 3 != 0)
            instance.processor->setProcessing (true);

        Block block (isMono ? 1 : 2, 64);
        block.fillWithNoise ((std::uint32_t) round);
        EXPECT_EQ (instance.process (block), Steinberg::kResultOk);
        EXPECT_EQ (flawsIn (block), Flaws {});

        for (int times = 0; times <= round % 2; ++times)
            instance.stop();
    }
}

TEST_F (HostileHost, MayOmitTheTransportOrSendAnOddOne)
{
    Instance instance (module, context);
    setUpAndStart (instance);
    setAtRandom (instance, 11);

    vst::ProcessContext transport {};
    transport.sampleRate = 48000.0;
    transport.tempo = 0.0;
    transport.state = vst::ProcessContext::kPlaying | vst::ProcessContext::kTempoValid
                      | vst::ProcessContext::kProjectTimeMusicValid | vst::ProcessContext::kTimeSigValid;

    for (int i = 0; i < 300; ++i)
    {
        // None, one without tempo and signature, one that plays, and one far before the song.
        transport.projectTimeMusic = i % 4 == 3 ? -1.0e6 : 0.02 * i;
        transport.tempo = i % 4 == 1 ? 0.0 : 120.0;
        transport.timeSigNumerator = transport.timeSigDenominator = i % 4 == 1 ? 0 : 4;

        Block block (2, 512);
        block.fillWithNoise ((std::uint32_t) i);
        block.context = i % 4 == 0 ? nullptr : &transport;
        ASSERT_EQ (instance.process (block), Steinberg::kResultOk);
        ASSERT_EQ (flawsIn (block), Flaws {}) << "block " << i;
    }
}

TEST_F (HostileHost, MayAutomateWithManyPointsAndBeyondTheBlock)
{
    Instance instance (module, context);
    setUpAndStart (instance);
    std::mt19937 generator (5);
    const auto numParameters = instance.numParameters() - 1;

    for (int i = 0; i < 200; ++i)
    {
        Block block (2, 1 + (int) (generator() % 512));
        block.fillWithNoise ((std::uint32_t) i);

        for (int index = 0; index < numParameters; ++index)
        {
            std::vector<Point> points (generator() % 600);

            for (std::size_t point = 0; point < points.size(); ++point)
                points[point] = { (int) point * 3 - 2, (double) generator() / 4294967295.0 };

            block.changes.add (instance.parameter (index), points);
        }

        // One that no parameter has.
        block.changes.add (0x7ffffff0, { { 0, 0.5 } });
        ASSERT_EQ (instance.process (block), Steinberg::kResultOk);
        ASSERT_EQ (flawsIn (block), Flaws {}) << "block " << i;
    }
}

TEST_F (HostileHost, TakesTheLastPointOfAParameter)
{
    Instance instance (module, context);
    setUpAndStart (instance);
    Block block (2, 64);
    block.changes.add (instance.parameter (lpFreq), { { 0, 0.9 }, { 63, 0.4 }, { 64, 0.25 }, { 100000, 0.125 } });
    ASSERT_EQ (instance.process (block), Steinberg::kResultOk);
    EXPECT_NE (instance.state().find ("lp_freq=\"0.1250\""), std::string::npos);
}

TEST_F (HostileHost, MaySetParametersWithoutAudio)
{
    Instance instance (module, context);
    setUpAndStart (instance);

    rawHost::Changes changes;
    changes.add (instance.parameter (hpFreq), { { 0, 0.75 } });
    vst::ProcessData data;
    data.processMode = vst::kRealtime;
    data.symbolicSampleSize = vst::kSample32;
    data.inputParameterChanges = &changes;

    EXPECT_EQ (instance.processor->process (data), Steinberg::kResultOk);
    EXPECT_NE (instance.state().find ("hp_freq=\"0.7500\""), std::string::npos);
}

TEST_F (HostileHost, FindsItsFloatingPointModeUnchanged)
{
    Instance instance (module, context);
    setUpAndStart (instance);
    const auto before = floatingPointMode();
    Block block (2, 512);
    ASSERT_EQ (instance.process (block), Steinberg::kResultOk);
    EXPECT_EQ (floatingPointMode(), before);
}

TEST_F (HostileHost, MayRunTwoInstancesOnTwoThreads)
{
    const auto noise = makeNoise (200000);
    const auto run = [&noise] (Instance& instance) { return render (instance, noise, [] { return 777; }); };

    Instance first (module, context), second (module, context), alone (module, context);
    std::array<std::vector<float>, 2> outputs;
    std::vector<float> expected;

    for (auto* const instance : { &first, &second, &alone })
    {
        setUpAndStart (*instance, 777);
        setResonant (*instance);
    }

    {
        std::thread other ([&] { outputs[1] = run (second); });
        outputs[0] = run (first);
        other.join();
    }

    expected = run (alone);
    EXPECT_TRUE (outputs[0] == expected);
    EXPECT_TRUE (outputs[1] == expected);
}

TEST_F (HostileHost, MaySaveAndLoadFromAnotherThreadWhileAudioRuns)
{
    Instance instance (module, context);
    setUpAndStart (instance, 256);
    setAtRandom (instance, 3);
    const auto one = instance.state();
    setResonant (instance);
    const auto other = instance.state();

    std::atomic<bool> isDone { false };
    std::thread audio (
        [&]
        {
            Block block (2, 256);
            block.fillWithNoise (1);

            while (! isDone)
            {
                EXPECT_EQ (instance.process (block), Steinberg::kResultOk);
                EXPECT_EQ (flawsIn (block), Flaws {});
            }
        });

    for (int i = 0; i < 300; ++i)
    {
        const auto& state = i % 2 == 0 ? one : other;
        EXPECT_EQ (instance.load (state), Steinberg::kResultOk);
        EXPECT_EQ (rawHost::withoutDate (instance.state()), rawHost::withoutDate (state));
    }

    isDone = true;
    audio.join();
}

TEST_F (HostileHost, FindsTheSameStateExceptItsDateAfterLoadAndSave)
{
    for (std::uint32_t seed = 1; seed <= 50; ++seed)
    {
        Instance first (module, context), second (module, context);

        for (auto* const instance : { &first, &second })
        {
            setUpAndStart (*instance);
        }

        setAtRandom (first, seed);
        const auto state = first.state();
        ASSERT_EQ (second.load (state), Steinberg::kResultOk);
        EXPECT_EQ (rawHost::withoutDate (second.state()), rawHost::withoutDate (state)) << "seed " << seed;
    }
}

TEST_F (HostileHost, MayTerminateWithoutDeactivating)
{
    for (int i = 0; i < 20; ++i)
    {
        Instance instance (module, context);
        setUpAndStart (instance);
        Block block (2, 512);
        EXPECT_EQ (instance.process (block), Steinberg::kResultOk);
    }
}

TEST_F (HostileHost, GetsBackAllReferencesToIt)
{
    for (const auto hasRunLoop : { true, false })
    {
        context.hasRunLoop = hasRunLoop;
        const auto before = context.references.load();

        for (int i = 0; i < 5; ++i)
        {
            Instance instance (module, context);
            setUpAndStart (instance);
            EXPECT_FALSE (instance.state().empty());
        }

        EXPECT_EQ (context.references.load(), before);
    }
}

TEST_F (HostileHost, MayEnterAndExitTheModuleRepeatedly)
{
    for (int i = 0; i < 10; ++i)
    {
        Module again (KESTRIN_MODULE_LIBRARY);
        Instance instance (again, context);
        EXPECT_EQ (instance.numParameters(), 56);
    }
}
