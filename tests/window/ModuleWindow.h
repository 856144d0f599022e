// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Picture.h"

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

    /** Comes back when the window is there.
        @param options  more words for "kestrin-host window"
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

    /** Presses the button, moves the pointer up in two steps, lets go. */
    void dragUp (Place from, int pixels) const;

    /** Does anything with the pointer at a place. */
    void at (Place place, const std::string& words) const;

    void click (Place place) const { at (place, "click 1"); }

    //==================================================================================================================
    // What the host has heard

    /** Listens until the condition holds.
        @returns false if it does not in good time */
    bool waitUntil (const std::function<bool()>& condition);

    /** Listens until a parameter is where it should be, to the precision of the host's lines.
        @returns false if it does not get there in good time */
    bool waitForPosition (const std::string& id, double position);

    bool waitForSize (Size wanted);

    /** The position that the module told last, if it has told any. */
    [[nodiscard]] std::optional<double> position (const std::string& id) const;

    [[nodiscard]] Size size() const noexcept { return knownSize; }

    /** All lines so far, for messages of failure. */
    [[nodiscard]] const std::string& heard() const noexcept { return everything; }

    //==================================================================================================================
    /** What the display shows of it. */
    [[nodiscard]] juce::Image picture() const;

    /** Leaves a picture for people to look at. */
    void keepPicture (const std::string& name) const { picture::keep (picture(), name); }

private:
    void startHost (const std::vector<std::string>& options);
    void listen();
    void take (const std::string& line);

    XDisplay display;
    int host = 0;
    int hostInput = -1;
    int hostOutput = -1;

    std::string everything, unfinishedLine;
    std::map<std::string, double> positions;
    Size knownSize {};
    XDisplay::WindowId window = 0;
};
