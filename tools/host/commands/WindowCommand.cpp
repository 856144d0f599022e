// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/WindowCommand.h"

#include <CLI/CLI.hpp>

#include "host/commands/FileArgument.h"
#include "host/HostError.h"
#include "host/OpenWindow.h"
#include "host/StagedFile.h"

WindowCommand::WindowCommand (CLI::App& program)
    : Command (program, "window",
               "Open the module's own window and take a picture of it, without a display "
               "on a private one (Xvfb); or keep it open on the desktop")
{
    module.addPlugin (options);
    module.addSettings (options);
    auto* picture = options.add_option ("--out", output, "PNG file to write");
    auto* columnsOption =
        options.add_option ("--show", panel, "Open these columns: lfos or frequencer; without it the module chooses")
            ->check (CLI::IsMember ({ "lfos", "frequencer" }));
    options.add_option ("--scale", scale, "The content scale that the host announces, 0.5 to 4")
        ->capture_default_str()
        ->check (CLI::Range (0.5, 4.0));
    auto* beatOption =
        options
            .add_option ("--beat", beat, "Song position in quarter notes, at 120 per minute: lights and dots show it")
            ->capture_default_str()
            ->check (CLI::Range (-1.0e6, 1.0e6));
    auto* staysOpen = options
                          .add_flag ("--keep-open", keepOpen,
                                     "Take no picture: show the window on the desktop until it is closed, standard "
                                     "input ends or Ctrl-C. No audio runs")
                          ->excludes (picture)
                          ->excludes (columnsOption)
                          ->excludes (beatOption);
    options
        .add_flag ("--report-changes", reportChanges,
                   "Print a line for every parameter that the window changes, with its id and position; \"size\" "
                   "with width and height in pixels, at first and when they change; and at first \"window\" with "
                   "the X server's number for it")
        ->needs (staysOpen);
}

void WindowCommand::run()
{
    if (keepOpen)
        openWindow::show (*module.load(), { scale, reportChanges });
    else if (! output.empty())
        takePicture();
    else
        throw HostError ("window: give --out for a picture, or --keep-open");
}

void WindowCommand::takePicture() const
{
    const StagedFile probe (fileNamed (output));
    const auto loaded = module.load();
    windowPicture::Job job;
    job.output = probe.target();
    job.columns = columns();
    job.scale = scale;
    job.transport.startBeat = beat;
    windowPicture::take (*loaded, job);
}

windowPicture::Columns WindowCommand::columns() const
{
    if (panel.empty())
        return windowPicture::Columns::asTheModuleChooses;

    return panel == "lfos" ? windowPicture::Columns::lfos : windowPicture::Columns::frequencer;
}
