// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/Automation.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "host/HostError.h"
#include "host/ValueResolver.h"

namespace
{
/** Longer than any file, and far below the limit of frame numbers. */
constexpr double mostSeconds = 1.0e7;

[[nodiscard]] double parseSeconds (const juce::String& text)
{
    const auto characters = text.trim().toStdString();
    const auto* end = characters.data() + characters.size();
    double seconds = 0.0;
    const auto result = std::from_chars (characters.data(), end, seconds);

    if (result.ec != std::errc() || result.ptr != end || ! (seconds >= 0.0 && seconds <= mostSeconds))
        throw HostError ("--automate: \"" + text + "\" is not a time in seconds");

    return seconds;
}
} // namespace

Automation::Lane Automation::parse (const ParameterList& parameters, const juce::String& text)
{
    const auto id = text.upToFirstOccurrenceOf ("@", false, false).trim();
    Lane lane { &parameters.find (id), {} };

    for (const auto& point : juce::StringArray::fromTokens (text.fromFirstOccurrenceOf ("@", false, false), ",", ""))
    {
        const auto assignment = valueResolver::splitAssignment (point);
        lane.points.push_back (
            { parseSeconds (assignment.id), valueResolver::resolve (*lane.parameter, assignment.value) });
    }

    if (lane.points.empty())
        throw HostError ("--automate: \"" + text + "\" is not of the form id@seconds=position,seconds=position");

    const auto earlier = [] (const Point& first, const Point& second) { return first.seconds < second.seconds; };

    if (! std::is_sorted (lane.points.begin(), lane.points.end(), earlier))
        throw HostError ("--automate: the times of " + id + " do not ascend");

    return lane;
}

Automation::Automation (std::vector<Lane> parsedLanes, double sampleRate)
{
    for (const auto& parsed : parsedLanes)
    {
        RunningLane lane { parsed.parameter->parameter, {}, {} };

        for (const auto& point : parsed.points)
            lane.points.push_back ({ std::llround (point.seconds * sampleRate), point.position });

        lanes.push_back (std::move (lane));
    }
}

void Automation::apply (juce::int64 frame)
{
    for (auto& lane : lanes)
    {
        const auto position = positionAt (lane, frame);

        if (! position.has_value() || position == lane.sent)
            continue;

        lane.parameter->setValue (*position);
        lane.sent = position;
    }
}

std::optional<juce::int64> Automation::nextChange (juce::int64 frame) const
{
    std::optional<juce::int64> next;

    for (const auto& lane : lanes)
        if (const auto change = nextChange (lane, frame))
            next = next.has_value() ? std::min (*next, *change) : *change;

    return next;
}

std::optional<float> Automation::positionAt (const RunningLane& lane, juce::int64 frame)
{
    const auto isLater = [] (juce::int64 wanted, const FramePoint& point) { return wanted < point.frame; };
    const auto next = std::upper_bound (lane.points.begin(), lane.points.end(), frame, isLater);

    if (next == lane.points.begin())
        return {};

    const auto& last = *std::prev (next);

    if (next == lane.points.end())
        return last.position;

    // Between its steps a ramp does not move, not even for a block that begins there.
    const auto stepFrame = std::max (last.frame, frame / rampGrid * rampGrid);
    const auto fraction = (double) (stepFrame - last.frame) / (double) (next->frame - last.frame);
    return (float) ((double) last.position + fraction * ((double) next->position - (double) last.position));
}

std::optional<juce::int64> Automation::nextChange (const RunningLane& lane, juce::int64 frame)
{
    const auto isLater = [] (juce::int64 wanted, const FramePoint& point) { return wanted < point.frame; };
    const auto next = std::upper_bound (lane.points.begin(), lane.points.end(), frame, isLater);

    if (next == lane.points.end())
        return {};

    if (next == lane.points.begin() || std::prev (next)->position == next->position)
        return next->frame;

    return std::min (next->frame, (frame / rampGrid + 1) * rampGrid);
}
