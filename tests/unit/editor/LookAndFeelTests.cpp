// SPDX-License-Identifier: AGPL-3.0-or-later
#include <cmath>

#include "unit/editor/EditorFixture.h"
#include "unit/editor/HeadlessWindow.h"

namespace
{
constexpr double pi = 3.14159265358979323846;

/** Of JUCE's rotary sliders. */
constexpr double firstAngle = 1.2 * pi;
constexpr double lastAngle = 2.8 * pi;

struct Colour
{
    int red;
    int green;
    int blue;
};

/** A colour under the ring's shadow, which has an alpha of 0x50. */
Colour shadowed (Colour colour)
{
    const auto dim = [] (int channel) { return juce::roundToInt (channel * (1.0 - 0x50 / 255.0)); };
    return { dim (colour.red), dim (colour.green), dim (colour.blue) };
}

constexpr Colour green { 0x60, 0xb0, 0x30 };
constexpr Colour yellow { 0xff, 0xd8, 0x20 };
constexpr Colour red { 0xff, 0x40, 0x00 };
constexpr Colour cyan { 0x30, 0xc0, 0xc0 };
constexpr Colour panel { 0x30, 0x30, 0x30 };

/** @param tolerance  blending and the renderer's tables round each by one */
void expectColour (juce::Colour seen, Colour expected, const juce::String& where, int tolerance = 3)
{
    EXPECT_NEAR (seen.getRed(), expected.red, tolerance) << where;
    EXPECT_NEAR (seen.getGreen(), expected.green, tolerance) << where;
    EXPECT_NEAR (seen.getBlue(), expected.blue, tolerance) << where;
}
} // namespace

/** Pixels of knobs in the window, at four pixels to the unit. */
class KnobPixels : public EditorFixture
{
protected:
    static constexpr int scale = 4;

    void look()
    {
        editor().timerCallback();
        image = picture (editor(), scale);
    }

    /** The pixel at an offset from the centre of a knob, by the knob's own arithmetic. The text box takes 20 pixels off
        the area. The radius is 0.4 of the smaller side of the rest, and the knob sits 6 pixels low. */
    [[nodiscard]] juce::Colour pixel (const ParameterSlider& knob, double angle, double radius) const
    {
        const auto place =
            centreOf (knob) + juce::Point<double> { std::sin (angle), -std::cos (angle) } * (radius * radiusOf (knob));
        return image.getPixelAt ((int) (place.x * scale), (int) (place.y * scale));
    }

    [[nodiscard]] juce::Colour pixelAt (const ParameterSlider& knob, double x, double y) const
    {
        const auto place = centreOf (knob) + juce::Point<double> { x, y };
        return image.getPixelAt ((int) (place.x * scale), (int) (place.y * scale));
    }

    [[nodiscard]] static double radiusOf (const ParameterSlider& knob)
    {
        return std::min (knob.getWidth() * 0.4, (knob.getHeight() - 20) * 0.4);
    }

    /** The middle of the arc's width, between two ticks of a continuous knob. */
    [[nodiscard]] juce::Colour arc (const ParameterSlider& knob, double position) const
    {
        return pixel (knob, firstAngle + (lastAngle - firstAngle) * position, 0.91);
    }

    juce::Image image;

private:
    [[nodiscard]] juce::Point<double> centreOf (const ParameterSlider& knob) const
    {
        const auto corner = knob.getScreenPosition() - knob.getTopLevelComponent()->getScreenPosition();
        return { corner.x + knob.getWidth() * 0.5, corner.y + (knob.getHeight() - 20) * 0.5 + 6.0 };
    }
};

TEST_F (KnobPixels, HaveNoArcAtZero)
{
    set (parameters.hpReso, 0.0f);
    look();
    const auto& knob = *knobOf (editor(), parameters.hpReso);

    for (const auto position : { 0.05, 0.25, 0.55, 0.75, 0.95 })
        expectColour (arc (knob, position), shadowed (panel), juce::String (position));
}

