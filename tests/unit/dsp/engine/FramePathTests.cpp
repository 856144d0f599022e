// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/MainAudioProcessor.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include <gtest/gtest.h>

#include "support/EngineUnderTest.h"
#include "support/Response.h"

namespace
{
using Frame = std::pair<float, float>;

constexpr auto notANumber = std::numeric_limits<double>::quiet_NaN();

/** An engine with everything in the way of the sound, standing still. */
void fillPath (EngineUnderTest& engine)
{
    engine.set ("hp_freq", 0.4f);
    engine.set ("lp_freq", 0.7f);
    engine.set ("hp_reso", 0.9f);
    engine.set ("lp_reso", 0.8f);
    engine.choose ("hp_mode", 3);
    engine.choose ("lp_mode", 4);
    engine.fallAsleep();
}

/** The same sound whether it has run or not: what a filter makes of silence tells its state. */
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

void addPeak (ResonancePeak& peak, double amount, double& left, double& right)
{
    auto peakLeft = left, peakRight = right;
    peak.process (peakLeft, peakRight);
    left += saturated (peakLeft - left, amount);
    right += saturated (peakRight - right, amount);
}

[[nodiscard]] bool asksForATick (MainAudioProcessor& processor)
{
    processor.controlUpdatePending = false;
    processor.framesSinceRequest = 5;
    processor.processFrame (0.0f, 0.0f);
    EXPECT_EQ (processor.framesSinceRequest, processor.controlUpdatePending ? 0 : 5);
    return processor.controlUpdatePending;
}
} // namespace

TEST (FramePath, AsksForATickInEachOfTheFirstFourFrames)
{
    MainAudioProcessor processor;

    for (int frame = 0; frame < 4; ++frame)
        EXPECT_TRUE (asksForATick (processor)) << frame;

    EXPECT_FALSE (asksForATick (processor));
}

TEST (FramePath, TakesNoteOfOneChangedParameterPerFrame)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.fallAsleep();
    engine.set ("hp_freq", 0.3f);
    engine.set ("lp_reso", 0.4f);
    EXPECT_TRUE (asksForATick (processor));
    EXPECT_EQ (processor.parameters.hpFreq->lastSeenValue, 0.3f);
    EXPECT_EQ (processor.parameters.lpReso->lastSeenValue, 0.0f);
    EXPECT_TRUE (asksForATick (processor));
    EXPECT_EQ (processor.parameters.lpReso->lastSeenValue, 0.4f);
    EXPECT_FALSE (asksForATick (processor));
}

TEST (FramePath, LooksAtItsFourParametersInTheirOrder)
{
    EngineUnderTest engine;
    auto& parameters = engine.processor.parameters;
    engine.fallAsleep();

    for (const auto* const id : { "lp_reso", "hp_reso", "lp_freq", "hp_freq" })
        engine.set (id, 0.6f);

    for (const auto* const parameter : { parameters.hpFreq, parameters.lpFreq, parameters.hpReso, parameters.lpReso })
    {
        EXPECT_NE (parameter->lastSeenValue, 0.6f);
        EXPECT_TRUE (asksForATick (engine.processor));
        EXPECT_EQ (parameter->lastSeenValue, 0.6f);
    }
}

TEST (FramePath, AsksForATickInEveryFrameWhileAWatchedParameterIsNoNumber)
{
    EngineUnderTest engine;
    engine.fallAsleep();
    engine.set ("lp_freq", std::numeric_limits<float>::quiet_NaN());

    for (int frame = 0; frame < 3; ++frame)
        EXPECT_TRUE (asksForATick (engine.processor));
}

TEST (FramePath, SleepsThroughEveryOtherParameter)
{
    EngineUnderTest engine;
    engine.fallAsleep();

    for (auto* const parameter : engine.processor.getParameters())
    {
        const auto index = parameter->getParameterIndex();
        const auto isWatched = index == 0 || index == 1 || index == 3 || index == 4;
        parameter->setValue (parameter->getValue() > 0.5f ? 0.1f : 0.9f);
        EXPECT_EQ (asksForATick (engine.processor), isWatched) << parameter->getName (100);
    }
}

