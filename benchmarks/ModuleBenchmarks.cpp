// SPDX-License-Identifier: AGPL-3.0-or-later
// module_benchmarks: what the built module costs a host: a frame of sound through the VST3 interface, loading it, making an
// instance, opening the window, and memory. A stopwatch does for these.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <limits>
#include <vector>

#include <juce_audio_processors/juce_audio_processors.h>

#if JUCE_LINUX
#include <fstream>
#include <unistd.h>
#endif

#include "host/HostError.h"
#include "host/ModuleLoader.h"
#include "host/PrivateDisplay.h"
#include "host/XDisplay.h"
#include "Patch.h"

namespace
{
using Instance = std::unique_ptr<juce::AudioPluginInstance>;

constexpr int repetitions = 20;
constexpr double sampleRate = 48000.0;
constexpr int blockSize = 512;

template <typename Act>
double millisecondsOf (Act act)
{
    const auto start = std::chrono::steady_clock::now();
    act();
    return std::chrono::duration<double, std::milli> (std::chrono::steady_clock::now() - start).count();
}

void printRow (const char* what, double value, const char* unit)
{
    std::printf ("| %-66s | %9.2f %-3s |\n", what, value, unit);
}

/** Makes instances of one module. The first one loads it, and it stays loaded as long as one of them lives: until then
    JUCE has only read the description that lies beside it. */
class Maker
{
public:
    explicit Maker (const juce::File& module)
    {
        format.findAllTypesForFile (descriptions, module.getFullPathName());

        if (descriptions.isEmpty())
            throw HostError (module.getFullPathName() + ": cannot be loaded");
    }

    [[nodiscard]] Instance make()
    {
        juce::String error;
        auto instance = format.createInstanceFromDescription (*descriptions.getFirst(), sampleRate, blockSize, error);

        if (instance == nullptr)
            throw HostError (error);

        return instance;
    }

private:
    juce::VST3PluginFormat format;
    juce::OwnedArray<juce::PluginDescription> descriptions;
};

//======================================================================================================================
/** A transport that plays at 120 bpm. */
class Transport : public juce::AudioPlayHead
{
public:
    juce::Optional<PositionInfo> getPosition() const override
    {
        PositionInfo info;
        info.setBpm (120.0);
        info.setPpqPosition (beats);
        info.setTimeSignature (TimeSignature { 4, 4 });
        info.setIsPlaying (true);
        return info;
    }

