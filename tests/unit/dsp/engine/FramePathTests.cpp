// SPDX-License-Identifier: AGPL-3.0-or-later
// What either engine does to a frame: the watch of four parameters, and the filters in their order.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/Engines.h"
#include "support/Response.h"

namespace
{
using Frame = EngineDriver::Frame;

constexpr auto quietNaN = std::numeric_limits<float>::quiet_NaN();

/** In the order in which a frame looks at them. */
constexpr std::array watchedIds { "hp_freq", "lp_freq", "hp_reso", "lp_reso" };

/** Both filters and both resonances, at rest. */
void fillPath (EngineDriver& driver)
{
    driver.set ("hp_freq", 0.4f);
    driver.set ("lp_freq", 0.7f);
    driver.set ("hp_reso", 0.9f);
    driver.set ("lp_reso", 0.8f);
    driver.choose ("hp_mode", 3);
    driver.choose ("lp_mode", 4);
    driver.fallAsleep();
}

/** What a copy of the filter makes of silence, which shows its state. */
template <typename Filter>
[[nodiscard]] std::vector<double> ringing (Filter filter)
{
    return response::toSilence (filter, 20);
}

[[nodiscard]] double saturated (double excess, double amount)
{
    const auto x = excess * amount;
    return std::sin (x < -1.5707963267948966 ? -1.5707963267948966 : x < 1.5707963267948966 ? x : 1.5707963267948966);
}

template <typename Peak>
void addPeak (Peak& peak, double amount, double& left, double& right)
{
    auto peakLeft = left, peakRight = right;
    peak.process (peakLeft, peakRight);
    left += saturated (peakLeft - left, amount);
    right += saturated (peakRight - right, amount);
}

/** True if a frame without a tick asks for one. */
[[nodiscard]] bool asksForATick (EngineDriver& driver)
{
    driver.clearPendingUpdate();
    const auto before = driver.framesSinceRequest();
    driver.runSilence (1);
    EXPECT_EQ (driver.framesSinceRequest(), driver.isUpdatePending() ? 0 : before + 1);
    return driver.isUpdatePending();
}

template <typename Driver>
class FramePath : public testing::Test
{
};

TYPED_TEST_SUITE (FramePath, Engines);

/** The loop of a block, which one frame by itself does not have. */
template <typename Driver>
class BlockLoop : public testing::Test
{
};

using BlockEngines = testing::Types<PluginInBlocks, ReferenceDriver>;
TYPED_TEST_SUITE (BlockLoop, BlockEngines);
} // namespace

TYPED_TEST (FramePath, AsksForATickInEachOfTheFirstFourFrames)
{
    TypeParam driver;

    for (int frame = 0; frame < 4; ++frame)
        EXPECT_TRUE (asksForATick (driver)) << frame;

    EXPECT_FALSE (asksForATick (driver));
}

TYPED_TEST (FramePath, TicksInTheFirstFiveFramesWhenNothingMoves)
{
    // The first tick is pending from the start, and each watched parameter asks for one. The slews are at 0.
    TypeParam driver;
    driver.set ("lp_freq", 0.0f);
    driver.setTransport (3.3);

    for (int frame = 1; frame <= 5; ++frame)
    {
        driver.runSilence (1);
        EXPECT_EQ (driver.numQueries(), frame);
        EXPECT_EQ (driver.isUpdatePending(), frame <= 4);
    }

    driver.runSilence (100);
    EXPECT_EQ (driver.numQueries(), 5);
    EXPECT_EQ (driver.framesSinceRequest(), 101);
}

TYPED_TEST (FramePath, NoticesOneChangedParameterPerFrame)
{
    TypeParam driver;
    driver.fallAsleep();
    driver.set ("hp_freq", 0.3f);
    driver.set ("lp_reso", 0.4f);
    EXPECT_TRUE (asksForATick (driver));
    EXPECT_EQ (driver.lastSeenValueOf ("hp_freq"), 0.3f);
    EXPECT_EQ (driver.lastSeenValueOf ("lp_reso"), 0.0f);
    EXPECT_TRUE (asksForATick (driver));
    EXPECT_EQ (driver.lastSeenValueOf ("lp_reso"), 0.4f);
    EXPECT_FALSE (asksForATick (driver));
}

