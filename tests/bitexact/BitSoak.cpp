// SPDX-License-Identifier: AGPL-3.0-or-later
// bit_soak: plays random sessions into the plug-in and the reference engine, as many as asked for, and stops at the first
// bit that differs.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

#include <juce_gui_basics/juce_gui_basics.h>

#include "bitexact/DifferentialPlayer.h"
#include "support/scenario/Playback.h"

namespace
{
struct Arguments
{
    double millionFrames = 50.0;
    std::uint32_t firstSeed = 1000000;
    bool valid = true;
};

Arguments readCommandLine (int argc, char** argv)
{
    Arguments arguments;

    for (int i = 1; i < argc; i += 2)
    {
        const std::string_view option (argv[i]);

        if (i + 1 == argc)
            arguments.valid = false;
        else if (option == "--million")
            arguments.millionFrames = std::atof (argv[i + 1]);
        else if (option == "--seed")
            arguments.firstSeed = (std::uint32_t) std::strtoul (argv[i + 1], nullptr, 10);
        else
            arguments.valid = false;
    }

    arguments.valid = arguments.valid && arguments.millionFrames > 0.0;
    return arguments;
}

/** Most sessions are ordinary; some have what hosts should not do. */
scenario::Options optionsFor (std::uint32_t seed)
{
    scenario::Options options;
    options.numFrames = seed % 16 == 0 ? 200000 : 8000;
    options.strangeTransport = seed % 8 == 1;
    options.strangeSamples = seed % 8 == 2;
    return options;
}

void showProgress (std::int64_t frames, std::int64_t wanted, int sessions, double seconds)
{
    const auto left = frames > 0 ? seconds * (double) (wanted - frames) / (double) frames : 0.0;
    std::fprintf (stderr, "\r%6.1f of %.1f million frames, %d sessions, %.0f s left   ", (double) frames * 1e-6,
                  (double) wanted * 1e-6, sessions, left > 0.0 ? left : 0.0);
}
} // namespace

int main (int argc, char** argv)
{
    const auto arguments = readCommandLine (argc, argv);

    if (! arguments.valid)
    {
        std::fputs ("usage: bit_soak [--million FRAMES] [--seed FIRST]\n", stderr);
        return 2;
    }

    using Clock = std::chrono::steady_clock;
    const juce::ScopedJuceInitialiser_GUI juceIsUp;
    const auto wanted = (std::int64_t) (arguments.millionFrames * 1e6);
    const auto showsProgress = isatty (STDERR_FILENO) != 0;
    const auto start = Clock::now();
    std::int64_t frames = 0;
    std::int64_t ticks = 0;
    int sessions = 0;

    for (auto seed = arguments.firstSeed; frames < wanted; ++seed)
    {
        const auto session = scenario::makeScenario (seed, optionsFor (seed));
        DifferentialPlayer player (session.stereo ? DifferentialPlayer::Channels::stereo
                                                  : DifferentialPlayer::Channels::mono);
        scenario::play (session, player);

        if (! player.isBitExact())
        {
            std::fprintf (stderr, "\n%s\n%s\n", scenario::describe (session).c_str(), player.difference().c_str());
            return 1;
        }

        frames += player.numFramesPlayed();
        ticks += player.numTicks();
        ++sessions;

        if (showsProgress && sessions % 16 == 0)
            showProgress (frames, wanted, sessions, std::chrono::duration<double> (Clock::now() - start).count());
    }

    if (showsProgress)
        std::fputs ("\r\033[K", stderr);

    std::printf ("%lld frames with %lld ticks in %d sessions, seeds %u to %u: not one bit differs\n",
                 (long long) frames, (long long) ticks, sessions, arguments.firstSeed,
                 arguments.firstSeed + (unsigned) sessions - 1);
    return 0;
}
