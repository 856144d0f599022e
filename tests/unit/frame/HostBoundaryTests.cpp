// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/MainAudioProcessor.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "support/EngineUnderTest.h"

// The entry that the plug-in client calls, which has no header.
juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter();

namespace
{
using Channels = juce::AudioChannelSet;

[[nodiscard]] bool accepts (const Channels& input, const Channels& output)
{
    MainAudioProcessor processor;
    juce::AudioProcessor::BusesLayout layout;
    layout.inputBuses.add (input);
    layout.outputBuses.add (output);
    return processor.checkBusesLayoutSupported (layout);
}

/** LFO 1's step per tick at 48 kHz when it follows the tempo with one cycle in four beats. The first tick sets it. */
[[nodiscard]] float stepOfTempo (EngineUnderTest& engine)
{
    engine.choose ("lfo1_sync", 3);
    engine.choose ("lfo1_mode", 6);
    engine.tick();
    return engine.processor.lfo[0].phaseStepA;
}

[[nodiscard]] float stepAtBpm (double bpm) { return (float) (bpm / 4.0 * 0.016666666666666666) / 48000.0f; }

/** The step of the free speed at its default position. */
[[nodiscard]] float freeStep (EngineUnderTest& engine)
{
    return std::exp (engine.processor.parameters.lfoSpeed[0]->get() * 6.9077554f - 3.912023f) / 48000.0f;
}

/** Moves both LFOs off their start, so that a reset shows. */
void displaceLfos (EngineUnderTest& engine)
{
    for (auto& generator : engine.processor.lfo)
        generator.jumpTo (0.25f);
}

/** Gives the engine a play head that reports this, with both LFOs off their start. */
void report (EngineUnderTest& engine, const juce::AudioPlayHead::PositionInfo& info)
{
    engine.playHead.position = info;
    engine.processor.setPlayHead (&engine.playHead);
    displaceLfos (engine);
}

[[nodiscard]] bool lfosStandAtTheStart (const EngineUnderTest& engine)
{
    return std::all_of (engine.processor.lfo.begin(), engine.processor.lfo.end(),
                        [] (const LfoGenerator& generator) { return generator.referencePhase == 0.0f; });
}
} // namespace

TEST (HostBoundary, AcceptsOnlyMonoAndStereoWithEqualSides)
{
    EXPECT_TRUE (accepts (Channels::mono(), Channels::mono()));
    EXPECT_TRUE (accepts (Channels::stereo(), Channels::stereo()));

    EXPECT_FALSE (accepts (Channels::stereo(), Channels::mono()));
    EXPECT_FALSE (accepts (Channels::mono(), Channels::stereo()));
    EXPECT_FALSE (accepts (Channels::createLCR(), Channels::createLCR()));
    EXPECT_FALSE (accepts (Channels::create5point1(), Channels::create5point1()));
    EXPECT_FALSE (accepts (Channels::discreteChannels (2), Channels::discreteChannels (2)));
    EXPECT_FALSE (accepts (Channels::disabled(), Channels::disabled()));
    EXPECT_FALSE (accepts (Channels::disabled(), Channels::stereo()));
    EXPECT_FALSE (accepts (Channels::stereo(), Channels::disabled()));
}

TEST (HostBoundary, HasOneStereoBusInAndOneOut)
{
    MainAudioProcessor processor;
    ASSERT_EQ (processor.getBusCount (true), 1);
    ASSERT_EQ (processor.getBusCount (false), 1);
    EXPECT_EQ (processor.getBus (true, 0)->getName(), "Input");
    EXPECT_EQ (processor.getBus (false, 0)->getName(), "Output");
    EXPECT_EQ (processor.getBus (true, 0)->getDefaultLayout(), Channels::stereo());
    EXPECT_EQ (processor.getBus (false, 0)->getDefaultLayout(), Channels::stereo());
    EXPECT_TRUE (processor.getBus (true, 0)->isEnabledByDefault());
    EXPECT_TRUE (processor.getBus (false, 0)->isEnabledByDefault());
}

TEST (HostBoundary, DeclaresAPlainEffect)
{
    MainAudioProcessor processor;
    EXPECT_EQ (processor.getName(), "Kestrin Tamsile Filter");
    EXPECT_EQ (processor.getTailLengthSeconds(), 0.0);
    EXPECT_EQ (processor.getLatencySamples(), 0);
    EXPECT_FALSE (processor.acceptsMidi());
    EXPECT_FALSE (processor.producesMidi());
    EXPECT_FALSE (processor.isMidiEffect());
    EXPECT_FALSE (processor.supportsMPE());
    EXPECT_FALSE (processor.supportsDoublePrecisionProcessing());
    EXPECT_TRUE (processor.hasEditor());
    EXPECT_EQ (processor.getBypassParameter(), nullptr);
}

