// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/RenderCommand.h"

#include <filesystem>
#include <iostream>
#include <set>

#include <CLI/CLI.hpp>

#include "host/commands/FileArgument.h"
#include "host/commands/RenderMany.h"
#include "host/commands/WholeNumber.h"
#include "host/HostError.h"
#include "host/ProgressBar.h"

namespace
{
constexpr double longestTail = 3600.0;
constexpr int mostAtATime = 256;

/** What is done in percent, as lines on standard output. */
class ProgressLines
{
public:
    explicit ProgressLines (bool isWanted) : wanted (isWanted) {}

    /** @param done  0 to 1 */
    void show (double done)
    {
        const auto percent = (int) (100.0 * done);

        if (wanted && percent > shown)
            std::cout << percent << " %" << std::endl;

        shown = percent;
    }

private:
    bool wanted;
    int shown = -1;
};

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
} // namespace

RenderCommand::RenderCommand (CLI::App& program) : Command (program, "render", "Send a sound file through the module")
{
    module.addPlugin (options);
    options.add_option ("--in", inputs, "WAV, AIFF, FLAC or Ogg files of one or two channels")->required();
    addOutput();
    module.addSettings (options);
    options
        .add_option ("--automate", automation,
                     "id@seconds=value,seconds=value...: the position runs straight from point to point (steps of 32 "
                     "frames); two points at the same time are a jump, which is what a choice needs")
        ->allow_extra_args (false);
    options.add_option ("--save-state", savedState, "Write the settings at the end to this file")
        ->excludes (options.get_option ("--out-dir"));
    options.add_option ("--channels", numChannels,
                        "1 or 2 instead of the file's own number: one channel is copied to both, two are averaged");
    options
        .add_option ("--tail", tail,
                     "Seconds of silence after the input, so that the filters ring out; the output is that much longer")
        ->capture_default_str();
    options.add_option ("--block-size", blockSize, "Frames per block, or random:SEED")->capture_default_str();
    addTransport();
}

void RenderCommand::addOutput()
{
    auto* file = options.add_option (
        "--out", output, "File to write, at the rate of the input: FLAC if its name ends with .flac, else WAV");
    auto* folder =
        options
            .add_option ("--out-dir", outputFolder,
                         "Folder for the outputs of many inputs, under the inputs' names; made if it is not there")
            ->excludes (file);
    options.add_option ("--format", format, "What --out-dir gets: wav or flac")
        ->capture_default_str()
        ->check (CLI::IsMember ({ "wav", "flac" }))
        ->needs (folder);
    options.add_option ("--jobs", numAtATime, "So many files at a time, each by a process of its own")
        ->capture_default_str()
        ->check (CLI::Range (1, mostAtATime))
        ->needs (folder);
    options
        .add_option (
            "--bits", bits,
            "24, or 32 (float); 32 is the default for WAV, and FLAC has 24. For 24 bits samples are rounded to the "
            "nearest step, without dither, and clipped at full scale")
        ->check (CLI::IsMember ({ "24", "32" }));
    auto* forceOption = options.add_flag ("--force", force, "Replace outputs in --out-dir that are there already");
    options.add_flag ("--no-force", noForce, "Do not replace a file that --out or --save-state names")
        ->excludes (forceOption);
    options
        .add_flag ("--report-progress", reportProgress,
                   "Print what is done, in percent, on standard output, a line each time it grows")
        ->excludes (folder);
}

void RenderCommand::addTransport()
{
    auto song = transport.add (options);
    song.push_back (options.add_flag ("--stopped", stopped, "The transport is stopped at the start position"));
    auto* none = options.add_flag ("--no-transport", noTransport, "The module is told no tempo and no position");

    for (auto* option : song)
        none->excludes (option);
}

void RenderCommand::run()
{
    auto job = settings();
    const auto isOne = outputFolder.empty();

    if (isOne && (output.empty() || inputs.size() > 1))
        throw HostError ("render: give --out for one input, or --out-dir for many");

    if (isOne)
        setFiles (job);

    // Also before many files: what is wrong with the settings is said once.
    const auto loaded = module.load();

    for (const auto& text : automation)
        job.automation.push_back (Automation::parse (loaded->parameters(), juce::String::fromUTF8 (text.c_str())));

    if (isOne)
        renderOne (*loaded, job);
    else
        renderMany::run ({ inputs, fileNamed (outputFolder), "." + format, sharedWords(), numAtATime });
}

render::Job RenderCommand::settings() const
{
    render::Job job;
    job.blockSizes = parseBlockSizes (blockSize);
    job.transport = transportSettings();
    job.numChannels = channels();

    if (! (tail >= 0.0 && tail <= longestTail))
        throw HostError ("--tail: " + juce::String (tail) + " is not between 0 and 3600");

    job.tailSeconds = tail;
    job.encoding = encoding();
    return job;
}

void RenderCommand::setFiles (render::Job& job) const
{
    job.input = fileNamed (inputs.front());
    job.output = fileNamed (output);
    requireNew (job.output);

    if (savedState.empty())
        return;

    job.savedState = fileNamed (savedState);
    requireNew (*job.savedState);
}

void RenderCommand::requireNew (const juce::File& file) const
{
    // What is no plain file has a reason of its own not to be written.
    if (! replaces() && std::filesystem::is_regular_file (file.getFullPathName().toStdString()))
        throw HostError (file.getFullPathName() + " is there already; --force replaces it");
}

bool RenderCommand::replaces() const { return force || (outputFolder.empty() && ! noForce); }

void RenderCommand::renderOne (HostedModule& loaded, const render::Job& job) const
{
    juce::int64 numClipped = 0;

    {
        ProgressBar bar;
        ProgressLines lines (reportProgress);
        numClipped = render::run (loaded, job,
                                  [&] (double done)
                                  {
                                      bar.show (done);
                                      lines.show (done);
                                  });
    }

    if (numClipped > 0)
        std::cerr << "kestrin-host: " << job.output.getFullPathName() << ": " << numClipped
                  << " samples over full scale were clipped; a WAV file of --bits 32 holds them" << std::endl;
}

Encoding RenderCommand::encoding() const
{
    const auto isFlac = outputFolder.empty() ? fileNamed (output).hasFileExtension ("flac") : format == "flac";

    if (isFlac && bits == "32")
        throw HostError ("--bits: FLAC has 24 bits; 32 is for WAV");

    if (isFlac)
        return Encoding::flac24;

    return bits == "24" ? Encoding::wav24 : Encoding::wavFloat;
}

/** The options that the runs for single files take over. */
std::vector<std::string> RenderCommand::sharedWords() const
{
    const std::set<std::string> ownOptions { "help", "in", "out-dir", "format", "jobs", "force", "no-force" };
    std::vector<std::string> words { replaces() ? "--force" : "--no-force" };

    for (const auto* option : options.get_options())
        if (const auto& name = option->get_lnames().front(); ownOptions.count (name) == 0)
            for (const auto& value : option->results())
                words.push_back ("--" + name + "=" + value);

    return words;
}

std::optional<Transport::Settings> RenderCommand::transportSettings() const
{
    if (noTransport)
        return {};

    auto settings = transport.settings();
    settings.playing = ! stopped;
    return settings;
}

int RenderCommand::channels() const
{
    if (numChannels.empty())
        return 0;

    if (numChannels != "1" && numChannels != "2")
        throw HostError (juce::String ("--channels: \"") + numChannels + "\" is neither 1 nor 2");

    return numChannels == "1" ? 1 : 2;
}
