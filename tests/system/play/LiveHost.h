// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <functional>
#include <string>

#include "module/HostProcess.h"
#include "support/Desktop.h"

/** "kestrin-host play" at a terminal of its own, while it plays. */
class LiveHost
{
public:
    using Variables = std::vector<std::pair<std::string, std::string>>;

    /** @param folder     where it runs
        @param arguments  what follows "play"
        @throws std::runtime_error if there is no terminal to be had */
    LiveHost (const HostProcess& folder, const juce::StringArray& arguments, const Variables& variables);
    ~LiveHost();

    LiveHost (const LiveHost&) = delete;
    LiveHost& operator= (const LiveHost&) = delete;

    /** Types keys. */
    void press (const std::string& keys) const;

    void signal (int number) const noexcept { process.signal (number); }

    /** Everything that the terminal has shown. */
    [[nodiscard]] const std::string& shown() const noexcept { return everything; }

    /** The line that is written over, as it is now. */
    [[nodiscard]] std::string status() const;

    /** The number after "dropouts" in it; -1 before there is one. */
    [[nodiscard]] int dropouts() const;

    /** Waits until the condition holds.
        @returns false if it does not in good time, or if the program ends before */
    bool waitUntil (const std::function<bool()>& condition);
    [[nodiscard]] bool waitForStatus (const std::string& part);

    /** Waits until so many more frames of two channels have reached the file that --record heard.wav writes. */
    [[nodiscard]] bool waitForSound (int numFrames);

    /** Waits for its end, and kills it if that does not come in good time.
        @returns the exit code, or 128 and the number of the signal that ended it */
    int end();

    [[nodiscard]] juce::String errors() const { return folder.errors(); }

    /** Whether the terminal collects lines and shows what is typed, as one does at first. */
    [[nodiscard]] bool terminalIsOrdinary() const;

private:
    [[nodiscard]] ChildProcess::Options optionsFor (const juce::StringArray& arguments,
                                                    const Variables& variables) const;
    void listen();
    [[nodiscard]] juce::int64 recordedBytes() const;

    const HostProcess& folder;
    const int terminal;
    ChildProcess process;
    std::string everything;
};
