// SPDX-License-Identifier: AGPL-3.0-or-later
// Everything that moves the filters: shapes, curves, sync, cross routes, steps, and the host's transport.
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <utility>

#include "bitexact/DifferentialPlayer.h"

namespace
{
namespace Index = reference::Index;

constexpr std::array uneven { 1, 64, 7, 200, 63, 65 };
constexpr std::array curves { 0.0f, 0.2f, 0.4971f, 0.5f, 0.5029f, 0.8f, 1.0f };
constexpr int numShapes = 30;
constexpr int numSyncs = 10;
constexpr int numBarLengths = 17;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double quietNaN = std::numeric_limits<double>::quiet_NaN();

reference::Transport transportAt (double ppq, double bpm = 120.0, int numerator = 4, int denominator = 4)
{
    return { true, true, bpm, ppq, numerator, denominator };
}

/** Moves on by so many beats with every query. */
DifferentialPlayer::TransportScript playingFrom (double ppq, double beatsPerQuery = 0.0001)
{
    return [=] (std::int64_t query) { return transportAt (ppq + beatsPerQuery * (double) query); };
}

/** Routes both LFOs to all four targets, in both directions, over filters that make all of it audible. */
void routeEverything (DifferentialPlayer& player)
{
    player.setChoice (Index::hpMode, 3);
    player.setChoice (Index::lpMode, 2);
    player.setParameter (Index::hpFreq, 0.4f);
    player.setParameter (Index::lpFreq, 0.7f);
    player.setParameter (Index::hpReso, 0.5f);
    player.setParameter (Index::lpReso, 0.6f);

    for (int lfo = 0; lfo < 2; ++lfo)
    {
        player.seedLfo (lfo, 100u + (unsigned) lfo);
        player.setParameter (Index::lfoToHpf (lfo), lfo == 0 ? 0.9f : 0.2f);
        player.setParameter (Index::lfoToLpf (lfo), lfo == 0 ? 0.3f : 0.8f);
        player.setParameter (Index::lfoToHpr (lfo), lfo == 0 ? 0.7f : 0.45f);
        player.setParameter (Index::lfoToLpr (lfo), lfo == 0 ? 0.4f : 0.65f);
    }
}

struct NamedTransport
{
    const char* name;
    DifferentialPlayer::TransportScript script;
};

/** What hosts do, and what they should not. */
const std::array movingTransports {
    NamedTransport { "playing", playingFrom (17.3) },
    NamedTransport { "playing from exactly 0", playingFrom (0.0) },
    NamedTransport { "playing backwards through 0", playingFrom (0.02, -0.0001) },
    NamedTransport { "pre-roll", playingFrom (-0.03) },
    NamedTransport { "looping", [] (std::int64_t q) { return transportAt (8.0 + (double) (q % 97) * 0.004); } },
    NamedTransport { "jumping", [] (std::int64_t q) { return transportAt ((double) ((q / 50) * 7919 % 700) - 20.0); } },
    NamedTransport { "coming and going",
                     [] (std::int64_t q)
                     {
                         auto t = transportAt (3.0 + (double) q * 0.001);
                         t.hasPosition = (q / 40) % 2 == 0;
                         return t;
                     } },
    NamedTransport { "passing 0 now and then", [] (std::int64_t q) { return transportAt (q % 30 == 0 ? 0.0 : 5.0); } },
    NamedTransport { "tempo ramp", [] (std::int64_t q) { return transportAt (2.0, 20.0 + (double) q * 0.7); } },
    NamedTransport { "tempo changing sign",
                     [] (std::int64_t q) { return transportAt (2.0, 30.0 - (double) q * 0.1); } },
    NamedTransport { "time signatures", [] (std::int64_t q)
                     { return transportAt (1.0 + (double) q * 0.001, 140.0, 1 + (int) (q % 13), 1 << (q % 5)); } },
};

const std::array stoppedTransports {
    std::pair { "no play head", reference::Transport {} },
    std::pair { "no position", reference::Transport { true, false, 120.0, 5.0, 4, 4 } },
    std::pair { "at exactly 0", transportAt (0.0) },
    std::pair { "at exactly -0", transportAt (-0.0) },
    std::pair { "stopped", transportAt (13.37) },
    std::pair { "stopped on a beat", transportAt (8.0) },
    std::pair { "before the start", transportAt (-7.77) },
    std::pair { "0 bpm", transportAt (4.4, 0.0) },
    std::pair { "-0 bpm", transportAt (4.4, -0.0) },
    std::pair { "negative bpm", transportAt (4.4, -90.0) },
    std::pair { "NaN bpm", transportAt (4.4, quietNaN) },
    std::pair { "infinite bpm", transportAt (4.4, infinity) },
    std::pair { "huge bpm", transportAt (4.4, 1e300) },
    std::pair { "tiny bpm", transportAt (4.4, 1e-300) },
    std::pair { "NaN position", transportAt (quietNaN) },
    std::pair { "infinite position", transportAt (infinity) },
    std::pair { "negatively infinite position", transportAt (-infinity) },
    std::pair { "far away", transportAt (1e18) },
    std::pair { "next to 0", transportAt (1e-12) },
    std::pair { "just below 0", transportAt (-1e-17) },
    std::pair { "denormal position", transportAt (5e-324) },
    std::pair { "bars of nothing", transportAt (4.4, 120.0, 0, 4) },
    std::pair { "beats of nothing", transportAt (4.4, 120.0, 4, 0) },
    std::pair { "no bars at all", transportAt (4.4, 120.0, 0, 0) },
    std::pair { "negative bars", transportAt (4.4, 120.0, -4, 4) },
};
} // namespace

