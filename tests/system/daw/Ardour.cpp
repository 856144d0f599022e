// SPDX-License-Identifier: AGPL-3.0-or-later
#include "system/daw/Ardour.h"

#include <cstdlib>
#include <iostream>

#include <glob.h>
#include <unistd.h>

#include "support/SoundFiles.h"
#include "system/daw/ForeignProgram.h"

namespace
{
/** On a busy machine the exporter fails up to every third time. */
constexpr int mostAttempts = 10;

const char* const sessionName = "song";
const char* const pluginName = "Kestrin Tamsile Filter";

/** Debian puts the number of the series into every name. This is the newest one that is installed. */
juce::File findPrograms()
{
    glob_t found {};
    glob ("/usr/lib/ardour[0-9]*/luasession", 0, nullptr, &found);
    juce::File newest;

    for (std::size_t i = 0; i < found.gl_pathc; ++i)
        newest = juce::File (found.gl_pathv[i]).getParentDirectory();

    globfree (&found);

    if (newest == juce::File())
        throw HostError ("Ardour is not installed: run scripts/setup daw");

    return newest;
}

juce::File makeHome()
{
    auto pattern = (juce::File (KESTRIN_DAW_FOLDER).getFullPathName() + "/homeXXXXXX").toStdString();
    juce::File (KESTRIN_DAW_FOLDER).createDirectory();

    if (mkdtemp (pattern.data()) == nullptr)
        throw HostError ("cannot make a folder in " + juce::String (KESTRIN_DAW_FOLDER));

    return juce::File (pattern);
}

/** Ardour takes the result of a scan only if it is newer than the module, by whole seconds. */
void makeOld (const juce::File& folder)
{
    const auto longAgo = juce::Time::getCurrentTime() - juce::RelativeTime::days (1.0);

    for (const auto& file : folder.findChildFiles (juce::File::findFiles, true))
        file.setLastModificationTime (longAgo);
}

/** Ardour reads the names of synthesisers' patches on a thread of its own, and stops that thread while it ends. If it is
    still reading then, Ardour 8 aborts. */
void linkDataWithoutPatchNames (const juce::File& data, const juce::File& links)
{
    links.createDirectory();

    for (const auto& each : data.findChildFiles (juce::File::findFilesAndDirectories, false))
        if (each.getFileName() != "patchfiles")
            each.createSymbolicLink (links.getChildFile (each.getFileName()), true);
}

/** The saved session is XML, but an XML library would not write it back as Ardour does. */
void replaceOnce (const juce::File& file, const juce::String& before, const juce::String& after)
{
    const auto text = file.loadFileAsString();

    if (text.indexOf (before) < 0 || text.indexOf (before) != text.lastIndexOf (before))
        throw HostError (file.getFullPathName() + " does not hold " + before + " once");

    file.replaceWithText (text.replace (before, after), false, false, nullptr);
}
} // namespace

//======================================================================================================================
Ardour::Ardour() : home (makeHome()), programs (findPrograms())
{
    series = programs.getFileName();
    linkDataWithoutPatchNames ("/usr/share/" + series, file ("data"));

    const auto module = file (".vst3/" + juce::String (pluginName) + ".vst3");
    juce::File (KESTRIN_MODULE).copyDirectoryTo (module);
    makeOld (module);

    // The scanner must be given the full path at which Ardour will find the module: it keeps its results by that name.
    const auto scanner = programs.getChildFile ("ardour-vst3-scanner").getFullPathName();
    [[maybe_unused]] const auto words = run ({ scanner.toStdString(), "-f", module.getFullPathName().toStdString() });
}

Ardour::~Ardour() { home.deleteRecursively(); }

std::vector<std::pair<std::string, std::string>> Ardour::environment() const
{
    const auto libraries = programs.getFullPathName().toStdString();

    return { { "HOME", home.getFullPathName().toStdString() },
             { "PATH", "/usr/bin:/bin" },
             { "LC_ALL", "C.UTF-8" },
             { "LD_LIBRARY_PATH", libraries },
             { "ARDOUR_DATA_PATH", file ("data").getFullPathName().toStdString() },
             { "ARDOUR_CONFIG_PATH", "/etc/" + series.toStdString() },
             { "ARDOUR_DLL_PATH", libraries },
             { "KESTRIN_JOB", file ("job.lua").getFullPathName().toStdString() } };
}

juce::String Ardour::run (const std::vector<std::string>& words) const
{
    return ForeignProgram { words, environment(), home }.run();
}

