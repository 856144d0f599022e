// SPDX-License-Identifier: AGPL-3.0-or-later
#include "editor/KestrinLookAndFeel.h"

#include <algorithm>
#include <cmath>

#include "editor/InterfaceFont.h"
#include "editor/Palette.h"

namespace
{
[[nodiscard]] float narrow (double value) { return (float) value; }

[[nodiscard]] juce::PathStrokeType strokeOf (double thickness)
{
    return { narrow (thickness), juce::PathStrokeType::mitered, juce::PathStrokeType::butt };
}

/** A circle about a centre. */
[[nodiscard]] juce::Path circle (double centreX, double centreY, double radius)
{
    juce::Path path;
    path.addEllipse (narrow (centreX - radius), narrow (centreY - radius), narrow (radius * 2.0),
                     narrow (radius * 2.0));
    return path;
}

/** A shadow's radius in whole pixels, at least one. */
[[nodiscard]] int shadowRadius (double wanted) { return std::max (1, (int) wanted); }

void drawShadow (juce::Graphics& g, const juce::Path& path, palette::Argb argb, double radius, double offsetY)
{
    juce::DropShadow { juce::Colour { argb }, shadowRadius (radius), { 0, (int) offsetY } }.drawForPath (g, path);
}
} // namespace

/** One knob while it is drawn. The design is in double precision and is converted to float where JUCE is called; the angles
    are JUCE's and stay floats. */
struct KestrinLookAndFeel::Knob
{
    Knob (juce::Rectangle<int> area, float sliderPos, float start, float end)
        : r (std::min (area.getWidth() * 0.4, area.getHeight() * 0.4)), cx (area.getWidth() * 0.5 + area.getX()),
          cy (area.getHeight() * 0.5 + area.getY() + lowering), startAngle (start), endAngle (end), range (end - start),
          angle (range * sliderPos + start)
    {
    }

    /** The knob sits a little low in its area, so that its ticks do not touch the caption above. */
    static constexpr double lowering = 6.0;

    double r;

    /** The two unit lengths of the design: the width of the scale around the body, and the finest line. */
    double inset = r * 0.2;
    double u = r * 0.04;

    double cx;
    double cy;
    float startAngle;
    float endAngle;
    float range;

    /** The direction of the pointer. */
    float angle;

    float arcRadius = narrow (r - u * 2.25);
    float tickLength = narrow (r * 0.1);
};

/** The ticks are drawn twice: with a bright shadow under the arc, and thinly over it, so that they show on it. */
enum class KestrinLookAndFeel::TickPass
{
    shadow,
    plain
};

KestrinLookAndFeel::KestrinLookAndFeel()
{
    setColour (juce::Slider::textBoxTextColourId, juce::Colour { palette::sliderText });
    interfaceFont::installAsDefault();
}

void KestrinLookAndFeel::setRangeColours (juce::Slider& slider, ArcStops stops)
{
    rangeColours.emplace (&slider, std::move (stops));
}

//======================================================================================================================
void KestrinLookAndFeel::drawRotarySlider (juce::Graphics& g, int x, int y, int width, int height, float sliderPos,
                                           float startAngle, float endAngle, juce::Slider& slider)
{
    const Knob knob { { x, y, width, height }, sliderPos, startAngle, endAngle };

    drawRotaryTicks (g, knob, slider, TickPass::shadow);
    drawArc (g, knob, slider);
    drawRotaryTicks (g, knob, slider, TickPass::plain);
    drawRing (g, knob);
    drawBody (g, knob);
    drawPointer (g, knob);
}

void KestrinLookAndFeel::drawRotaryTicks (juce::Graphics& g, const Knob& knob, const juce::Slider& slider,
                                          TickPass pass) const
{
    constexpr float closestStep = 0.019f;
    constexpr float widestStep = 0.79f;
    constexpr float continuousStep = 0.1f;

    const auto shadowed = pass == TickPass::shadow;
    auto step = narrow (slider.getInterval() / (slider.getMaximum() - slider.getMinimum()));

    if (step < closestStep || step > widestStep)
        step = continuousStep;

    const auto tickWidth = narrow (knob.u * (shadowed ? 0.7070000171661377 : 0.4000000059604645));
    const auto tickTop = narrow (-(knob.r - knob.u));

    // A little beyond 1, where the last tick arrives after its rounding errors.
    for (auto t = 0.0f; t <= 1.01f; t += step)
    {
        // The tick leans on its radius from the left and is not centred on it.
        juce::Path tick;
        tick.addRectangle (-tickWidth, tickTop, tickWidth, knob.tickLength);
        tick.applyTransform (juce::AffineTransform::rotation (knob.range * t + knob.startAngle)
                                 .translated (narrow (knob.cx), narrow (knob.cy)));

        if (shadowed)
            drawShadow (g, tick, palette::tickShadow, knob.u * 0.10000000149011612, knob.u * 0.25);

        g.setColour (juce::Colour { shadowed ? palette::tick : palette::tickOverArc });
        g.fillPath (tick);
    }
}

void KestrinLookAndFeel::drawArc (juce::Graphics& g, const Knob& knob, const juce::Slider& slider) const
{
    const auto stops = rangeColours.find (&slider);

    if (stops == rangeColours.end())
        return;

    const auto stroke = strokeOf ((double) knob.tickLength * 1.8);
    auto segmentStart = knob.startAngle;

    for (const auto& [position, colour] : stops->second)
    {
        const auto segmentEnd = std::min (knob.range * position + knob.startAngle, knob.angle);

        // Only the part of the scale up to the value is coloured.
        if (knob.angle > segmentStart)
        {
            juce::Path arc;
            arc.addCentredArc (narrow (knob.cx), narrow (knob.cy), knob.arcRadius, knob.arcRadius, 0.0f, segmentStart,
                               segmentEnd, true);
            g.setColour (colour);
            g.strokePath (arc, stroke);
            segmentStart = segmentEnd;
        }
    }
}

