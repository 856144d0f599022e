// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <set>

#include <juce_graphics/juce_graphics.h>

/** How many colours a picture has: the smoothed edges of letters and knobs add dozens. */
[[nodiscard]] inline std::size_t numColours (const juce::Image& image)
{
    std::set<juce::uint32> colours;

    for (int y = 0; y < image.getHeight(); ++y)
        for (int x = 0; x < image.getWidth(); ++x)
            colours.insert (image.getPixelAt (x, y).getARGB());

    return colours.size();
}
