// SPDX-License-Identifier: AGPL-3.0-or-later
#include "system/daw/ForeignProgram.h"

#include <thread>

namespace
{
using Clock = std::chrono::steady_clock;
constexpr auto lookAgain = std::chrono::milliseconds (5);

/** The last lines, for a message. */
juce::String tailOf (const juce::String& output)
{
    auto lines = juce::StringArray::fromLines (output.trim());
    lines.removeRange (0, lines.size() - 6);
    return lines.joinIntoString ("\n");
}
} // namespace

ChildProcess::Options ForeignProgram::options() const
{
    const auto outputPath = output().getFullPathName().toStdString();

    return { .words = words,
             .variables = environment,
             .inheritsEnvironment = false,
             .folder = folder.getFullPathName().toStdString(),
             .inputFile = "/dev/null",
             .outputFile = outputPath,
             .errorsFile = outputPath };
}

juce::String ForeignProgram::run() const
{
    const juce::String name (words.front());
    const auto deadline = Clock::now() + limit;
    ChildProcess process (options());

    while (process.isRunning())
    {
        if (Clock::now() > deadline)
            throw Died (name + " was not done after " + juce::String (limit.count()) + " s:\n"
                        + tailOf (output().loadFileAsString()));

        std::this_thread::sleep_for (lookAgain);
    }

    const auto end = process.wait();
    const auto text = output().loadFileAsString();

    if (end.signal != 0)
        throw Died (name + " was ended by signal " + juce::String (end.signal) + ":\n" + tailOf (text));

    if (end.exitCode != 0)
        throw HostError (name + " failed with code " + juce::String (end.exitCode) + ":\n" + tailOf (text));

    return text;
}
