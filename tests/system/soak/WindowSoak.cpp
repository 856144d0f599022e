// SPDX-License-Identifier: AGPL-3.0-or-later
// The built module's window, opened and closed ten thousand times while audio runs. Memory at the end must be what it was after
// the first hundred. Prints its measurements; the exit code says whether they are right.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "module/RawEditor.h"
#include "support/ProcessMemory.h"

namespace
{
using rawHost::Block;
using rawHost::Context;
using rawHost::Editor;
using rawHost::Instance;

constexpr int numBeforeMeasuring = 100;

// The X server's answers and the fonts' caches come in pages; a window that stays behind takes ten times as much a hundred times.
constexpr double allowedGrowthMegabytes = 1.0;

/** Audio with six parameters automated in every block, for the life of this object. */
class Playing
{
public:
    explicit Playing (Instance& instanceToPlay) : instance (instanceToPlay), thread ([this] { run(); }) {}

    ~Playing()
    {
        isDone = true;
        thread.join();
    }

    Playing (const Playing&) = delete;
    Playing& operator= (const Playing&) = delete;

    std::atomic<long long> numBlocks { 0 };
    std::atomic<bool> isRight { true };

private:
    void run()
    {
        Block block (2, 256);

        for (unsigned number = 0; ! isDone; ++number)
        {
            block.fillWithNoise (1);
            block.changes.clear();

            for (int index = 0; index < 6; ++index)
                block.changes.add (instance.parameter (index), { { 0, (double) (number % 101) / 100.0 } });

            if (instance.process (block) != Steinberg::kResultOk || ! (flawsIn (block) == rawHost::Flaws {}))
                isRight = false;

            ++numBlocks;

            // As often as a host with a small buffer, so that the windows get their share of the processor.
            std::this_thread::sleep_for (std::chrono::milliseconds (3));
        }
    }

    Instance& instance;
    std::atomic<bool> isDone { false };
    std::thread thread;
};
} // namespace

int main (int argc, char** argv)
try
{
    const auto numWindows = argc > 1 ? std::atoi (argv[1]) : 10000;

    Context context;
    auto module = rawHost::loadWithDisplay (KESTRIN_MODULE_LIBRARY);
    Instance instance { module, context };

    if (! instance.setUp (48000.0, 256))
        throw std::runtime_error ("the module refuses to be set up");

    instance.start();
    Playing playing (instance);
    auto before = 0.0;

    for (int number = 0; number < numWindows; ++number)
    {
        Editor editor (instance, context);

        if (! editor.isOpen)
            throw std::runtime_error ("window " + std::to_string (number) + " did not open");

        if (number == numBeforeMeasuring)
            before = processMemoryMegabytes();

        if (number % 1000 == 0)
            std::printf ("  %d windows, %.1f MB\n", number, processMemoryMegabytes());

        std::fflush (stdout);
    }

    const auto after = processMemoryMegabytes();
    std::printf ("%d windows over %lld blocks: %.1f MB after the first hundred, %.1f MB at the end\n", numWindows,
                 playing.numBlocks.load(), before, after);

    if (! playing.isRight)
        throw std::runtime_error ("a block was refused or had samples that are not finite");

    if (after - before > allowedGrowthMegabytes)
        throw std::runtime_error ("the windows have left memory behind");
}
catch (const std::exception& error)
{
    std::fprintf (stderr, "window_soak: %s\n", error.what());
    return EXIT_FAILURE;
}
