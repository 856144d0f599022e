// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/PresetCommand.h"

#include <CLI/CLI.hpp>

#include "host/commands/FileArgument.h"
#include "host/HostError.h"
#include "host/PresetFile.h"
#include "host/StagedFile.h"

namespace
{
[[nodiscard]] juce::String fileNameOf (const presetFile::Written& preset)
{
    return juce::File::createLegalFileName (preset.name) + ".vstpreset";
}

/** The last preset must not replace the file of one before it. */
void requireNewName (const std::vector<presetFile::Written>& presets, const std::string& file)
{
    for (const auto& other : presets)
        if (&other != &presets.back() && fileNameOf (other).equalsIgnoreCase (fileNameOf (presets.back())))
            throw HostError (fileNamed (file).getFullPathName() + ": another preset is called \"" + other.name
                             + "\", too");
}

void write (HostedModule& module, const presetFile::Written& preset, const juce::File& target)
{
    const auto content = presetFile::build (module, preset);
    StagedFile file (target.getChildFile (fileNameOf (preset)));
    file.write (content.getData(), content.getSize());
    file.commit();
}
} // namespace

PresetCommand::PresetCommand (CLI::App& program)
    : Command (program, "preset",
               "Make .vstpreset files from written presets: lines of key = value, where the keys are name, about (what "
               "it is for), play, listen and stem (if you like) and the ids of parameters, with texts or positions")
{
    module.addPlugin (options);
    options.add_option ("files", files, "Written presets (.txt)")->required();
    options.add_option ("--out-dir", folder, "Folder for the .vstpreset files; made if it is not there")->required();
}

void PresetCommand::run()
{
    const auto loaded = module.load();
    std::vector<presetFile::Written> presets;

    for (const auto& file : files)
    {
        presets.push_back (presetFile::parse (*loaded, fileNamed (file)));
        requireNewName (presets, file);
    }

    const auto target = fileNamed (folder);

    if (const auto made = target.createDirectory(); made.failed())
        throw HostError ("cannot make the folder " + target.getFullPathName() + ": " + made.getErrorMessage());

    for (const auto& preset : presets)
        write (*loaded, preset, target);
}