// A change of slope or family sounds from the next tick on, which a sleeping engine may be a second away from.
TEST (FramePath, HearsAChangedSlopeAtTheNextTick)
{
    EngineUnderTest engine;
    engine.fallAsleep();
    engine.choose ("hp_mode", 4);
    engine.choose ("lp_mode", 0);
    engine.runSilence (1000);
    EXPECT_FALSE (engine.processor.controlUpdatePending);
    EXPECT_EQ (engine.processor.hpPoles, 2);
    EXPECT_EQ (engine.processor.lpPoles, 2);
    engine.runSilence (65536);
    EXPECT_EQ (engine.processor.hpPoles, 8);
    EXPECT_EQ (engine.processor.lpPoles, 0);
}

TEST (FramePath, HearsAChangedFamilyAtOnceButConfiguresItAtTheNextTick)
{
    EngineUnderTest engine;
    engine.fallAsleep();
    engine.choose ("filtmode", 1);
    const auto output = engine.run (EngineUnderTest::noise (1, 100));

    // The ladders have no stages before their first configuration: the sound passes.
    EXPECT_EQ (output, EngineUnderTest::noise (1, 100));
    EXPECT_EQ (engine.processor.hpLadder->numStages, 0);
    EXPECT_FALSE (engine.processor.controlUpdatePending);
}

TEST (FramePath, PassesTheSoundUntouchedWhenBothSlopesAreBypassed)
{
    for (const auto filtmode : { 0, 1 })
        for (const auto slope : { 0, 5, 9 })
        {
            EngineUnderTest engine;
            engine.choose ("hp_mode", slope);
            engine.choose ("lp_mode", slope);
            engine.choose ("filtmode", filtmode);
            engine.set ("hp_freq", 0.5f);
            engine.set ("hp_reso", 1.0f);
            engine.set ("lp_reso", 1.0f);
            const auto input = EngineUnderTest::noise (2, 3000, 19.0f);
            EXPECT_EQ (engine.run (input), input);
        }
}

TEST (FramePath, PassesTheSoundUntouchedInAFamilyWithoutAText)
{
    for (int index = 2; index < 10; ++index)
    {
        EngineUnderTest engine;
        fillPath (engine);
        engine.choose ("filtmode", index);
        const auto input = EngineUnderTest::noise (3, 1000);
        EXPECT_EQ (engine.run (input), input);
    }
}

TEST (FramePath, RunsHighpassItsPeakTheOtherPeakAndLowpassInThisOrder)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    fillPath (engine);
    auto hpFilter = *processor.hpFilter, lpFilter = *processor.lpFilter;
    auto hpPeak = *processor.hpResonator, lpPeak = *processor.lpResonator;
    ASSERT_GT (processor.hpResonance, 0.1f);
    ASSERT_GT (processor.lpResonance, 0.1f);

    for (const auto& [l, r] : EngineUnderTest::noise (4, 2000, 2.0f))
    {
        auto left = (double) l, right = (double) r;
        hpFilter.process (left, right);
        addPeak (hpPeak, (double) processor.hpResonance, left, right);
        addPeak (lpPeak, (double) processor.lpResonance, left, right);
        lpFilter.process (left, right);
        ASSERT_EQ (processor.processFrame (l, r), Frame ((float) left, (float) right));
    }
}

TEST (FramePath, RunsTheHighpassLadderBeforeTheLowpassLadder)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.choose ("filtmode", 1);
    fillPath (engine);
    auto hpLadder = *processor.hpLadder, lpLadder = *processor.lpLadder;
    const auto hpFilter = ringing (*processor.hpFilter);

    for (const auto& [l, r] : EngineUnderTest::noise (5, 2000))
    {
        auto left = (double) l, right = (double) r;
        hpLadder.process (left, right);
        lpLadder.process (left, right);
        ASSERT_EQ (processor.processFrame (l, r), Frame ((float) left, (float) right));
    }

    EXPECT_EQ (ringing (*processor.hpFilter), hpFilter);
    EXPECT_FALSE (processor.hpResonator->designed);
}

