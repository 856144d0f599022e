// SPDX-License-Identifier: AGPL-3.0-or-later
// A day of host time asleep and an hour awake, as fast as the machine goes. Prints its measurements; the exit code says
// whether they are right.
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>

#include "dsp/MainAudioProcessor.h"

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
            juce::AudioBuffer<float> block (buffer.getArrayOfWritePointers(), 2, size);
            juce::MidiBuffer noMessages;
            fill (block);
            const auto before = framesUntilClockedUpdate();
            processBlock (block, noMessages);
            requireClock (before, size);
            framesRun += size;
            numFrames -= size;
        }
    }

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
void timed (const char* name, std::int64_t hours, Body body)
{
    const auto start = std::chrono::steady_clock::now();
    std::printf ("%s\n", name);
    body();
    const auto seconds = std::chrono::duration<double> (std::chrono::steady_clock::now() - start).count();
    std::printf ("  %.1f s, %.0f times as fast as time\n", seconds, (double) hours * 3600.0 / seconds);
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
} // namespace

int main()
{
    timed ("24 hours asleep", 24, sleepForADay);
    timed ("1 hour awake", 1, stayAwakeForAnHour);
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
