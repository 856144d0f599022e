// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "reference/ReferenceEngine.h"

/** An engine that a test plays with: parameters by their ids, a host with a sample rate and a transport, and sound in blocks.

    A behaviour that the plug-in and the reference engine must share is tested once, over a driver of each (Engines.h). A
    driver gives the engine itself as its member "engine"; both engines use the same names for their fields. Filters, which the
    plug-in keeps by pointer, are reached by functions of the driver: hpFilter(), lpLadder() and so on. */
class EngineDriver
{
public:
    using Frame = std::pair<float, float>;
    using Frames = std::vector<Frame>;

    EngineDriver() = default;
    EngineDriver (const EngineDriver&) = delete;
    EngineDriver& operator= (const EngineDriver&) = delete;
    virtual ~EngineDriver() = default;

    /** In Hz. The engine reads it at its next tick. */
    virtual void setSampleRate (double hostRate) = 0;

    /** Writes a position, as a host does. */
    virtual void set (std::string_view id, float position) = 0;

    [[nodiscard]] virtual float get (std::string_view id) const = 0;

    /** The value that the frames' watch saw last. */
    [[nodiscard]] virtual float lastSeenValueOf (std::string_view id) const = 0;

    /** Sets a choice to one of its positions. */
    void choose (std::string_view id, int index);

    /** A transport that is stopped at a position. */
    void setTransport (double beats, double bpm = 120.0, int numerator = 4, int denominator = 4);

    /** A play head that gives no position. */
    void setTransportWithoutPosition();

    void removePlayHead();

    /** How often the engine has asked the play head. */
    [[nodiscard]] virtual std::int64_t numQueries() const = 0;

    virtual void requestUpdate() = 0;
    [[nodiscard]] virtual bool isUpdatePending() const = 0;
    virtual void clearPendingUpdate() = 0;
    [[nodiscard]] virtual std::int32_t framesSinceRequest() const = 0;

    /** Plays the frames in blocks of the given size; without a frame, one empty block. */
    Frames run (const Frames& input, std::size_t blockSize = 512);

    void runSilence (std::size_t numFrames, std::size_t blockSize = 512);

    /** Runs this many ticks, each before a frame of silence. As long as the engine stays awake they share a block; after that
        each has a block of its own. */
    void tick (int howOften = 1);

    /** Opens a route from LFO 2 to the lowpass resonance, so that every frame has a tick. */
    void keepAwake();

    /** Runs silence until no tick is pending. */
    void fallAsleep();

    /** White noise on both channels, the same for the same seed. */
    [[nodiscard]] static Frames noise (std::uint32_t seed, std::size_t numFrames, float amplitude = 0.5f);

protected:
    virtual void applyTransport (const reference::Transport& transport) = 0;

    /** One block in place. */
    virtual void process (float* left, float* right, int numFrames) = 0;
};
