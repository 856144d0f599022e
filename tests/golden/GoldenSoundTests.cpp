// SPDX-License-Identifier: AGPL-3.0-or-later
// Digests of the sound: the same with every compiler, processor and C library. A digest that changes is a changed product.
#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <juce_audio_formats/juce_audio_formats.h>

#include "dsp/MainAudioProcessor.h"
#include "golden/GoldenSound.h"
#include "support/FakePlayHead.h"
#include "support/scenario/Playback.h"
#include "support/scenario/Scenario.h"
#include "support/SettingsProbe.h"

namespace
{
/** The position of every parameter as it is saved. */
std::string savedPositions (MainAudioProcessor& processor)
{
    const auto text = settings::savedText (processor);
    std::string positions;

    for (const auto* parameter : processor.getParameters())
        if (const auto* named = dynamic_cast<const juce::AudioProcessorParameterWithID*> (parameter))
            positions += settings::attribute (text, named->paramID.toStdString()) + "\n";

    return positions;
}

std::string digestsOf (MainAudioProcessor& processor, const scenario::Output& output)
{
    golden::Digest settings;
    settings.add (savedPositions (processor));
    return golden::digestOf (output) + " " + settings.text();
}

/** Prints the rows that the file does not hold. */
void expectGolden (const std::string& kind, const std::vector<std::string>& rows)
{
    const auto goldenRows = golden::rowsOf (kind);
    std::string changed;

    for (const auto& row : rows)
        if (std::ranges::find (goldenRows, row) == goldenRows.end())
            changed += row + "\n";

    EXPECT_EQ (rows.size(), goldenRows.size());
    EXPECT_TRUE (changed.empty()) << "not in sound.txt:\n" << changed;
}

//======================================================================================================================
/** The plug-in by itself, as scenario::play asks for it. */
class PlugInPlayer
{
public:
    explicit PlugInPlayer (int newNumChannels) : numChannels (newNumChannels)
    {
        plugIn.setPlayConfigDetails (numChannels, numChannels, 0.0, largestBlock);
    }

    void seedLfo (int lfo, std::uint32_t seed) { plugIn.lfo[(std::size_t) lfo].rng.seed (seed); }
    void setParameter (int index, float position) { plugIn.getParameters()[index]->setValue (position); }
    void setSampleRate (double rate) { plugIn.setRateAndBufferSizeDetails (rate, largestBlock); }
    void prepareToPlay() { plugIn.prepareToPlay (plugIn.getSampleRate(), largestBlock); }

    void setTransport (const reference::Transport& transport)
    {
        host.position = {};

        if (transport.hasPosition)
            host.moveTo (transport.ppqPosition, transport.bpm,
                         { transport.timeSigNumerator, transport.timeSigDenominator });

        plugIn.setPlayHead (transport.hasPlayHead ? &host : nullptr);
    }

    void process (float* left, float* rightOrNull, int numFrames)
    {
        float* const channels[] = { left, rightOrNull };
        juce::AudioBuffer<float> buffer (channels, numChannels, numFrames);
        plugIn.processBlock (buffer, noMidi);
    }

    void blockDone (int) {}

    MainAudioProcessor plugIn;

private:
    static constexpr int largestBlock = 8192;

    const int numChannels;
    FakePlayHead host;
    juce::MidiBuffer noMidi;
};

std::string digestsOfSession (std::uint32_t seed)
{
    const auto session = golden::sessionOf (seed);
    PlugInPlayer player (session.stereo ? 2 : 1);
    const auto output = scenario::play (session, player);
    return digestsOf (player.plugIn, output);
}

//======================================================================================================================
scenario::Output demoLoop()
{
    juce::WavAudioFormat format;
    const std::unique_ptr<juce::AudioFormatReader> reader (
        format.createReaderFor (juce::File (KESTRIN_DEMO_LOOP).createInputStream().release(), true));

    if (reader == nullptr)
        return {};

    juce::AudioBuffer<float> sound (2, (int) reader->lengthInSamples);
    reader->read (&sound, 0, sound.getNumSamples(), 0, true, true);
    const auto channel = [&] (int index)
    { return std::vector (sound.getReadPointer (index), sound.getReadPointer (index) + sound.getNumSamples()); };
    return { channel (0), channel (1) };
}

/** What is played through a preset: the loop at its tempo, in blocks of a host. */
scenario::Scenario loopSession (const scenario::Output& loop)
{
    constexpr auto rate = 44100.0, bpm = 120.0, startBeat = 32.0;
    constexpr auto blockSize = 512;
    const auto numFrames = (int) loop.left.size();
    scenario::Scenario session;
    session.lfoSeeds = { 1, 2 };
    session.left = loop.left;
    session.right = loop.right;

    for (int done = 0; done < numFrames; done += blockSize)
    {
        scenario::Block block;
        block.numFrames = std::min (blockSize, numFrames - done);
        block.hostRate = rate;
        block.prepare = done == 0;
        block.transport.hasPlayHead = block.transport.hasPosition = true;
        block.transport.bpm = bpm;
        block.transport.ppqPosition = startBeat + done / rate * bpm / 60.0;
        session.blocks.push_back (block);
    }

    return session;
}

/** The positions that a preset saves, in the state that its file holds. */
std::array<float, reference::Index::count> positionsOf (const juce::File& preset)
{
    juce::MemoryBlock data;
    preset.loadFileAsData (data);
    const std::string_view bytes (static_cast<const char*> (data.getData()), data.getSize());
    const auto state = bytes.substr (std::min (bytes.find ("VC2!"), bytes.size()));

    MainAudioProcessor processor;
    processor.setStateInformation (state.data(), (int) state.size());
    std::array<float, reference::Index::count> positions {};

    for (int index = 0; index < reference::Index::count; ++index)
        positions[(std::size_t) index] = processor.getParameters()[index]->getValue();

    return positions;
}
} // namespace

//======================================================================================================================
TEST (GoldenSound, IsThatOfTwoHundredRandomSessions)
{
    std::vector<std::string> rows;

    for (auto seed = golden::firstSeed; seed <= golden::lastSeed; ++seed)
        rows.push_back ("session " + digestsOfSession (seed) + " " + std::to_string (seed));

    expectGolden ("session", rows);
}

TEST (GoldenSound, IsThatOfEachFactoryPresetOverTheDemoLoop)
{
    auto session = loopSession (demoLoop());
    ASSERT_FALSE (session.left.empty()) << KESTRIN_DEMO_LOOP;

    std::vector<std::string> rows;

    for (const auto& preset :
         juce::File (KESTRIN_BUILT_PRESETS).findChildFiles (juce::File::findFiles, false, "*.vstpreset"))
    {
        session.positions = positionsOf (preset);
        PlugInPlayer player (2);
        const auto output = scenario::play (session, player);
        rows.push_back ("preset " + digestsOf (player.plugIn, output) + " "
                        + preset.getFileNameWithoutExtension().toStdString());
    }

    expectGolden ("preset", rows);
}

// If presets were not loaded, all of them would sound alike.
TEST (GoldenSound, DiffersFromPresetToPreset)
{
    std::set<std::string> sounds;
    const auto rows = golden::rowsOf ("preset");

    for (const auto& row : rows)
        sounds.insert (row.substr (0, row.find (' ', row.find (' ') + 1)));

    EXPECT_GE (rows.size(), 16u);
    EXPECT_EQ (sounds.size(), rows.size());
}
