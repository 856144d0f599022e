// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/CommandLine.h"

#include <charconv>
#include <cmath>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <juce_gui_basics/juce_gui_basics.h>

#include "host/HostError.h"
#include "host/ModuleIdentity.h"
#include "host/ModuleLoader.h"
#include "host/OpenWindow.h"
#include "host/ParameterReport.h"
#include "host/PluginState.h"
#include "host/PresetFile.h"
#include "host/PrivateDisplay.h"
#include "host/ProgressBar.h"
#include "host/Render.h"
#include "host/StagedFile.h"
#include "host/ValueResolver.h"
#include "host/WindowPicture.h"

namespace
{
const char* const description =
    "kestrin-host - an offline host for VST3 modules: renders files, lists parameters, reads and writes settings.\n"
    "The module is loaded through its factory, as a DAW does it.";

const char* const footer = R"(
Values
  --set and --automate take a position or a text for a parameter's value.
  A plain number without a sign is a position from 0 to 1, as hosts store it: --set hp_freq=0.25
  Everything else is a text as the module itself shows it, in large or small letters:
    a choice                --set hp_mode="24 dB/oct"
    a number with its unit  --set lp_freq="1.2 kHz"  --set hp_reso="30 %"
    a number with its sign  --set lfo1T_hpf=+50      --set seq3_lpf=-20
  A number between two that the module shows is met in between.

Settings files (--state, --save-state, state --write)
  *.vstpreset  a preset; *.xml  the settings as text; any other name: the block of bytes that a DAW keeps in its project.
  Reading looks at the content and not at the name.

Exit codes
  0  done   1  fault of this program   2  cannot be done, stderr says why in one line   130  interrupted
  An output file appears when it is complete; otherwise nothing is left behind.

Examples
  kestrin-host render --in loop.wav --out dark.wav --set lp_freq="800 Hz" --set lp_mode="24 dB/oct" --set lp_reso="60 %"
  kestrin-host render --in loop.wav --out sweep.wav --automate "lp_freq@0=0.2,4=0.9,4=0.2,8=1" --tempo 128
  kestrin-host parameters --markdown > docs/parameters.md
  kestrin-host preset presets/*.txt --out-dir build/presets
  kestrin-host state --show song.vstpreset
  kestrin-host window --keep-open --report-changes
)";

using Texts = std::vector<std::string>;

[[nodiscard]] juce::File fileNamed (const std::string& path)
{
    return juce::File::getCurrentWorkingDirectory().getChildFile (juce::String::fromUTF8 (path.c_str()));
}

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

/** What several commands have in common: which module, and how it is set. */
struct ModuleOptions
{
    std::string plugin;
    std::string state;
    Texts assignments;

    void addPlugin (CLI::App& command)
    {
        command.add_option (
            "--plugin", plugin,
            "The .vst3 module; without it $KESTRIN_PLUGIN, the module built beside this program, or the "
            "one in ~/.vst3");
    }

    void addSettings (CLI::App& command)
    {
        command.add_option ("--state", state, "Start from the settings in this file (see: Settings files)");
        command
            .add_option ("--set", assignments,
                         "id=position or id=\"text\"; may be given several times, after --state (see: Values)")
            ->allow_extra_args (false);
    }

    [[nodiscard]] juce::File module() const { return plugin.empty() ? moduleLoader::findModule() : fileNamed (plugin); }