juce::File Ardour::session() const { return file (juce::String (sessionName) + "/" + sessionName + ".ardour"); }

void Ardour::runScript (const juce::String& script)
{
    const auto output = run ({ programs.getChildFile ("luasession").getFullPathName().toStdString(),
                               (juce::String (KESTRIN_DAW_SCRIPTS) + "/" + script).toStdString() });

    // The program's exit code is 0 even if the script fails.
    if (! output.contains ("kestrin: done"))
        throw HostError ("Ardour does not finish " + script + ":\n" + output);
}

//======================================================================================================================
void Ardour::writeJob (const Song& song) const
{
    juce::String job ("return {\n");
    job << "folder = [[" << file (sessionName).getFullPathName() << "]], name = \"" << sessionName << "\",\n"
        << "report = [[" << file ("report.txt").getFullPathName() << "]],\n"
        << "rate = " << (int) sampleRate << ", frames = " << song.sound.getNumSamples()
        << ", channels = " << song.sound.getNumChannels() << ",\n";

    if (song.withPlugin)
        job << "plugin = \"" << pluginName << "\", bypassed = " << (song.bypassed ? "true" : "false") << ",\n";

    job << "positions = { ";

    for (const auto& [index, position] : song.positions)
        job << "[" << index << "] = " << juce::String (position, 9) << ", ";

    job << "},\nlanes = { ";

    for (const auto& [index, points] : song.lanes)
    {
        job << "[" << index << "] = { ";

        for (const auto& point : points)
            job << "{ " << point.frame << ", " << juce::String (point.position, 9) << " }, ";

        job << "}, ";
    }

    job << "} }\n";
    file ("job.lua").replaceWithText (job, false, false, nullptr);
}

void Ardour::make (const Song& song)
{
    file (sessionName).deleteRecursively();
    writeJob (song);
    runScript ("session.lua");
    putSoundIntoSession (song.sound);
    setRangeOfSession (song.sound.getNumSamples());
}

void Ardour::putSoundIntoSession (const juce::AudioBuffer<float>& sound) const
{
    auto files = file (sessionName).findChildFiles (juce::File::findFiles, true, "sound*.wav");
    files.sort(); // left before right

    if (files.size() != sound.getNumChannels())
        throw HostError ("Ardour has made " + juce::String (files.size()) + " files for the sound");

    for (int channel = 0; channel < sound.getNumChannels(); ++channel)
    {
        juce::AudioBuffer<float> one (1, sound.getNumSamples());
        one.copyFrom (0, 0, sound, channel, 0, sound.getNumSamples());
        writeSound (files[channel], one);
    }
}

/** What is exported is the session's range, which only Ardour's window sets. */
void Ardour::setRangeOfSession (int numFrames) const
{
    const auto unitsPerSecond = session()
                                    .loadFileAsString()
                                    .fromFirstOccurrenceOf ("superclocks-per-second=\"", false, false)
                                    .getLargeIntValue();
    const auto end = numFrames * unitsPerSecond / (juce::int64) sampleRate;

    replaceOnce (session(), "<Locations/>",
                 "<Locations><Location id=\"90001\" name=\"session\" start=\"a0\" end=\"a" + juce::String (end)
                     + "\" flags=\"IsSessionRange\" locked=\"0\" timestamp=\"0\" cue=\"0\"/></Locations>");
}

juce::StringArray Ardour::reopen()
{
    const auto report = file ("report.txt");
    report.deleteFile();
    runScript ("reopen.lua");

    auto lines = juce::StringArray::fromLines (report.loadFileAsString());
    lines.removeEmptyStrings();
    return lines;
}

juce::AudioBuffer<float> Ardour::render()
{
    const auto rendered = file ("rendered.wav");

    for (int attempt = 1;; ++attempt)
    {
        try
        {
            runExporter (rendered);
            return readSound (rendered);
        }
        catch (const ForeignProgram::Died& death)
        {
            if (attempt == mostAttempts)
                throw;

            std::cout << "[  NOTE    ] export started again (" << attempt << "): " << death.what() << std::endl;
        }
    }
}

void Ardour::runExporter (const juce::File& rendered) const
{
    rendered.deleteFile();
    const auto exporter = programs.getChildFile ("utils/" + series + "-export").getFullPathName();
    const auto output = run ({ exporter.toStdString(), "-b", "float", "-o", rendered.getFullPathName().toStdString(),
                               file (sessionName).getFullPathName().toStdString(), sessionName });

    if (! rendered.existsAsFile())
        throw HostError ("Ardour exports nothing:\n" + output);
}