    void moveOn (int numFrames) { beats += 2.0 * numFrames / sampleRate; }

private:
    double beats = 1.0;
};

struct HostBlocks
{
    int numFrames;
    bool areAutomated;
};

/** The shortest of many blocks of noise. Automation sets both cutoffs before each block. */
double nanosecondsPerFrame (Maker& maker, const Patch& patch, HostBlocks blocks)
{
    constexpr auto seconds = 8;
    constexpr std::array automated { 0, 3 }; // the cutoffs
    const auto instance = maker.make();
    const auto& parameters = instance->getParameters();
    Transport transport;
    juce::Random random (1);
    juce::AudioBuffer<float> sound (2, blocks.numFrames);
    juce::MidiBuffer noMidi;
    auto fastest = std::numeric_limits<double>::infinity();

    for (const auto& setting : patch.settings)
        parameters[setting.index]->setValue (setting.position);

    instance->setPlayHead (&transport);
    instance->prepareToPlay (sampleRate, blocks.numFrames);

    for (int done = 0; done < seconds * (int) sampleRate; done += blocks.numFrames)
    {
        for (int channel = 0; channel < 2; ++channel)
            for (int frame = 0; frame < blocks.numFrames; ++frame)
                sound.setSample (channel, frame, random.nextFloat() - 0.5f);

        if (blocks.areAutomated)
            for (const auto index : automated)
                parameters[index]->setValue (0.45f + 0.1f * random.nextFloat());

        const auto time = millisecondsOf ([&] { instance->processBlock (sound, noMidi); });
        transport.moveOn (blocks.numFrames);

        // At first the knobs glide to where they are set.
        if (done > (int) sampleRate)
            fastest = std::min (fastest, time);
    }

    instance->releaseResources();
    return fastest * 1e6 / blocks.numFrames;
}

void measureSound (Maker& maker)
{
    const std::array<std::pair<const char*, Patch>, 6> regimes {
        { { "asleep, 12/12", Patch::asleep (2) },
          { "asleep, 48/48", Patch::asleep (4) },
          { "asleep, 48/48, both resonances at 100 %", Patch::asleep (4, 1.0f) },
          { "ladder, 48/48, grunge at 50 %", Patch::ladder (0.5f) },
          { "awake, LFO 1 sine to the highpass cutoff, 12/12", Patch::oneLfo() },
          { "awake, everything, 48/48", Patch::everything() } }
    };

    std::printf ("### The sound in a host\n\nNanoseconds per frame through the built module's VST3 interface, by the "
                 "frames in a block of the host. Automated: the host\nsets both cutoffs for every block, so that "
                 "nothing sleeps.\n\n");
    std::printf ("| %-50s | %8s | %14s | %8s | %14s |\n", "regime", "64", "64, automated", "512", "512, automated");
    std::printf ("|:%s|%s:|%s:|%s:|%s:|\n", std::string (51, '-').c_str(), std::string (9, '-').c_str(),
                 std::string (15, '-').c_str(), std::string (9, '-').c_str(), std::string (15, '-').c_str());

    for (const auto& [name, patch] : regimes)
        std::printf (
            "| %-50s | %8.1f | %14.1f | %8.1f | %14.1f |\n", name, nanosecondsPerFrame (maker, patch, { 64, false }),
            nanosecondsPerFrame (maker, patch, { 64, true }), nanosecondsPerFrame (maker, patch, { 512, false }),
            nanosecondsPerFrame (maker, patch, { 512, true }));

    std::printf ("\n");
}

//======================================================================================================================
/** The shortest of many. */
template <typename Act>
double fastest (Act act)
{
    auto best = std::numeric_limits<double>::infinity();

    for (int i = 0; i < repetitions; ++i)
        best = std::min (best, act());

    return best;
}

double timeOfAnInstance (Maker& maker)
{
    return fastest (
        [&]
        {
            Instance instance;
            return millisecondsOf ([&] { instance = maker.make(); });
        });
}

double timeOfTheWindow (juce::AudioPluginInstance& instance)
{
    return fastest (
        [&]
        {
            std::unique_ptr<juce::AudioProcessorEditor> editor;
            const auto time = millisecondsOf (
                [&]
                {
                    editor.reset (instance.createEditorIfNeeded());
                    editor->addToDesktop (0);
                    editor->setVisible (true);
                });

            // What the window has begun is done before it goes.
            juce::MessageManager::getInstance()->runDispatchLoopUntil (100);
            return time;
        });
}

/** Memory of this process that is really there, in bytes; 0 where nobody tells. */
double residentBytes()
{
#if JUCE_LINUX
    std::ifstream status ("/proc/self/statm");
    double total = 0.0, resident = 0.0;
    status >> total >> resident;
    return resident * (double) sysconf (_SC_PAGESIZE);
#else
    return 0.0;
#endif
}

double mebibytesOfAnInstance (Maker& maker)
{
    constexpr auto bytesOfAMebibyte = 1048576.0;
    std::vector<Instance> instances;
    juce::AudioBuffer<float> buffer (2, blockSize);
    juce::MidiBuffer noMidi;
    const auto before = residentBytes();

    for (int i = 0; i < repetitions; ++i)
    {
        instances.push_back (maker.make());
        instances.back()->prepareToPlay (sampleRate, blockSize);
        buffer.clear();
        instances.back()->processBlock (buffer, noMidi);
    }

    return (residentBytes() - before) / bytesOfAMebibyte / repetitions;
}

void measure()
{
    const XDisplay errorsOfWindowsWithoutManagerAreHarmless;
    Maker maker (moduleLoader::findModule());

    Instance kept;
    const auto firstInstance = millisecondsOf ([&] { kept = maker.make(); });

    measureSound (maker);
    std::printf (
        "### Around the sound\n\nThe built module in a host, in process; the file is in the system's cache.\n\n");
    std::printf ("| %-66s | %13s |\n|:%s|%s:|\n", "", "", std::string (67, '-').c_str(), std::string (14, '-').c_str());
    printRow ("load the module and make the first instance", firstInstance, "ms");
    printRow ("make one more instance", timeOfAnInstance (maker), "ms");
    printRow ("open the window", timeOfTheWindow (*kept), "ms");

    if (residentBytes() > 0.0)
        printRow ("memory of an instance that has played, without its window", mebibytesOfAnInstance (maker), "MiB");
}
} // namespace

int main()
{
    try
    {
        const PrivateDisplay display;
        const juce::ScopedJuceInitialiser_GUI juceIsUp;
        measure();
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf (stderr, "module_benchmarks: %s\n", error.what());
        return 2;
    }
}
