// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/ParameterList.h"

#include <algorithm>
#include <cstddef>
#include <map>

#include "host/HostError.h"
#include "host/PluginState.h"

namespace
{
/** The number that JUCE's VST3 client gives to a word; the topmost bit is kept clear for the sake of some hosts. */
[[nodiscard]] juce::uint32 numberOf (const juce::String& word) { return (juce::uint32) word.hashCode() & 0x7fffffff; }

/** Numbers that the framework gives to its own parameters are four characters. */
[[nodiscard]] juce::String fourCharacters (juce::uint32 number)
{
    juce::String word;

    for (int shift = 24; shift >= 0; shift -= 8)
    {
        const auto character = (juce::juce_wchar) ((number >> shift) & 0xff);

        if (! juce::CharacterFunctions::isLetterOrDigit (character) || character > 126)
            return {};

        word += character;
    }

    return word;
}

[[nodiscard]] juce::String wordFor (juce::uint32 number, const std::map<juce::uint32, juce::String>& words)
{
    if (const auto word = words.find (number); word != words.end())
        return word->second;

    if (const auto word = fourCharacters (number); word.isNotEmpty())
        return word;

    return juce::String (number);
}

/** How many single-character changes lead from one word to the other. */
[[nodiscard]] int editDistance (const juce::String& first, const juce::String& second)
{
    std::vector<int> row ((std::size_t) second.length() + 1);

    for (std::size_t column = 0; column < row.size(); ++column)
        row[column] = (int) column;

    for (int line = 0; line < first.length(); ++line)
    {
        auto diagonal = row[0];
        row[0] = line + 1;

        for (std::size_t column = 1; column < row.size(); ++column)
        {
            const auto change = diagonal + (first[line] == second[(int) column - 1] ? 0 : 1);
            diagonal = row[column];
            row[column] = std::min ({ change, row[column] + 1, row[column - 1] + 1 });
        }
    }

    return row.back();
}
} // namespace

ParameterList::ParameterList (juce::AudioPluginInstance& instance)
{
    std::map<juce::uint32, juce::String> words;

    for (const auto& word : pluginState::settingsNames (pluginState::settingsText (pluginState::read (instance))))
        words[numberOf (word)] = word;

    for (auto* parameter : instance.getParameters())
        if (const auto* hosted = dynamic_cast<juce::HostedAudioProcessorParameter*> (parameter))
        {
            const auto number = (juce::uint32) hosted->getParameterID().getLargeIntValue();
            parameters.push_back ({ wordFor (number, words), number, parameter });
        }
}

const HostedParameter& ParameterList::find (const juce::String& id) const
{
    for (const auto& parameter : parameters)
        if (parameter.id == id || parameter.number == numberOf (id))
            return parameter;

    juce::StringArray near;
    constexpr int tooFar = 3;
    auto nearest = tooFar;

    for (const auto& parameter : parameters)
    {
        const auto distance = editDistance (parameter.id.toLowerCase(), id.toLowerCase());

        if (distance < nearest)
            near.clear();

        nearest = std::min (nearest, distance);

        if (distance == nearest && distance < tooFar)
            near.add (parameter.id);
    }

    throw HostError ("there is no parameter \"" + id + "\""
                     + (near.isEmpty() ? juce::String (" (kestrin-host parameters lists them)")
                                       : "; did you mean " + near.joinIntoString (" or ") + "?"));
}