TEST_F (KnobPixels, EndTheArcAtTheValueWithinTheSecondColour)
{
    set (parameters.hpReso, 0.65f);
    look();
    const auto& knob = *knobOf (editor(), parameters.hpReso);

    for (const auto position : { 0.05, 0.25, 0.45, 0.485 })
        expectColour (arc (knob, position), shadowed (green), juce::String (position));

    for (const auto position : { 0.515, 0.55, 0.64 })
        expectColour (arc (knob, position), shadowed (yellow), juce::String (position));

    for (const auto position : { 0.66, 0.75, 0.85, 0.95 })
        expectColour (arc (knob, position), shadowed (panel), juce::String (position));
}

TEST_F (KnobPixels, ShowAllArcColoursAtOne)
{
    set (parameters.lpReso, 1.0f);
    look();
    const auto& knob = *knobOf (editor(), parameters.lpReso);

    for (const auto position : { 0.05, 0.25, 0.485 })
        expectColour (arc (knob, position), shadowed (green), juce::String (position));

    for (const auto position : { 0.515, 0.65, 0.785 })
        expectColour (arc (knob, position), shadowed (yellow), juce::String (position));

    for (const auto position : { 0.815, 0.95, 0.99 })
        expectColour (arc (knob, position), shadowed (red), juce::String (position));
}

TEST_F (KnobPixels, GiveEveryKnobTheArcOfItsKind)
{
    const std::array cyanKnobs { parameters.hpFreq,      parameters.lpFreq,      parameters.hpMode,
                                 parameters.lpMode,      parameters.lfoSpeed[0], parameters.lfoSpeed[1],
                                 parameters.lfoMode[0],  parameters.lfoMode[1],  parameters.lfoShape[0],
                                 parameters.lfoShape[1], parameters.lfoCurve[0], parameters.lfoCurve[1] };

    for (const auto* knob : allOf<ParameterSlider> (editor()))
        set (knob->parameter, (float) knob->getMaximum());

    const auto expectArcs = [this, &cyanKnobs]
    {
        auto numSeen = 0;

        for (const auto* knob : allOf<ParameterSlider> (editor()))
        {
            if (! knob->isVisible() || ! knob->getParentComponent()->isVisible())
                continue;

            ++numSeen;
            const auto id = knob->parameter->getParameterID();
            const auto resonance = knob->parameter == parameters.hpReso || knob->parameter == parameters.lpReso;
            const auto hasCyan = std::find (cyanKnobs.begin(), cyanKnobs.end(), knob->parameter) != cyanKnobs.end();
            const auto low = hasCyan ? cyan : resonance ? green : panel;
            const auto high = hasCyan ? cyan : resonance ? red : panel;

            // Between the ticks of every kind of knob. On a small one the edge of the body's shadow falls on the arc.
            constexpr auto tolerance = 10;
            expectColour (arc (*knob, 0.155), shadowed (low), id, tolerance);
            expectColour (arc (*knob, 0.845), shadowed (high), id, tolerance);
        }

        return numSeen;
    };

    editor().showLfos = true;
    editor().updateWindowSize();
    look();
    EXPECT_EQ (expectArcs(), 6 + 2 * 10);

    // The division knobs, which full sync knobs have swapped in at the opening of a window.
    closeEditor();
    editor();
    look();
    EXPECT_EQ (expectArcs(), 6 + 2 * 10);
    EXPECT_TRUE (editor().lfoControls[0].divisionKnob.isVisible());

    editor().showLfos = false;
    editor().showFrequencer = true;
    editor().updateWindowSize();
    look();
    EXPECT_EQ (expectArcs(), 6 + 22);
}

TEST_F (KnobPixels, HaveAWhiteBevelAboveAndABlackOneBelow)
{
    set (parameters.hpReso, 0.5f);
    look();
    const auto& knob = *knobOf (editor(), parameters.hpReso);
    const auto body = 0.8 * radiusOf (knob);

    // The discs show one unit above and below the face.
    expectColour (pixelAt (knob, 0.0, -body - 0.5), { 255, 255, 255 }, "above");
    expectColour (pixelAt (knob, 0.0, body + 0.5), { 0, 0, 0 }, "below");
}

