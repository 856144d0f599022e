// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/DisplayScale.h"

#include <cmath>
#include <cstddef>

namespace
{
/** Fine enough for a parameter with some thousand texts: every change of text lies between two positions that differ. */
constexpr int firstLookIntervals = 512;

/** The edges of a grid are found to the last bit of a float. The tolerance is for the module's own rounding. */
constexpr double gridTolerance = 0.01;

/** With fewer marks the texts are not a scale, but a handful of words with numbers in them ("4 sec"). */
constexpr std::size_t fewestMarks = 8;
} // namespace

DisplayScale::DisplayScale (const TextOf& textOf)
{
    const auto trimmedText = [&textOf] (float position) { return textOf (position).trim(); };

    auto low = 0.0f;
    auto lowText = trimmedText (low);
    ranges.push_back ({ lowText, 0.0f, 0.0f, parse (lowText) });

    for (int interval = 1; interval <= firstLookIntervals; ++interval)
    {
        const auto high = (float) interval / (float) firstLookIntervals;
        const auto highText = trimmedText (high);
        collectRanges (trimmedText, low, lowText, high, highText);
        low = high;
        lowText = highText;
    }

    ranges.back().last = 1.0f;
    gridSize = findGridSize();
    choice = gridSize > 0 && ! isOneRangeOfNumbers();
}

void DisplayScale::collectRanges (const TextOf& textOf, float low, const juce::String& lowText, float high,
                                  const juce::String& highText)
{
    if (lowText == highText)
        return;

    const auto middle = low + (high - low) * 0.5f;

    if (middle <= low || middle >= high)
    {
        ranges.back().last = low;
        ranges.push_back ({ highText, high, high, parse (highText) });
        return;
    }

    const auto middleText = textOf (middle);
    collectRanges (textOf, low, lowText, middle, middleText);
    collectRanges (textOf, middle, middleText, high, highText);
}

std::optional<DisplayScale::Quantity> DisplayScale::parse (const juce::String& text)
{
    const auto number = text.initialSectionContainingOnly ("+-.0123456789");

    if (! number.containsAnyOf ("0123456789") || number.substring (1).containsAnyOf ("+-")
        || number.indexOfChar ('.') != number.lastIndexOfChar ('.'))
        return {};

    Quantity quantity { number.getDoubleValue(), text.substring (number.length()).trim().toLowerCase() };

    if (quantity.unit == "khz")
        quantity = { quantity.number * 1000.0, "hz" };

    return quantity;
}

double DisplayScale::edgeBetween (const TextRange& lower, const TextRange& upper) noexcept
{
    return ((double) lower.last + (double) upper.first) * 0.5;
}

int DisplayScale::findGridSize() const noexcept
{
    if (ranges.size() < 2)
        return 0;

    // On a grid the first text reaches half a step.
    const auto size = (int) std::lround (0.5 / edgeBetween (ranges[0], ranges[1])) + 1;
    const auto step = 1.0 / (double) (size - 1);

    if (size < 2 || (std::size_t) size < ranges.size())
        return 0;

    for (std::size_t index = 1; index < ranges.size(); ++index)
        if (std::abs (edgeBetween (ranges[index - 1], ranges[index]) - ((double) index - 0.5) * step)
            > gridTolerance * step)
            return 0;

    // There may be positions above the last text; they have no text.
    return (std::size_t) size == ranges.size() || ranges.back().text.isEmpty() ? size : 0;
}

bool DisplayScale::isOneRangeOfNumbers() const
{
    for (const auto& range : ranges)
        if (! range.quantity.has_value() || range.quantity->unit != ranges.front().quantity->unit)
            return false;

    return true;
}

float DisplayScale::positionOfRange (std::size_t index) const noexcept
{
    if (gridSize > 0)
        return (float) index / (float) (gridSize - 1);

    return (ranges[index].first + ranges[index].last) * 0.5f;
}

std::vector<DisplayScale::Choice> DisplayScale::choices() const
{
    std::vector<Choice> result;

    if (choice)
        for (std::size_t index = 0; index < ranges.size(); ++index)
            if (ranges[index].text.isNotEmpty())
                result.push_back ({ ranges[index].text, positionOfRange (index) });

    return result;
}

std::vector<DisplayScale::Mark> DisplayScale::marksFor (const juce::String& unit) const
{
    std::vector<Mark> marks;
    const auto add = [&marks] (double number, double position)
    {
        if (marks.empty() || (number > marks.back().number && position > marks.back().position))
            marks.push_back ({ number, position });
    };

    for (std::size_t index = 0; index < ranges.size(); ++index)
    {
        const auto& range = ranges[index];

        if (! range.quantity.has_value() || range.quantity->unit != unit)
            continue;

        const auto number = range.quantity->number;

        if (gridSize > 0)
        {
            add (number, (double) positionOfRange (index));
            continue;
        }

        // Between two rounded numbers the text changes halfway. The numbers at the ends of the scale are exact.
        const auto startsScale =
            index == 0 || ! ranges[index - 1].quantity.has_value() || ranges[index - 1].quantity->unit != unit;

        if (startsScale)
            add (number, (double) range.first);
        else
            add ((ranges[index - 1].quantity->number + number) * 0.5, edgeBetween (ranges[index - 1], range));

        if (index + 1 == ranges.size())
            add (number, 1.0);
    }

    return marks;
}

std::optional<float> DisplayScale::positionBetweenMarks (const Quantity& quantity) const
{
    const auto marks = marksFor (quantity.unit);

    if (marks.size() < fewestMarks || ! (quantity.number >= marks.front().number)
        || ! (quantity.number <= marks.back().number))
        return {};

    std::size_t upper = 1;

    while (upper + 1 < marks.size() && marks[upper].number < quantity.number)
        ++upper;

    const auto& low = marks[upper - 1];
    const auto& high = marks[upper];

    // A scale that is not even is taken for exponential. Between neighbours the difference to a straight line is small.
    const auto exponential = gridSize == 0 && low.number > 0.0;
    const auto fraction = exponential ? std::log (quantity.number / low.number) / std::log (high.number / low.number)
                                      : (quantity.number - low.number) / (high.number - low.number);

    return (float) (low.position + (high.position - low.position) * fraction);
}

std::optional<float> DisplayScale::positionOf (const juce::String& text) const
{
    const auto wanted = text.trim();

    if (! choice)
        if (const auto quantity = parse (wanted))
            if (const auto position = positionBetweenMarks (*quantity))
                return position;

    for (std::size_t index = 0; index < ranges.size(); ++index)
        if (wanted.isNotEmpty() && ranges[index].text.equalsIgnoreCase (wanted))
            return positionOfRange (index);

    return {};
}
