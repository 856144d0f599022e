// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <optional>
#include <vector>

#include "host/ParameterList.h"

/** Moves of parameters over the time of a file. A lane holds the points of one parameter. Before the first point it does
    nothing, between two points the position moves in a straight line, and after the last point it stays. Two points at the
    same time are a jump.

    Everything depends only on frames counted from the start of the file, so that the result is the same for every block
    size: a ramp moves at every multiple of rampGrid, and a point acts at its own frame. */
class Automation
{
public:
    static constexpr juce::int64 rampGrid = 32;

    struct Point
    {
        double seconds = 0.0;
        float position = 0.0f;
    };

    struct Lane
    {
        const HostedParameter* parameter = nullptr;
        std::vector<Point> points;
    };

    /** Understands "id@seconds=value,seconds=value..."; a value is what valueResolver takes.
        @throws HostError */
    [[nodiscard]] static Lane parse (const ParameterList& parameters, const juce::String& text);

    Automation (std::vector<Lane> parsedLanes, double sampleRate);

    /** Sets the parameters that have something to do at this frame. */
    void apply (juce::int64 frame);

    /** The first frame after the given one at which a parameter may change; none if all lanes have come to rest. */
    [[nodiscard]] std::optional<juce::int64> nextChange (juce::int64 frame) const;

private:
    struct FramePoint
    {
        juce::int64 frame = 0;
        float position = 0.0f;
    };

    struct RunningLane
    {
        juce::AudioProcessorParameter* parameter = nullptr;
        std::vector<FramePoint> points;
        std::optional<float> sent;
    };

    [[nodiscard]] static std::optional<float> positionAt (const RunningLane& lane, juce::int64 frame);
    [[nodiscard]] static std::optional<juce::int64> nextChange (const RunningLane& lane, juce::int64 frame);

    std::vector<RunningLane> lanes;
};
