// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/Picture.h"
#include "system/window/Pointer.h"

/** The module's window, opened by kestrin-host as a process of its own on the present desktop, and what the host has been
    told since. All places are pixels of the window. */
class ModuleWindow
{
public:
    struct Place
    {
        int x = 0;
        int y = 0;
    };

    struct Size
    {
        int width = 0;
        int height = 0;

        bool operator== (const Size&) const = default;
    };

    /** Comes back when the window is there, is drawn and shows the settings.
        @param options  more words for "kestrin-host window"; they leave the modes as they are, which have arcs
        @throws HostError if it does not open */
    explicit ModuleWindow (const std::vector<std::string>& options = {});
    ~ModuleWindow();

    ModuleWindow (const ModuleWindow&) = delete;
    ModuleWindow& operator= (const ModuleWindow&) = delete;

    /** Ends the host's standard input.
        @returns its exit code */
    int close();

    //==================================================================================================================
    // What people do

    /** Drags a knob that turns by the pixel, in two moves, and keeps the button down until the knob has followed each. Its
        position depends on the distance from the start alone.
        @param positionAfter  the position that a distance in pixels gives
        @returns false if it does not follow */
    [[nodiscard]] bool dragUp (Place from, int pixels, const std::string& id,
                               const std::function<double (int)>& positionAfter);

    /** Brings the pointer to a place.
        @throws HostError if it does not get there */
    void moveTo (Place place);

    /** Brings the pointer to a place and does anything with it there. */
    void at (Place place, const std::string& words);

    void click (Place place) { at (place, "click 1"); }

    /** Clicks and comes back when what is typed goes to the window.
        @throws HostError if the window does not take the keyboard */
    void clickToType (Place place);

    //==================================================================================================================
    // What the host has heard

    /** Listens until the condition holds.
        @returns false if it does not in good time */
    bool waitUntil (const std::function<bool()>& condition);

    /** Listens until a parameter is where it should be, to the precision of the host's lines.
        @returns false if it does not get there in good time */
    bool waitForPosition (const std::string& id, double position);

    /** Listens until the host knows the window in this size and the screen shows all of it. */
    bool waitForSize (Size wanted);

    /** The last position that the module has reported, if any. */
    [[nodiscard]] std::optional<double> position (const std::string& id) const;

    [[nodiscard]] Size size() const noexcept { return knownSize; }

    /** All lines so far, for messages of failure. */
    [[nodiscard]] const std::string& heard() const noexcept { return everything; }

    //==================================================================================================================
    /** The window as the display shows it. */
    [[nodiscard]] juce::Image picture() const;

    /** The same, once the condition holds and nothing changes any more. Invalid if that never happens. */
    [[nodiscard]] juce::Image settledPicture (const std::function<bool (const juce::Image&)>& condition = {});

    /** Leaves a picture for people to look at. */
    void keepPicture (const std::string& name) { picture::keep (settledPicture(), name); }

private:
    [[nodiscard]] static ChildProcess::Options hostWith (const std::vector<std::string>& options);
    [[nodiscard]] bool isDrawn (const juce::Image& image) const;
    void listen();
    void take (const std::string& line);

    XDisplay display;
    Pointer pointer;
    ChildProcess host;
    std::string everything, unfinishedLine;
    std::map<std::string, double> positions;
    Size knownSize {};
    XDisplay::WindowId window = 0;
};
