// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

/** A bare window of the X server for a module's editor to live in. No JUCE and no VST3 here: their names and Xlib's macros
    do not go together. */
class RawWindow
{
public:
    /** @throws std::runtime_error if there is no display */
    RawWindow (int width, int height);
    ~RawWindow();
    RawWindow (const RawWindow&) = delete;
    RawWindow& operator= (const RawWindow&) = delete;

    /** The window's number, as VST3 wants it. */
    [[nodiscard]] void* handle() const noexcept;

    void resize (int width, int height) const;

    /** Clicks at a pixel, in the window that lies there. */
    void click (int x, int y) const;

private:
    struct Connection;
    Connection* connection;
};
