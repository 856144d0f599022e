// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "reference/ReferenceFilters.h"
#include "reference/ReferenceLfo.h"
#include "reference/ReferenceParameters.h"
#include "reference/ReferenceText.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace reference
{

/** A host's answer to one transport query. */
struct Transport
{
    bool hasPlayHead = false;
    bool hasPosition = false;
    double bpm = 120.0;
    double ppqPosition = 0.0;
    int timeSigNumerator = 4;
    int timeSigDenominator = 4;
};

/** The place of each parameter in the host's list. For indexed families, LFO index 0 or 1 and step index 0 to 9. */
namespace Index
{
inline constexpr int hpFreq = 0;
inline constexpr int hpReso = 1;
inline constexpr int hpMode = 2;
inline constexpr int lpFreq = 3;
inline constexpr int lpReso = 4;
inline constexpr int lpMode = 5;
inline constexpr int link = 6;
inline constexpr int inertia = 7;
inline constexpr int filtMode = 30;
inline constexpr int seqOffs = 31;
inline constexpr int seqUnit = 32;
inline constexpr int srndHpf = 33;
inline constexpr int srndLpf = 34;
inline constexpr int count = 55;

constexpr int lfoSpeed (int lfo) { return 8 + 11 * lfo; }
constexpr int lfoMode (int lfo) { return 9 + 11 * lfo; }
constexpr int lfoPhase (int lfo) { return 10 + 11 * lfo; }
constexpr int lfoShape (int lfo) { return 11 + 11 * lfo; }
constexpr int lfoCurve (int lfo) { return 12 + 11 * lfo; }
constexpr int lfoSync (int lfo) { return 13 + 11 * lfo; }
constexpr int lfoToHpf (int lfo) { return 14 + 11 * lfo; }
constexpr int lfoToLpf (int lfo) { return 15 + 11 * lfo; }
constexpr int lfoToHpr (int lfo) { return 16 + 11 * lfo; }
constexpr int lfoToLpr (int lfo) { return 17 + 11 * lfo; }
constexpr int lfoToOther (int lfo) { return 18 + 11 * lfo; }
constexpr int seqHpf (int step) { return 35 + 2 * step; }
constexpr int seqLpf (int step) { return 36 + 2 * step; }
} // namespace Index

/** The reference engine, the whole processor a second time: sample loop, clock, clamps, tick, filters, LFOs, steps, routing.

    It is written to be read slowly: no cache, no skipped work, left and right apart, every function computed at
    every design. It shares no code with the plug-in and knows no framework, so that an error in either shows as a
    difference of bits. Every field is public for comparison. */
class Engine
{
public:
    Engine();

    static std::span<const ParameterInfo> parameterTable();

    /** Sets a normalised position as a host does: clamped to 0 to 1 (NaN passes). "link" is stored as given. */
    void setParameter (int index, float position);
    [[nodiscard]] float getParameter (int index) const;
    [[nodiscard]] int getChoiceIndex (int index) const;

    /** The host's sample rate from now on; 0 as long as it has none. Read at the next tick. */
    void setSampleRate (double rateOfHost);

    void prepareToPlay();
    void requestUpdate();

    /** Answers each query; empty where there is no play head. */
    std::function<Transport()> transport;

    void seedLfo (int index, std::uint32_t seed);

    /** One block in place. A null right pointer makes it mono in, mono out. Denormals are flushed meanwhile. */
    void process (float* left, float* rightOrNull, int numFrames);

    void updateControlRate();

    struct Frame
    {
        float left = 0.0f;
        float right = 0.0f;
    };

    Frame processFrame (float left, float right);

    /** Clamps of the first and the second channel. */
    static float clampFirstChannel (float a);
    static float clampSecondChannel (float b);

    // The frame's clock.
    double hostRate = 0.0;
    double hostSampleRate = 96000.0;
    int oversamplingFactor = 1;
    std::uint32_t controlCounter = 0;
    bool controlUpdatePending = true;
    std::int32_t framesSinceRequest = 0;

    // Parameters: live values and the change watch.
    std::array<float, Index::count> value {};
    std::array<float, Index::count> lastSeenValue {};

    // The state of the tick.
    std::array<float, 17> barLengths {};
    bool stepLit[10] = {};
    SlewValue hpFreqSlew;
    SlewValue lpFreqSlew;
    SlewValue hpResoSlew;
    SlewValue lpResoSlew;
    std::int32_t hpPoles = 0;
    std::int32_t lpPoles = 0;
    float hpPeakBandwidth = 1.0f;
    float lpPeakBandwidth = 1.0f;
    float wobblePhase[2] = {};
    float wobbleStep[2] = {};
    float wobbleDepth[2] = {};
    float freqExpScale = 6.907754898071289f;
    float freqExpOffset = 2.995732307434082f;
    float hpResonance = 0.0f;
    float lpResonance = 0.0f;
    LfoGenerator lfo[2];
    ButterworthFilter hpFilter;
    ButterworthFilter lpFilter;
    GrungeLadder hpLadder;
    GrungeLadder lpLadder;
    ResonancePeak hpResonator;
    ResonancePeak lpResonator;

    // Numbers of the latest tick, and counts, for tests only.
    double rate = 0.0;
    double ppq = 0.0;
    double bpm = 0.0;
    bool transportAbsent = true;
    bool active = false;
    float hpMod = 0.0f;
    float lpMod = 0.0f;
    float hpResoMod = 0.0f;
    float lpResoMod = 0.0f;
    float hpHz = 0.0f;
    float lpHz = 0.0f;
    float lfoFrequency[2] = {};
    std::int64_t tickCount = 0;
    std::int64_t queryCount = 0;
    std::int64_t frameCount = 0;

private:
    struct Query
    {
        bool succeeded = false;
        Transport position;
    };

    Query queryTransport (bool& hasPlayHead);
    void runFrames (float* left, float* rightOrNull, int numFrames);
    bool hasChanged (int index);
    void readTransport();
    void wobbleAndLock (int i);
    void takeSlopes();
    void evaluateSteps();
    void advanceAndRoute (int i);
    void configureLfo (int lfoIndex, float frequency, float rateAsFloat, float speedMultiplier);
    void lockLfosToBars (float rateAsFloat, float barMultiple);
    void setSlewSteps();
    void setTargets();
    void advanceAndMap();
    void designFilters();
    void decideWake();
    static void addResonance (ResonancePeak& resonator, float resonance, double& left, double& right);
};

} // namespace reference
