// SPDX-License-Identifier: AGPL-3.0-or-later
// What a sound device calls, without a device.
#include <set>
#include <vector>

#include <gmock/gmock.h>

#include "host/HostError.h"
#include "host/play/LivePlayer.h"
#include "module/HostProcess.h"
#include "module/ModuleUnderTest.h"
#include "support/AudioThreadWatch.h"

namespace
{
constexpr double rate = 48000.0;
constexpr int blockSize = 256;

/** What one call has done on its thread. */
struct Seen
{
    AudioThreadWatch::Counts counts;
    std::set<const void*> mutexes;
};

template <typename Call>
Seen watch (const Call& call)
{
    Seen seen;
    const AudioThreadWatch watch;
    call();
    seen.counts = watch.counts();

    // Allocates, and so comes last.
    const auto mutexes = watch.lockedMutexes().first ((std::size_t) seen.counts.locks);
    seen.mutexes.insert (mutexes.begin(), mutexes.end());
    return seen;
}

/** A player with its song, and what it has sent to a device. */
class Device
{
public:
    explicit Device (int numSongChannels = 2, LivePlayer::Settings settings = {}, int numSongFrames = 10000)
        : song (makeNoise (numSongChannels, numSongFrames), rate, {}), player (module, song, withDefaults (settings))
    {
    }

    /** Asks for a block, and appends it to what is heard. */
    Seen ask (int numOutputs, int numFrames)
    {
        juce::AudioBuffer<float> block (numOutputs, numFrames);
        heard.resize ((std::size_t) numOutputs);

        auto seen = watch (
            [&] {
                player.audioDeviceIOCallbackWithContext (nullptr, 0, block.getArrayOfWritePointers(), numOutputs,
                                                         numFrames, {});
            });

        for (int output = 0; output < numOutputs; ++output)
            for (int frame = 0; frame < numFrames; ++frame)
                heard[(std::size_t) output].push_back (block.getSample (output, frame));

        return seen;
    }

    /** Changes two parameters, as window and keys do. */
    void changeParameters (int number)
    {
        module.set ("lp_freq", (float) (number % 7) * 0.1f);
        module.instance().getBypassParameter()->setValue (number % 3 == 0 ? 1.0f : 0.0f);
    }

    ModuleUnderTest module;
    LoopingSong song;
    LivePlayer player;
    std::vector<std::vector<float>> heard;

private:
    static LivePlayer::Settings withDefaults (LivePlayer::Settings settings)
    {
        settings.sampleRate = settings.sampleRate > 0.0 ? settings.sampleRate : rate;
        settings.blockSize = blockSize;
        return settings;
    }
};

std::vector<float> firstOf (const std::vector<float>& samples, int number)
{
    return { samples.begin(), samples.begin() + number };
}
} // namespace

TEST (LivePlayer, NeitherAllocatesNorPrintsNorLocksOnTheAudioThread)
{
    const HostProcess folder;
    Recording recording (folder.file ("heard.wav"), rate, 2);
    LivePlayer::Settings settings;
    settings.recording = &recording;
    Device device (2, settings);

    // JUCE's own on both sides of the module: its callback lock, and those of a parameter's listeners around a change. They
    // are the ones that a call of the module locks without a player.
    std::set<const void*> locksOfTheModule;

    for (int block = 0; block < 21; ++block)
    {
        auto sound = makeNoise (2, 100);
        device.changeParameters (block);
        locksOfTheModule.merge (watch ([&] { device.module.process (sound); }).mutexes);
    }

    for (int block = 0; block < 200; ++block)
    {
        device.changeParameters (block);

        if (block % 10 == 0)
            device.song.toggleHalt();
        else if (block % 10 == 3)
            device.song.toggleBarLoop();
        else if (block % 10 == 6)
            device.song.moveByBars (1);

        // Shorter and longer than the module's blocks, and across the end of the loop.
        const auto seen = device.ask (2, block % 2 == 0 ? 100 : 3 * blockSize);

        EXPECT_EQ (seen.counts.allocations, 0) << "block " << block;
        EXPECT_EQ (seen.counts.releases, 0) << "block " << block;
        EXPECT_EQ (seen.counts.systemCalls, 0) << "block " << block;
        EXPECT_THAT (locksOfTheModule, testing::IsSupersetOf (seen.mutexes)) << "block " << block;
        recording.writeOut();
    }
}

