// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/RenderCommand.h"

#include <charconv>
#include <cmath>

#include <CLI/CLI.hpp>

#include "host/commands/FileArgument.h"
#include "host/HostError.h"
#include "host/ProgressBar.h"
#include "host/Render.h"

namespace
{
template <typename Number>
[[nodiscard]] bool parseWhole (const std::string& text, Number& number)
{
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars (text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

[[nodiscard]] BlockSizes parseBlockSizes (const std::string& text)
{
    const std::string randomPrefix = "random:";

    if (std::uint32_t seed = 0;
        text.rfind (randomPrefix, 0) == 0 && parseWhole (text.substr (randomPrefix.size()), seed))
        return BlockSizes::random (seed);

    if (int size = 0; parseWhole (text, size) && size >= 1 && size <= BlockSizes::largest)
        return BlockSizes (size);

    throw HostError (juce::String ("--block-size: \"") + text + "\" is neither a number from 1 to "
                     + juce::String (BlockSizes::largest) + " nor random:SEED");
}

[[nodiscard]] juce::AudioPlayHead::TimeSignature parseTimeSignature (const std::string& text)
{
    constexpr int most = 64;
    const auto slash = text.find ('/');
    int numerator = 0, denominator = 0;

    if (slash != std::string::npos && parseWhole (text.substr (0, slash), numerator)
        && parseWhole (text.substr (slash + 1), denominator) && numerator >= 1 && numerator <= most && denominator >= 1
        && denominator <= most)
        return { numerator, denominator };

    throw HostError (juce::String ("--time-signature: \"") + text + "\" is not of the form 4/4");
}
} // namespace

RenderCommand::RenderCommand (CLI::App& program) : Command (program, "render", "Send a sound file through the module")
{
    module.addPlugin (options);
    options.add_option ("--in", input, "WAV or AIFF file of one or two channels")->required();
    options.add_option ("--out", output, "WAV file to write, 32-bit float, at the rate of the input")->required();
    module.addSettings (options);
    options
        .add_option ("--automate", automation,
                     "id@seconds=value,seconds=value...: the position runs straight from point to point (steps of 32 "
                     "frames); two points at the same time are a jump, which is what a choice needs")
        ->allow_extra_args (false);
    options.add_option ("--save-state", savedState, "Write the settings at the end to this file");
    options.add_option ("--channels", numChannels,
                        "1 or 2 instead of the file's own number: one channel is copied to both, two are averaged");
    options.add_option ("--block-size", blockSize, "Frames per block, or random:SEED")->capture_default_str();
    addTransport();
}

void RenderCommand::addTransport()
{
    auto* tempoOption =
        options.add_option ("--tempo", tempo, "Beats (quarter notes) per minute")->capture_default_str();
    auto* startOption =
        options.add_option ("--start-beat", startBeat, "Song position of the first frame in quarter notes")
            ->capture_default_str();
    auto* signatureOption =
        options.add_option ("--time-signature", timeSignature, "Such as 3/4")->capture_default_str();
    auto* stoppedOption = options.add_flag ("--stopped", stopped, "The transport is stopped at the start position");

    options.add_flag ("--no-transport", noTransport, "The module is told no tempo and no position")
        ->excludes (tempoOption)
        ->excludes (startOption)
        ->excludes (signatureOption)
        ->excludes (stoppedOption);
}

void RenderCommand::run()
{
    render::Job job;
    job.input = fileNamed (input);
    job.output = fileNamed (output);
    job.blockSizes = parseBlockSizes (blockSize);
    job.transport = transportSettings();
    job.numChannels = channels();

    if (! savedState.empty())
        job.savedState = fileNamed (savedState);

    const auto loaded = module.load();

    for (const auto& text : automation)
        job.automation.push_back (Automation::parse (loaded->parameters(), juce::String::fromUTF8 (text.c_str())));

    ProgressBar progress;
    render::run (*loaded, job, [&progress] (double done) { progress.show (done); });
}

std::optional<Transport::Settings> RenderCommand::transportSettings() const
{
    constexpr double mostBeats = 1.0e6, slowest = 1.0, fastest = 1000.0;

    if (noTransport)
        return {};

    if (! (tempo >= slowest && tempo <= fastest))
        throw HostError ("--tempo: " + juce::String (tempo) + " is not between 1 and 1000");

    if (! (std::abs (startBeat) <= mostBeats))
        throw HostError ("--start-beat: " + juce::String (startBeat) + " is out of range");

    return Transport::Settings { tempo, startBeat, parseTimeSignature (timeSignature), ! stopped };
}

int RenderCommand::channels() const
{
    if (numChannels.empty())
        return 0;

    if (numChannels != "1" && numChannels != "2")
        throw HostError (juce::String ("--channels: \"") + numChannels + "\" is neither 1 nor 2");

    return numChannels == "1" ? 1 : 2;
}
