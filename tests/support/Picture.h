// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

#include <juce_graphics/juce_graphics.h>

#include "host/XDisplay.h"

/** Pictures of the screen, and measurements of them. */
namespace picture
{
/** Invalid if the display refused. */
[[nodiscard]] juce::Image fromScreen (const XDisplay::Pixels& pixels);

/** Leaves the picture as a PNG for people to look at. */
void keep (const juce::Image& image, const std::string& name);

/** True if the window's ground shows in the lower corners and its header in the upper ones: what is not drawn yet has
    other colours. */
[[nodiscard]] bool isWhole (const juce::Image& window);

/** True if a knob of the window has an arc. Every knob opens at 0, where it has none, and gets its value at the window's
    first poll: an arc says that the poll has happened. */
[[nodiscard]] bool hasArc (const juce::Image& window);

/** The largest difference, 0 to 255, between the mean colours of two places that correspond. For this both are divided
    into as many fields: 19 by 39, of 14 pixels each for a narrow window that is not scaled. Text of another size has
    other details and the same mean; what is missing, cropped or elsewhere shows. */
[[nodiscard]] double largestFieldDifference (const juce::Image& one, const juce::Image& other);

/** Number of pixels that differ from their right neighbour as much as a sharp edge between text and ground does. A drawing
    at a larger scale has more of them, because its edges are longer; a stretched picture has blurred edges. */
[[nodiscard]] int numSharpEdges (const juce::Image& image);

/** The share of pixels that clearly differ. Both of one size. */
[[nodiscard]] double differingShare (const juce::Image& one, const juce::Image& other);
} // namespace picture