//======================================================================================================================
void Ardour::writeWindowSettings (double scale) const
{
    const auto folder = file (".config/" + series);
    folder.createDirectory();

    // Without these Ardour greets a new user, and warns where a process may lock little memory.
    folder.getChildFile (".a" + series.retainCharacters ("0123456789")).create();
    folder.getChildFile ("instant.xml")
        .replaceWithText ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<instant><no-memory-warning/></instant>\n",
                          false, false, nullptr);

    folder.getChildFile ("config").replaceWithText (
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Ardour>\n"
        "<Config><Option name=\"try-autostart-engine\" value=\"1\"/><Option name=\"hide-dummy-backend\" value=\"0\"/>"
        "</Config>\n<Extra><AudioMIDISetup><EngineStates>"
        "<State backend=\"None (Dummy)\" driver=\"Normal Speed\" device=\"Silence\" input-device=\"\" "
        "output-device=\"\" "
        "sample-rate=\"48000\" buffer-size=\"1024\" n-periods=\"0\" input-latency=\"0\" output-latency=\"0\" "
        "lm-input=\"\" lm-output=\"\" active=\"1\" use-buffered-io=\"0\" midi-option=\"1 in, 1 out, Silence\" "
        "lru=\"1\">"
        "<MIDIDevices/></State></EngineStates></AudioMIDISetup></Extra>\n</Ardour>\n",
        false, false, nullptr);

    // 1024 times a hundred per cent.
    folder.getChildFile ("ui_config")
        .replaceWithText ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Ardour><UI><Option name=\"font-scale\" value=\""
                              + juce::String (juce::roundToInt (scale * 102400.0)) + "\"/></UI></Ardour>\n",
                          false, false, nullptr);
}

/** A session keeps which windows were open, by the numbers of track and processor. */
void Ardour::leaveWindowOpen() const
{
    const auto text = session().loadFileAsString();
    const auto numberBefore = [&text] (const juce::String& name)
    {
        return text.upToFirstOccurrenceOf ("\" name=\"" + name + "\"", false, false)
            .fromLastOccurrenceOf (" id=\"", false, false);
    };

    replaceOnce (session(), "</Session>",
                 "<Extra><UI><Window name=\"P-" + numberBefore ("Kestrin") + "-" + numberBefore (pluginName)
                     + "\" visible=\"1\" x-off=\"100\" y-off=\"100\" x-size=\"-1\" y-size=\"-1\" custom-ui=\"1\"/>"
                       "</UI></Extra></Session>");
}

ChildProcess::Options Ardour::withWindows (double scale) const
{
    writeWindowSettings (scale);
    leaveWindowOpen();

    ForeignProgram program { { "/usr/bin/ardour", "-a", "-n", file (sessionName).getFullPathName().toStdString() },
                             environment(),
                             home };
    program.environment.push_back ({ "DISPLAY", std::getenv ("DISPLAY") });
    return program.options();
}

//======================================================================================================================
juce::String Ardour::scanResult() const
{
    juce::String all;

    for (const auto& each : file (".cache").findChildFiles (juce::File::findFiles, true, "*.v3i"))
        all << each.loadFileAsString();

    return all;
}

juce::MemoryBlock Ardour::savedPreset() const
{
    const auto text = session()
                          .loadFileAsString()
                          .fromFirstOccurrenceOf ("<chunk>", false, false)
                          .upToFirstOccurrenceOf ("</chunk>", false, false);

    juce::MemoryOutputStream bytes;

    if (! juce::Base64::convertFromBase64 (bytes, text.removeCharacters (" \r\n\t")))
        throw HostError ("the session holds no state of the plug-in");

    return bytes.getMemoryBlock();
}

void Ardour::runHost (const juce::StringArray& arguments) const
{
    ForeignProgram host { { KESTRIN_HOST }, {}, home };

    for (const auto& argument : arguments)
        host.words.push_back (argument.toStdString());

    host.environment = { { "HOME", home.getFullPathName().toStdString() },
                         { "PATH", "/usr/bin:/bin" },
                         { "KESTRIN_PLUGIN", KESTRIN_MODULE } };
    [[maybe_unused]] const auto output = host.run();
}

void Ardour::writeSound (const juce::File& target, const juce::AudioBuffer<float>& sound) const
{
    AudioSink sink (target, Encoding::wavFloat, sampleRate, sound.getNumChannels());
    sink.write (sound, sound.getNumSamples());
    sink.finish();
    sink.commit();
}