    [[nodiscard]] std::unique_ptr<HostedModule> load() const
    {
        auto loaded = std::make_unique<HostedModule> (module());

        if (! state.empty())
            pluginState::loadFile (loaded->instance(), fileNamed (state));

        for (const auto& text : assignments)
        {
            const auto assignment = valueResolver::splitAssignment (juce::String::fromUTF8 (text.c_str()));
            const auto& parameter = loaded->parameters().find (assignment.id);
            parameter.parameter->setValue (valueResolver::resolve (parameter, assignment.value));
        }

        return loaded;
    }
};

class RenderCommand
{
public:
    void addTo (CLI::App& app)
    {
        command = app.add_subcommand ("render", "Send a sound file through the module");
        options.addPlugin (*command);
        command->add_option ("--in", input, "WAV or AIFF file of one or two channels")->required();
        command->add_option ("--out", output, "WAV file to write, 32-bit float, at the rate of the input")->required();
        options.addSettings (*command);
        command
            ->add_option (
                "--automate", automation,
                "id@seconds=value,seconds=value...: the position runs straight from point to point (steps of 32 "
                "frames); two points at the same time are a jump, which is what a choice needs")
            ->allow_extra_args (false);
        command->add_option ("--save-state", savedState, "Write the settings at the end to this file");
        command->add_option (
            "--channels", numChannels,
            "1 or 2 instead of the file's own number: one channel is copied to both, two are averaged");
        command->add_option ("--block-size", blockSize, "Frames per block, or random:SEED")->capture_default_str();
        addTransport();
    }

    [[nodiscard]] bool chosen() const { return command->parsed(); }

    void run() const
    {
        render::Job job;
        job.input = fileNamed (input);
        job.output = fileNamed (output);
        job.blockSizes = parseBlockSizes (blockSize);
        job.transport = transportSettings();
        job.numChannels = channels();

        if (! savedState.empty())
            job.savedState = fileNamed (savedState);

        const auto module = options.load();

        for (const auto& text : automation)
            job.automation.push_back (Automation::parse (module->parameters(), juce::String::fromUTF8 (text.c_str())));

        ProgressBar progress;
        render::run (*module, job, [&progress] (double done) { progress.show (done); });
    }

private:
    void addTransport()
    {
        auto* tempoOption =
            command->add_option ("--tempo", tempo, "Beats (quarter notes) per minute")->capture_default_str();
        auto* startOption =
            command->add_option ("--start-beat", startBeat, "Song position of the first frame in quarter notes")
                ->capture_default_str();
        auto* signatureOption =
            command->add_option ("--time-signature", timeSignature, "Such as 3/4")->capture_default_str();
        auto* stoppedOption = command->add_flag ("--stopped", stopped, "The transport stands at the start position");

        command->add_flag ("--no-transport", noTransport, "The module is told no tempo and no position")
            ->excludes (tempoOption)
            ->excludes (startOption)
            ->excludes (signatureOption)
            ->excludes (stoppedOption);
    }

    [[nodiscard]] std::optional<Transport::Settings> transportSettings() const
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

    [[nodiscard]] int channels() const
    {
        if (numChannels.empty())
            return 0;

        if (numChannels != "1" && numChannels != "2")
            throw HostError (juce::String ("--channels: \"") + numChannels + "\" is neither 1 nor 2");

        return numChannels == "1" ? 1 : 2;
    }

    CLI::App* command = nullptr;
    ModuleOptions options;
    std::string input, output, savedState, numChannels;
    std::string blockSize = "512";
    std::string timeSignature = "4/4";
    Texts automation;
    double tempo = 120.0;
    double startBeat = 1.0;
    bool stopped = false;
    bool noTransport = false;
};

class ParametersCommand
{
public:
    void addTo (CLI::App& app)
    {
        command = app.add_subcommand ("parameters", "List the module's parameters");
        options.addPlugin (*command);
        options.addSettings (*command);
        auto* asMarkdown = command->add_flag ("--markdown", markdown, "As a page of documentation");
        command->add_flag ("--json", json, "For programs")->excludes (asMarkdown);
    }

    [[nodiscard]] bool chosen() const { return command->parsed(); }

    void run() const
    {
        const auto module = options.load();
        const auto& list = module->parameters();
        std::cout << (json       ? parameterReport::asJson (list)
                      : markdown ? parameterReport::asMarkdown (list)
                                 : parameterReport::asTable (list));
    }

private:
    CLI::App* command = nullptr;
    ModuleOptions options;
    bool markdown = false;
    bool json = false;
};

class IdentityCommand
{
public:
    void addTo (CLI::App& app)
    {
        command = app.add_subcommand ("identity", "Show what the module's factory says of itself");
        options.addPlugin (*command);
        command->add_flag ("--json", json, "For programs");
    }

    [[nodiscard]] bool chosen() const { return command->parsed(); }

