// SPDX-License-Identifier: AGPL-3.0-or-later
// What kestrin-host takes for settings: a block, a text, a .vstpreset, or a preset as people write it. The first byte says
// which reader gets the rest.
#include <cstddef>
#include <cstdint>

#include "host/HostedModule.h"
#include "host/HostError.h"
#include "host/PluginState.h"
#include "host/PresetFile.h"
#include "system/fuzz/FuzzedFile.h"
#include "system/fuzz/FuzzedProcessor.h"

namespace
{
void readWritten (HostedModule& module, const juce::File& file)
{
    const auto written = presetFile::parse (module, file);
    require (written.name.isNotEmpty(), "a preset has a name");

    for (const auto& value : written.values)
        require (value.parameter != nullptr && value.position >= 0.0f && value.position <= 1.0f,
                 "a written value is a position");

    const auto preset = presetFile::build (module, written);
    require (presetFile::isPreset (preset), "what is built is a preset");
    require (pluginState::settingsText (presetFile::componentBlock (preset, file)).isNotEmpty(),
             "a built preset holds settings");
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    static const juce::ScopedJuceInitialiser_GUI juceIsUp;
    static const FuzzedFile fuzzed (".preset");
    static HostedModule module { juce::File() };

    if (size == 0)
        return 0;

    const auto& file = fuzzed.fill (data + 1, size - 1);

    try
    {
        if (data[0] % 2 == 0)
            pluginState::loadFile (module.instance(), file);
        else
            readWritten (module, file);
    }
    catch (const HostError& error)
    {
        require (*error.what() != '\0', "a refusal says why");
    }

    for (const auto& parameter : module.parameters().all())
        require (parameter.parameter->getValue() >= 0.0f && parameter.parameter->getValue() <= 1.0f,
                 "every value lies in 0 to 1");

    return 0;
}