TYPED_TEST (FramePath, TicksOnceForEachChangeThatIsTooSmallToGlide)
{
    TypeParam driver;
    driver.setTransport (3.3);
    driver.fallAsleep();
    const auto before = driver.numQueries();
    driver.set ("hp_freq", 0.0001f);
    driver.set ("lp_reso", 0.0001f);
    driver.runSilence (20);
    EXPECT_EQ (driver.numQueries(), before + 2);
}

TYPED_TEST (FramePath, LooksAtItsFourParametersInTheirOrder)
{
    TypeParam driver;
    driver.fallAsleep();

    for (const auto* const id : watchedIds)
        driver.set (id, 0.6f);

    for (const auto* const id : watchedIds)
    {
        EXPECT_NE (driver.lastSeenValueOf (id), 0.6f);
        EXPECT_TRUE (asksForATick (driver));
        EXPECT_EQ (driver.lastSeenValueOf (id), 0.6f);
    }
}

TYPED_TEST (FramePath, AsksForATickInEveryFrameWhileAWatchedParameterIsNaN)
{
    TypeParam driver;
    driver.fallAsleep();
    driver.set ("lp_freq", quietNaN);

    for (int frame = 0; frame < 3; ++frame)
        EXPECT_TRUE (asksForATick (driver));

    // And so it ticks in every frame.
    driver.setTransport (3.3);
    driver.runSilence (50);
    EXPECT_EQ (driver.numQueries(), 50);
}

TYPED_TEST (FramePath, SleepsThroughEveryOtherParameter)
{
    TypeParam driver;
    driver.fallAsleep();

    for (const auto& info : reference::parameterTable())
    {
        const auto isWatched = std::find (watchedIds.begin(), watchedIds.end(), info.id) != watchedIds.end();
        driver.set (info.id, driver.get (info.id) > 0.5f ? 0.1f : 0.9f);
        EXPECT_EQ (asksForATick (driver), isWatched) << info.id;
    }
}

// A change of slope or family takes effect with the next tick, which a sleeping engine may be a second away from.
TYPED_TEST (FramePath, TakesAChangedSlopeAtTheNextTick)
{
    TypeParam driver;
    driver.fallAsleep();
    driver.choose ("hp_mode", 4);
    driver.choose ("lp_mode", 0);
    driver.runSilence (1000);
    EXPECT_FALSE (driver.isUpdatePending());
    EXPECT_EQ (driver.engine.hpPoles, 2);
    EXPECT_EQ (driver.engine.lpPoles, 2);
    driver.runSilence (65536);
    EXPECT_EQ (driver.engine.hpPoles, 8);
    EXPECT_EQ (driver.engine.lpPoles, 0);
}

TYPED_TEST (FramePath, TakesAChangedFamilyAtOnceButConfiguresItAtTheNextTick)
{
    TypeParam driver;
    driver.fallAsleep();
    driver.choose ("filtmode", 1);
    const auto output = driver.run (EngineDriver::noise (1, 100));

    // The ladders have no stages before their first configuration: the sound passes.
    EXPECT_EQ (output, EngineDriver::noise (1, 100));
    EXPECT_EQ (driver.hpLadder().numStages, 0);
    EXPECT_FALSE (driver.isUpdatePending());
}

TYPED_TEST (FramePath, PassesTheSoundUnchangedWhenBothSlopesAreBypassed)
{
    for (const auto filtmode : { 0, 1 })
        for (const auto slope : { 0, 5, 9 })
        {
            TypeParam driver;
            driver.choose ("hp_mode", slope);
            driver.choose ("lp_mode", slope);
            driver.choose ("filtmode", filtmode);
            driver.set ("hp_freq", 0.5f);
            driver.set ("hp_reso", 1.0f);
            driver.set ("lp_reso", 1.0f);
            const auto input = EngineDriver::noise (2, 3000, 19.0f);
            EXPECT_EQ (driver.run (input), input);
        }
}

TYPED_TEST (FramePath, PassesTheSoundUnchangedInAFamilyWithoutAText)
{
    for (int index = 2; index < 10; ++index)
    {
        TypeParam driver;
        fillPath (driver);
        driver.choose ("filtmode", index);
        const auto input = EngineDriver::noise (3, 1000);
        EXPECT_EQ (driver.run (input), input);
    }
}