void KestrinLookAndFeel::drawRing (juce::Graphics& g, const Knob& knob)
{
    const auto ring = circle (knob.cx, knob.cy, knob.r * 1.02);
    g.setColour (juce::Colour { palette::ring });
    g.strokePath (ring, strokeOf (knob.u * 0.5));

    // The shadow of the filled ring, not of its line: it also darkens the scale and the arc, which is what makes the
    // arc look sunk into the panel.
    drawShadow (g, ring, palette::ringShadow, knob.u * 0.5, -std::trunc (knob.u));
}

void KestrinLookAndFeel::drawBody (juce::Graphics& g, const Knob& knob)
{
    drawShadow (g, circle (knob.cx, knob.cy, knob.r * 0.8), palette::bodyShadow, knob.u, knob.u);

    const auto left = knob.cx - knob.r + knob.inset;
    const auto top = knob.cy - knob.r + knob.inset;
    const auto size = knob.r + knob.r - 2.0 * knob.inset;
    const auto fillDisc = [&g, left, size] (double y)
    { g.fillEllipse (narrow (left), narrow (y), narrow (size), narrow (size)); };

    // The bevel: a white disc one pixel above the face and a black one below it. The face leaves a crescent of each.
    g.setColour (juce::Colour { palette::bevelAbove });
    fillDisc (top - 1.0);
    g.setColour (juce::Colour { palette::bevelBelow });
    fillDisc (top + 1.0);

    g.setGradientFill (juce::ColourGradient { juce::Colour { palette::faceCentre }, narrow (knob.cx),
                                              narrow (knob.cy - knob.r * 0.6), juce::Colour { palette::faceEdge },
                                              narrow (knob.cx), narrow (knob.cy + knob.r + 0.1), true });
    fillDisc (top);
}

void KestrinLookAndFeel::drawPointer (juce::Graphics& g, const Knob& knob)
{
    juce::Path pointer;
    pointer.addRectangle (narrow (-1.5 * knob.u), narrow (2.0 * knob.u - (knob.r - knob.inset)), narrow (3.0 * knob.u),
                          narrow (knob.r * 0.4));
    pointer.applyTransform (
        juce::AffineTransform::rotation (knob.angle).translated (narrow (knob.cx), narrow (knob.cy)));

    drawShadow (g, pointer, palette::pointerShadow, knob.u * 0.5, knob.u);
    g.setColour (juce::Colour { palette::pointer });
    g.fillPath (pointer);
}

//======================================================================================================================
void KestrinLookAndFeel::drawButtonBackground (juce::Graphics& g, juce::Button& button, const juce::Colour&, bool,
                                               bool down)
{
    const auto shadowX = std::min (2, button.getWidth());
    const auto shadowY = std::min (2, button.getHeight());
    const auto width = button.getWidth() - shadowX;
    const auto height = button.getHeight() - shadowY;

    g.setColour (juce::Colour { palette::buttonShadow });
    g.fillRect (shadowX, shadowY, width, height);

    // The plate leaves its shadow visible on the right and below. Pressed, it moves half way over it.
    const auto shift = down ? 1 : 0;
    g.setColour (juce::Colour { palette::buttonPlate });
    g.fillRect (shadowX - 2 + shift, shadowY - 2 + shift, width, height);
}

juce::Font KestrinLookAndFeel::getTextButtonFont (juce::TextButton&, int)
{
    return interfaceFont::ofHeight (labelFontHeight);
}

void KestrinLookAndFeel::drawButtonText (juce::Graphics& g, juce::TextButton& button, bool, bool down)
{
    const auto font = getTextButtonFont (button, button.getHeight());
    g.setFont (font);

    g.setColour (juce::Colour { button.isEnabled() ? palette::buttonText : palette::disabledButtonText });

    const auto yIndent = std::min (4, juce::roundToInt (button.getHeight() * 0.3));
    const auto cornerSize = std::min (button.getHeight(), button.getWidth()) / 2;
    const auto fontHeight = juce::roundToInt ((double) font.getHeight() * 0.6);
    const auto leftIndent = std::min (fontHeight, 2 + cornerSize / (button.isConnectedOnLeft() ? 4 : 2));
    const auto rightIndent = std::min (fontHeight, 2 + cornerSize / (button.isConnectedOnRight() ? 4 : 2));
    const auto textWidth = button.getWidth() - leftIndent - rightIndent;

    if (textWidth <= 0)
        return;

    const auto shift = down ? 2 : 0;
    g.drawFittedText (button.getButtonText(), leftIndent + shift + 1, yIndent + shift + 1, textWidth,
                      button.getHeight() - (2 * yIndent + 4), juce::Justification::centred, 2, 0.0f);
}

juce::Font KestrinLookAndFeel::getLabelFont (juce::Label& label)
{
    const auto own = label.getFont();

    return juce::Font { juce::FontOptions { own.getTypefaceName(), own.getTypefaceStyle(), labelFontHeight * 0.8f }
                            .withMetricsKind (juce::TypefaceMetricsKind::legacy) };
}
