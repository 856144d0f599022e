// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/ValueResolver.h"

#include <charconv>

#include "host/DisplayScale.h"
#include "host/HostError.h"

namespace valueResolver
{
namespace
{
/** In every locale a position has a decimal point. */
[[nodiscard]] std::optional<float> plainNumber (const juce::String& text)
{
    const auto characters = text.toStdString();
    const auto* end = characters.data() + characters.size();
    float number = 0.0f;
    const auto result = std::from_chars (characters.data(), end, number);

    if (result.ec != std::errc() || result.ptr != end || ! text.containsOnly (".0123456789eE-"))
        return {};

    return text.startsWithChar ('-') ? std::nullopt : std::make_optional (number);
}

[[nodiscard]] juce::String quoted (const juce::String& text) { return "\"" + text + "\""; }

[[noreturn]] void refuse (const HostedParameter& parameter, const DisplayScale& scale, const juce::String& text)
{
    const auto start = parameter.id + ": " + quoted (text);

    if (! scale.isChoice())
        throw HostError (start + " is neither a position from 0 to 1 nor a value from " + scale.lowestText() + " to "
                         + scale.highestText());

    juce::StringArray choices;

    for (const auto& choice : scale.choices())
        choices.add (quoted (choice.text));

    throw HostError (start + " is neither a position from 0 to 1 nor one of " + choices.joinIntoString (", "));
}
} // namespace

float resolve (const HostedParameter& parameter, const juce::String& text)
{
    const auto wanted = text.trim();
    const auto number = plainNumber (wanted);

    if (number.has_value() && *number >= 0.0f && *number <= 1.0f)
        return *number;

    const DisplayScale scale ([&parameter] (float position) { return parameter.textAt (position); });

    if (number.has_value())
        refuse (parameter, scale, wanted);

    if (const auto position = scale.positionOf (wanted))
        return *position;

    refuse (parameter, scale, wanted);
}

Assignment splitAssignment (const juce::String& text)
{
    const Assignment result { text.upToFirstOccurrenceOf ("=", false, false).trim(),
                              text.fromFirstOccurrenceOf ("=", false, false).trim() };

    if (result.id.isEmpty() || result.value.isEmpty())
        throw HostError (quoted (text) + " is not of the form id=text or id=position");

    return result;
}
} // namespace valueResolver
