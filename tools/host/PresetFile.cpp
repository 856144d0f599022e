// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/PresetFile.h"

#include <cmath>
#include <cstddef>
#include <map>

#include "common/SettingsGuard.h"
#include "host/HostError.h"
#include "host/PluginState.h"
#include "host/ValueResolver.h"

namespace presetFile
{
namespace
{
/* The container: 'VST3', a version, the class id as 32 characters, the place of the chunk list; then the chunks; then the
   list: 'List', the number of entries, and per entry a name of four characters, its place and its size. All numbers are
   little-endian. */
const char* const containerTag = "VST3";
const char* const listTag = "List";
const char* const componentChunk = "Comp";
constexpr int containerVersion = 1;
constexpr int tagSize = 4;
constexpr int classIdSize = 32;
constexpr int headerSize = 48;

/** Half a unit of the last decimal: positions are saved with four decimals. */
constexpr float savedPrecision = 0.00005f;

[[nodiscard]] juce::String readTag (juce::InputStream& stream, int size = tagSize)
{
    juce::MemoryBlock characters;
    stream.readIntoMemoryBlock (characters, size);
    return characters.toString();
}

/** The class id of the module as presets carry it, taken from a preset that the module makes. */
[[nodiscard]] juce::String classIdOf (juce::AudioPluginInstance& instance)
{
    struct Visitor : juce::ExtensionsVisitor
    {
        void visitVST3Client (const VST3Client& client) override { preset = client.getPreset(); }

        juce::MemoryBlock preset;
    };

    Visitor visitor;
    instance.getExtensions (visitor);

    juce::MemoryInputStream stream (visitor.preset, false);

    if (visitor.preset.getSize() < headerSize || readTag (stream) != containerTag)
        throw HostError ("the module gives no preset");

    stream.readInt();
    return readTag (stream, classIdSize);
}

/** Removes the attributes that tell where and when the settings were saved. A preset is for everybody. */
void removeOrigin (juce::XmlElement& settings)
{
    for (const auto* name : { "date_modified", "daw", "samplerate", "username" })
        settings.removeAttribute (name);
}

[[nodiscard]] juce::MemoryBlock withoutOrigin (const juce::MemoryBlock& block)
{
    const auto settings = juce::parseXML (pluginState::settingsText (block));

    if (settings == nullptr)
        throw HostError ("the module gives no settings to save");

    removeOrigin (*settings);
    return pluginState::fromSettingsText (settings->toString (juce::XmlElement::TextFormat().singleLine()));
}

[[noreturn]] void failInLine (const juce::File& file, int line, const juce::String& reason)
{
    throw HostError (file.getFullPathName() + ":" + juce::String (line) + ": " + reason);
}

/** The field that a key names; null for any other key, which should be the id of a parameter. */
[[nodiscard]] juce::String* fieldOf (Written& written, const juce::String& key)
{
    struct Field
    {
        const char* key;
        juce::String Written::*text;
    };

    for (const auto& field :
         { Field { "name", &Written::name }, Field { "about", &Written::about }, Field { "play", &Written::play },
           Field { "listen", &Written::listen }, Field { "stem", &Written::stem } })
        if (key == field.key)
            return &(written.*field.text);

    return nullptr;
}

void addValue (Written& written, const HostedParameter& parameter, const juce::String& text)
{
    for (const auto& other : written.values)
        if (other.parameter == &parameter)
            throw HostError (parameter.id + " is set a second time");

    written.values.push_back ({ &parameter, valueResolver::resolve (parameter, text) });
}

void addLine (Written& written, const HostedModule& module, const juce::String& line)
{
    const auto key = line.upToFirstOccurrenceOf ("=", false, false).trim();
    const auto text = line.fromFirstOccurrenceOf ("=", false, false).trim();

    if (key.isEmpty() || text.isEmpty())
        throw HostError ("\"" + line + "\" is not of the form: key = value");

    auto* const field = fieldOf (written, key);

    if (field == nullptr)
        return addValue (written, module.parameters().find (key), text);

    if (field->isNotEmpty())
        throw HostError (key + " is set a second time");

    *field = text;
}
} // namespace

bool isPreset (const juce::MemoryBlock& content)
{
    juce::MemoryInputStream stream (content, false);
    return content.getSize() >= headerSize && readTag (stream) == containerTag;
}

juce::MemoryBlock componentBlock (const juce::MemoryBlock& preset, const juce::File& file)
{
    juce::MemoryInputStream stream (preset, false);
    stream.setPosition (headerSize - (int) sizeof (juce::int64));
    stream.setPosition (stream.readInt64());

    if (readTag (stream) == listTag)
    {
        for (auto remaining = stream.readInt(); remaining > 0 && ! stream.isExhausted(); --remaining)
        {
            const auto tag = readTag (stream);
            const auto start = stream.readInt64();
            const auto size = stream.readInt64();
            const auto total = (juce::int64) preset.getSize();

            if (tag == componentChunk && start >= 0 && size > 0 && start <= total && size <= total - start)
                return { static_cast<const char*> (preset.getData()) + start, (std::size_t) size };
        }
    }

    throw HostError (file.getFullPathName() + ": this preset is damaged");
}

juce::MemoryBlock fromBlock (juce::AudioPluginInstance& instance, const juce::MemoryBlock& block)
{
    juce::MemoryOutputStream stream;
    stream.write (containerTag, tagSize);
    stream.writeInt (containerVersion);
    stream.write (classIdOf (instance).toRawUTF8(), classIdSize);
    stream.writeInt64 (headerSize + (juce::int64) block.getSize());
    stream.write (block.getData(), block.getSize());
    stream.write (listTag, tagSize);
    stream.writeInt (1);
    stream.write (componentChunk, tagSize);
    stream.writeInt64 (headerSize);
    stream.writeInt64 ((juce::int64) block.getSize());
    return stream.getMemoryBlock();
}

Written parse (const HostedModule& module, const juce::File& file)
{
    if (! file.existsAsFile())
        throw HostError (file.getFullPathName() + ": there is no such file");

    juce::MemoryBlock content;

    if (! file.loadFileAsData (content))
        throw HostError (file.getFullPathName() + ": cannot be read");

    // Bytes that are not UTF-8 can make JUCE read a text beyond its end.
    if (! isUtf8 ({ static_cast<const char*> (content.getData()), content.getSize() }))
        throw HostError (file.getFullPathName() + ": is not UTF-8 text");

    juce::StringArray lines;
    file.readLines (lines);
    Written written;

    // A line break at the end of the file does not begin another line.
    if (lines.size() > 1 && lines[lines.size() - 1].isEmpty())
        lines.remove (lines.size() - 1);

    for (int index = 0; index < lines.size(); ++index)
    {
        const auto line = lines[index].trim();

        if (line.isEmpty() || line.startsWithChar ('#'))
            continue;

        try
        {
            addLine (written, module, line);
        }
        catch (const HostError& error)
        {
            failInLine (file, index + 1, error.what());
        }
    }

    for (const auto* key : { "name", "about" })
        if (fieldOf (written, key)->isEmpty())
            failInLine (file, juce::jmax (1, lines.size()), juce::String ("a preset has a line: ") + key + " = ...");

    return written;
}

juce::MemoryBlock build (HostedModule& module, const Written& written)
{
    std::map<const HostedParameter*, float> wanted;

    for (const auto& parameter : module.parameters().all())
        wanted[&parameter] = parameter.parameter->getDefaultValue();

    for (const auto& value : written.values)
        wanted[value.parameter] = value.position;

    for (const auto& [parameter, position] : wanted)
        parameter->parameter->setValue (position);

    module.deliverParameters();
    const auto block = withoutOrigin (pluginState::read (module.instance()));
    pluginState::apply (module.instance(), block);

    for (const auto& [parameter, position] : wanted)
        if (std::abs (parameter->parameter->getValue() - position) > savedPrecision * 1.01f)
            throw HostError (written.name + ": the module does not keep " + parameter->id);

    return fromBlock (module.instance(), block);
}
} // namespace presetFile
