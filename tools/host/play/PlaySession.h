// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <optional>

#include "host/FactoryPresets.h"
#include "host/HostedModule.h"
#include "host/play/PlayedSound.h"
#include "host/play/SoundDevices.h"
#include "host/Transport.h"

/** Plays a sound through a module to a sound device while its window is open and keys are followed. */
namespace playSession
{
struct Job
{
    PlayedSound sound;
    Transport::Settings song;
    SoundDevices::Wanted device;

    /** The end, in seconds of sound; empty: until it is ended by hand. */
    std::optional<double> seconds;

    bool showsWindow = true;

    FactoryPresets presets;

    /** Which of them the module has been given; below 0: none. */
    int preset = -1;

    /** Where what is heard goes. */
    std::optional<juce::File> recording;

    /** Where the module's settings go at the end. */
    std::optional<juce::File> savedState;
};

/** Returns when the time is up, the window is closed, or a key or a signal asks for it. Recording and settings are kept
    whatever ends it. Message thread only.
    @throws HostError, also if the device goes away */
void run (HostedModule& module, const Job& job);
} // namespace playSession
