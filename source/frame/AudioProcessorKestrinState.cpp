// SPDX-License-Identifier: AGPL-3.0-or-later
#include "frame/AudioProcessorKestrin.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <memory>
#include <set>
#include <string_view>

#include "common/SettingsGuard.h"
#include "frame/HostPath.h"
#include "frame/PluginIdentity.h"

namespace juce
{
namespace
{
constexpr const char* settingsTag = "settings";

String momentInUtc (std::time_t moment)
{
    std::tm fields {};

#if JUCE_WINDOWS
    gmtime_s (&fields, &moment);
#else
    gmtime_r (&moment, &fields);
#endif

    char text[30] = {};
    std::strftime (text, sizeof (text), "%FT%TZ", &fields);
    return text;
}

/** Four decimals. Neither printf nor streams, which both write the decimal comma of a locale that the host has set. */
String valueAsText (float value)
{
    constexpr int decimals = 4;
    std::array<char, std::numeric_limits<float>::max_exponent10 + decimals + 4> text {};
    std::to_chars (text.data(), text.data() + text.size() - 1, value, std::chars_format::fixed, decimals);
    return text.data();
}

/** What every save writes beside the parameters. */
constexpr std::array informativeNames { "plugin", "pluginversion", "date_modified", "daw", "samplerate", "username" };

/** The bytes that a parser reads again in this value when it has been written with its characters escaped. */
std::uint64_t rereadBytesWhenWritten (const String& value)
{
    XmlElement element (settingsTag);
    element.setAttribute ("value", value);

    const auto text = element.toString (XmlElement::TextFormat().singleLine().withoutHeader());
    return rereadBytes ({ text.toRawUTF8(), text.getNumBytesAsUTF8() });
}

/** Whole hertz; 0 before the host has set a rate, and for one that no int can hold. */
int wholeSampleRate (double sampleRate)
{
    constexpr auto intLimit = 2147483648.0;
    return std::abs (sampleRate) < intLimit ? (int) sampleRate : 0;
}

/** The XML text of a block as copyXmlToBinary writes it: magic number, length, text, zero. Empty if the block has another form.
    A length beyond the data is cut to the data. */
std::string_view textInBlock (const void* data, int sizeInBytes)
{
    constexpr std::uint32_t magicNumber = 0x21324356;
    constexpr int headerSize = 8;

    if (data == nullptr || sizeInBytes <= headerSize || ByteOrder::littleEndianInt (data) != magicNumber)
        return {};

    const auto* bytes = static_cast<const char*> (data);
    const auto length = (std::int32_t) ByteOrder::littleEndianInt (bytes + sizeof (magicNumber));

    if (length <= 0)
        return {};

    const std::string_view text (bytes + headerSize, (std::size_t) jmin (sizeInBytes - headerSize, length));
    return text.substr (0, text.find ('\0'));
}

std::unique_ptr<XmlElement> parseSettings (std::string_view text)
{
    if (text.empty() || ! isSafeToParse (text))
        return {};

    auto element = parseXML (String::fromUTF8 (text.data(), (int) text.size()));

    // Not by hasTagName, which asserts that names do not differ in case alone.
    if (element != nullptr && ! element->getTagName().equalsIgnoreCase (settingsTag))
        element.reset();

    return element;
}

/** The text as getDoubleValue reads it. That function counts an exponent in an int, which overflows: so it is given only as
    many of the exponent's digits as can matter. */
double numberIn (const String& text)
{
    constexpr int maxExponentDigits = 9;
    const auto exponent = text.indexOfAnyOf ("eE");

    if (exponent < 0)
        return text.getDoubleValue();

    auto digits = exponent + 1;

    while (text[digits] == '+' || text[digits] == '-' || text[digits] == '0')
        ++digits;

    return text.substring (0, digits + maxExponentDigits).getDoubleValue();
}

/** The attribute's value, or the present one where the settings do not name the parameter: settings of a version with
    fewer parameters leave the others alone. Of equal names the first counts. */
float valueFor (const AudioProcessorParameter& parameter, const String& id, const XmlElement& settings)
{
    const auto value =
        settings.hasAttribute (id) ? (float) numberIn (settings.getStringAttribute (id)) : parameter.getValue();

    // fmin and fmax make 0 of a NaN.
    return (float) std::fmin (1.0, std::fmax (0.0, (double) value));
}
} // namespace

void AudioProcessorKestrin::getStateInformation (MemoryBlock& destData)
{
    XmlElement settings (settingsTag);

    setExtraAttribute ("plugin", pluginIdentity::name);
    setExtraAttribute ("pluginversion", String (pluginIdentity::buildNumber));
    setExtraAttribute ("date_modified", momentInUtc (std::time (nullptr)));
    setExtraAttribute ("daw",
                       hostTail (File::getSpecialLocation (File::hostApplicationPath).getFullPathName().toStdString()));
    setExtraAttribute ("samplerate", String (wholeSampleRate (getSampleRate())));
    setExtraAttribute ("username", SystemStats::getLogonName());

    for (auto* parameter : getParameters())
    {
        if (const auto* named = dynamic_cast<const AudioProcessorParameterWithID*> (parameter))
        {
            settings.setAttribute (named->paramID, valueAsText (parameter->getValue()));

            // After a load the map holds the parameter's value of that time.
            extraAttributes.erase (named->paramID);
        }
    }

    for (const auto& [name, value] : extraAttributes)
        settings.setAttribute (name, value);

    copyXmlToBinary (settings, destData);
}

void AudioProcessorKestrin::setStateInformation (const void* data, int sizeInBytes)
{
    if (const auto settings = parseSettings (textInBlock (data, sizeInBytes)))
    {
        applyParameters (*settings);
        keepExtraAttributes (*settings);
    }

    // Also after a load of nothing: a host that has loaded expects to hear of it.
    requestControlUpdate();
    stateTouched = true;
}

void AudioProcessorKestrin::applyParameters (const XmlElement& settings)
{
    // Not notifying: the host has handed the values over itself.
    for (auto* parameter : getParameters())
        if (const auto* named = dynamic_cast<const AudioProcessorParameterWithID*> (parameter))
            parameter->setValue (valueFor (*parameter, named->paramID, settings));
}

void AudioProcessorKestrin::keepExtraAttributes (const XmlElement& settings)
{
    std::set<String> writtenAnyway (informativeNames.begin(), informativeNames.end());

    for (const auto* parameter : getParameters())
        if (const auto* named = dynamic_cast<const AudioProcessorParameterWithID*> (parameter))
            writtenAnyway.insert (named->paramID);

    // What the next save writes must pass the guard again. So foreign attributes are kept as long as there is room for them
    // beside what every save writes: thousands, and half of what their values may cost.
    auto freePlaces = maxSettingsAttributes - std::min (maxSettingsAttributes, writtenAnyway.size());
    auto freeBytes = maxRereadBytes / 2;
    extraAttributes.clear();

    for (int index = 0; index < settings.getNumAttributes(); ++index)
    {
        const auto& name = settings.getAttributeName (index);
        const auto& value = settings.getAttributeValue (index);

        if (name.isEmpty() || value.isEmpty())
            continue;

        if (writtenAnyway.count (name) == 0)
        {
            const std::size_t places = extraAttributes.count (name) == 0 ? 1 : 0;
            const auto bytes = rereadBytesWhenWritten (value);

            if (places > freePlaces || bytes > freeBytes)
                continue;

            freePlaces -= places;
            freeBytes -= bytes;
        }

        setExtraAttribute (name, value);
    }
}

void AudioProcessorKestrin::setExtraAttribute (String key, String value) { extraAttributes[key] = value; }
} // namespace juce
