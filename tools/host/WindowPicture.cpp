// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/WindowPicture.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include <juce_gui_basics/juce_gui_basics.h>

#include "common/PendingX11Events.h"
#include "host/HostError.h"
#include "host/Interrupt.h"
#include "host/StagedFile.h"
#include "host/XDisplay.h"

namespace windowPicture
{
namespace
{
/** A window polls its processor 30 times per second: this is half a dozen polls. A window that shows the same before and
    after has settled. */
constexpr int lookAgainMs = 200;

/** After so many looks the picture is taken even if the window still changes. */
constexpr int mostLooks = 50;

/** The middle of the toggles that open the columns, and the width of the window without columns; all at scale 1. */
constexpr juce::Point<int> lfosToggle { 17, 529 };
constexpr juce::Point<int> frequencerToggle { 144, 529 };
constexpr int narrowWidth = 266;

void letMessagesRun (int milliseconds)
{
    interrupt::throwIfRequested();
    juce::MessageManager::getInstance()->runDispatchLoopUntil (milliseconds);
    pendingX11Events::handle();
}

/** Plays a second of silence, in which the song reaches the wanted position: the window shows the state of the engine, which
    changes only while audio is processed. */
void playSilence (juce::AudioPluginInstance& instance, const Transport::Settings& settings)
{
    constexpr double sampleRate = 48000.0;
    constexpr int blockSize = 480, numBlocks = 100;

    auto earlier = settings;
    earlier.startBeat -= settings.tempo / 60.0 * (blockSize * (numBlocks - 1)) / sampleRate;
    Transport transport (earlier, sampleRate);
    juce::AudioBuffer<float> silence (instance.getTotalNumInputChannels(), blockSize);
    juce::MidiBuffer noMessages;

    instance.setPlayHead (&transport);
    instance.prepareToPlay (sampleRate, blockSize);

    for (int block = 0; block < numBlocks; ++block)
    {
        silence.clear();
        transport.moveTo ((juce::int64) block * blockSize);
        instance.processBlock (silence, noMessages);
        noMessages.clear();
    }

    instance.releaseResources();
    instance.setPlayHead (nullptr);
}

class EditorWindow
{
public:
    EditorWindow (juce::AudioPluginInstance& instance, double scale) : editor (instance.createEditorIfNeeded())
    {
        if (editor == nullptr)
            throw HostError ("the module has no window");

        editor->setTopLeftPosition (0, 0);
        editor->addToDesktop (0);
        editor->setVisible (true);
        letMessagesRun (lookAgainMs);
        editor->setScaleFactor ((float) scale);
    }

    [[nodiscard]] XDisplay::WindowId id() const
    {
        return reinterpret_cast<XDisplay::WindowId> (editor->getPeer()->getNativeHandle());
    }

    [[nodiscard]] int width() const { return editor->getWidth(); }

private:
    std::unique_ptr<juce::AudioProcessorEditor> editor;
};

/** A window that has not been drawn has a single colour. */
bool isDrawn (const XDisplay::Pixels& pixels)
{
    return std::adjacent_find (pixels.colours.begin(), pixels.colours.end(), std::not_equal_to<>())
           != pixels.colours.end();
}

[[nodiscard]] XDisplay::Pixels settledPicture (const EditorWindow& window, const XDisplay& display)
{
    XDisplay::Pixels latest;

    for (int look = 0; look < mostLooks; ++look)
    {
        letMessagesRun (lookAgainMs);
        const auto before = std::exchange (latest, display.picture (window.id()));

        if (isDrawn (latest) && latest.colours == before.colours)
            break;
    }

    return latest;
}

/** A click on the toggle closes columns that are already open. Then a second click opens them again. */
void open (Columns columns, const EditorWindow& window, const XDisplay& display, double scale)
{
    const auto toggle = columns == Columns::lfos ? lfosToggle : frequencerToggle;
    const auto place = (toggle.toDouble() * scale).roundToInt();

    for (int attempt = 0; attempt < 2; ++attempt)
    {
        static_cast<void> (settledPicture (window, display));
        display.click (window.id(), place.x, place.y);
        static_cast<void> (settledPicture (window, display));

        if (window.width() > std::lround (narrowWidth * scale))
            return;
    }

    throw HostError ("the window did not open the columns");
}

void writePng (const XDisplay::Pixels& pixels, const juce::File& file)
{
    if (pixels.colours.empty())
        throw HostError ("the display gives no picture of the window");

    juce::Image image (juce::Image::RGB, pixels.width, pixels.height, false, juce::SoftwareImageType());
    auto colour = pixels.colours.begin();

    for (int y = 0; y < pixels.height; ++y)
        for (int x = 0; x < pixels.width; ++x)
            image.setPixelAt (x, y, juce::Colour (0xff000000 | *colour++));

    StagedFile staged (file);

    if (auto stream = staged.open(); ! juce::PNGImageFormat().writeImageToStream (image, *stream))
        throw HostError ("cannot write " + file.getFullPathName());

    staged.commit();
}
} // namespace

void take (HostedModule& module, const Job& job)
{
    const XDisplay display;

    if (! display.connected())
        throw HostError ("the display " + juce::SystemStats::getEnvironmentVariable ("DISPLAY", {})
                         + " cannot be reached");

    playSilence (module.instance(), job.transport);
    const EditorWindow window (module.instance(), job.scale);

    if (job.columns != Columns::asTheModuleChooses)
        open (job.columns, window, display, job.scale);

    writePng (settledPicture (window, display), job.output);
}
} // namespace windowPicture