TEST (FramePath, FreezesTheFamilyThatIsNotSelectedAndResumesIt)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    fillPath (engine);
    engine.run (EngineUnderTest::noise (6, 500));
    const auto filter = ringing (*processor.lpFilter);
    const auto peak = ringing (*processor.lpResonator);
    EXPECT_NE (filter.front(), 0.0);

    for (const auto family : { 1, 5 })
    {
        engine.choose ("filtmode", family);
        engine.run (EngineUnderTest::noise (7, 500));
        EXPECT_EQ (ringing (*processor.lpFilter), filter);
        EXPECT_EQ (ringing (*processor.lpResonator), peak);
    }

    engine.choose ("filtmode", 0);
    EXPECT_NE (processor.processFrame (0.0f, 0.0f).first, 0.0f);
}

TEST (FramePath, FreezesAPeakWithoutResonance)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    fillPath (engine);
    engine.run (EngineUnderTest::noise (8, 500));
    const auto highPeak = ringing (*processor.hpResonator);
    const auto lowPeak = ringing (*processor.lpResonator);

    // Exactly at the threshold it does not run.
    processor.hpResonance = 1.0e-7f;
    processor.lpPoles = 0;

    for (const auto& [left, right] : EngineUnderTest::noise (9, 100))
        processor.processFrame (left, right);

    EXPECT_EQ (ringing (*processor.hpResonator), highPeak);
    EXPECT_EQ (ringing (*processor.lpResonator), lowPeak);

    processor.hpResonance = std::nextafter (1.0e-7f, 1.0f);
    processor.lpPoles = 1;
    processor.processFrame (0.5f, 0.5f);
    EXPECT_NE (ringing (*processor.hpResonator), highPeak);
    EXPECT_NE (ringing (*processor.lpResonator), lowPeak);
}

TEST (FramePath, NeverTouchesAPeakAtResonanceZero)
{
    EngineUnderTest engine;
    engine.set ("hp_freq", 0.5f);
    engine.run (EngineUnderTest::noise (10, 1000));
    EXPECT_FALSE (engine.processor.hpResonator->designed);
    EXPECT_FALSE (engine.processor.lpResonator->designed);
}

TEST (FramePath, LimitsWhatTheResonanceAddsToOne)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    fillPath (engine);
    engine.choose ("lp_mode", 0);
    engine.tick();
    processor.hpResonance = 10.0f;
    auto hpFilter = *processor.hpFilter;
    auto greatest = 0.0;

    for (const auto& [l, r] : EngineUnderTest::noise (11, 5000, 20.0f))
    {
        auto left = (double) l, right = (double) r;
        hpFilter.process (left, right);
        const auto added = std::abs ((double) processor.processFrame (l, r).first - left);

        // The sum is narrowed to a float of up to some 40.
        ASSERT_LE (added, 1.0 + 4.0e-6);
        greatest = std::max (greatest, added);
    }

    EXPECT_GT (greatest, 0.999);
}

TEST (FramePath, AddsOneForAPeakThatIsNoNumber)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    fillPath (engine);
    engine.choose ("lp_mode", 0);
    engine.tick();
    processor.hpResonator->b0 = notANumber;
    auto hpFilter = *processor.hpFilter;

    for (const auto& [l, r] : EngineUnderTest::noise (12, 100))
    {
        auto left = (double) l, right = (double) r;
        hpFilter.process (left, right);
        ASSERT_EQ (processor.processFrame (l, r), Frame ((float) (left + 1.0), (float) (right + 1.0)));
    }
}

