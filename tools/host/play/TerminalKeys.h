// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

/** Keys from standard input, without waiting for a whole line. While this object lives a terminal neither collects lines nor
    shows what is typed; it becomes as it was with its end, and with a signal that kills the program. One at a time. */
class TerminalKeys
{
public:
    enum class Key
    {
        halt,
        bypass,
        back,
        onwards,
        loopBar,
        nextPreset,
        previousPreset,
        quit
    };

    TerminalKeys();
    ~TerminalKeys();

    TerminalKeys (const TerminalKeys&) = delete;
    TerminalKeys& operator= (const TerminalKeys&) = delete;

    /** The next key that means something, if one has been pressed. Never waits. */
    [[nodiscard]] std::optional<Key> next();

private:
    void readMore();

    bool isOpen = true;
    std::string typed;
};