TEST_F (KnobPixels, ShadeTheFaceFromALightAbove)
{
    set (parameters.hpReso, 0.0f);
    look();
    const auto& knob = *knobOf (editor(), parameters.hpReso);

    // From 0xa0 at six tenths of the radius above the centre to 0x70 at one radius below it.
    const auto grey = [] (double distance)
    {
        const auto level = juce::roundToInt (0xa0 + (0x70 - 0xa0) * distance / 1.6);
        return Colour { level, level, level };
    };

    expectColour (pixel (knob, 0.0, 0.6), grey (0.0), "light");
    expectColour (pixel (knob, 0.0, 0.0), grey (0.6), "centre");
    expectColour (pixel (knob, pi, 0.7), grey (1.3), "low");
}

TEST_F (KnobPixels, TurnThePointerFromEndToEnd)
{
    // The pointer reaches from 0.32 to 0.72 of the radius.
    const auto expectPointer = [this] (float value, double angle)
    {
        set (parameters.hpReso, value);
        look();
        const auto& knob = *knobOf (editor(), parameters.hpReso);

        for (const auto radius : { 0.36, 0.52, 0.68 })
            expectColour (pixel (knob, angle, radius), { 0xf0, 0xf0, 0xf0 }, juce::String (radius));

        EXPECT_LT (pixel (knob, angle, 0.24).getRed(), 0xb0);
        EXPECT_LT (pixel (knob, angle, 0.76).getRed(), 0xb0);
        EXPECT_LT (pixel (knob, angle + pi, 0.52).getRed(), 0xb0);
    };

    expectPointer (0.0f, firstAngle);
    expectPointer (0.5f, 2.0 * pi);
    expectPointer (1.0f, lastAngle);
}

TEST_F (KnobPixels, MeasureTheRadiusWithoutTheTextBox)
{
    editor().showLfos = true;
    editor().updateWindowSize();
    set (parameters.lfoPhase[0], 1.0f);
    look();
    const auto& knob = *knobOf (editor(), parameters.lfoPhase[0]);
    ASSERT_EQ (knob.getHeight(), 58);
    EXPECT_DOUBLE_EQ (radiusOf (knob), 15.2);
    expectColour (pixel (knob, lastAngle, 0.52), { 0xf0, 0xf0, 0xf0 }, "pointer");

    // The ring is a third of a unit wide.
    EXPECT_LT (pixel (knob, 0.0, 1.02).getRed(), 0x1c);
    EXPECT_GT (pixel (knob, 0.0, 1.2).getRed(), 0x28);
}

//======================================================================================================================
/** A knob by itself, large and on nothing: only its ticks are opaque on the scale, and only their shadows are bright. */
class KnobTicks : public EditorFixture
{
protected:
    static constexpr int size = 400;
    static constexpr double radius = size * 0.4;
    static constexpr double centreX = size * 0.5;
    static constexpr double centreY = size * 0.5 + 6.0;

    juce::Image draw (ParameterSet::Parameter* parameter)
    {
        KestrinLookAndFeel lookAndFeel;
        ParameterSlider knob;
        knob.bindToParameter (parameter);
        knob.setLookAndFeel (&lookAndFeel);
        knob.setSize (size, size + 20);
        auto image = picture (knob);
        knob.setLookAndFeel (nullptr);
        return image;
    }

    /** The angles, as positions on the knob's travel, at which a walk along the scale meets a tick. The walk goes once all
        the way round, from the lowest point to the lowest point: 1.25 times the travel. */
    std::vector<double> ticksOf (ParameterSet::Parameter* parameter)
    {
        constexpr auto numSamples = 20000;
        const auto image = draw (parameter);
        std::vector<double> ticks;
        auto wasOnTick = false;

        for (auto sample = 0; sample < numSamples; ++sample)
        {
            const auto position = -0.125 + 1.25 * sample / numSamples;
            const auto angle = firstAngle + (lastAngle - firstAngle) * position;
            const auto x = centreX + std::sin (angle) * radius * 0.91;
            const auto y = centreY - std::cos (angle) * radius * 0.91;
            const auto onTick = image.getPixelAt ((int) x, (int) y).getAlpha() > 200;

            if (onTick && ! wasOnTick)
                ticks.push_back (position);

            wasOnTick = onTick;
        }

        return ticks;
    }

