// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

/** A program that a test has started, in a process group of its own. Program and children are ended with this object, and
    the program with this process at the latest. No JUCE here: its names and Xlib's macros do not go together. */
class ChildProcess
{
public:
    struct Options
    {
        /** The program and its arguments. A name without a slash is looked for in PATH. */
        std::vector<std::string> words {};

        /** Set over this process's environment, or instead of it. */
        std::vector<std::pair<std::string, std::string>> variables {};
        bool inheritsEnvironment = true;

        /** Where it runs; here if empty. */
        std::string folder {};

        /** Files that its standard streams come from and go to; this process's own streams where empty. One file may take
            both outputs. */
        std::string inputFile {}, outputFile {}, errorsFile {};

        /** Its standard input and output are pipes from and to this process. */
        bool hasPipes = false;
    };

    struct End
    {
        int exitCode = 0;

        /** The signal that ended it; 0 if it came to its own end. */
        int signal = 0;

        /** As a shell says it: a signal counts from 128. */
        [[nodiscard]] int code() const noexcept { return signal != 0 ? 128 + signal : exitCode; }
    };

    /** A program that cannot be started ends at once with exit code 127.
        @throws std::runtime_error if there is no process or no pipe to be had */
    explicit ChildProcess (const Options& options);
    ~ChildProcess();

    ChildProcess (const ChildProcess&) = delete;
    ChildProcess& operator= (const ChildProcess&) = delete;

    /** Never waits. */
    [[nodiscard]] bool isRunning();

    /** Waits for its end. */
    End wait();

    /** Sends a signal to the program and its children. */
    void signal (int number) const noexcept;

    /** The end of its output pipe to read from; -1 without pipes. */
    [[nodiscard]] int outputPipe() const noexcept { return output; }

    /** Ends its standard input, which is a pipe. */
    void closeInput() noexcept;

private:
    bool collect (int options) noexcept;

    int process = -1;
    int input = -1;
    int output = -1;
    std::optional<End> end;
};
