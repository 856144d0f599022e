// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

#include "host/commands/Command.h"
#include "host/commands/ModuleOptions.h"
#include "host/WindowPicture.h"

/** window: opens the module's own window and takes a picture of it, or keeps it open. */
class WindowCommand : public Command
{
public:
    explicit WindowCommand (CLI::App& program);

    /** Nobody can see or use a window on a private display: that is for pictures. */
    [[nodiscard]] bool wantsPrivateDisplay() const override { return ! output.empty(); }

    void run() override;

private:
    void takePicture() const;
    [[nodiscard]] windowPicture::Columns columns() const;

    ModuleOptions module;
    std::string output, panel;
    double scale = 1.0;
    double beat = 1.0;
    bool keepOpen = false;
    bool reportChanges = false;
};
