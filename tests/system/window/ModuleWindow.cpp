// SPDX-License-Identifier: AGPL-3.0-or-later
#include "system/window/ModuleWindow.h"

#include <array>
#include <cmath>
#include <sstream>

#include <poll.h>
#include <unistd.h>

#include "host/HostError.h"
#include "support/Desktop.h"

namespace
{
/** The longest time between two looks at a condition. */
constexpr int lookAgainMs = 20;
} // namespace

ModuleWindow::ModuleWindow (const std::vector<std::string>& options) : host (hostWith (options))
{
    const auto isReady = [this]
    {
        const auto image = window != 0 ? picture() : juce::Image();
        return isDrawn (image) && picture::hasArc (image);
    };

    if (! waitUntil (isReady))
    {
        close();
        throw HostError (("kestrin-host opens no window: " + everything).c_str());
    }
}

ModuleWindow::~ModuleWindow() { close(); }

ChildProcess::Options ModuleWindow::hostWith (const std::vector<std::string>& options)
{
    std::vector<std::string> words { KESTRIN_HOST, "window", "--keep-open", "--report-changes" };
    words.insert (words.end(), options.begin(), options.end());
    return { .words = words, .variables = { { "KESTRIN_PLUGIN", KESTRIN_MODULE } }, .hasPipes = true };
}

int ModuleWindow::close()
{
    host.closeInput();
    return host.wait().code();
}

//======================================================================================================================
void ModuleWindow::moveTo (Place place)
{
    Desktop::perform ("mousemove --window " + std::to_string (window) + " " + std::to_string (place.x) + " "
                      + std::to_string (place.y));

    if (! waitUntil ([&] { return pointer.isAt (window, place.x, place.y); }))
        throw HostError (("the pointer does not get into the window: " + everything).c_str());
}

bool ModuleWindow::dragUp (Place from, int pixels, const std::string& id,
                           const std::function<double (int)>& positionAfter)
{
    auto follows = true;
    at (from, "mousedown 1");

    for (const auto way : { pixels / 5, pixels })
    {
        moveTo ({ from.x, from.y - way });
        follows = follows && waitForPosition (id, positionAfter (way));
    }

    Desktop::perform ("mouseup 1");
    return follows;
}

void ModuleWindow::at (Place place, const std::string& words)
{
    moveTo (place);
    Desktop::perform (words);
}

void ModuleWindow::clickToType (Place place)
{
    click (place);

    if (! waitUntil ([this] { return pointer.hasKeyboard(); }))
        throw HostError ("the window does not take the keyboard");
}

//======================================================================================================================
void ModuleWindow::listen()
{
    std::array<char, 4096> bytes {};
    pollfd output { host.outputPipe(), POLLIN, 0 };

    if (poll (&output, 1, lookAgainMs) != 1)
        return;

    const auto numBytes = read (host.outputPipe(), bytes.data(), bytes.size());

    if (numBytes <= 0)
        throw HostError (("kestrin-host has ended: " + everything).c_str());

    everything.append (bytes.data(), (std::size_t) numBytes);
    unfinishedLine.append (bytes.data(), (std::size_t) numBytes);

    for (auto end = unfinishedLine.find ('\n'); end != std::string::npos; end = unfinishedLine.find ('\n'))
    {
        take (unfinishedLine.substr (0, end));
        unfinishedLine.erase (0, end + 1);
    }
}

void ModuleWindow::take (const std::string& line)
{
    std::istringstream words (line);
    std::string first;
    words >> first;

    if (first == "window")
        words >> window;
    else if (first == "size")
        words >> knownSize.width >> knownSize.height;
    else
        words >> positions[first];
}

bool ModuleWindow::waitUntil (const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;

    while (! condition())
    {
        if (std::chrono::steady_clock::now() > deadline)
            return false;

        listen();
    }

    return true;
}

bool ModuleWindow::waitForPosition (const std::string& id, double wanted)
{
    constexpr double precision = 2.0e-6;

    return waitUntil (
        [&]
        {
            const auto known = position (id);
            return known.has_value() && std::abs (*known - wanted) < precision;
        });
}

bool ModuleWindow::waitForSize (Size wanted)
{
    return waitUntil ([&] { return knownSize == wanted && isDrawn (picture()); });
}

std::optional<double> ModuleWindow::position (const std::string& id) const
{
    const auto found = positions.find (id);
    return found == positions.end() ? std::nullopt : std::optional (found->second);
}

//======================================================================================================================
juce::Image ModuleWindow::picture() const { return picture::fromScreen (display.picture (window)); }

bool ModuleWindow::isDrawn (const juce::Image& image) const
{
    return image.isValid() && Size { image.getWidth(), image.getHeight() } == knownSize && picture::isWhole (image);
}

juce::Image ModuleWindow::settledPicture (const std::function<bool (const juce::Image&)>& condition)
{
    constexpr int enoughLooks = 10;
    juce::Image latest;
    int numLooks = 0;

    const auto hasSettled = [&]
    {
        const auto now = picture();
        const auto isSame =
            isDrawn (now) && latest.getBounds() == now.getBounds() && picture::differingShare (latest, now) == 0.0;

        latest = now;
        numLooks = isSame && (condition == nullptr || condition (now)) ? numLooks + 1 : 0;
        return numLooks >= enoughLooks;
    };

    return waitUntil (hasSettled) ? latest : juce::Image();
}
