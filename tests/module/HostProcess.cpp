// SPDX-License-Identifier: AGPL-3.0-or-later
#include "module/HostProcess.h"

#include <csignal>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/AudioFiles.h"
#include "module/ModuleUnderTest.h"

namespace
{
const char* const outputName = ".output";
const char* const errorsName = ".errors";
} // namespace

HostProcess::HostProcess() : folder (juce::File::createTempFile ("kestrin")) // a name only
{
    folder.createDirectory();
}

HostProcess::~HostProcess() { folder.deleteRecursively(); }

int HostProcess::start (const juce::StringArray& arguments) const
{
    juce::StringArray words (KESTRIN_HOST);
    words.addArray (arguments);

    std::vector<std::string> texts;
    std::vector<char*> pointers;

    for (const auto& word : words)
        texts.push_back (word.toStdString());

    for (auto& text : texts)
        pointers.push_back (text.data());

    pointers.push_back (nullptr);

    const auto output = file (outputName).getFullPathName().toStdString();
    const auto errors = file (errorsName).getFullPathName().toStdString();
    const auto path = folder.getFullPathName().toStdString();
    const auto process = fork();

    if (process != 0)
        return process;

    constexpr int flags = O_CREAT | O_TRUNC | O_WRONLY;
    dup2 (open (output.c_str(), flags, 0600), STDOUT_FILENO);
    dup2 (open (errors.c_str(), flags, 0600), STDERR_FILENO);
    setenv ("KESTRIN_PLUGIN", KESTRIN_MODULE, 1);

    if (chdir (path.c_str()) == 0)
        execv (pointers.front(), pointers.data());

    _exit (127);
}

HostProcess::Result HostProcess::finish (int process) const
{
    int status = 0;
    waitpid (process, &status, 0);

    return { WIFEXITED (status) ? WEXITSTATUS (status) : 128 + WTERMSIG (status), file (outputName).loadFileAsString(),
             file (errorsName).loadFileAsString() };
}

HostProcess::Result HostProcess::run (const juce::StringArray& arguments) const { return finish (start (arguments)); }

HostProcess::Result HostProcess::runAndInterrupt (const juce::StringArray& arguments,
                                                  const std::function<bool()>& when) const
{
    const auto process = start (arguments);
    siginfo_t info {};

    // As long as it runs; it is left for finish to collect.
    while (! when() && waitid (P_PID, (id_t) process, &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == 0)
        juce::Thread::sleep (1);

    kill (process, SIGINT);
    return finish (process);
}

juce::StringArray HostProcess::files() const
{
    juce::StringArray names;

    for (const auto& each : folder.findChildFiles (juce::File::findFilesAndDirectories, true))
        names.add (each.getRelativePathFrom (folder));

    names.removeString (outputName);
    names.removeString (errorsName);
    names.sort (false);
    return names;
}

void HostProcess::writeSound (const juce::String& name, int numChannels, int numFrames) const
{
    file (name).deleteFile();
    auto stream = file (name).createOutputStream();
    const std::unique_ptr<juce::AudioFormatWriter> writer (
        juce::WavAudioFormat().createWriterFor (stream.release(), 44100.0, (unsigned int) numChannels, 16, {}, 0));

    writer->writeFromAudioSampleBuffer (makeNoise (numChannels, numFrames), 0, numFrames);
}

juce::AudioBuffer<float> HostProcess::readSound (const juce::String& name) const
{
    AudioSource source (file (name), 0);
    juce::AudioBuffer<float> buffer (source.numChannels(), (int) source.numFrames());
    source.read (buffer, 0, buffer.getNumSamples());
    return buffer;
}