TEST (BitExact, WithEveryShapeAndCurveOnBothLfos)
{
    for (int shape = 0; shape < numShapes; ++shape)
        for (std::size_t curve = 0; curve < curves.size(); ++curve)
        {
            DifferentialPlayer player;
            player.setSampleRate (22050.0);
            routeEverything (player);

            for (int lfo = 0; lfo < 2; ++lfo)
            {
                player.setChoice (Index::lfoShape (lfo), lfo == 0 ? shape : (shape + 3) % 8);
                player.setParameter (Index::lfoSpeed (lfo), lfo == 0 ? 1.0f : 0.95f);
                player.setParameter (Index::lfoCurve (lfo), curves[lfo == 0 ? curve : curves.size() - 1 - curve]);
            }

            player.setTransport (playingFrom (3.21));
            player.playNoise (1500, uneven);
            ASSERT_TRUE (player.isBitExact()) << "shape " << shape << ", curve " << curves[curve] << "\n"
                                              << player.difference();
        }
}

TEST (BitExact, WithEverySyncAndBarLength)
{
    for (int sync = 0; sync < numSyncs; ++sync)
        for (int bars = 0; bars < numBarLengths; ++bars)
        {
            DifferentialPlayer player;
            player.setSampleRate (44100.0);
            routeEverything (player);

            for (int lfo = 0; lfo < 2; ++lfo)
            {
                player.setChoice (Index::lfoSync (lfo), lfo == 0 ? sync : (sync + bars) % numSyncs);
                player.setChoice (Index::lfoMode (lfo), lfo == 0 ? bars : numBarLengths - 1 - bars);
                player.setChoice (Index::lfoShape (lfo), (bars + lfo) % 8);
                player.setParameter (Index::lfoPhase (lfo), 0.06f * (float) (bars + lfo));
            }

            player.setTransport (playingFrom (0.37 * bars + 0.01, 0.002));
            player.playNoise (600, uneven);
            ASSERT_TRUE (player.isBitExact()) << "sync " << sync << ", bar length " << bars << "\n"
                                              << player.difference();
        }
}

TEST (BitExact, WithBothCrossRoutesAtEveryDepthAndSpeed)
{
    constexpr std::array depths { 0.0f, 0.3f, 0.4949999f, 0.495f, 0.5f, 0.505f, 0.5050001f, 0.8f, 1.0f };

    for (const auto one : depths)
        for (const auto two : depths)
            for (const auto speed : { 0.0f, 0.6f, 1.0f })
            {
                DifferentialPlayer player;
                player.setSampleRate (22050.0);
                routeEverything (player);
                player.setParameter (Index::lfoToOther (0), one);
                player.setParameter (Index::lfoToOther (1), two);
                player.setParameter (Index::lfoSpeed (0), speed);
                player.setParameter (Index::lfoSpeed (1), 1.0f - 0.1f * speed);
                player.setChoice (Index::lfoSync (0), 2);
                player.setChoice (Index::lfoShape (1), 0);
                player.setTransport (playingFrom (9.9));
                player.playNoise (300, uneven);
                ASSERT_TRUE (player.isBitExact()) << "depths " << one << " and " << two << ", speed " << speed << "\n"
                                                  << player.difference();
            }
}

