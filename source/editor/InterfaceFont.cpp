// SPDX-License-Identifier: AGPL-3.0-or-later
#include "editor/InterfaceFont.h"

#include <algorithm>
#include <array>

namespace interfaceFont
{
namespace
{
/** The intended face, then faces of near widths and strokes, nearest first. */
constexpr std::array nearFamilies { "Microsoft Sans Serif",
                                    "Arial",
                                    "Helvetica",
                                    "Liberation Sans",
                                    "Arimo",
                                    "Nimbus Sans",
                                    "FreeSans",
                                    "Tahoma",
                                    "Noto Sans",
                                    "DejaVu Sans",
                                    "Verdana" };

/** JUCE on Linux takes a family with one of these words in its name for a sans-serif, and looks for its default among them. */
constexpr std::array sansSerifWords { "Sans", "Verdana", "Arial", "Ubuntu" };

bool looksSansSerif (const juce::String& family)
{
    return std::any_of (sansSerifWords.begin(), sansSerifWords.end(),
                        [&family] (const char* word) { return family.containsIgnoreCase (word); });
}
} // namespace

juce::String chooseFamily (const juce::StringArray& installedFamilies)
{
    for (const auto* family : nearFamilies)
        if (installedFamilies.contains (family))
            return family;

    if (std::any_of (installedFamilies.begin(), installedFamilies.end(), looksSansSerif))
        return {};

    for (const auto& family : installedFamilies)
        if (family.isNotEmpty())
            return family;

    return {};
}

void installAsDefault()
{
    // Listing the families walks through the font folders: too slow for every opening of a window.
    static const auto family = chooseFamily (juce::Font::findAllTypefaceNames());

    if (family.isNotEmpty())
        juce::LookAndFeel::getDefaultLookAndFeel().setDefaultSansSerifTypefaceName (family);
}

juce::Font ofHeight (float height)
{
    return juce::Font { juce::FontOptions { height }.withMetricsKind (juce::TypefaceMetricsKind::legacy) };
}
} // namespace interfaceFont
