// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/ParameterReport.h"

#include "host/DisplayScale.h"

namespace parameterReport
{
namespace
{
[[nodiscard]] DisplayScale scaleOf (const HostedParameter& parameter)
{
    return DisplayScale ([&parameter] (float position) { return parameter.textAt (position); });
}

[[nodiscard]] juce::String defaultText (const HostedParameter& parameter)
{
    return parameter.textAt (parameter.parameter->getDefaultValue()).trim();
}

[[nodiscard]] juce::String currentText (const HostedParameter& parameter)
{
    return parameter.textAt (parameter.parameter->getValue()).trim();
}

/** The decimals that a saved state keeps. */
[[nodiscard]] juce::String positionText (float position) { return juce::String ((double) position, 4); }

[[nodiscard]] juce::String rangeOrChoices (const HostedParameter& parameter)
{
    const auto scale = scaleOf (parameter);

    if (! scale.isChoice())
        return scale.lowestText() + " to " + scale.highestText();

    juce::StringArray choices;

    for (const auto& choice : scale.choices())
        choices.add (choice.text + " (" + positionText (choice.position) + ")");

    return choices.joinIntoString (", ");
}

/** The framework's own parameters have no id in the settings. The bypass is the only one. */
[[nodiscard]] bool isFrameworksOwn (const HostedParameter& parameter) { return parameter.id == "byps"; }
} // namespace

juce::String asTable (const ParameterList& list)
{
    juce::String text;
    const auto addLine = [&text] (const juce::String& order, const juce::String& id, const juce::String& name,
                                  const juce::String& standard, const juce::String& current)
    {
        text += (order.paddedLeft (' ', 3) + "  " + id.paddedRight (' ', 12) + name.paddedRight (' ', 22)
                 + standard.paddedRight (' ', 14) + current)
                    .trimEnd()
                + "\n";
    };

    addLine ("#", "id", "name", "default", "current");
    int order = 0;

    for (const auto& parameter : list.all())
        addLine (juce::String (++order), parameter.id, parameter.name(), defaultText (parameter),
                 currentText (parameter));

    return text;
}

juce::String asMarkdown (const ParameterList& list)
{
    juce::String text =
        "# Parameters\n\n"
        "Every value is a position from 0 to 1; the texts are what a host and the window show. A choice is stored\n"
        "as the position in brackets. This page is made from the built module by\n"
        "`kestrin-host parameters --markdown`.\n\n"
        "| # | id | name | default | default position | range or choices (position) |\n"
        "|---|---|---|---|---|---|\n";
    int order = 0;

    for (const auto& parameter : list.all())
        if (! isFrameworksOwn (parameter))
            text += "| " + juce::String (++order) + " | `" + parameter.id + "` | " + parameter.name() + " | "
                    + defaultText (parameter) + " | " + positionText (parameter.parameter->getDefaultValue()) + " | "
                    + rangeOrChoices (parameter) + " |\n";

    return text;
}

juce::String asJson (const ParameterList& list)
{
    juce::Array<juce::var> rows;

    for (const auto& parameter : list.all())
    {
        const auto scale = scaleOf (parameter);
        const juce::DynamicObject::Ptr row (new juce::DynamicObject);
        row->setProperty ("id", parameter.id);
        row->setProperty ("number", (juce::int64) parameter.number);
        row->setProperty ("name", parameter.name());
        row->setProperty ("default", (double) parameter.parameter->getDefaultValue());
        row->setProperty ("defaultText", parameter.textAt (parameter.parameter->getDefaultValue()));
        row->setProperty ("current", (double) parameter.parameter->getValue());
        row->setProperty ("currentText", parameter.textAt (parameter.parameter->getValue()));
        row->setProperty ("lowest", parameter.textAt (0.0f));
        row->setProperty ("highest", parameter.textAt (1.0f));

        juce::Array<juce::var> choices;

        for (const auto& choice : scale.choices())
        {
            const juce::DynamicObject::Ptr entry (new juce::DynamicObject);
            entry->setProperty ("text", choice.text);
            entry->setProperty ("position", (double) choice.position);
            choices.add (entry.get());
        }

        if (! choices.isEmpty())
            row->setProperty ("choices", choices);

        rows.add (row.get());
    }

    return juce::JSON::toString (juce::var (rows)) + "\n";
}
} // namespace parameterReport
