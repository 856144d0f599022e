// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

#include <juce_graphics/juce_graphics.h>

#include "XDisplay.h"

/** What stands on the screen, and what can be said of it in numbers. */
namespace picture
{
/** Invalid if the display refused. */
[[nodiscard]] juce::Image fromScreen (const XDisplay::Pixels& pixels);

/** Leaves the picture as a PNG for people to look at. */
void keep (const juce::Image& image, const std::string& name);

/** The share of pixels that clearly differ. Both of one size. */
[[nodiscard]] double differingShare (const juce::Image& one, const juce::Image& other);
} // namespace picture
