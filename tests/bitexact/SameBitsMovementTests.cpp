// SPDX-License-Identifier: AGPL-3.0-or-later
// Everything that moves the filters: shapes, curves, sync, cross routes, steps, and what the host's transport does.
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <utility>

#include "bitexact/DuoPlayer.h"

namespace
{
using namespace reference;

constexpr std::array uneven { 1, 64, 7, 200, 63, 65 };
constexpr std::array curves { 0.0f, 0.2f, 0.4971f, 0.5f, 0.5029f, 0.8f, 1.0f };
constexpr int numShapes = 30;
constexpr int numSyncs = 10;
constexpr int numBarLengths = 17;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

reference::Transport transportAt (double ppq, double bpm = 120.0, int numerator = 4, int denominator = 4)
{
    return { true, true, bpm, ppq, numerator, denominator };
}

/** Moves on by so many beats with every query. */
DuoPlayer::TransportScript playingFrom (double ppq, double beatsPerQuery = 0.0001)
{
    return [=] (std::int64_t query) { return transportAt (ppq + beatsPerQuery * (double) query); };
}

/** Both LFOs to all four places, in both directions, over filters in which all of that is heard. */
void routeEverything (DuoPlayer& duo)
{
    duo.setChoice (Index::hpMode, 3);
    duo.setChoice (Index::lpMode, 2);
    duo.setParameter (Index::hpFreq, 0.4f);
    duo.setParameter (Index::lpFreq, 0.7f);
    duo.setParameter (Index::hpReso, 0.5f);
    duo.setParameter (Index::lpReso, 0.6f);

    for (int lfo = 0; lfo < 2; ++lfo)
    {
        duo.seedLfo (lfo, 100u + (unsigned) lfo);
        duo.setParameter (Index::lfoToHpf (lfo), lfo == 0 ? 0.9f : 0.2f);
        duo.setParameter (Index::lfoToLpf (lfo), lfo == 0 ? 0.3f : 0.8f);
        duo.setParameter (Index::lfoToHpr (lfo), lfo == 0 ? 0.7f : 0.45f);
        duo.setParameter (Index::lfoToLpr (lfo), lfo == 0 ? 0.4f : 0.65f);
    }
}

struct NamedTransport
{
    const char* name;
    DuoPlayer::TransportScript script;
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

const std::array standingTransports {
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
    std::pair { "NaN bpm", transportAt (4.4, notANumber) },
    std::pair { "infinite bpm", transportAt (4.4, infinity) },
    std::pair { "huge bpm", transportAt (4.4, 1e300) },
    std::pair { "tiny bpm", transportAt (4.4, 1e-300) },
    std::pair { "NaN position", transportAt (notANumber) },
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

TEST (SameBits, WithEveryShapeAndCurveOnBothLfos)
{
    for (int shape = 0; shape < numShapes; ++shape)
        for (size_t curve = 0; curve < curves.size(); ++curve)
        {
            DuoPlayer duo;
            duo.setSampleRate (22050.0);
            routeEverything (duo);

            for (int lfo = 0; lfo < 2; ++lfo)
            {
                duo.setChoice (Index::lfoShape (lfo), lfo == 0 ? shape : (shape + 3) % 8);
                duo.setParameter (Index::lfoSpeed (lfo), lfo == 0 ? 1.0f : 0.95f);
                duo.setParameter (Index::lfoCurve (lfo), curves[lfo == 0 ? curve : curves.size() - 1 - curve]);
            }

            duo.setTransport (playingFrom (3.21));
            duo.playNoise (1500, uneven);
            ASSERT_TRUE (duo.isSame()) << "shape " << shape << ", curve " << curves[curve] << "\n" << duo.difference();
        }
}

TEST (SameBits, WithEverySyncPositionAndBarLength)
{
    for (int sync = 0; sync < numSyncs; ++sync)
        for (int bars = 0; bars < numBarLengths; ++bars)
        {
            DuoPlayer duo;
            duo.setSampleRate (44100.0);
            routeEverything (duo);

            for (int lfo = 0; lfo < 2; ++lfo)
            {
                duo.setChoice (Index::lfoSync (lfo), lfo == 0 ? sync : (sync + bars) % numSyncs);
                duo.setChoice (Index::lfoMode (lfo), lfo == 0 ? bars : numBarLengths - 1 - bars);
                duo.setChoice (Index::lfoShape (lfo), (bars + lfo) % 8);
                duo.setParameter (Index::lfoPhase (lfo), 0.06f * (float) (bars + lfo));
            }

            duo.setTransport (playingFrom (0.37 * bars + 0.01, 0.002));
            duo.playNoise (600, uneven);
            ASSERT_TRUE (duo.isSame()) << "sync " << sync << ", bar length " << bars << "\n" << duo.difference();
        }
}

TEST (SameBits, WithBothCrossRoutesAtEveryDepthAndSpeed)
{
    constexpr std::array depths { 0.0f, 0.3f, 0.4949999f, 0.495f, 0.5f, 0.505f, 0.5050001f, 0.8f, 1.0f };

    for (const auto one : depths)
        for (const auto two : depths)
            for (const auto speed : { 0.0f, 0.6f, 1.0f })
            {
                DuoPlayer duo;
                duo.setSampleRate (22050.0);
                routeEverything (duo);
                duo.setParameter (Index::lfoToOther (0), one);
                duo.setParameter (Index::lfoToOther (1), two);
                duo.setParameter (Index::lfoSpeed (0), speed);
                duo.setParameter (Index::lfoSpeed (1), 1.0f - 0.1f * speed);
                duo.setChoice (Index::lfoSync (0), 2);
                duo.setChoice (Index::lfoShape (1), 0);
                duo.setTransport (playingFrom (9.9));
                duo.playNoise (300, uneven);
                ASSERT_TRUE (duo.isSame()) << "depths " << one << " and " << two << ", speed " << speed << "\n"
                                           << duo.difference();
            }
}

TEST (SameBits, WithReservedShapesOnEitherLfoThroughEveryTransport)
{
    for (const auto& [name, script] : movingTransports)
        for (int shapes = 0; shapes < 9; ++shapes)
        {
            // 5 to 7 on each: the bar lock of one sets the steps of both.
            constexpr std::array choices { 1, 6, 7 };
            DuoPlayer duo;
            duo.setSampleRate (48000.0);
            routeEverything (duo);
            duo.setChoice (Index::lfoShape (0), choices[(size_t) shapes / 3]);
            duo.setChoice (Index::lfoShape (1), choices[(size_t) shapes % 3]);
            duo.setChoice (Index::lfoMode (0), shapes);
            duo.setChoice (Index::lfoMode (1), 16 - shapes);
            duo.setChoice (Index::lfoSync (shapes % 2), shapes % 4);
            duo.setTransport (script);
            duo.playNoise (500, uneven);
            ASSERT_TRUE (duo.isSame()) << name << ", shapes " << shapes << "\n" << duo.difference();
        }
}

TEST (SameBits, WithEveryShapeAndSyncThroughEveryMovingTransport)
{
    for (const auto& [name, script] : movingTransports)
        for (int shape = 0; shape < 8; ++shape)
            for (int sync = 0; sync < 4; ++sync)
            {
                DuoPlayer duo;
                duo.setSampleRate (48000.0);
                routeEverything (duo);
                duo.setChoice (Index::lfoShape (0), shape);
                duo.setChoice (Index::lfoSync (0), sync);
                duo.setChoice (Index::lfoMode (0), 10);
                duo.setChoice (Index::lfoSync (1), 3 - sync);
                duo.setParameter (Index::seqHpf (3), 0.8f);
                duo.setTransport (script);
                duo.playNoise (400, uneven);
                ASSERT_TRUE (duo.isSame()) << name << ", shape " << shape << ", sync " << sync << "\n"
                                           << duo.difference();
            }
}

TEST (SameBits, WithEveryShapeAndSyncAtEveryStandingTransport)
{
    for (const auto& [name, transport] : standingTransports)
        for (int shape = 0; shape < 8; ++shape)
            for (int sync = 0; sync < 4; ++sync)
            {
                DuoPlayer duo;
                duo.setSampleRate (48000.0);
                routeEverything (duo);
                duo.setChoice (Index::lfoShape (0), shape);
                duo.setChoice (Index::lfoShape (1), 7 - shape);
                duo.setChoice (Index::lfoSync (0), sync);
                duo.setChoice (Index::lfoMode (0), 4);
                duo.setParameter (Index::seqLpf (0), 0.2f);
                duo.setTransport (transport);
                duo.playNoise (150, uneven);

                // And on from there with a host that has come to its senses.
                duo.setTransport (transportAt (6.1));
                duo.playNoise (50);
                ASSERT_TRUE (duo.isSame()) << name << ", shape " << shape << ", sync " << sync << "\n"
                                           << duo.difference();
            }
}

TEST (SameBits, WithRandomStepPatternsAndOffsetsAroundEveryEdge)
{
    for (std::uint32_t seed = 1; seed <= 300; ++seed)
    {
        scenario::Dice dice { seed };
        DuoPlayer duo;
        duo.setSampleRate (48000.0);
        duo.setChoice (Index::filtMode, dice.below (2));
        duo.setParameter (Index::hpFreq, 0.5f);
        duo.setParameter (Index::lpFreq, 0.5f);

        for (int step = 0; step < 10; ++step)
        {
            const auto draw = [&] {
                return dice.chance (0.4) ? 0.5f
                                         : dice.oneOf (std::array { 0.0f, 1.0f, 0.499f, 0.501f, dice.position() });
            };

            duo.setParameter (Index::seqHpf (step), draw());
            duo.setParameter (Index::seqLpf (step), draw());
        }

        if (dice.chance (0.6))
            duo.setParameter (Index::seqOffs, dice.oneOf (std::array { 0.0f, 1.0f, 0.50048828125f, dice.position() }));

        duo.setChoice (Index::seqUnit, dice.below (10));

        // Across the edges of half beats, 0.01 early, and on them.
        const auto edge = 0.5 * dice.below (2048) - (dice.chance (0.5) ? 0.01 : 0.0);
        duo.setTransport (playingFrom (edge - 0.02, 0.0002));
        duo.playNoise (250, uneven);
        ASSERT_TRUE (duo.isSame()) << "seed " << seed << "\n" << duo.difference();
    }
}

// There the order in which position, 0.01 and shift are added decides whether a step is on.
TEST (SameBits, WithPositionsWithinLastBitsOfAStepsEdge)
{
    for (std::uint32_t seed = 1; seed <= 100; ++seed)
    {
        scenario::Dice dice { seed };
        DuoPlayer duo;
        duo.setSampleRate (48000.0);

        for (int step = 0; step < 10; ++step)
            duo.setParameter (Index::seqHpf (step), 0.5f + 0.02f * (float) (step + 1));

        const auto offset = dice.position();
        duo.setParameter (Index::seqOffs, offset);

        const auto edge = 0.5 * dice.below (64) - 0.01 - (double) (2048.0f * offset - 1024.0f);
        const auto lastBit = std::nextafter (std::abs (edge), infinity) - std::abs (edge);
        duo.setTransport ([=] (std::int64_t query) { return transportAt (edge + lastBit * (double) (query - 40)); });
        duo.playNoise (80, 1);
        ASSERT_TRUE (duo.isSame()) << "seed " << seed << "\n" << duo.difference();
    }
}

TEST (SameBits, WhenAReservedShapeIsExactlyHalfACycleFromWhatItFollows)
{
    for (int shape = 6; shape <= 7; ++shape)
        for (const auto phase : { 0.125f, 0.25f, 0.375f })
            for (const auto isAhead : { false, true })
            {
                DuoPlayer duo;
                duo.setSampleRate (48000.0);
                routeEverything (duo);
                duo.setChoice (Index::lfoShape (0), shape);
                duo.setTransport (transportAt (5.5));
                duo.playNoise (10);

                const auto place = [=] (auto& lfo)
                {
                    constexpr auto step = 1.0f / 1024.0f;
                    lfo.phaseStepA = step;
                    lfo.phaseA = (isAhead ? phase + 0.5f : phase) - step;
                    lfo.referencePhase = isAhead ? phase : phase + 0.5f;
                    lfo.followReference = true;
                };

                place (duo.product.lfo[0]);
                place (duo.literal.lfo[0]);
                duo.playNoise (1);
                ASSERT_TRUE (duo.isSame()) << "shape " << shape << " at " << phase << "\n" << duo.difference();
            }
}

TEST (SameBits, WithDepthsAroundTheDeadBandThatKeepsTheEngineAwake)
{
    for (const auto depth : { 0.49499f, 0.4949999f, 0.495f, 0.4950001f, 0.5049999f, 0.505f, 0.5050001f, 0.50501f })
        for (int route = 0; route < 5; ++route)
            for (int lfo = 0; lfo < 2; ++lfo)
            {
                DuoPlayer duo;
                duo.setSampleRate (48000.0);
                duo.setParameter (Index::lfoToHpf (lfo) + route, depth);
                duo.setTransport (playingFrom (1.0));
                duo.startAtRest();
                duo.playNoise (100, uneven);
                ASSERT_TRUE (duo.isSame()) << depth << ", route " << route << ", LFO " << lfo + 1 << "\n"
                                           << duo.difference();
            }
}

TEST (SameBitsMovement, WhenTheHostTurnsKnobsWhileItIsAskedForItsTransport)
{
    // Among them those that decide which filters run: a run of frames has to end in the middle.
    constexpr std::array turned { Index::hpMode,       Index::lpMode,       Index::filtMode,     Index::hpFreq,
                                  Index::lpReso,       Index::hpReso,       Index::lfoSpeed (0), Index::lfoCurve (1),
                                  Index::lfoToHpf (0), Index::lfoToLpr (1), Index::seqHpf (0),   Index::seqLpf (3) };

    for (const bool isRouted : { true, false })
    {
        DuoPlayer duo;
        duo.setSampleRate (48000.0);
        duo.setTransport (playingFrom (1.0));

        if (isRouted)
            routeEverything (duo);

        duo.turnWhileAsked (
            [&] (std::int64_t query) -> std::optional<DuoPlayer::Turn>
            {
                if (query % 37 != 11)
                    return {};

                const auto turn = (std::size_t) (query / 37);
                return DuoPlayer::Turn { turned[turn % turned.size()], 0.1f * (float) (turn % 7) };
            });

        duo.prepareToPlay();
        duo.playNoise (20000, uneven);
        EXPECT_TRUE (duo.isSame()) << duo.difference();
        EXPECT_GT (duo.numTicks(), 1000);
    }
}

TEST (SameBits, WhenAnyParameterMovesBetweenBlocks)
{
    for (int index = 0; index < Index::count; ++index)
    {
        scenario::Dice dice { 77u + (unsigned) index };
        DuoPlayer duo;
        duo.setSampleRate (48000.0);
        routeEverything (duo);
        duo.setTransport (playingFrom (12.0));

        for (int move = 0; move < 20; ++move)
        {
            duo.setParameter (index, dice.position());
            duo.playNoise (1 + dice.below (100));
        }

        ASSERT_TRUE (duo.isSame()) << parameterTable()[(size_t) index].id << "\n" << duo.difference();
    }
}
