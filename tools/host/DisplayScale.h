// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include <juce_core/juce_core.h>

/** What a parameter's texts tell about it. A VST3 module gives its host a text for any position from 0 to 1, but not the rule
    behind it. So this asks for many texts and finds out where they change, whether these places lie on an even grid, and
    whether the texts are words to choose from or numbers on a scale.

    It assumes that a text which is the same at two positions is the same between them. */
class DisplayScale
{
public:
    using TextOf = std::function<juce::String (float)>;

    struct Choice
    {
        juce::String text;
        float position = 0.0f;
    };

    explicit DisplayScale (const TextOf& textOf);

    /** True if the texts are words and not one range of numbers. */
    [[nodiscard]] bool isChoice() const noexcept { return choice; }

    /** The texts to choose from with their exact positions; empty if isChoice is false. */
    [[nodiscard]] std::vector<Choice> choices() const;

    /** The texts at the two ends, without blanks around them. */
    [[nodiscard]] juce::String lowestText() const { return ranges.front().text; }
    [[nodiscard]] juce::String highestText() const { return ranges.back().text; }

    /** The position for a text that the module shows, or for a number with its unit between two that it shows. Large and
        small letters are the same; blanks around the text and before the unit do not count.
        @returns nothing if no position fits */
    [[nodiscard]] std::optional<float> positionOf (const juce::String& text) const;

private:
    /** A number as written, with its unit in small letters: "1.2 kHz" is 1200 and "hz". */
    struct Quantity
    {
        double number = 0.0;
        juce::String unit;
    };

    /** All neighbouring positions that have the same text. */
    struct TextRange
    {
        juce::String text;
        float first = 0.0f;
        float last = 1.0f;
        std::optional<Quantity> quantity;
    };

    /** A number whose position is known exactly. */
    struct Mark
    {
        double number = 0.0;
        double position = 0.0;
    };

    [[nodiscard]] static std::optional<Quantity> parse (const juce::String& text);
    [[nodiscard]] static double edgeBetween (const TextRange& lower, const TextRange& upper) noexcept;
    void collectRanges (const TextOf& textOf, float low, const juce::String& lowText, float high,
                        const juce::String& highText);
    [[nodiscard]] int findGridSize() const noexcept;
    [[nodiscard]] bool isOneRangeOfNumbers() const;
    [[nodiscard]] float positionOfRange (std::size_t index) const noexcept;
    [[nodiscard]] std::vector<Mark> marksFor (const juce::String& unit) const;
    [[nodiscard]] std::optional<float> positionBetweenMarks (const Quantity& quantity) const;

    std::vector<TextRange> ranges;

    /** Number of equally spaced positions on which the texts lie; 0 if there is no such grid. */
    int gridSize = 0;
    bool choice = false;
};
