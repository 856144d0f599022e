// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/TransportOptions.h"

#include <cmath>

#include <CLI/CLI.hpp>

#include "host/commands/WholeNumber.h"
#include "host/HostError.h"

namespace
{
[[nodiscard]] juce::AudioPlayHead::TimeSignature parseTimeSignature (const std::string& text)
{
    constexpr int most = 64;
    const auto slash = text.find ('/');
    int numerator = 0, denominator = 0;

    if (slash != std::string::npos && parseWhole (text.substr (0, slash), numerator)
        && parseWhole (text.substr (slash + 1), denominator) && numerator >= 1 && numerator <= most && denominator >= 1
        && denominator <= most)
        return { numerator, denominator };

    throw HostError (juce::String ("--time-signature: \"") + text + "\" is not of the form 4/4");
}
} // namespace

std::vector<CLI::Option*> TransportOptions::add (CLI::App& command)
{
    return {
        command.add_option ("--tempo", tempo, "Beats (quarter notes) per minute")->capture_default_str(),
        command.add_option ("--start-beat", startBeat, "Song position of the first frame in quarter notes")
            ->capture_default_str(),
        command.add_option ("--time-signature", timeSignature, "Such as 3/4")->capture_default_str(),
    };
}

Transport::Settings TransportOptions::settings() const
{
    constexpr double mostBeats = 1.0e6, slowest = 1.0, fastest = 1000.0;

    if (! (tempo >= slowest && tempo <= fastest))
        throw HostError ("--tempo: " + juce::String (tempo) + " is not between 1 and 1000");

    if (! (std::abs (startBeat) <= mostBeats))
        throw HostError ("--start-beat: " + juce::String (startBeat) + " is out of range");

    Transport::Settings result;
    result.tempo = tempo;
    result.startBeat = startBeat;
    result.timeSignature = parseTimeSignature (timeSignature);
    return result;
}