TEST (LivePlayer, SendsAndRecordsWhatTheModuleGivesInBlocksOfAnyLength)
{
    const HostProcess folder;
    Recording recording (folder.file ("heard.wav"), rate, 2);
    LivePlayer::Settings settings;
    settings.recording = &recording;
    Device device (2, settings);
    device.module.set ("lp_freq", 0.5f);

    for (const auto numFrames : { blockSize, 1, 1000, 512 })
        device.ask (2, numFrames);

    recording.finish();

    ModuleUnderTest expected;
    expected.set ("lp_freq", 0.5f);
    expected.prepare (juce::AudioChannelSet::stereo(), rate, 10000);
    auto sound = makeNoise (2, 10000);
    expected.process (sound);

    const auto numHeard = (int) device.heard[0].size();
    EXPECT_EQ (numHeard, blockSize + 1 + 1000 + 512);
    EXPECT_EQ (device.heard[0], firstOf (samplesOf (sound, 0), numHeard));
    EXPECT_EQ (device.heard[1], firstOf (samplesOf (sound, 1), numHeard));
    EXPECT_EQ (samplesOf (folder.readSound ("heard.wav"), 1), device.heard[1]);
}

TEST (LivePlayer, IsSilentAfterItsFrames)
{
    LivePlayer::Settings settings;
    settings.numFrames = 300;
    Device device (2, settings);
    EXPECT_FALSE (device.player.isDone());
    device.ask (2, 400);

    EXPECT_TRUE (device.player.isDone());
    EXPECT_NE (device.heard[0][299], 0.0f);
    EXPECT_EQ (std::vector<float> (device.heard[0].begin() + 300, device.heard[0].end()), std::vector<float> (100));
}

TEST (LivePlayer, GivesOneChannelToBothSpeakersAndTheAverageOfTwoToASingleOne)
{
    Device mono (1);
    mono.ask (2, 100);
    EXPECT_EQ (mono.heard[0], mono.heard[1]);
    EXPECT_NE (mono.heard[0], std::vector<float> (100));

    Device stereo (2), single (2);
    stereo.ask (2, 100);
    single.ask (1, 100);

    for (std::size_t frame = 0; frame < 100; ++frame)
        EXPECT_EQ (single.heard[0][frame], (stereo.heard[0][frame] + stereo.heard[1][frame]) * 0.5f);
}

TEST (LivePlayer, CountsABlockThatTakesLongerThanItLasts)
{
    // At this rate a block of one frame lasts a nanosecond.
    LivePlayer::Settings settings;
    settings.sampleRate = 1.0e9;
    Device tooFast (2, settings);
    tooFast.ask (2, 1);
    EXPECT_EQ (tooFast.player.numLateBlocks(), 1);
    EXPECT_GT (tooFast.player.loadInPercent(), 99.0);

    // And at this one for a quarter of an hour.
    settings.sampleRate = 1.0;
    Device slow (2, settings);
    slow.ask (2, 1000);
    EXPECT_EQ (slow.player.numLateBlocks(), 0);
    EXPECT_LT (slow.player.loadInPercent(), 1.0);
}

TEST (LivePlayer, MeasuresTheLevelsBeforeAndAfterTheModule)
{
    Device device (2);
    device.module.set ("lp_freq", 0.2f);
    device.ask (2, 2000);

    EXPECT_NEAR (device.player.inputLevel.take(), 0.8f, 0.01f);
    const auto output = device.player.outputLevel.take();
    EXPECT_GT (output, 0.0f);
    EXPECT_LT (output, 0.2f);
    EXPECT_EQ (device.player.inputLevel.take(), 0.0f) << "what has been looked at is gone";
}

TEST (Recording, EndsWithAWordWhenNobodyWritesItOut)
{
    const HostProcess folder;
    Recording recording (folder.file ("heard.wav"), rate, 1);
    const auto block = makeNoise (1, 10000);

    for (int number = 0; number < 200; ++number)
        recording.add (block);

    EXPECT_THROW (recording.finish(), HostError);
    const auto heard = folder.readSound ("heard.wav");
    EXPECT_EQ (heard.getNumSamples(), 1040000) << "whole blocks, and none after the first that is missing";
}