TEST (BitExact, WithReservedShapesUnderEveryMovingTransport)
{
    for (const auto& [name, script] : movingTransports)
        for (int shapes = 0; shapes < 9; ++shapes)
        {
            // The bar lock of one LFO sets the phase steps of both.
            constexpr std::array choices { 1, 6, 7 };
            DifferentialPlayer player;
            player.setSampleRate (48000.0);
            routeEverything (player);
            player.setChoice (Index::lfoShape (0), choices[(std::size_t) shapes / 3]);
            player.setChoice (Index::lfoShape (1), choices[(std::size_t) shapes % 3]);
            player.setChoice (Index::lfoMode (0), shapes);
            player.setChoice (Index::lfoMode (1), 16 - shapes);
            player.setChoice (Index::lfoSync (shapes % 2), shapes % 4);
            player.setTransport (script);
            player.playNoise (500, uneven);
            ASSERT_TRUE (player.isBitExact()) << name << ", shapes " << shapes << "\n" << player.difference();
        }
}

TEST (BitExact, WithEveryShapeAndSyncUnderEveryMovingTransport)
{
    for (const auto& [name, script] : movingTransports)
        for (int shape = 0; shape < 8; ++shape)
            for (int sync = 0; sync < 4; ++sync)
            {
                DifferentialPlayer player;
                player.setSampleRate (48000.0);
                routeEverything (player);
                player.setChoice (Index::lfoShape (0), shape);
                player.setChoice (Index::lfoSync (0), sync);
                player.setChoice (Index::lfoMode (0), 10);
                player.setChoice (Index::lfoSync (1), 3 - sync);
                player.setParameter (Index::seqHpf (3), 0.8f);
                player.setTransport (script);
                player.playNoise (400, uneven);
                ASSERT_TRUE (player.isBitExact()) << name << ", shape " << shape << ", sync " << sync << "\n"
                                                  << player.difference();
            }
}

TEST (BitExact, WithEveryShapeAndSyncUnderEveryStoppedTransport)
{
    for (const auto& [name, transport] : stoppedTransports)
        for (int shape = 0; shape < 8; ++shape)
            for (int sync = 0; sync < 4; ++sync)
            {
                DifferentialPlayer player;
                player.setSampleRate (48000.0);
                routeEverything (player);
                player.setChoice (Index::lfoShape (0), shape);
                player.setChoice (Index::lfoShape (1), 7 - shape);
                player.setChoice (Index::lfoSync (0), sync);
                player.setChoice (Index::lfoMode (0), 4);
                player.setParameter (Index::seqLpf (0), 0.2f);
                player.setTransport (transport);
                player.playNoise (150, uneven);

                // Then a sane transport from there on.
                player.setTransport (transportAt (6.1));
                player.playNoise (50);
                ASSERT_TRUE (player.isBitExact()) << name << ", shape " << shape << ", sync " << sync << "\n"
                                                  << player.difference();
            }
}

TEST (BitExact, WithRandomStepPatternsAtTheEdgesOfTheSteps)
{
    for (std::uint32_t seed = 1; seed <= 300; ++seed)
    {
        scenario::Dice dice { seed };
        DifferentialPlayer player;
        player.setSampleRate (48000.0);
        player.setChoice (Index::filtMode, dice.below (2));
        player.setParameter (Index::hpFreq, 0.5f);
        player.setParameter (Index::lpFreq, 0.5f);

        for (int step = 0; step < 10; ++step)
        {
            const auto draw = [&] {
                return dice.chance (0.4) ? 0.5f
                                         : dice.oneOf (std::array { 0.0f, 1.0f, 0.499f, 0.501f, dice.position() });
            };

            player.setParameter (Index::seqHpf (step), draw());
            player.setParameter (Index::seqLpf (step), draw());
        }

        if (dice.chance (0.6))
            player.setParameter (Index::seqOffs,
                                 dice.oneOf (std::array { 0.0f, 1.0f, 0.50048828125f, dice.position() }));

        player.setChoice (Index::seqUnit, dice.below (10));

        // Across the edges of half beats, 0.01 early, and on them.
        const auto edge = 0.5 * dice.below (2048) - (dice.chance (0.5) ? 0.01 : 0.0);
        player.setTransport (playingFrom (edge - 0.02, 0.0002));
        player.playNoise (250, uneven);
        ASSERT_TRUE (player.isBitExact()) << "seed " << seed << "\n" << player.difference();
    }
}

