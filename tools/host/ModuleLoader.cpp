// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/ModuleLoader.h"

#include <sys/utsname.h>

#include "host/HostError.h"

namespace moduleLoader
{
namespace
{
const char* const moduleName = "Kestrin Tamsile Filter.vst3";
const char* const environmentVariable = "KESTRIN_PLUGIN";

/** The module of the same build: this program lies somewhere below the build folder. */
juce::File findInBuild()
{
    auto folder = juce::File::getSpecialLocation (juce::File::currentExecutableFile).getParentDirectory();

    for (; ! folder.isRoot(); folder = folder.getParentDirectory())
    {
        const auto artefacts = folder.getChildFile ("source/KestrinTamsileFilter_artefacts");
        const auto products = artefacts.getChildFile (KESTRIN_BUILD_CONFIGURATION).getChildFile ("VST3");

        if (const auto module = products.getChildFile (moduleName); module.exists())
            return module;
    }

    return {};
}

/** The folders of VST3 modules, in the order in which hosts search them. */
juce::File findInstalled()
{
    const auto home = juce::File::getSpecialLocation (juce::File::userHomeDirectory);

    for (const auto& folder :
         { home.getChildFile (".vst3"), juce::File ("/usr/lib/vst3"), juce::File ("/usr/local/lib/vst3") })
        if (const auto module = folder.getChildFile (moduleName); module.exists())
            return module;

    return {};
}

void requireModule (const juce::File& module)
{
    if (! module.exists())
        throw HostError (module.getFullPathName() + ": there is no such module");

    if (! module.hasFileExtension ("vst3"))
        throw HostError (module.getFullPathName() + ": not a VST3 module (its name does not end in .vst3)");

    if (! libraryOf (module).existsAsFile())
        throw HostError (module.getFullPathName() + ": not a VST3 module for this system (it has no "
                         + libraryOf (module).getRelativePathFrom (module) + ")");
}
} // namespace

juce::File findModule()
{
    if (const auto named = juce::SystemStats::getEnvironmentVariable (environmentVariable, {}); named.isNotEmpty())
        return juce::File::getCurrentWorkingDirectory().getChildFile (named);

    if (const auto built = findInBuild(); built != juce::File())
        return built;

    if (const auto installed = findInstalled(); installed != juce::File())
        return installed;

    throw HostError (juce::String ("found no ") + moduleName
                     + " beside this program, in ~/.vst3 or in /usr/lib/vst3: name one with --plugin");
}

juce::File libraryOf (const juce::File& module)
{
    utsname machine {};
    uname (&machine);

    return module.getChildFile ("Contents")
        .getChildFile (juce::String (machine.machine) + "-linux")
        .getChildFile (module.getFileNameWithoutExtension() + ".so");
}

std::unique_ptr<juce::AudioPluginInstance> load (const juce::File& module)
{
    requireModule (module);

    juce::VST3PluginFormat format;
    juce::OwnedArray<juce::PluginDescription> descriptions;
    format.findAllTypesForFile (descriptions, module.getFullPathName());

    if (descriptions.isEmpty())
        throw HostError (module.getFullPathName() + ": cannot be loaded, or holds no plug-in");

    juce::String error;

    // The rate and block size are placeholders: the instance is prepared with the real ones before it renders.
    if (auto instance = format.createInstanceFromDescription (*descriptions.getFirst(), 48000.0, 512, error))
        return instance;

    throw HostError (module.getFullPathName() + ": " + error);
}
} // namespace moduleLoader
