// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gtest/gtest.h>

#include "host/Transport.h"
#include "module/ModuleUnderTest.h"
#include "reference/ReferenceEngine.h"

namespace
{
constexpr int blockSize = 333;
constexpr int numBlocks = 40;
constexpr double sampleRate = 44100.0;

using Settings = std::vector<std::pair<int, float>>;

/** The module on one side and the reference engine on the other: same settings, same sound, same song. */
void expectSameBits (const Settings& settings, int numChannels, bool withTransport)
{
    ModuleUnderTest module;
    reference::Engine engine;
    Transport transport ({}, sampleRate);

    for (const auto& [index, position] : settings)
    {
        module.parameters().all()[(std::size_t) index].parameter->setValue (position);
        engine.setParameter (index, position);
    }

    module.prepare (numChannels == 1 ? juce::AudioChannelSet::mono() : juce::AudioChannelSet::stereo(), sampleRate,
                    blockSize);
    engine.setSampleRate (sampleRate);
    engine.prepareToPlay();

    if (withTransport)
        module.instance().setPlayHead (&transport);

    // The client always has a play head; without a song the position that it gives is empty.
    engine.transport = [&transport, withTransport]
    {
        reference::Transport answer;
        answer.hasPlayHead = true;
        answer.hasPosition = true;

        if (withTransport)
        {
            const auto position = *transport.getPosition();
            answer.bpm = *position.getBpm();
            answer.ppqPosition = *position.getPpqPosition();
        }

        return answer;
    };

    for (int block = 0; block < numBlocks; ++block)
    {
        transport.moveTo ((juce::int64) block * blockSize);
        auto sound = makeNoise (numChannels, blockSize, block);
        auto expected = sound;
        module.process (sound);
        engine.process (expected.getWritePointer (0), numChannels > 1 ? expected.getWritePointer (1) : nullptr,
                        blockSize);

        for (int channel = 0; channel < numChannels; ++channel)
            ASSERT_EQ (samplesOf (sound, channel), samplesOf (expected, channel))
                << "block " << block << ", channel " << channel;
    }

    module.instance().setPlayHead (nullptr);
}

namespace Index = reference::Index;

const Settings sweptButterworth { { Index::hpFreq, 0.2f },        { Index::hpReso, 0.6f },
                                  { Index::lpFreq, 0.7f },        { Index::lpReso, 0.5f },
                                  { Index::lpMode, 3.0f / 9.0f }, { Index::lfoToLpf (0), 0.8f },
                                  { Index::lfoToHpf (1), 0.3f } };

const Settings ladderInSteps { { Index::filtMode, 1.0f / 9.0f }, { Index::lpFreq, 0.5f },
                               { Index::lpReso, 0.8f },          { Index::seqHpf (0), 0.7f },
                               { Index::seqLpf (1), 0.2f },      { Index::lfoSync (0), 3.0f / 9.0f },
                               { Index::lfoMode (0), 0.625f },   { Index::lfoToLpf (0), 0.9f } };
} // namespace

TEST (ModuleAgainstTheReferenceEngine, GivesTheSameBitsForSweptButterworthFilters)
{
    expectSameBits (sweptButterworth, 2, false);
    expectSameBits (sweptButterworth, 1, true);
}

TEST (ModuleAgainstTheReferenceEngine, GivesTheSameBitsForALadderMovedByStepsAndTempo)
{
    expectSameBits (ladderInSteps, 2, true);
    expectSameBits (ladderInSteps, 1, false);
}
