// SPDX-License-Identifier: AGPL-3.0-or-later
// module_benchmarks: what the built module costs a host besides the sound: loading it, making an instance, opening the
// window, and memory. Times of single acts and no loops of millions, so that a stopwatch does.
#include <algorithm>
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
