// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/play/PlaySession.h"

#include <cmath>
#include <limits>

#include "common/PendingX11Events.h"
#include "host/HostError.h"
#include "host/Interrupt.h"
#include "host/ModuleFrame.h"
#include "host/play/LevelDisplay.h"
#include "host/play/LivePlayer.h"
#include "host/play/StatusLine.h"
#include "host/play/TerminalKeys.h"
#include "host/PluginState.h"
#include "host/StagedFile.h"

namespace playSession
{
namespace
{
/** The time between two looks at keys and meters. */
constexpr int sliceMs = 20;

/** A device that has not asked for sound in so many slices has gone. They are counted, not timed: while this program is stopped
    no time passes for it. */
constexpr int mostSilentSlices = 250;

/** The module's window on the desktop. Errors of the X protocol do not end the program while it exists. */
class Window
{
public:
    explicit Window (juce::AudioPluginInstance& instance)
    {
        if (! display.connected())
            throw HostError ("play: there is no display for the window (DISPLAY is \""
                             + juce::SystemStats::getEnvironmentVariable ("DISPLAY", {})
                             + "\"); --no-window plays without it");

        frame.emplace (instance, 1.0);
    }

    [[nodiscard]] bool isClosed() const { return frame->isClosed(); }

private:
    const XDisplay display;
    std::optional<ModuleFrame> frame;
};

class Session
{
public:
    Session (HostedModule& hostedModule, const Job& jobToDo);

    void play();

    /** Completes the files.
        @throws HostError if the device has gone */
    void finish();

private:
    [[nodiscard]] LivePlayer::Settings playerSettings();
    void introduce();
    [[nodiscard]] bool goesOn();
    void follow (TerminalKeys::Key key);
    void toggleBypass();
    void changePreset (int step);
    [[nodiscard]] juce::String status();

    HostedModule& module;
    const Job& job;
    int preset;
    bool ended = false;
    bool deviceHasGone = false;
    int blocksSeen = 0;
    int silentSlices = 0;

    std::optional<StagedFile> savedState;
    std::optional<Window> window;
    SoundDevices devices;

    // The device goes before what it calls.
    std::unique_ptr<LoopingSong> song;
    std::unique_ptr<Recording> recording;
    std::unique_ptr<LivePlayer> player;
    std::unique_ptr<juce::AudioIODevice> device;