// There the order of adding position, 0.01 and offset decides whether a step is on.
TEST (BitExact, WithPositionsInTheLastBitsBeforeAStepChanges)
{
    for (std::uint32_t seed = 1; seed <= 100; ++seed)
    {
        scenario::Dice dice { seed };
        DifferentialPlayer player;
        player.setSampleRate (48000.0);

        for (int step = 0; step < 10; ++step)
            player.setParameter (Index::seqHpf (step), 0.5f + 0.02f * (float) (step + 1));

        const auto offset = dice.position();
        player.setParameter (Index::seqOffs, offset);

        const auto edge = 0.5 * dice.below (64) - 0.01 - (double) (2048.0f * offset - 1024.0f);
        const auto lastBit = std::nextafter (std::abs (edge), infinity) - std::abs (edge);
        player.setTransport ([=] (std::int64_t query) { return transportAt (edge + lastBit * (double) (query - 40)); });
        player.playNoise (80, 1);
        ASSERT_TRUE (player.isBitExact()) << "seed " << seed << "\n" << player.difference();
    }
}

TEST (BitExact, WhenAReservedShapeIsHalfACycleFromItsReference)
{
    for (int shape = 6; shape <= 7; ++shape)
        for (const auto phase : { 0.125f, 0.25f, 0.375f })
            for (const auto isAhead : { false, true })
            {
                DifferentialPlayer player;
                player.setSampleRate (48000.0);
                routeEverything (player);
                player.setChoice (Index::lfoShape (0), shape);
                player.setTransport (transportAt (5.5));
                player.playNoise (10);

                const auto place = [=] (auto& lfo)
                {
                    constexpr auto step = 1.0f / 1024.0f;
                    lfo.phaseStepA = step;
                    lfo.phaseA = (isAhead ? phase + 0.5f : phase) - step;
                    lfo.referencePhase = isAhead ? phase : phase + 0.5f;
                    lfo.followReference = true;
                };

                place (player.plugIn.lfo[0]);
                place (player.referenceEngine.lfo[0]);
                player.playNoise (1);
                ASSERT_TRUE (player.isBitExact()) << "shape " << shape << " at " << phase << "\n"
                                                  << player.difference();
            }
}

TEST (BitExact, WithDepthsAroundTheDeadBand)
{
    for (const auto depth : { 0.49499f, 0.4949999f, 0.495f, 0.4950001f, 0.5049999f, 0.505f, 0.5050001f, 0.50501f })
        for (int route = 0; route < 5; ++route)
            for (int lfo = 0; lfo < 2; ++lfo)
            {
                DifferentialPlayer player;
                player.setSampleRate (48000.0);
                player.setParameter (Index::lfoToHpf (lfo) + route, depth);
                player.setTransport (playingFrom (1.0));
                player.startAtRest();
                player.playNoise (100, uneven);
                ASSERT_TRUE (player.isBitExact()) << depth << ", route " << route << ", LFO " << lfo + 1 << "\n"
                                                  << player.difference();
            }
}

TEST (BitExact, WhenTheHostMovesParametersDuringATransportQuery)
{
    // Some of them decide which filters run: then the plug-in has to end a segment in the middle of a block.
    constexpr std::array moved { Index::hpMode,       Index::lpMode,       Index::filtMode,     Index::hpFreq,
                                 Index::lpReso,       Index::hpReso,       Index::lfoSpeed (0), Index::lfoCurve (1),
                                 Index::lfoToHpf (0), Index::lfoToLpr (1), Index::seqHpf (0),   Index::seqLpf (3) };

    for (const bool isRouted : { true, false })
    {
        DifferentialPlayer player;
        player.setSampleRate (48000.0);
        player.setTransport (playingFrom (1.0));

        if (isRouted)
            routeEverything (player);

        player.moveDuringQueries (
            [&] (std::int64_t query) -> std::optional<DifferentialPlayer::KnobMove>
            {
                if (query % 37 != 11)
                    return {};

                const auto move = (std::size_t) (query / 37);
                return DifferentialPlayer::KnobMove { moved[move % moved.size()], 0.1f * (float) (move % 7) };
            });

        player.prepareToPlay();
        player.playNoise (20000, uneven);
        EXPECT_TRUE (player.isBitExact()) << player.difference();
        EXPECT_GT (player.numTicks(), 1000);
    }
}

TEST (BitExact, WhenAnyParameterMovesBetweenBlocks)
{
    for (int index = 0; index < Index::count; ++index)
    {
        scenario::Dice dice { 77u + (unsigned) index };
        DifferentialPlayer player;
        player.setSampleRate (48000.0);
        routeEverything (player);
        player.setTransport (playingFrom (12.0));

        for (int move = 0; move < 20; ++move)
        {
            player.setParameter (index, dice.position());
            player.playNoise (1 + dice.below (100));
        }

        ASSERT_TRUE (player.isBitExact()) << reference::parameterTable()[(std::size_t) index].id << "\n"
                                          << player.difference();
    }
}