TEST (HostBoundary, HasOneUnnamedProgramThatRequestsATickWhenSelected)
{
    EngineUnderTest engine;
    auto& processor = engine.processor;
    engine.tick();
    processor.controlUpdatePending = false;
    processor.framesSinceRequest = 7;
    EXPECT_EQ (processor.getNumPrograms(), 1);
    EXPECT_EQ (processor.getCurrentProgram(), 0);
    EXPECT_EQ (processor.getProgramName (0), juce::String());
    processor.changeProgramName (0, "named");
    EXPECT_EQ (processor.getProgramName (0), juce::String());
    EXPECT_FALSE (processor.controlUpdatePending);
    processor.setCurrentProgram (0);
    EXPECT_TRUE (processor.controlUpdatePending);
    EXPECT_EQ (processor.framesSinceRequest, 0);
}

TEST (HostBoundary, MakesANewInstanceForEachCall)
{
    const std::unique_ptr<juce::AudioProcessor> first (createPluginFilter());
    const std::unique_ptr<juce::AudioProcessor> second (createPluginFilter());
    EXPECT_NE (dynamic_cast<MainAudioProcessor*> (first.get()), nullptr);
    EXPECT_NE (first.get(), second.get());
}

TEST (HostBoundary, RequestsATickWhenPreparedAndKeepsItsRate)
{
    EngineUnderTest engine;
    engine.fallAsleep();
    auto& processor = engine.processor;
    processor.framesSinceRequest = 99;
    processor.prepareToPlay (192000.0, 17);
    EXPECT_TRUE (processor.controlUpdatePending);
    EXPECT_EQ (processor.framesSinceRequest, 0);

    // The rate comes from the host at each tick.
    EXPECT_EQ (processor.hostSampleRate, 48000.0);
    processor.releaseResources();
    EXPECT_TRUE (processor.controlUpdatePending);
}

TEST (HostBoundary, ProcessesMonoLikeTheLeftChannelOfStereo)
{
    EngineUnderTest stereo, mono;
    juce::AudioProcessor::BusesLayout layout;
    layout.inputBuses.add (Channels::mono());
    layout.outputBuses.add (Channels::mono());
    ASSERT_TRUE (mono.processor.setBusesLayout (layout));

    for (auto* const engine : { &stereo, &mono })
    {
        engine->set ("hp_freq", 0.4f);
        engine->set ("lp_freq", 0.6f);
        engine->set ("lp_reso", 0.8f);
    }

    const auto input = EngineUnderTest::noise (1, 5000);
    const auto expected = stereo.run (input);
    juce::AudioBuffer<float> buffer (1, (int) input.size());

    for (std::size_t i = 0; i < input.size(); ++i)
        buffer.setSample (0, (int) i, input[i].first);

    mono.run (buffer);

    for (std::size_t i = 0; i < input.size(); ++i)
        ASSERT_EQ (buffer.getSample (0, (int) i), expected[i].first) << i;
}

TEST (HostBoundary, LeavesTheEngineUntouchedWhileBypassed)
{
    EngineUnderTest engine, twin;

    for (auto* const each : { &engine, &twin })
    {
        each->set ("lp_freq", 0.5f);
        each->set ("lp_reso", 0.9f);
        each->run (EngineUnderTest::noise (2, 1000));
    }

    auto& processor = engine.processor;
    const auto pending = processor.controlUpdatePending;
    const auto frames = processor.framesSinceRequest;
    const auto current = processor.lpFreqSlew.current;
    juce::AudioBuffer<float> buffer (2, 100000);
    juce::MidiBuffer midi;
    const auto input = EngineUnderTest::noise (3, 100000, 25.0f);

    for (int i = 0; i < buffer.getNumSamples(); ++i)
    {
        buffer.setSample (0, i, input[(std::size_t) i].first);
        buffer.setSample (1, i, input[(std::size_t) i].second);
    }

    processor.processBlockBypassed (buffer, midi);

    for (int i = 0; i < buffer.getNumSamples(); ++i)
    {
        ASSERT_EQ (buffer.getSample (0, i), input[(std::size_t) i].first);
        ASSERT_EQ (buffer.getSample (1, i), input[(std::size_t) i].second);
    }

    EXPECT_EQ (processor.controlUpdatePending, pending);
    EXPECT_EQ (processor.framesSinceRequest, frames);
    EXPECT_EQ (processor.lpFreqSlew.current, current);

    // It continues where it stopped.
    EXPECT_EQ (engine.run (EngineUnderTest::noise (4, 1000)), twin.run (EngineUnderTest::noise (4, 1000)));
}