    void run() const
    {
        const auto identity = ModuleIdentity::read (options.module());
        std::cout << (json ? identity.toJson() : identity.toText());
    }

private:
    CLI::App* command = nullptr;
    ModuleOptions options;
    bool json = false;
};

class StateCommand
{
public:
    void addTo (CLI::App& app)
    {
        command = app.add_subcommand ("state", "Show settings as text, or write them to files of any kind");
        options.addPlugin (*command);
        options.addSettings (*command);
        command->add_option ("--show", shown, "Print the settings text in this file as the module reads and saves it");
        command->add_option ("--write", written, "Write the settings (of --state and --set) to this file");
    }

    [[nodiscard]] bool chosen() const { return command->parsed(); }

    void run()
    {
        if (! shown.empty() && ! options.state.empty())
            throw HostError ("--show and --state both name the settings to start from: give one of them");

        if (! shown.empty())
            options.state = shown;

        const auto module = options.load();
        module->deliverParameters();

        if (! written.empty())
        {
            StagedFile file (fileNamed (written));
            const auto content = pluginState::contentForFile (module->instance(), file.target());
            file.write (content.getData(), content.getSize());
            file.commit();
        }

        if (written.empty() || ! shown.empty())
            std::cout << pluginState::settingsText (pluginState::read (module->instance())) << "\n";
    }

private:
    CLI::App* command = nullptr;
    ModuleOptions options;
    std::string shown, written;
};

class PresetCommand
{
public:
    void addTo (CLI::App& app)
    {
        command = app.add_subcommand (
            "preset",
            "Make .vstpreset files from written presets: lines of key = value, where the keys are name, about (what "
            "it is for), listen (if you like) and the ids of parameters, with texts or positions");
        options.addPlugin (*command);
        command->add_option ("files", files, "Written presets (.txt)")->required();
        command->add_option ("--out-dir", folder, "Folder for the .vstpreset files; made if it is not there")
            ->required();
    }

    [[nodiscard]] bool chosen() const { return command->parsed(); }

    /** All files are understood before the first one is written. */
    void run() const
    {
        const auto module = options.load();
        std::vector<presetFile::Written> presets;

        for (const auto& file : files)
        {
            presets.push_back (presetFile::parse (*module, fileNamed (file)));
            requireNewName (presets, file);
        }

        const auto target = fileNamed (folder);

        if (const auto made = target.createDirectory(); made.failed())
            throw HostError ("cannot make the folder " + target.getFullPathName() + ": " + made.getErrorMessage());

        for (const auto& preset : presets)
            write (*module, preset, target);
    }

private:
    [[nodiscard]] static juce::String fileNameOf (const presetFile::Written& preset)
    {
        return juce::File::createLegalFileName (preset.name) + ".vstpreset";
    }

    /** The last preset must not replace the file of one before it. */
    static void requireNewName (const std::vector<presetFile::Written>& presets, const std::string& file)
    {
        for (const auto& other : presets)
            if (&other != &presets.back() && fileNameOf (other).equalsIgnoreCase (fileNameOf (presets.back())))
                throw HostError (fileNamed (file).getFullPathName() + ": another preset is called \"" + other.name
                                 + "\", too");
    }

    static void write (HostedModule& module, const presetFile::Written& preset, const juce::File& target)
    {
        const auto content = presetFile::build (module, preset);
        StagedFile file (target.getChildFile (fileNameOf (preset)));
        file.write (content.getData(), content.getSize());
        file.commit();
    }