    void expectTicks (ParameterSet::Parameter* parameter, std::size_t number)
    {
        const auto ticks = ticksOf (parameter);
        ASSERT_EQ (ticks.size(), number) << parameter->getParameterID();

        // Half a tick's width and the tick's lean to the left.
        for (std::size_t tick = 0; tick < number; ++tick)
            EXPECT_NEAR (ticks[tick], (double) tick / (double) (number - 1), 0.01);
    }
};

TEST_F (KnobTicks, StandAtEachTextOfAChoice)
{
    expectTicks (parameters.hpMode, 5);
    expectTicks (parameters.lfoMode[0], 17);
    expectTicks (parameters.lfoShape[0], 6);
    expectTicks (parameters.lfoSync[0], 4);
}

TEST_F (KnobTicks, AreElevenOnAContinuousKnob) { expectTicks (parameters.hpFreq, 11); }

TEST_F (KnobTicks, FallBackToElevenForStepsTooCloseOrTooWide)
{
    juce::AudioParameterFloatKestrin parameter { "p", "P", 0.0f, 4.0f, 0.5f, 1, {} };
    parameter.stepCount = 2;
    expectTicks (&parameter, 11);
    parameter.stepCount = 60;
    expectTicks (&parameter, 11);
    parameter.stepCount = 3;
    expectTicks (&parameter, 3);
}

TEST_F (KnobTicks, LieLeftOfTheirRadius)
{
    const auto image = draw (parameters.hpFreq);
    const auto row = (int) (centreY - radius * 0.91);

    // The middle tick points upwards; its width is 0.04 * 0.707 of the radius.
    EXPECT_GT (image.getPixelAt ((int) centreX - 1, row).getAlpha(), 200);
    EXPECT_GT (image.getPixelAt ((int) centreX - 4, row).getAlpha(), 200);
    EXPECT_LT (image.getPixelAt ((int) centreX + 1, row).getAlpha(), 200);
    EXPECT_LT (image.getPixelAt ((int) centreX - 6, row).getAlpha(), 200);
}

TEST_F (KnobTicks, HaveAShadowOfAtLeastOnePixel)
{
    // The design asks for 0.004 of the radius: 0.64 pixels.
    const auto image = draw (parameters.hpFreq);
    const auto row = (int) (centreY - radius * 0.91);
    const auto light = [&] (int x) { return (int) image.getPixelAt (x, row).getRed(); };

    // The middle tick's right edge lies on the centre; its left edge is five pixels away.
    EXPECT_GT (light ((int) centreX), 0);
    EXPECT_GT (light ((int) centreX - 6), 0);
    EXPECT_EQ (light ((int) centreX + 2), 0);
    EXPECT_EQ (light ((int) centreX - 8), 0);
}

TEST_F (KnobTicks, AllowAKnobOfTenPixels)
{
    KestrinLookAndFeel lookAndFeel;
    ParameterSlider knob;
    knob.bindToParameter (parameters.hpFreq);
    juce::Image image { juce::Image::ARGB, 10, 16, true };

    {
        juce::Graphics g { image };
        lookAndFeel.drawRotarySlider (g, 0, 0, 10, 10, 0.5f, (float) firstAngle, (float) lastAngle, knob);
    }

    EXPECT_EQ (image.getPixelAt (5, 11).getAlpha(), 255);
}

//======================================================================================================================
class KestrinLookAndFeelColours : public EditorFixture
{
};

TEST_F (KestrinLookAndFeelColours, KeepTheFirstColoursGivenToAKnob)
{
    KestrinLookAndFeel lookAndFeel;
    ParameterSlider knob;
    knob.bindToParameter (parameters.hpFreq);
    lookAndFeel.setRangeColours (knob, { { 1.0f, juce::Colour { 0xff00ff00 } } });
    lookAndFeel.setRangeColours (knob, { { 1.0f, juce::Colour { 0xffff0000 } } });

    juce::Image image { juce::Image::ARGB, 400, 420, true };

    {
        juce::Graphics g { image };
        lookAndFeel.drawRotarySlider (g, 0, 0, 400, 400, 1.0f, (float) firstAngle, (float) lastAngle, knob);
    }

    const auto angle = firstAngle + (lastAngle - firstAngle) * 0.55;
    const auto seen = image.getPixelAt ((int) (200.0 + std::sin (angle) * 160.0 * 0.91),
                                        (int) (206.0 - std::cos (angle) * 160.0 * 0.91));
    EXPECT_GT (seen.getGreen(), 100);
    EXPECT_EQ (seen.getRed(), 0);
}