TEST (FramePath, GivesSilenceForSilenceAtAnyResonance)
{
    EngineUnderTest engine;
    fillPath (engine);

    for (const auto& frame : engine.run (EngineUnderTest::Frames (1000)))
        ASSERT_EQ (frame, Frame (0.0f, 0.0f));

    // And again once the filters have decayed.
    engine.run (EngineUnderTest::noise (13, 5000));
    engine.runSilence (48000);

    for (const auto& frame : engine.run (EngineUnderTest::Frames (1000)))
        ASSERT_EQ (frame, Frame (0.0f, 0.0f));
}

TEST (FramePath, NeverMixesTheChannels)
{
    for (const auto family : { 0, 1 })
    {
        EngineUnderTest engine, alone;

        for (auto* const each : { &engine, &alone })
        {
            each->choose ("filtmode", family);
            fillPath (*each);
        }

        auto input = EngineUnderTest::noise (14, 2000);
        const auto both = engine.run (input);

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

TEST (FramePath, KeepsANotANumberOfTheSecondChannelOnItsSideUntilSectionsAreCleared)
{
    EngineUnderTest engine;
    fillPath (engine);
    auto input = EngineUnderTest::noise (15, 100);
    input[10].second = std::numeric_limits<float>::quiet_NaN();

    const auto output = engine.run (input);
    EXPECT_TRUE (std::isfinite (output.back().first));
    EXPECT_TRUE (std::isnan (output.back().second));

    // The peaks keep it for good; without resonance, a slope that has been bypassed for a tick is clean again.
    engine.set ("hp_reso", 0.0f);
    engine.set ("lp_reso", 0.0f);
    engine.choose ("hp_mode", 0);
    engine.choose ("lp_mode", 0);
    engine.fallAsleep();
    engine.runSilence (48000);
    engine.choose ("hp_mode", 2);
    engine.choose ("lp_mode", 2);
    engine.processor.requestControlUpdate();
    EXPECT_TRUE (std::isfinite (engine.run (EngineUnderTest::noise (16, 100)).back().second));
}

TEST (FramePath, PassesTheSoundUnchangedThroughAnyBlocks)
{
    for (const auto family : { 0, 1 })
    {
        const auto input = EngineUnderTest::noise (17, 6000);
        const auto rendered = [&] (std::size_t blockSize)
        {
            EngineUnderTest engine;
            engine.choose ("filtmode", family);
            engine.setTransport (3.3);
            engine.set ("hp_freq", 0.3f);
            engine.set ("lp_freq", 0.8f);
            engine.set ("hp_reso", 0.7f);
            engine.set ("lp_reso", 0.6f);
            engine.set ("lfo1T_hpf", 0.7f);
            engine.set ("lfo2T_lpr", 0.7f);
            engine.set ("seq2_lpf", 0.4f);
            return engine.run (input, blockSize);
        };
        const auto whole = rendered (6000);

        for (const auto blockSize : { 1u, 7u, 64u, 512u, 5999u })
            EXPECT_EQ (rendered (blockSize), whole) << blockSize;
    }
}

TEST (FramePath, RunsTheSameThroughTheLoopAsByHand)
{
    EngineUnderTest looped, byHand;

    for (auto* const engine : { &looped, &byHand })
    {
        engine->set ("hp_freq", 0.5f);
        engine->set ("lp_freq", 0.9f);
        engine->set ("lp_reso", 0.7f);
        engine->choose ("lp_mode", 3);
    }

    // Long enough to fall asleep on the way, and to be woken by the clock.
    const auto input = EngineUnderTest::noise (18, 70000);
    const auto output = looped.run (input);
    const juce::ScopedNoDenormals noDenormals;

    for (std::size_t i = 0; i < input.size(); ++i)
    {
        if (byHand.processor.controlUpdatePending || (i + 1) % 65536 == 0)
            byHand.tick();

        ASSERT_EQ (output[i], byHand.processor.processFrame (input[i].first, input[i].second)) << i;
    }

    EXPECT_FALSE (looped.processor.controlUpdatePending);
}
