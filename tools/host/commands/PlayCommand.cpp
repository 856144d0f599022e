// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/PlayCommand.h"

#include <iostream>

#include <CLI/CLI.hpp>

#include "demo/DemoStems.h"
#include "host/commands/FileArgument.h"
#include "host/HostError.h"

namespace
{
/** A bar line of every pattern. At beat 0 itself a host's song position counts as none. */
constexpr double firstBeat = 32.0;

/** A day, which no sound card's clock cares about. */
constexpr double mostSeconds = 86400.0;
constexpr int highestRate = 768000, largestBlock = 1 << 20;

[[nodiscard]] std::vector<std::string> stemNames()
{
    std::vector<std::string> names;

    for (const auto& each : demo::stems())
        names.emplace_back (each.name);

    return names;
}

[[nodiscard]] PlayedSound soundOf (const demo::Loop& loop)
{
    const auto numFrames = (int) loop.left.size();
    PlayedSound sound { { 2, numFrames }, loop.sampleRate };
    sound.samples.copyFrom (0, 0, loop.left.data(), numFrames);
    sound.samples.copyFrom (1, 0, loop.right.data(), numFrames);
    return sound;
}
} // namespace

PlayCommand::PlayCommand (CLI::App& program)
    : Command (program, "play", "Play a loop through the module to the sound device, with the module's window open")
{
    module.addPlugin (options);
    addSound();
    module.addSettings (options);
    options.add_option ("--preset", preset, "Start from this factory preset, or from a .vstpreset file")
        ->excludes (options.get_option ("--state"));
    options.add_option ("--save-state", savedState, "Write the settings at the end to this file");
    transport.startBeat = firstBeat;
    transport.add (options);
    addDevice();
    options.add_flag ("--no-window", noWindow, "Play without the module's window");
    options.add_option ("--seconds", seconds, "End after so many seconds of sound; without it q or Ctrl-C ends")
        ->check (CLI::Range (0.001, mostSeconds));
    options.add_option ("--record", recording, "WAV file to write, 32-bit float: what is heard");
}

void PlayCommand::addSound()
{
    auto* inputOption =
        options.add_option ("--in", input, "Sound file to loop; without it a loop of the program's own");
    options.add_option ("--stem", stem, "Which loop of its own")
        ->check (CLI::IsMember (stemNames()))
        ->excludes (inputOption);
}

void PlayCommand::addDevice()
{
    options.add_option ("--device", device, "Name of a sound device, or a part of one; without it the first");
    options.add_flag ("--list-devices", listDevices, "Print the names of the sound devices, and play nothing");
    options.add_option ("--rate", sampleRate, "In Hz; without it the sound's own if the device has it")
        ->check (CLI::Range (1, highestRate));
    options.add_option ("--block-size", blockSize, "Frames per block; without it what the device prefers")
        ->check (CLI::Range (1, largestBlock));
}

void PlayCommand::run()
{
    if (listDevices)
    {
        for (const auto& name : SoundDevices().names())
            std::cout << name << "\n";

        return;
    }

    playSession::Job job;
    job.song = transport.settings();
    job.showsWindow = ! noWindow;
    job.sound = sound();
    job.device = wantedDevice();
    job.device.preferredRate = job.sound.sampleRate;

    if (seconds > 0.0)
        job.seconds = seconds;

    if (! recording.empty())
        job.recording = fileNamed (recording);

    if (! savedState.empty())
        job.savedState = fileNamed (savedState);

    if (! preset.empty())
        usePreset (job);

    playSession::run (*module.load(), job);
}

void PlayCommand::usePreset (playSession::Job& job)
{
    const auto name = juce::String::fromUTF8 (preset.c_str());

    if (! name.endsWithIgnoreCase (".vstpreset"))
    {
        job.preset = job.presets.find (name);
        module.state = job.presets.file (job.preset).getFullPathName().toStdString();
    }
    else
    {
        module.state = preset;
    }
}

PlayedSound PlayCommand::sound() const
{
    if (! input.empty())
        return PlayedSound::fromFile (fileNamed (input));

    return soundOf (demo::render (stem.empty() ? demo::stems().front() : *demo::findStem (stem)));
}

SoundDevices::Wanted PlayCommand::wantedDevice() const
{
    SoundDevices::Wanted wanted;
    wanted.name = juce::String::fromUTF8 (device.c_str());
    wanted.sampleRate = sampleRate;
    wanted.blockSize = blockSize;
    return wanted;
}
