// SPDX-License-Identifier: AGPL-3.0-or-later
#include "module/HostProcess.h"

#include <csignal>
#include <string>
#include <vector>

#include "module/ModuleUnderTest.h"
#include "support/SoundFiles.h"

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

ChildProcess::Options HostProcess::options (const juce::StringArray& arguments) const
{
    const auto path = [this] (const char* name) { return file (name).getFullPathName().toStdString(); };
    std::vector<std::string> words { KESTRIN_HOST };

    for (const auto& argument : arguments)
        words.push_back (argument.toStdString());

    return { .words = words,
             .variables = { { "KESTRIN_PLUGIN", KESTRIN_MODULE } },
             .folder = folder.getFullPathName().toStdString(),
             .outputFile = path (outputName),
             .errorsFile = path (errorsName) };
}

HostProcess::Result HostProcess::finish (ChildProcess& process) const
{
    const auto end = process.wait();
    return { end.code(), file (outputName).loadFileAsString(), errors() };
}

juce::String HostProcess::errors() const { return file (errorsName).loadFileAsString(); }

HostProcess::Result HostProcess::run (const juce::StringArray& arguments) const
{
    ChildProcess process (options (arguments));
    return finish (process);
}

HostProcess::Result HostProcess::runAndInterrupt (const juce::StringArray& arguments,
                                                  const std::function<bool()>& when) const
{
    ChildProcess process (options (arguments));

    while (! when() && process.isRunning())
        juce::Thread::sleep (1);

    process.signal (SIGINT);
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

juce::AudioBuffer<float> HostProcess::readSound (const juce::String& name) const { return ::readSound (file (name)); }
