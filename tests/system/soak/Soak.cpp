// SPDX-License-Identifier: AGPL-3.0-or-later
// A day of host time asleep and an hour awake, as fast as the machine goes; or many instances on a pool of threads. Prints its
// measurements; the exit code says whether they are right.
#include <algorithm>
#include <atomic>
#include <barrier>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

#include "dsp/MainAudioProcessor.h"
#include "support/ProcessMemory.h"

namespace
{
constexpr std::int64_t rate = 48000;
constexpr std::int64_t clockPeriod = 65536;

int failures = 0;

void expect (bool holds, const char* sentence)
{
    std::printf ("  %s: %s\n", holds ? "holds" : "DOES NOT HOLD", sentence);
    failures += ! holds;
}

/** The plug-in with a count of its ticks. */
class Counting : public MainAudioProcessor
{
public:
    explicit Counting (std::uint32_t seed) : generator (seed)
    {
        setRateAndBufferSizeDetails ((double) rate, 4096);
        prepareToPlay ((double) rate, 4096);
    }

    /** Blocks of sizes that have nothing to do with the clock. */
    void run (std::int64_t numFrames)
    {
        while (numFrames > 0)
        {
            const auto size = (int) std::min<std::int64_t> (numFrames, 1 + generator() % 4096);
            playBlock (size);
            numFrames -= size;
        }
    }

    void playBlock (int size)
    {
        juce::AudioBuffer<float> block (buffer.getArrayOfWritePointers(), 2, size);
        juce::MidiBuffer noMessages;
        fill (block);
        const auto before = framesUntilClockedUpdate();
        processBlock (block, noMessages);
        requireClock (before, size);
        framesRun += size;

        // FNV-1a over the last frame of each block, which depends on all frames before it.
        for (int channel = 0; channel < 2; ++channel)
            digest = (digest ^ std::bit_cast<std::uint32_t> (buffer.getSample (channel, size - 1))) * 0x100000001b3u;
    }

    std::uint64_t digest = 0xcbf29ce484222325u;
    std::int64_t framesRun = 0;
    std::int64_t wraps = 0;
    bool clockIsRight = true;
    bool soundIsFinite = true;
    bool isLoud = false;

private:
    void fill (juce::AudioBuffer<float>& block)
    {
        for (int channel = 0; channel < 2; ++channel)
            for (int frame = 0; frame < block.getNumSamples(); ++frame)
                block.setSample (channel, frame, isLoud ? (float) generator() / 4294967296.0f - 0.5f : 0.0f);
    }

    /** Wherever the block has fallen, the clock has gone on by its frames and wraps at its period. */
    void requireClock (int before, int size)
    {
        const auto expected = ((before - size) % clockPeriod + clockPeriod) % clockPeriod;
        clockIsRight = clockIsRight && framesUntilClockedUpdate() == expected;
        wraps += size > before;
        soundIsFinite = soundIsFinite && std::isfinite (buffer.getSample (0, size - 1));
    }

