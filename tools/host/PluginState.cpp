// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/PluginState.h"

#include <cstddef>
#include <string_view>

#include "common/SettingsGuard.h"
#include "host/HostError.h"
#include "host/PresetFile.h"

namespace pluginState
{
namespace
{
constexpr int blockMagic = 0x21324356;
constexpr std::size_t headerSize = 8;

// How JUCE's hosting side wraps the blocks of component and controller.
const char* const wrapperTag = "VST3PluginState";
const char* const componentTag = "IComponent";

const char* const settingsTag = "settings";

/** The text, or nothing if it must not be given to the XML parser: a settings file is as likely to be damaged as a project. */
[[nodiscard]] juce::String parseableText (const char* data, std::size_t size)
{
    return isSafeToParse (std::string_view (data, size)) ? juce::String::fromUTF8 (data, (int) size) : juce::String();
}

[[nodiscard]] bool isSettings (const juce::String& text)
{
    const auto xml = juce::parseXML (text);
    return xml != nullptr && xml->getTagName().equalsIgnoreCase (settingsTag);
}

[[nodiscard]] juce::MemoryBlock readFile (const juce::File& file)
{
    juce::MemoryBlock content;

    if (! file.existsAsFile())
        throw HostError (file.getFullPathName() + ": there is no such file");

    if (! file.loadFileAsData (content))
        throw HostError (file.getFullPathName() + ": cannot be read");

    return content;
}
} // namespace

juce::MemoryBlock read (juce::AudioPluginInstance& instance)
{
    juce::MemoryBlock wrapped, block;
    instance.getStateInformation (wrapped);

    if (const auto xml = juce::AudioProcessor::getXmlFromBinary (wrapped.getData(), (int) wrapped.getSize()))
        if (const auto* component = xml->getChildByName (componentTag))
            block.fromBase64Encoding (component->getAllSubText());

    return block;
}

void apply (juce::AudioPluginInstance& instance, const juce::MemoryBlock& block)
{
    juce::XmlElement wrapper (wrapperTag);
    wrapper.createNewChildElement (componentTag)->addTextElement (block.toBase64Encoding());

    juce::MemoryBlock wrapped;
    juce::AudioProcessor::copyXmlToBinary (wrapper, wrapped);
    instance.setStateInformation (wrapped.getData(), (int) wrapped.getSize());
}

juce::String settingsText (const juce::MemoryBlock& block)
{
    juce::MemoryInputStream stream (block, false);

    if (block.getSize() <= headerSize || stream.readInt() != blockMagic)
        return {};

    const auto length = stream.readInt();
    const auto available = (juce::int64) (block.getSize() - headerSize);

    if (length <= 0 || length > available)
        return {};

    return parseableText (static_cast<const char*> (block.getData()) + headerSize, (std::size_t) length);
}

juce::MemoryBlock fromSettingsText (const juce::String& text)
{
    juce::MemoryOutputStream stream;
    stream.writeInt (blockMagic);
    stream.writeInt ((int) text.getNumBytesAsUTF8());
    stream.writeString (text);
    return stream.getMemoryBlock();
}

juce::StringArray settingsNames (const juce::String& text)
{
    juce::StringArray names;

    if (const auto xml = juce::parseXML (text))
        for (int index = 0; index < xml->getNumAttributes(); ++index)
            names.add (xml->getAttributeName (index));

    return names;
}

void loadFile (juce::AudioPluginInstance& instance, const juce::File& file)
{
    const auto content = readFile (file);

    if (presetFile::isPreset (content))
    {
        const auto block = presetFile::componentBlock (content, file);

        if (! isSettings (settingsText (block)))
            throw HostError (file.getFullPathName() + ": this preset holds no settings");

        apply (instance, block);
        return;
    }

    if (const auto inBlock = settingsText (content); isSettings (inBlock))
        return apply (instance, content);

    const auto* characters = static_cast<const char*> (content.getData());

    if (const auto text = parseableText (characters, content.getSize()); isSettings (text))
        return apply (instance, fromSettingsText (text));

    throw HostError (file.getFullPathName()
                     + ": holds no settings (wanted: a saved block, its XML text or a .vstpreset)");
}

juce::MemoryBlock contentForFile (juce::AudioPluginInstance& instance, const juce::File& file)
{
    const auto block = read (instance);
    const auto text = settingsText (block);

    if (! isSettings (text))
        throw HostError ("the module gives no settings to save");

    if (file.hasFileExtension ("vstpreset"))
        return presetFile::fromBlock (instance, block);

    if (file.hasFileExtension ("xml"))
        return { text.toRawUTF8(), text.getNumBytesAsUTF8() };

    return block;
}
} // namespace pluginState