TEST (Transport, IsAbsentWithoutAPlayHead)
{
    EngineUnderTest engine;
    displaceLfos (engine);

    // No beats per minute: the free speed takes over.
    EXPECT_EQ (stepOfTempo (engine), freeStep (engine));
    EXPECT_TRUE (lfosStandAtTheStart (engine));
    EXPECT_TRUE (
        std::all_of (engine.processor.stepLit.begin(), engine.processor.stepLit.end(), [] (bool b) { return b; }));
}

TEST (Transport, IsAbsentWithoutAPosition)
{
    EngineUnderTest engine;
    engine.processor.setPlayHead (&engine.playHead);
    displaceLfos (engine);
    EXPECT_EQ (stepOfTempo (engine), freeStep (engine));
    EXPECT_TRUE (lfosStandAtTheStart (engine));
}

TEST (Transport, StandsAtZeroWhenOnlyATempoIsReported)
{
    EngineUnderTest engine;
    juce::AudioPlayHead::PositionInfo info;
    info.setBpm (90.0);
    report (engine, info);
    EXPECT_EQ (stepOfTempo (engine), stepAtBpm (90.0));
    EXPECT_TRUE (lfosStandAtTheStart (engine));
    EXPECT_TRUE (
        std::all_of (engine.processor.stepLit.begin(), engine.processor.stepLit.end(), [] (bool b) { return b; }));
}

TEST (Transport, Assumes120BpmWhenNoTempoIsReported)
{
    EngineUnderTest engine;
    juce::AudioPlayHead::PositionInfo info;
    info.setPpqPosition (3.3);
    report (engine, info);
    EXPECT_EQ (stepOfTempo (engine), stepAtBpm (120.0));
    EXPECT_FALSE (lfosStandAtTheStart (engine));
}

TEST (Transport, UsesTheDefaultsForAnEmptyPosition)
{
    EngineUnderTest engine;
    report (engine, {});
    EXPECT_EQ (stepOfTempo (engine), stepAtBpm (120.0));
    EXPECT_TRUE (lfosStandAtTheStart (engine));
}

TEST (Transport, CountsAsAbsentAtPositionZeroButKeepsItsTempo)
{
    for (const auto zero : { 0.0, -0.0 })
    {
        EngineUnderTest engine;
        engine.setTransport (zero, 60.0);
        displaceLfos (engine);
        EXPECT_EQ (stepOfTempo (engine), stepAtBpm (60.0));
        EXPECT_TRUE (lfosStandAtTheStart (engine));
    }
}

TEST (Transport, CountsAsPresentAtAnyOtherPosition)
{
    for (const auto beats : { 5.0e-324, -0.25, 1.0e9 })
    {
        EngineUnderTest engine;
        engine.setTransport (beats);
        displaceLfos (engine);
        engine.tick();
        EXPECT_FALSE (lfosStandAtTheStart (engine)) << beats;
    }
}

TEST (Transport, KeepsTheOutputFiniteForNaNInfinityAndOddSignatures)
{
    constexpr auto quietNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr auto infinity = std::numeric_limits<double>::infinity();

    for (const auto beats : { quietNaN, infinity, -infinity, 1.0e300, 3.3 })
        for (const auto bpm : { quietNaN, infinity, -infinity, -120.0, 0.0, 1.0e300 })
            for (const auto shape : { 0, 5, 6, 7 })
                for (const auto numerator : { 4, 0, -3 })
                {
                    EngineUnderTest engine;
                    engine.setTransport (beats, bpm, { numerator, numerator == 0 ? 0 : 4 });
                    engine.choose ("lfo1_sync", 3);
                    engine.choose ("lfo1_shape", shape);
                    engine.choose ("lfo2_shape", 7 - shape);
                    engine.set ("lfo1T_hpf", 1.0f);
                    engine.set ("lfo2T_lpr", 0.0f);
                    engine.set ("lfo1T_lfo2", 1.0f);
                    engine.set ("seq3_lpf", 0.2f);

                    for (const auto& [left, right] : engine.run (EngineUnderTest::noise (5, 300)))
                        ASSERT_TRUE (std::isfinite (left) && std::isfinite (right)) << beats << ' ' << bpm;

                    for (const auto* const slew : { &engine.processor.hpFreqSlew, &engine.processor.lpFreqSlew,
                                                    &engine.processor.hpResoSlew, &engine.processor.lpResoSlew })
                        ASSERT_TRUE (slew->target >= 0.0f && slew->target <= 1.0f) << slew->target;
                }
}