TYPED_TEST (FramePath, RunsHighpassItsPeakTheOtherPeakAndLowpassInThisOrder)
{
    TypeParam driver;
    const auto& engine = driver.engine;
    fillPath (driver);
    auto hpFilter = driver.hpFilter(), lpFilter = driver.lpFilter();
    auto hpPeak = driver.hpResonator(), lpPeak = driver.lpResonator();
    ASSERT_GT (engine.hpResonance, 0.1f);
    ASSERT_GT (engine.lpResonance, 0.1f);
    const auto input = EngineDriver::noise (4, 2000, 2.0f);
    const auto output = driver.run (input);

    for (std::size_t i = 0; i < input.size(); ++i)
    {
        auto left = (double) input[i].first, right = (double) input[i].second;
        hpFilter.process (left, right);
        addPeak (hpPeak, (double) engine.hpResonance, left, right);
        addPeak (lpPeak, (double) engine.lpResonance, left, right);
        lpFilter.process (left, right);
        ASSERT_EQ (output[i], Frame ((float) left, (float) right)) << i;
    }
}

TYPED_TEST (FramePath, RunsTheHighpassLadderBeforeTheLowpassLadder)
{
    TypeParam driver;
    driver.choose ("filtmode", 1);
    fillPath (driver);
    auto hpLadder = driver.hpLadder(), lpLadder = driver.lpLadder();
    const auto hpFilter = ringing (driver.hpFilter());
    const auto input = EngineDriver::noise (5, 2000);
    const auto output = driver.run (input);

    for (std::size_t i = 0; i < input.size(); ++i)
    {
        auto left = (double) input[i].first, right = (double) input[i].second;
        hpLadder.process (left, right);
        lpLadder.process (left, right);
        ASSERT_EQ (output[i], Frame ((float) left, (float) right)) << i;
    }

    EXPECT_EQ (ringing (driver.hpFilter()), hpFilter);
    EXPECT_FALSE (driver.hpResonator().designed);
}

TYPED_TEST (FramePath, FreezesTheFamilyThatIsNotSelectedAndResumesIt)
{
    TypeParam driver;
    fillPath (driver);
    driver.run (EngineDriver::noise (6, 500));
    const auto filter = ringing (driver.lpFilter());
    const auto peak = ringing (driver.lpResonator());
    EXPECT_NE (filter.front(), 0.0);

    for (const auto family : { 1, 5 })
    {
        driver.choose ("filtmode", family);
        driver.run (EngineDriver::noise (7, 500));
        EXPECT_EQ (ringing (driver.lpFilter()), filter);
        EXPECT_EQ (ringing (driver.lpResonator()), peak);
    }

    driver.choose ("filtmode", 0);
    EXPECT_NE (driver.run (EngineDriver::Frames (1)).front().first, 0.0f);
}

TYPED_TEST (FramePath, FreezesAPeakWithoutResonance)
{
    TypeParam driver;
    auto& engine = driver.engine;
    fillPath (driver);
    driver.run (EngineDriver::noise (8, 500));
    const auto highPeak = ringing (driver.hpResonator());
    const auto lowPeak = ringing (driver.lpResonator());

    // Exactly at the threshold it does not run.
    engine.hpResonance = 1.0e-7f;
    engine.lpPoles = 0;
    driver.run (EngineDriver::noise (9, 100));
    EXPECT_EQ (ringing (driver.hpResonator()), highPeak);
    EXPECT_EQ (ringing (driver.lpResonator()), lowPeak);

    engine.hpResonance = std::nextafter (1.0e-7f, 1.0f);
    engine.lpPoles = 1;
    driver.run ({ { 0.5f, 0.5f } });
    EXPECT_NE (ringing (driver.hpResonator()), highPeak);
    EXPECT_NE (ringing (driver.lpResonator()), lowPeak);
}

TYPED_TEST (FramePath, NeverTouchesAPeakAtResonanceZero)
{
    TypeParam driver;
    driver.set ("hp_freq", 0.5f);
    driver.run (EngineDriver::noise (10, 1000));
    EXPECT_FALSE (driver.hpResonator().designed);
    EXPECT_FALSE (driver.lpResonator().designed);
}

