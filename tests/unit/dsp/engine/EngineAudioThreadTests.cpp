// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/MainAudioProcessor.h"

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "support/AudioThreadWatch.h"
#include "support/EngineUnderTest.h"

namespace
{
/** A state of the engine: asleep, or busy in one way. */
struct Regime
{
    const char* name;
    std::function<void (EngineUnderTest&)> prepare;

    /** What the host does before each block, which is not watched. */
    std::function<void (EngineUnderTest&, int)> betweenBlocks = nullptr;
};

void PrintTo (const Regime& regime, std::ostream* stream) { *stream << regime.name; }

void routeEverything (EngineUnderTest& engine)
{
    for (auto* const parameter : engine.processor.getParameters())
        if (parameter->getParameterIndex() > 6 && parameter->getParameterIndex() != 30)
            parameter->setValue (0.7f);

    engine.set ("hp_freq", 0.4f);
    engine.set ("lp_freq", 0.6f);
    engine.set ("hp_reso", 0.9f);
    engine.set ("lp_reso", 0.9f);
    engine.choose ("hp_mode", 4);
    engine.choose ("lp_mode", 4);
}

const Regime regimes[] {
    { "first block", [] (EngineUnderTest&) {} },
    { "asleep", [] (EngineUnderTest& engine) { engine.fallAsleep(); } },
    { "gliding",
      [] (EngineUnderTest& engine)
      {
          engine.fallAsleep();
          engine.set ("hp_freq", 0.6f);
      } },
    { "resonant",
      [] (EngineUnderTest& engine)
      {
          engine.set ("hp_reso", 0.9f);
          engine.set ("lp_reso", 0.9f);
          engine.choose ("hp_mode", 1);
      } },
    { "ladder",
      [] (EngineUnderTest& engine)
      {
          engine.choose ("filtmode", 1);
          engine.choose ("hp_mode", 4);
          engine.choose ("lp_mode", 4);
          engine.set ("lp_reso", 1.0f);
      } },
    { "everything routed",
      [] (EngineUnderTest& engine)
      {
          routeEverything (engine);
          engine.setTransport (3.3);
      } },
    { "every shape and sync in turn",
      [] (EngineUnderTest& engine)
      {
          routeEverything (engine);
          engine.setTransport (3.3);
      },
      [] (EngineUnderTest& engine, int block)
      {
          engine.choose ("lfo1_shape", block % 10);
          engine.choose ("lfo2_shape", (block / 2) % 9);
          engine.choose ("lfo1_sync", block % 5);
          engine.choose ("lfo2_sync", (block + 1) % 5);
      } },
    { "transport jumping",
      [] (EngineUnderTest& engine)
      {
          routeEverything (engine);
          engine.choose ("lfo1_sync", 3);
          engine.choose ("lfo2_shape", 6);
      },
      [] (EngineUnderTest& engine, int block)
      {
          if (block % 4 == 0)
              engine.processor.setPlayHead (nullptr);
          else if (block % 4 == 1)
              engine.setTransport (0.0);
          else
              engine.setTransport ((double) ((block * 7919) % 512) - 100.0, 60.0 + block);
      } },
    { "every parameter moving", [] (EngineUnderTest& engine) { engine.setTransport (3.3); },
      [] (EngineUnderTest& engine, int block)
      {
          for (auto* const parameter : engine.processor.getParameters())
              parameter->setValueNotifyingHost ((float) ((block * 31 + parameter->getParameterIndex() * 17) % 101)
                                                * 0.01f);
      } },
    { "prepared again", [] (EngineUnderTest&) {},
      [] (EngineUnderTest& engine, int block)
      {
          engine.processor.setRateAndBufferSizeDetails (block % 2 == 0 ? 44100.0 : 192000.0, 512);
          engine.processor.prepareToPlay (44100.0, 512);
      } },
};

class EngineAudioThread : public testing::TestWithParam<Regime>
{
};

[[nodiscard]] std::string nameOf (const testing::TestParamInfo<Regime>& instance)
{
    std::string name (instance.param.name);
    std::replace (name.begin(), name.end(), ' ', '_');
    return name;
}

[[nodiscard]] AudioThreadWatch::Counts watchedBlock (EngineUnderTest& engine, juce::AudioBuffer<float>& buffer)
{
    juce::MidiBuffer midi;
    const AudioThreadWatch watch;
    engine.processor.processBlock (buffer, midi);
    return watch.counts();
}
} // namespace

TEST_P (EngineAudioThread, NeitherAllocatesNorReleasesNorLocks)
{
    const auto& regime = GetParam();
    EngineUnderTest engine;
    regime.prepare (engine);

    for (int block = 0; block < 40; ++block)
    {
        if (regime.betweenBlocks != nullptr)
            regime.betweenBlocks (engine, block);

        // Blocks of none, one and many frames. Together they reach a wrap of the clock.
        constexpr int sizes[] { 512, 0, 1, 4096, 17, 9000 };
        juce::AudioBuffer<float> buffer (2, sizes[block % 6]);
        buffer.clear();

        if (buffer.getNumSamples() > 0)
            buffer.setSample (0, 0, 1.0f);

        ASSERT_EQ (watchedBlock (engine, buffer), AudioThreadWatch::Counts {}) << "block " << block;
    }
}

INSTANTIATE_TEST_SUITE_P (Regimes, EngineAudioThread, testing::ValuesIn (regimes), nameOf);

TEST (EngineAudioThreadOnce, NeitherAllocatesNorLocksInABlockThatIsProcessedInSeveralPieces)
{
    EngineUnderTest engine;
    juce::AudioBuffer<float> buffer (2, 600000);
    buffer.clear();
    EXPECT_EQ (watchedBlock (engine, buffer), AudioThreadWatch::Counts {});
}

TEST (EngineAudioThreadOnce, NeitherAllocatesNorLocksInMono)
{
    EngineUnderTest engine;
    juce::AudioProcessor::BusesLayout layout;
    layout.inputBuses.add (juce::AudioChannelSet::mono());
    layout.outputBuses.add (juce::AudioChannelSet::mono());
    ASSERT_TRUE (engine.processor.setBusesLayout (layout));
    juce::AudioBuffer<float> buffer (1, 5000);
    buffer.clear();
    EXPECT_EQ (watchedBlock (engine, buffer), AudioThreadWatch::Counts {});
}