    LevelDisplay inputLevel, outputLevel;
    StatusLine line;
    TerminalKeys keys;
};

Session::Session (HostedModule& hostedModule, const Job& jobToDo)
    : module (hostedModule), job (jobToDo), preset (job.preset)
{
    if (job.savedState.has_value())
        savedState.emplace (*job.savedState);

    device = devices.open (job.device);

    if (job.showsWindow)
        window.emplace (module.instance());

    const auto rate = device->getCurrentSampleRate();
    auto sound = job.sound.atRate (rate);

    if (job.recording.has_value())
        recording = std::make_unique<Recording> (*job.recording, rate, sound.samples.getNumChannels());

    song = std::make_unique<LoopingSong> (std::move (sound.samples), rate, job.song);
    player = std::make_unique<LivePlayer> (module, *song, playerSettings());
}

LivePlayer::Settings Session::playerSettings()
{
    LivePlayer::Settings settings;
    settings.sampleRate = device->getCurrentSampleRate();
    settings.blockSize = device->getCurrentBufferSizeSamples();
    settings.recording = recording.get();

    if (job.seconds.has_value())
        settings.numFrames = std::llround (*job.seconds * settings.sampleRate);

    return settings;
}

//======================================================================================================================
void Session::play()
{
    introduce();
    device->start (player.get());

    while (goesOn())
    {
        juce::MessageManager::getInstance()->runDispatchLoopUntil (sliceMs);
        pendingX11Events::handle();

        if (recording != nullptr)
            recording->writeOut();

        while (const auto key = keys.next())
            follow (*key);

        line.show (status().toStdString());
    }

    device->stop();
    device->close();
}

void Session::introduce()
{
    const auto rate = juce::roundToInt (device->getCurrentSampleRate());
    const auto soundRate = juce::roundToInt (job.sound.sampleRate);
    const auto resampled = rate == soundRate ? juce::String() : " from " + juce::String (soundRate) + " Hz";

    line.say ((device->getTypeName() + ": " + device->getName() + ", " + juce::String (rate) + " Hz" + resampled
               + ", blocks of " + juce::String (device->getCurrentBufferSizeSamples()) + " frames")
                  .toStdString());
    line.say ("space halts, b bypasses, arrows move by a bar, l loops the bar, p and P change the preset, q ends");
}

bool Session::goesOn()
{
    const auto numBlocks = player->numBlocks();
    silentSlices = numBlocks == blocksSeen ? silentSlices + 1 : 0;
    blocksSeen = numBlocks;

    const auto isDone =
        ended || player->isDone() || interrupt::isRequested() || (window.has_value() && window->isClosed());
    deviceHasGone = ! isDone && (! device->isOpen() || silentSlices > mostSilentSlices);
    return ! isDone && ! deviceHasGone;
}

void Session::follow (TerminalKeys::Key key)
{
    using Key = TerminalKeys::Key;

    switch (key)
    {
        case Key::halt:
            return song->toggleHalt();
        case Key::bypass:
            return toggleBypass();
        case Key::back:
            return song->moveByBars (-1);
        case Key::onwards:
            return song->moveByBars (1);
        case Key::loopBar:
            return song->toggleBarLoop();
        case Key::nextPreset:
            return changePreset (1);
        case Key::previousPreset:
            return changePreset (-1);
        case Key::quit:
            ended = true;
    }
}

void Session::toggleBypass()
{
    if (auto* const bypass = module.instance().getBypassParameter())
        bypass->setValueNotifyingHost (bypass->getValue() < 0.5f ? 1.0f : 0.0f);
}

void Session::changePreset (int step)
{
    const auto numPresets = job.presets.size();

    if (numPresets == 0)
        return line.say ("there are no factory presets");

    preset = preset < 0 ? (step > 0 ? 0 : numPresets - 1) : (preset + step + numPresets) % numPresets;
    const auto file = job.presets.file (preset);

    try
    {
        pluginState::loadFile (module.instance(), file);
        line.say (file.getFileNameWithoutExtension().toStdString());
    }
    catch (const HostError& error)
    {
        line.say (error.what());
    }
}

juce::String Session::status()
{
    const auto place = song->place();
    const auto where = (juce::String (place.bar) + "." + juce::String (place.beat)).paddedLeft (' ', 6);
    const auto load = juce::String (juce::roundToInt (player->loadInPercent())).paddedLeft (' ', 3);
    const auto dropouts = juce::jmax (0, device->getXRunCount()) + player->numLateBlocks();
    const auto* const bypass = module.instance().getBypassParameter();

    return (song->isHalted() ? "halted  " : "playing ") + where + "  in " + inputLevel.show (player->inputLevel.take())
           + "  out " + outputLevel.show (player->outputLevel.take()) + "  load" + load + " %  dropouts "
           + juce::String (dropouts) + (bypass != nullptr && bypass->getValue() >= 0.5f ? "  bypass" : "")
           + (song->isBarLooped() ? "  bar loop" : "");
}

//======================================================================================================================
void Session::finish()
{
    player.reset();

    if (recording != nullptr)
        recording->finish();

    if (savedState.has_value())
    {
        module.deliverParameters();
        const auto content = pluginState::contentForFile (module.instance(), savedState->target());
        savedState->write (content.getData(), content.getSize());
        savedState->commit();
    }

    if (deviceHasGone)
        throw HostError (device->getTypeName() + ": " + device->getName() + " has gone: it takes no more sound"
                         + (recording != nullptr ? "; the recording until then is kept" : ""));
}
} // namespace

void run (HostedModule& module, const Job& job)
{
    Session session (module, job);
    session.play();
    session.finish();
}
} // namespace playSession