TEST_F (KestrinLookAndFeelColours, SetTextHeightsAndTheTextBoxColour)
{
    KestrinLookAndFeel lookAndFeel;
    juce::Label label;
    juce::TextButton button;
    EXPECT_EQ (lookAndFeel.getLabelFont (label).getHeight(), 18.0f * 0.8f);
    EXPECT_EQ (lookAndFeel.getTextButtonFont (button, 28).getHeight(), 18.0f);
    EXPECT_EQ (lookAndFeel.getTextButtonFont (button, 100).getHeight(), 18.0f);
    EXPECT_EQ (lookAndFeel.getLabelFont (label).getMetricsKind(), juce::TypefaceMetricsKind::legacy);
    EXPECT_EQ (lookAndFeel.getTextButtonFont (button, 28).getMetricsKind(), juce::TypefaceMetricsKind::legacy);
    EXPECT_EQ (lookAndFeel.findColour (juce::Slider::textBoxTextColourId).getARGB(), 0xffa0a0a0u);
}

//======================================================================================================================
class RandomizeButtonPixels : public EditorFixture
{
protected:
    void SetUp() override
    {
        set (parameters.seqHpf[0], 0.9f);
        editor();
    }

    /** In the button's own coordinates. */
    [[nodiscard]] juce::uint32 pixel (const juce::Image& image, int x, int y) const
    {
        return image.getPixelAt (10 + 381 + 10 + x, 37 + 100 + y).getARGB();
    }
};

TEST_F (RandomizeButtonPixels, ShowAPlateOverItsShadow)
{
    const auto image = picture (editor());
    EXPECT_EQ (pixel (image, 0, 0), 0xff505050u);
    EXPECT_EQ (pixel (image, 94, 25), 0xff505050u);
    EXPECT_EQ (pixel (image, 95, 25), 0xff000000u);
    EXPECT_EQ (pixel (image, 94, 26), 0xff000000u);
    EXPECT_EQ (pixel (image, 96, 27), 0xff000000u);
    EXPECT_EQ (pixel (image, 2, 27), 0xff000000u);
    EXPECT_EQ (pixel (image, 1, 27), 0xff303030u);
    EXPECT_EQ (pixel (image, 96, 1), 0xff303030u);
}

TEST_F (RandomizeButtonPixels, SinkThePlateByOneAndTheTextByTwoWhenPressed)
{
    HeadlessWindow window { editor() };
    const auto released = picture (editor());
    window.press (editor().randomizeButton);
    const auto pressed = picture (editor());
    window.release (editor().randomizeButton);
    const auto releasedAgain = picture (editor());

    EXPECT_EQ (pixel (pressed, 0, 0), 0xff303030u);
    EXPECT_EQ (pixel (pressed, 1, 1), 0xff505050u);
    EXPECT_EQ (pixel (pressed, 95, 26), 0xff505050u);
    EXPECT_EQ (pixel (pressed, 96, 26), 0xff000000u);
    EXPECT_EQ (pixel (pressed, 95, 27), 0xff000000u);

    auto numTextPixels = 0;

    for (auto y = 4; y < 22; ++y)
        for (auto x = 8; x < 90; ++x)
        {
            EXPECT_EQ (pixel (pressed, x + 2, y + 2), pixel (released, x, y));
            EXPECT_EQ (pixel (releasedAgain, x, y), pixel (released, x, y));
            numTextPixels += pixel (released, x, y) != 0xff505050u ? 1 : 0;
        }

    EXPECT_GT (numTextPixels, 100);
}

TEST_F (RandomizeButtonPixels, AreBrighterOnADisabledButton)
{
    const auto brightest = [this]
    {
        const auto image = picture (editor());
        auto found = 0;

        for (auto y = 4; y < 22; ++y)
            for (auto x = 8; x < 90; ++x)
                found = std::max (found, (int) juce::Colour { pixel (image, x, y) }.getRed());

        return found;
    };

    EXPECT_NEAR (brightest(), 0xa0, 4);
    editor().randomizeButton.setEnabled (false);
    EXPECT_GT (brightest(), 0xe0);
}
