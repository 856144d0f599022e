// SPDX-License-Identifier: AGPL-3.0-or-later
#include "Picture.h"

#include <cmath>

namespace picture
{
namespace
{
int brightness (juce::Colour colour) { return (colour.getRed() + colour.getGreen() + colour.getBlue()) / 3; }
} // namespace

juce::Image fromScreen (const XDisplay::Pixels& pixels)
{
    if (pixels.colours.empty())
        return {};

    juce::Image image (juce::Image::RGB, pixels.width, pixels.height, false, juce::SoftwareImageType());
    auto colour = pixels.colours.begin();

    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x)
            image.setPixelAt (x, y, juce::Colour (0xff000000 | *colour++));

    return image;
}

void keep (const juce::Image& image, const std::string& name)
{
    const juce::File folder (juce::File (KESTRIN_TEST_PICTURES));
    const auto file = folder.getChildFile (juce::String (name) + ".png");

    folder.createDirectory();
    file.deleteFile();

    if (auto stream = file.createOutputStream())
        juce::PNGImageFormat().writeImageToStream (image, *stream);
}

double differingShare (const juce::Image& one, const juce::Image& other)
{
    constexpr int clear = 24;
    int number = 0;

    for (int y = 0; y < one.getHeight(); ++y)
        for (int x = 0; x < one.getWidth(); ++x)
            if (std::abs (brightness (one.getPixelAt (x, y)) - brightness (other.getPixelAt (x, y))) > clear)
                ++number;

    return (double) number / (one.getWidth() * one.getHeight());
}
} // namespace picture
