// SPDX-License-Identifier: AGPL-3.0-or-later
#include "system/daw/ReferenceSong.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double ticksPerBeat = 1920.0;
constexpr double framesPerBeat = Ardour::sampleRate / 2.0; // at 120 beats per minute

constexpr int mostStandingBlocks = 200;

/** The transport stands at whole multiples of this. */
constexpr int alignmentGrid = 16;
constexpr int mostRollingBlocksBefore = 2;
constexpr int mostBlocksAtZero = 10;

double ticksAt (int frame) { return std::round (frame * ticksPerBeat / framesPerBeat); }

reference::Transport transportAt (int frame)
{
    reference::Transport transport;
    transport.hasPlayHead = true;
    transport.hasPosition = true;
    transport.ppqPosition = ticksAt (frame) / ticksPerBeat;
    return transport;
}

/** The state keeps four decimals. */
float asSaved (float position) { return juce::String (position, 4).getFloatValue(); }

void process (reference::Engine& engine, juce::AudioBuffer<float>& block)
{
    engine.process (block.getWritePointer (0), block.getWritePointer (1), block.getNumSamples());
}

void processSilentBlock (reference::Engine& engine)
{
    juce::AudioBuffer<float> silence (2, ReferenceSong::blockSize);
    silence.clear();
    process (engine, silence);
}
} // namespace

ReferenceSong::ReferenceSong (const Ardour::Song& songToPlay) : song (songToPlay) {}

std::vector<std::pair<int, int>> ReferenceSong::Alignment::rollingBlocks (int numFrames) const
{
    std::vector<std::pair<int, int>> blocks;

    for (auto first = -framesBeforeStart(); first < 0; first += blockSize)
        blocks.push_back ({ first, std::min (blockSize, -first) });

    blocks.push_back ({ 0, standsAt });

    for (auto first = standsAt; first < numFrames; first += blockSize)
        blocks.push_back ({ first, blockSize });

    return blocks;
}

float ReferenceSong::positionAtEnd (const std::vector<Ardour::Point>& lane, int endFrame)
{
    const auto tick = ticksAt (endFrame);

    for (std::size_t i = 1; i < lane.size(); ++i)
    {
        const auto& from = lane[i - 1];
        const auto& to = lane[i];

        if (tick < ticksAt (to.frame))
            return (float) (from.position
                            + (to.position - from.position) * juce::jmax (0.0, tick - ticksAt (from.frame))
                                  / (ticksAt (to.frame) - ticksAt (from.frame)));
    }

    return (float) lane.back().position;
}

void ReferenceSong::automate (reference::Engine& engine, int endFrame) const
{
    for (const auto& [index, lane] : song.lanes)
        engine.setParameter (index, positionAtEnd (lane, endFrame));
}

ReferenceSong::Match ReferenceSong::bestMatch (const juce::AudioBuffer<float>& heard) const
{
    auto best = bestMatch (heard, Alignment {});

    for (int atZero = 1; atZero <= mostBlocksAtZero && best.numSame < heard.getNumSamples(); ++atZero)
        if (const auto match = bestMatch (heard, Alignment { .blocksAtZero = atZero }); match.numSame > best.numSame)
            best = match;

    for (int before = 1; before <= mostRollingBlocksBefore; ++before)
        for (int standsAt = alignmentGrid; standsAt <= blockSize && best.numSame < heard.getNumSamples();
             standsAt += alignmentGrid)
            if (const auto match = bestMatch (heard, Alignment { standsAt, before }); match.numSame > best.numSame)
                best = match;

    return best;
}

ReferenceSong::Match ReferenceSong::bestMatch (const juce::AudioBuffer<float>& heard, Alignment alignment) const
{
    auto engine = startedEngine (alignment);
    Match best { alignment, 0, 0 };

    for (int standing = 0; standing < mostStandingBlocks && best.numSame < heard.getNumSamples(); ++standing)
    {
        if (const auto numSame = countSame (engine, heard, alignment); numSame > best.numSame)
            best = { alignment, (alignment.blocksAtZero + standing) * blockSize + alignment.framesBeforeStart(),
                     numSame };

        processSilentBlock (engine);
    }

    return best;
}

/** The engine with the song's settings, before its first block. */
reference::Engine ReferenceSong::startedEngine (Alignment alignment) const
{
    reference::Engine engine;
    engine.setSampleRate (Ardour::sampleRate);
    engine.prepareToPlay();

    for (int index = 0; index < reference::Index::count; ++index)
        engine.setParameter (index, asSaved (engine.getParameter (index)));

    for (const auto& [index, position] : song.positions)
        engine.setParameter (index, asSaved (position));

    automate (engine, alignment.standsAt);
    engine.transport = [] { return transportAt (0); };

    for (int block = 0; block < alignment.blocksAtZero; ++block)
        processSilentBlock (engine);

    engine.transport = [alignment] { return transportAt (alignment.standsAt); };
    return engine;
}

int ReferenceSong::countSame (const reference::Engine& started, const juce::AudioBuffer<float>& heard,
                              Alignment alignment) const
{
    auto engine = started;
    const auto numFrames = heard.getNumSamples();

    for (const auto& [first, length] : alignment.rollingBlocks (numFrames))
    {
        juce::AudioBuffer<float> block (2, length);
        block.clear();
        const auto numHeard = first < 0 ? 0 : juce::jmin (length, numFrames - first);

        for (int channel = 0; channel < 2; ++channel)
            if (numHeard > 0)
                block.copyFrom (channel, 0, song.sound, channel, first, numHeard);

        engine.transport = [frame = first] { return transportAt (frame); };
        automate (engine, first + length);
        process (engine, block);

        for (int frame = 0; frame < numHeard; ++frame)
            for (int channel = 0; channel < 2; ++channel)
                if (! juce::exactlyEqual (block.getSample (channel, frame), heard.getSample (channel, first + frame)))
                    return first + frame;
    }

    return numFrames;
}
