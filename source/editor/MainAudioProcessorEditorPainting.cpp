// SPDX-License-Identifier: AGPL-3.0-or-later
#include "editor/InterfaceFont.h"
#include "editor/MainAudioProcessorEditor.h"
#include "editor/Palette.h"
#include "frame/PluginIdentity.h"

using editorTable::labelHeight;

namespace
{
constexpr int headerHeight = labelHeight + 5;
constexpr float titleFontHeight = labelHeight + 4;
constexpr float versionFontHeight = 13.5f;

/** The left end of both lines. Their right end is the window's edge, so the text is a little right of its middle. */
constexpr int textLeft = 7;
constexpr int titleTop = 2;

/** One pixel into the header. */
constexpr int versionTop = 21;

constexpr int lightSize = 9;
constexpr int lightInset = 9;

void drawLine (juce::Graphics& g, const juce::String& text, int windowWidth, int top)
{
    g.drawFittedText (text, textLeft, top, windowWidth - textLeft, labelHeight, juce::Justification::centred, 1, 0.0f);
}
} // namespace

void MainAudioProcessorEditor::paint (juce::Graphics& g)
{
    g.fillAll (juce::Colour { palette::body });
    g.setColour (juce::Colour { palette::header });
    g.fillRect (0, 0, getWidth(), headerHeight);

    g.setColour (juce::Colour { palette::version });
    g.setFont (interfaceFont::ofHeight (versionFontHeight));
    drawLine (g, "version " + juce::String (pluginIdentity::buildNumber) + " - " + pluginIdentity::webAddress,
              getWidth(), versionTop);

    g.setColour (juce::Colour { palette::title });
    g.setFont (interfaceFont::ofHeight (titleFontHeight));
    drawLine (g, "Kestrin's Tamsile Filter", getWidth(), titleTop);
}

void MainAudioProcessorEditor::paintOverChildren (juce::Graphics& g)
{
    // A filter's light says that its mode is not "bypass", an LFO's that the engine is awake.
    if (parameters.hpMode->getChoiceIndex() > 0)
        drawLight (g, hpPanel);

    if (parameters.lpMode->getChoiceIndex() > 0)
        drawLight (g, lpPanel);

    if (! mainProcessor.controlUpdatePending)
        return;

    applyInitialPanels();

    if (showLfos)
        for (const auto& panel : lfoPanels)
            drawLight (g, panel);
}

void MainAudioProcessorEditor::drawLight (juce::Graphics& g, const juce::Component& column) const
{
    const auto corner = mainPanel.getPosition() + column.getPosition() + juce::Point<int> { lightInset, lightInset };
    const juce::Rectangle<int> light { corner.x, corner.y, lightSize, lightSize };

    juce::Path outline;
    outline.addRectangle (light);
    juce::DropShadow { juce::Colour { palette::lightGlow }, 4, {} }.drawForPath (g, outline);

    g.setColour (juce::Colour { palette::light });
    g.fillRect (light);
}