    CLI::App* command = nullptr;
    ModuleOptions options;
    Texts files;
    std::string folder;
};

class WindowCommand
{
public:
    void addTo (CLI::App& app)
    {
        command =
            app.add_subcommand ("window", "Open the module's own window and take a picture of it, without a display "
                                          "on a private one (Xvfb); or keep it open on the desktop");
        options.addPlugin (*command);
        options.addSettings (*command);
        auto* picture = command->add_option ("--out", output, "PNG file to write");
        auto* columnsOption =
            command
                ->add_option ("--show", panel, "Open these columns: lfos or frequencer; without it the module chooses")
                ->check (CLI::IsMember ({ "lfos", "frequencer" }));
        command->add_option ("--scale", scale, "The content scale that the host announces, 0.5 to 4")
            ->capture_default_str()
            ->check (CLI::Range (0.5, 4.0));
        auto* beatOption =
            command
                ->add_option ("--beat", beat,
                              "Song position in quarter notes, at 120 per minute: lights and dots show it")
                ->capture_default_str()
                ->check (CLI::Range (-1.0e6, 1.0e6));
        auto* staysOpen =
            command
                ->add_flag ("--keep-open", keepOpen,
                            "Take no picture: show the window on the desktop until it is closed, standard "
                            "input ends or Ctrl-C. No audio runs")
                ->excludes (picture)
                ->excludes (columnsOption)
                ->excludes (beatOption);
        command
            ->add_flag ("--report-changes", reportChanges,
                        "Print a line for every parameter that the window changes, with its id and position; \"size\" "
                        "with width and height in pixels, at first and when they change; and at first \"window\" with "
                        "the X server's number for it")
            ->needs (staysOpen);
    }

    [[nodiscard]] bool chosen() const { return command->parsed(); }

    /** Nobody can see or use a window on a private display: that is for pictures. */
    [[nodiscard]] bool wantsPrivateDisplay() const { return chosen() && ! output.empty(); }

    void run() const
    {
        if (keepOpen)
            openWindow::show (*options.load(), { scale, reportChanges });
        else if (! output.empty())
            takePicture();
        else
            throw HostError ("window: give --out for a picture, or --keep-open");
    }

private:
    void takePicture() const
    {
        const StagedFile probe (fileNamed (output));
        const auto module = options.load();
        windowPicture::Job job;
        job.output = probe.target();
        job.columns = columns();
        job.scale = scale;
        job.transport.startBeat = beat;
        windowPicture::take (*module, job);
    }

    [[nodiscard]] windowPicture::Columns columns() const
    {
        if (panel.empty())
            return windowPicture::Columns::asTheModuleChooses;

        return panel == "lfos" ? windowPicture::Columns::lfos : windowPicture::Columns::frequencer;
    }

    CLI::App* command = nullptr;
    ModuleOptions options;
    std::string output, panel;
    double scale = 1.0;
    double beat = 1.0;
    bool keepOpen = false;
    bool reportChanges = false;
};

template <typename Command>
bool runIfChosen (Command& command)
{
    if (command.chosen())
        command.run();

    return command.chosen();
}
} // namespace

int runCommandLine (int argc, char** argv)
{
    CLI::App app (description, "kestrin-host");
    app.footer (footer);
    app.require_subcommand (1);

    RenderCommand renderCommand;
    ParametersCommand parametersCommand;
    IdentityCommand identityCommand;
    StateCommand stateCommand;
    PresetCommand presetCommand;
    WindowCommand windowCommand;

    renderCommand.addTo (app);
    parametersCommand.addTo (app);
    identityCommand.addTo (app);
    stateCommand.addTo (app);
    presetCommand.addTo (app);
    windowCommand.addTo (app);

    for (auto* command : app.get_subcommands ({}))
        command->footer ("kestrin-host --help explains values, settings files and exit codes.");

    try
    {
        app.parse (argc, argv);
    }
    catch (const CLI::Success& help)
    {
        return app.exit (help);
    }
    catch (const CLI::ParseError& error)
    {
        if (app.get_subcommands().empty())
            throw HostError ("name a command: render, parameters, identity, state, preset or window (see --help)");

        throw HostError (juce::String::fromUTF8 (error.what()).replace ("\n", " ").trim());
    }

    // The display comes before JUCE and goes after it, as the module's and our own JUCE hold on to it to the end.
    std::optional<PrivateDisplay> display;

    if (windowCommand.wantsPrivateDisplay())
        display.emplace();

    const juce::ScopedJuceInitialiser_GUI juceIsUp;
    [[maybe_unused]] const auto ran = runIfChosen (renderCommand) || runIfChosen (parametersCommand)
                                      || runIfChosen (identityCommand) || runIfChosen (stateCommand)
                                      || runIfChosen (presetCommand) || runIfChosen (windowCommand);
    return exitCode::success;
}