    std::mt19937 generator;
    juce::AudioBuffer<float> buffer { 2, 4096 };
};

template <typename Body>
void timed (const char* name, double hours, Body body)
{
    const auto start = std::chrono::steady_clock::now();
    std::printf ("%s\n", name);
    body();
    const auto seconds = std::chrono::duration<double> (std::chrono::steady_clock::now() - start).count();
    std::printf ("  %.1f s, %.0f times as fast as time\n", seconds, hours * 3600.0 / seconds);
}

void sleepForADay()
{
    Counting plugin (1);
    plugin.run (20 * rate);
    expect (! plugin.controlUpdatePending, "no tick is requested after twenty seconds of rest");

    const auto framesBefore = plugin.framesRun, wrapsBefore = plugin.wraps;
    constexpr auto numFrames = 24 * 3600 * rate;
    plugin.run (numFrames);

    const auto expectedWraps = (framesBefore + numFrames) / clockPeriod - framesBefore / clockPeriod;
    expect (plugin.wraps - wrapsBefore == expectedWraps, "the clock has wrapped once per 65536 frames");
    expect (plugin.clockIsRight, "the clock was right after every block");
    expect (numFrames > std::numeric_limits<std::int32_t>::max(), "the day has more frames than the counter can count");
    expect (plugin.framesSinceRequest == std::numeric_limits<std::int32_t>::max(),
            "the counter of frames stops at its largest value");
    expect (! plugin.controlUpdatePending, "it still sleeps");
    expect (plugin.soundIsFinite, "every sample that was checked was finite");
    std::printf ("  %lld frames, %lld wraps\n", (long long) plugin.framesRun, (long long) plugin.wraps);

    plugin.parameters.lpFreq->juce::AudioProcessorParameter::setValueNotifyingHost (0.25f);
    plugin.run (1);
    plugin.run (1);
    expect (plugin.framesSinceRequest < 2, "a parameter wakes it, and the counter starts again");
}

void stayAwakeForAnHour()
{
    Counting plugin (2);
    plugin.isLoud = true;
    plugin.parameters.lfoToLpFreq[0]->juce::AudioProcessorParameter::setValueNotifyingHost (0.9f);
    plugin.parameters.lfoToHpReso[1]->juce::AudioProcessorParameter::setValueNotifyingHost (0.8f);
    plugin.run (3600 * rate);

    expect (plugin.controlUpdatePending, "it is still awake");
    expect (plugin.framesSinceRequest == 0, "the counter of frames begins with every frame");
    expect (plugin.clockIsRight, "the clock was right after every block");
    expect (plugin.wraps == plugin.framesRun / clockPeriod, "the clock has wrapped once per 65536 frames");
    expect (plugin.soundIsFinite, "every sample that was checked was finite");

    for (const auto& lfo : plugin.lfo)
        expect (lfo.phaseA >= 0.0f && lfo.phaseA <= 1.0f, "an LFO's phase lies in 0 to 1");

    std::printf ("  %lld frames, %lld wraps\n", (long long) plugin.framesRun, (long long) plugin.wraps);
}

/** Four patches: asleep, one LFO, a ladder, and a knob that the host turns now and then. */
constexpr std::uint32_t numPatches = 4;

void set (juce::AudioProcessorParameter* parameter, float position) { parameter->setValue (position); }

void setUp (Counting& plugin, std::uint32_t patch)
{
    plugin.isLoud = patch != 0;

    if (patch == 1)
        set (plugin.parameters.lfoToLpFreq[0], 0.9f);

    if (patch == 2)
        set (plugin.parameters.filtMode, 1.0f / (float) (plugin.parameters.filtMode->getStepCount() - 1));
}

/** A song in as many instances, as a DAW's pool of threads plays it: every thread takes instances from the list until the
    block is done, and none begins the next block before all have ended this one. An instance thus goes from thread to thread. */
void playTogether (double hours, std::size_t numInstances, std::size_t numThreads)
{
    constexpr int blockSize = 512;
    const auto numBlocks = (std::int64_t) (hours * 3600.0 * (double) rate / blockSize);
    std::vector<std::unique_ptr<Counting>> plugins;

    for (std::size_t i = 0; i < numInstances; ++i)
    {
        plugins.push_back (std::make_unique<Counting> ((std::uint32_t) i % numPatches));
        setUp (*plugins.back(), (std::uint32_t) i % numPatches);
    }

    std::atomic<std::size_t> next { 0 };
    std::int64_t numDone = 0;
    double memoryAtFirst = 0.0;

    const auto endBlock = [&]() noexcept
    {
        next = 0;

        if (++numDone == std::max (numBlocks / 100, std::int64_t { 1 }))
            memoryAtFirst = processMemoryMegabytes();

        if (numDone % 1000 == 0)
            for (std::size_t i = 3; i < numInstances; i += numPatches)
                set (plugins[i]->parameters.lpFreq, (float) (numDone / 1000 % 11) / 10.0f);
    };

    std::barrier allHavePlayed ((std::ptrdiff_t) numThreads, endBlock);

    const auto play = [&]
    {
        for (std::int64_t block = 0; block < numBlocks; ++block)
        {
            for (auto i = next++; i < numInstances; i = next++)
                plugins[i]->playBlock (blockSize);

            allHavePlayed.arrive_and_wait();
        }
    };

    std::vector<std::thread> threads;

    for (std::size_t i = 0; i < numThreads; ++i)
        threads.emplace_back (play);

    for (auto& thread : threads)
        thread.join();

    expect (std::all_of (plugins.begin(), plugins.end(), [] (const auto& plugin) { return plugin->clockIsRight; }),
            "every clock was right after every block");
    expect (std::all_of (plugins.begin(), plugins.end(), [] (const auto& plugin) { return plugin->soundIsFinite; }),
            "every sample that was checked was finite");

    auto areEqual = true;

    for (std::size_t i = numPatches; i < numInstances; ++i)
        areEqual = areEqual && plugins[i]->digest == plugins[i % numPatches]->digest;

    expect (areEqual, "instances with the same patch and input have made the same sound");

    const auto memoryAtEnd = processMemoryMegabytes();
    expect (memoryAtEnd - memoryAtFirst < 1.0, "no memory was taken after the first hundredth");
    std::printf ("  %zu instances on %zu threads, %.2f hours each: %lld frames in all, memory %.1f MB, then %.1f MB\n",
                 numInstances, numThreads, hours, (long long) (numBlocks * blockSize * (std::int64_t) numInstances),
                 memoryAtFirst, memoryAtEnd);
}
} // namespace

int main (int argc, char** argv)
{
    if (argc > 1 && std::string_view (argv[1]) == "together")
    {
        const auto hours = argc > 2 ? std::atof (argv[2]) : 1.0;
        timed ("64 instances on 4 threads", hours, [=] { playTogether (hours, 64, 4); });
        return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    }

    timed ("24 hours asleep", 24.0, sleepForADay);
    timed ("1 hour awake", 1.0, stayAwakeForAnHour);
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
