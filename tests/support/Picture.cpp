// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/Picture.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace picture
{
namespace
{
constexpr int numColumns = 19;
constexpr int numRows = 39;

using Mean = std::array<double, 3>;

Mean meanOf (const juce::Image& image, juce::Rectangle<int> field)
{
    Mean sum {};

    for (int y = field.getY(); y < field.getBottom(); ++y)
    {
        for (int x = field.getX(); x < field.getRight(); ++x)
        {
            const auto colour = image.getPixelAt (x, y);
            sum[0] += colour.getRed();
            sum[1] += colour.getGreen();
            sum[2] += colour.getBlue();
        }
    }

    for (auto& each : sum)
        each /= field.getWidth() * field.getHeight();

    return sum;
}

juce::Rectangle<int> fieldOf (const juce::Image& image, int column, int row)
{
    const auto left = image.getWidth() * column / numColumns;
    const auto right = image.getWidth() * (column + 1) / numColumns;
    const auto top = image.getHeight() * row / numRows;
    const auto bottom = image.getHeight() * (row + 1) / numRows;
    return { left, top, right - left, bottom - top };
}

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

bool isWhole (const juce::Image& window)
{
    constexpr int fromEdge = 3;
    constexpr juce::uint32 ground = 0xff404040, header = 0xff000000;
    const auto right = window.getWidth() - 1 - fromEdge, bottom = window.getHeight() - 1 - fromEdge;
    const auto colourAt = [&] (int x, int y) { return window.getPixelAt (x, y).getARGB(); };

    return colourAt (fromEdge, fromEdge) == header && colourAt (right, fromEdge) == header
           && colourAt (fromEdge, bottom) == ground && colourAt (right, bottom) == ground;
}

bool hasArc (const juce::Image& window)
{
    // Cyan, and darker where the ring throws its shadow; all else in a window at rest is grey or the green of the lights.
    constexpr int clear = 40;

    for (int y = 0; y < window.getHeight(); ++y)
    {
        for (int x = 0; x < window.getWidth(); ++x)
        {
            const auto colour = window.getPixelAt (x, y);

            if (std::min (colour.getGreen(), colour.getBlue()) > colour.getRed() + clear)
                return true;
        }
    }

    return false;
}

double largestFieldDifference (const juce::Image& one, const juce::Image& other)
{
    double largest = 0.0;

    for (int row = 0; row < numRows; ++row)
    {
        for (int column = 0; column < numColumns; ++column)
        {
            const auto mean = meanOf (one, fieldOf (one, column, row));
            const auto otherMean = meanOf (other, fieldOf (other, column, row));

            for (std::size_t part = 0; part < mean.size(); ++part)
                largest = std::max (largest, std::abs (mean[part] - otherMean[part]));
        }
    }

    return largest;
}

int numSharpEdges (const juce::Image& image)
{
    constexpr int sharp = 90;
    int number = 0;

    for (int y = 0; y < image.getHeight(); ++y)
        for (int x = 1; x < image.getWidth(); ++x)
            if (std::abs (brightness (image.getPixelAt (x, y)) - brightness (image.getPixelAt (x - 1, y))) > sharp)
                ++number;

    return number;
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