TYPED_TEST (FramePath, LimitsWhatTheResonanceAddsToOne)
{
    TypeParam driver;
    fillPath (driver);
    driver.choose ("lp_mode", 0);
    driver.tick();
    ASSERT_FALSE (driver.isUpdatePending());
    driver.engine.hpResonance = 10.0f;
    auto hpFilter = driver.hpFilter();
    const auto input = EngineDriver::noise (11, 5000, 19.9f);
    const auto output = driver.run (input);
    auto greatest = 0.0;

    for (std::size_t i = 0; i < input.size(); ++i)
    {
        auto left = (double) input[i].first, right = (double) input[i].second;
        hpFilter.process (left, right);

        for (const auto added :
             { std::abs ((double) output[i].first - left), std::abs ((double) output[i].second - right) })
        {
            // The sum is converted to a float of up to some 40.
            ASSERT_LE (added, 1.0 + 4.0e-6);
            greatest = std::max (greatest, added);
        }
    }

    EXPECT_GT (greatest, 0.999);
}

TYPED_TEST (FramePath, AddsOneForAPeakThatIsNaN)
{
    TypeParam driver;
    fillPath (driver);
    driver.choose ("lp_mode", 0);
    driver.tick();
    ASSERT_FALSE (driver.isUpdatePending());
    driver.hpResonator().b0 = (double) quietNaN;
    auto hpFilter = driver.hpFilter();
    const auto input = EngineDriver::noise (12, 100);
    const auto output = driver.run (input);

    for (std::size_t i = 0; i < input.size(); ++i)
    {
        auto left = (double) input[i].first, right = (double) input[i].second;
        hpFilter.process (left, right);
        ASSERT_EQ (output[i], Frame ((float) (left + 1.0), (float) (right + 1.0))) << i;
    }
}

TYPED_TEST (FramePath, GivesSilenceForSilenceAtAnyResonance)
{
    TypeParam driver;
    fillPath (driver);

    for (const auto& frame : driver.run (EngineDriver::Frames (1000)))
        ASSERT_EQ (frame, Frame (0.0f, 0.0f));

    // And again once the filters have decayed.
    driver.run (EngineDriver::noise (13, 5000));
    driver.runSilence (48000);

    for (const auto& frame : driver.run (EngineDriver::Frames (1000)))
        ASSERT_EQ (frame, Frame (0.0f, 0.0f));
}

TYPED_TEST (FramePath, NeverMixesTheChannels)
{
    for (const auto family : { 0, 1 })
    {
        TypeParam driver, alone;

        for (auto* const each : { &driver, &alone })
        {
            each->choose ("filtmode", family);
            fillPath (*each);
        }

        auto input = EngineDriver::noise (14, 2000);
        const auto both = driver.run (input);

        for (auto& frame : input)
            frame.first = 0.0f;

        const auto right = alone.run (input);

        for (std::size_t i = 0; i < input.size(); ++i)
        {
            ASSERT_EQ (right[i].first, 0.0f);
            ASSERT_EQ (right[i].second, both[i].second);
        }
    }
}

TYPED_TEST (FramePath, TreatsBothChannelsAlikeInEitherFamilyAndEverySlope)
{
    for (const auto family : { 0, 1 })
        for (int slope = 0; slope <= 4; ++slope)
        {
            TypeParam driver;
            driver.choose ("filtmode", family);
            driver.choose ("hp_mode", slope);
            driver.choose ("lp_mode", slope);
            driver.set ("hp_reso", 0.9f);
            driver.set ("lp_reso", 0.9f);
            driver.set ("hp_freq", 0.3f);
            driver.set ("lp_freq", 0.6f);
            EngineDriver::Frames input;

            for (int i = 0; i < 9000; ++i)
                input.emplace_back (i % 100 < 50 ? 0.5f : -0.5f, i % 100 < 50 ? 0.5f : -0.5f);

            auto largest = 0.0f;

            for (const auto& [left, right] : driver.run (input))
            {
                ASSERT_EQ (left, right);
                largest = std::max (largest, std::abs (left));
            }

            // Eight stages at full grunge leave little of the sound.
            EXPECT_GT (largest, 1.0e-5f) << "family " << family << ", slope " << slope;
        }
}

