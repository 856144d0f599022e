// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <juce_graphics/juce_graphics.h>

/** The colours of the window. As numbers, 0xAARRGGBB, because JUCE's colours are no constants of the compiler. */
namespace palette
{
using Argb = juce::uint32;

inline constexpr Argb black = 0xff000000;
inline constexpr Argb white = 0xffffffff;

//======================================================================================================================
// The window's ground and its two lines of text

inline constexpr Argb body = 0xff404040;
inline constexpr Argb header = black;
inline constexpr Argb title = 0xffa0a0a0;
inline constexpr Argb version = black;

//======================================================================================================================
// The columns

inline constexpr Argb column = 0xff303030;
inline constexpr Argb track = 0xff202020;
inline constexpr Argb trackStroke = 0xffd0d0d0;
inline constexpr Argb dot = 0xff505050;

/** The lights of the steps and those in the columns' corners. */
inline constexpr Argb light = 0xff98d800;
inline constexpr Argb stepLightStroke = 0xff4e6e00;
inline constexpr Argb lightGlow = 0xffb3ff00;

//======================================================================================================================
// A knob, from its scale inwards

inline constexpr Argb tick = black;
inline constexpr Argb tickShadow = 0x40ffffff;
inline constexpr Argb tickOverArc = 0x50000000;

inline constexpr Argb arcCyan = 0xff30c0c0;
inline constexpr Argb arcGreen = 0xff60b030;
inline constexpr Argb arcYellow = 0xffffd820;
inline constexpr Argb arcRed = 0xffff4000;

inline constexpr Argb ring = black;
inline constexpr Argb ringShadow = 0x50000000;

inline constexpr Argb bodyShadow = black;
inline constexpr Argb bevelAbove = white;
inline constexpr Argb bevelBelow = black;
inline constexpr Argb faceCentre = 0xffa0a0a0;
inline constexpr Argb faceEdge = 0xff707070;

inline constexpr Argb pointer = 0xfff0f0f0;
inline constexpr Argb pointerShadow = black;

/** The value under a knob, and the value of any other slider. */
inline constexpr Argb knobText = 0xff909090;
inline constexpr Argb sliderText = 0xffa0a0a0;

//======================================================================================================================
// The button

inline constexpr Argb buttonPlate = 0xff505050;
inline constexpr Argb buttonShadow = black;
inline constexpr Argb buttonText = 0xffa0a0a0;

/** A disabled button is the brighter one. */
inline constexpr Argb disabledButtonText = white;
} // namespace palette
