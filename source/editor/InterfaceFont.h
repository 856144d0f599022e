// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

/** The typeface of the window. */
namespace interfaceFont
{
/** The installed family to use as the process's default sans-serif: the intended face, else the nearest to it. Empty if
    JUCE's own default is to stay.

    A name that is not installed must never be given to JUCE: on Linux it then finds no typeface at all, and every text
    of the process disappears. JUCE on Linux also finds none if no installed family has the name of a sans-serif; then
    any family is better than none. */
[[nodiscard]] juce::String chooseFamily (const juce::StringArray& installedFamilies);

/** Makes the chosen family the default of the whole process, where it stays. Looks at the installed families once.
    Message thread only. */
void installAsDefault();

/** The default family at a height, with JUCE's legacy line metrics, which the layout's text heights are made for. */
[[nodiscard]] juce::Font ofHeight (float height);
} // namespace interfaceFont