TYPED_TEST (FramePath, KeepsANaNOfTheSecondChannelOnItsSideUntilSectionsAreCleared)
{
    TypeParam driver;
    fillPath (driver);
    auto input = EngineDriver::noise (15, 100);
    input[10].second = quietNaN;

    const auto output = driver.run (input);
    EXPECT_TRUE (std::isfinite (output.back().first));
    EXPECT_TRUE (std::isnan (output.back().second));

    // The peaks keep it for good; without resonance, a slope that has been bypassed for a tick is clean again.
    driver.set ("hp_reso", 0.0f);
    driver.set ("lp_reso", 0.0f);
    driver.choose ("hp_mode", 0);
    driver.choose ("lp_mode", 0);
    driver.runSilence (1);
    driver.fallAsleep();
    driver.choose ("hp_mode", 2);
    driver.choose ("lp_mode", 2);
    driver.requestUpdate();
    EXPECT_TRUE (std::isfinite (driver.run (EngineDriver::noise (16, 100)).back().second));
}

TYPED_TEST (FramePath, GivesTheSameSoundInAnySplitIntoBlocks)
{
    for (const auto family : { 0, 1 })
    {
        const auto input = EngineDriver::noise (17, 6000);
        const auto rendered = [&] (std::size_t blockSize)
        {
            TypeParam driver;
            driver.choose ("filtmode", family);
            driver.setTransport (3.3);
            driver.set ("hp_freq", 0.3f);
            driver.set ("lp_freq", 0.8f);
            driver.set ("hp_reso", 0.7f);
            driver.set ("lp_reso", 0.6f);
            driver.set ("lfo1T_hpf", 0.7f);
            driver.set ("lfo2T_lpr", 0.7f);
            driver.set ("seq2_lpf", 0.4f);
            return driver.run (input, blockSize);
        };
        const auto whole = rendered (6000);

        for (const auto blockSize : { 1u, 7u, 64u, 512u, 5999u })
            EXPECT_EQ (rendered (blockSize), whole) << blockSize;
    }
}

//======================================================================================================================
TYPED_TEST (BlockLoop, ClampsEachChannelToItsOwnBounds)
{
    TypeParam driver;
    driver.choose ("hp_mode", 0);
    driver.choose ("lp_mode", 0);

    for (const auto& [in, out] : { std::pair { Frame (-25.0f, -25.0f), Frame (-25.0f, -20.0f) },
                                   { Frame (-31.0f, -21.0f), Frame (-30.0f, -20.0f) },
                                   { Frame (25.0f, 25.0f), Frame (20.0f, 20.0f) },
                                   { Frame (quietNaN, 0.5f), Frame (20.0f, 0.5f) } })
        EXPECT_EQ (driver.run ({ in }).front(), out);

    EXPECT_TRUE (std::isnan (driver.run ({ { 0.5f, quietNaN } }).front().second));
}

TYPED_TEST (BlockLoop, TicksEvery65536FramesInAnySplitIntoBlocks)
{
    for (const auto blockSize : { 1u, 7u, 512u, 65536u })
    {
        TypeParam driver;
        driver.set ("lp_freq", 0.0f);
        driver.setTransport (3.3);
        driver.runSilence (65535, blockSize);
        EXPECT_EQ (driver.numQueries(), 5) << blockSize;
        driver.runSilence (0, blockSize);
        EXPECT_EQ (driver.numQueries(), 5) << blockSize;
        driver.runSilence (1, blockSize);
        EXPECT_EQ (driver.numQueries(), 6) << blockSize;
        driver.runSilence (65536, blockSize);
        EXPECT_EQ (driver.numQueries(), 7) << blockSize;
    }
}

//======================================================================================================================
// The plug-in compared with itself.

TEST (PluginLoop, GivesTheSameInBlocksAsFrameByFrame)
{
    PluginInBlocks inBlocks;
    PluginFrameByFrame frameByFrame;

    for (auto* const driver : std::initializer_list<EngineDriver*> { &inBlocks, &frameByFrame })
    {
        driver->set ("hp_freq", 0.5f);
        driver->set ("lp_freq", 0.9f);
        driver->set ("lp_reso", 0.7f);
        driver->choose ("lp_mode", 3);
    }

    // Long enough to fall asleep on the way, and for a wrap of the clock.
    const auto input = EngineDriver::noise (18, 70000);
    EXPECT_EQ (inBlocks.run (input), frameByFrame.run (input));
    EXPECT_FALSE (inBlocks.isUpdatePending());

    // And awake.
    inBlocks.keepAwake();
    frameByFrame.keepAwake();
    EXPECT_EQ (inBlocks.run (input), frameByFrame.run (input));
}
