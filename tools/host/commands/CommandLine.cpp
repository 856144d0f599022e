// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/CommandLine.h"

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <juce_gui_basics/juce_gui_basics.h>

#include "host/commands/IdentityCommand.h"
#include "host/commands/ParametersCommand.h"
#include "host/commands/PlayCommand.h"
#include "host/commands/PresetCommand.h"
#include "host/commands/RenderCommand.h"
#include "host/commands/StateCommand.h"
#include "host/commands/WindowCommand.h"
#include "host/HostError.h"
#include "host/NearestWord.h"
#include "host/PrivateDisplay.h"

namespace
{
const char* const description =
    "kestrin-host - a host for VST3 modules: renders files, plays, lists parameters, reads and writes settings.\n"
    "The module is loaded through its factory, as a DAW does it.";

const char* const footer = R"(
Values
  --set and --automate take a position or a text for a parameter's value.
  A plain number without a sign is a position from 0 to 1, as hosts store it: --set hp_freq=0.25
  Everything else is a text as the module itself shows it, in large or small letters:
    a choice                --set hp_mode="24 dB/oct"
    a number with its unit  --set lp_freq="1.2 kHz"  --set hp_reso="30 %"
    a number with its sign  --set lfo1T_hpf=+50      --set seq3_lpf=-20
  A number between two that the module shows gets a position between theirs.

Settings files (--state, --save-state, state --write)
  *.vstpreset  a preset; *.xml  the settings as text; any other name: the block of bytes that a DAW keeps in its project.
  Reading looks at the content and not at the name.

Exit codes
  0  done   1  fault of this program   2  cannot be done, stderr says why in one line   130  interrupted
  An output file appears when it is complete; otherwise nothing is left behind. Of many files, those that can be rendered are;
  the others are named at the end, a line each, and the exit code is 2.

Examples
  kestrin-host render --in loop.wav --out dark.wav --set lp_freq="800 Hz" --set lp_mode="24 dB/oct" --set lp_reso="60 %"
  kestrin-host render --in loop.wav --out sweep.wav --automate "lp_freq@0=0.2,4=0.9,4=0.2,8=1" --tempo 128
  kestrin-host render --in stems/*.flac --out-dir dark --jobs 4 --format flac --state dark.vstpreset --tail 2
  kestrin-host play --in loop.wav --tempo 128 --record heard.wav
  kestrin-host parameters --markdown > docs/parameters.md
  kestrin-host preset presets/*.txt --out-dir build/presets
  kestrin-host state --show song.vstpreset
  kestrin-host window --keep-open --report-changes
)";

/** What to say when no command is named. */
[[nodiscard]] juce::String requestForCommand (CLI::App& app, const std::string& typed)
{
    std::vector<std::string> names;
    juce::StringArray list;

    for (const auto* command : app.get_subcommands ({}))
    {
        names.push_back (command->get_name());
        list.add (command->get_name());
    }

    if (const auto meant = nearestWord (typed, names); ! meant.empty())
        return juce::String::fromUTF8 (typed.c_str()).quoted() + " is no command: did you mean \"" + meant + "\"?";

    return "name a command: " + list.joinIntoString (", ") + " (see --help)";
}

void run (Command& command)
{
    // The display is there before JUCE and until after it: the module's JUCE and the host's use it to the end.
    std::optional<PrivateDisplay> display;

    if (command.wantsPrivateDisplay())
        display.emplace();

    const juce::ScopedJuceInitialiser_GUI juceIsUp;
    command.run();
}
} // namespace

int runCommandLine (int argc, char** argv)
{
    CLI::App app (description, "kestrin-host");
    app.footer (footer);
    app.require_subcommand (1);

    const std::array<std::unique_ptr<Command>, 7> commands {
        std::make_unique<RenderCommand> (app),     std::make_unique<PlayCommand> (app),
        std::make_unique<ParametersCommand> (app), std::make_unique<IdentityCommand> (app),
        std::make_unique<StateCommand> (app),      std::make_unique<PresetCommand> (app),
        std::make_unique<WindowCommand> (app)
    };

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
            throw HostError (requestForCommand (app, argc > 1 ? argv[1] : ""));

        throw HostError (juce::String::fromUTF8 (error.what()).replace ("\n", " ").trim());
    }

    for (const auto& command : commands)
        if (command->isChosen())
            run (*command);

    return exitCode::success;
}
