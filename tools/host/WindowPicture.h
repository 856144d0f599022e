// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "host/HostedModule.h"
#include "host/Transport.h"

/** Pictures of a module's own window, as a user of a DAW sees it. */
namespace windowPicture
{
/** Which columns are open beside the filters. */
enum class Columns
{
    asTheModuleChooses,
    lfos,
    frequencer
};

struct Job
{
    juce::File output {};
    Columns columns = Columns::asTheModuleChooses;

    /** The content scale that the host announces. */
    double scale = 1.0;

    /** The song position: lights and dots show it. */
    Transport::Settings transport {};
};

/** Opens the window, waits until it is drawn, writes a PNG. Needs a display. Message thread only.
    @throws HostError, Interrupted */
void take (HostedModule& module, const Job& job);
} // namespace windowPicture
