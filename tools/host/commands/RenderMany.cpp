// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/RenderMany.h"

#include <iostream>

#include "host/commands/FileArgument.h"
#include "host/HostError.h"
#include "host/OwnProcesses.h"
#include "host/ProgressBar.h"

namespace renderMany
{
namespace
{
[[nodiscard]] juce::File outputOf (const Job& job, const std::string& input)
{
    return job.folder.getChildFile (fileNamed (input).getFileNameWithoutExtension() + job.ending);
}

/** Some file systems don't tell large letters from small ones. */
void requireDifferentOutputs (const Job& job)
{
    for (auto one = job.inputs.begin(); one != job.inputs.end(); ++one)
        for (auto other = job.inputs.begin(); other != one; ++other)
            if (outputOf (job, *one).getFileName().equalsIgnoreCase (outputOf (job, *other).getFileName()))
                throw HostError (juce::String::fromUTF8 (other->c_str()) + " and "
                                 + juce::String::fromUTF8 (one->c_str()) + " would both become "
                                 + outputOf (job, *one).getFullPathName() + ": render them into two folders");
}

[[nodiscard]] ownProcesses::Task taskFor (const Job& job, const std::string& input)
{
    ownProcesses::Task task { { "render", "--report-progress", "--in=" + input,
                                "--out=" + outputOf (job, input).getFullPathName().toStdString() },
                              1.0 + (double) fileNamed (input).getSize() };
    task.words.insert (task.words.end(), job.options.begin(), job.options.end());
    return task;
}

[[nodiscard]] std::vector<ownProcesses::Outcome> renderAll (const Job& job)
{
    std::vector<ownProcesses::Task> tasks;

    for (const auto& input : job.inputs)
        tasks.push_back (taskFor (job, input));

    ProgressBar bar;
    return ownProcesses::run (tasks, job.numAtATime, [&bar] (double done) { bar.show (done); });
}
} // namespace

void run (const Job& job)
{
    requireDifferentOutputs (job);

    if (const auto made = job.folder.createDirectory(); made.failed())
        throw HostError ("cannot make the folder " + job.folder.getFullPathName() + ": " + made.getErrorMessage());

    const auto outcomes = renderAll (job);
    juce::StringArray failed;

    for (std::size_t i = 0; i < outcomes.size(); ++i)
    {
        for (const auto& line : outcomes[i].lines)
            std::cerr << line << std::endl;

        if (! outcomes[i].succeeded)
            failed.add (juce::String::fromUTF8 (job.inputs[i].c_str()));
    }

    if (! failed.isEmpty())
        throw HostError (juce::String (failed.size()) + " of " + juce::String (outcomes.size())
                         + " files could not be rendered: " + failed.joinIntoString (", "));
}
} // namespace renderMany
