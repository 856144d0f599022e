// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>

namespace reference
{

/** Cascade of second-order sections and one first-order section, highpass or lowpass of order 0, 1, 2, 4 or 8.
    Left and right are written one after the other on purpose, so that nothing here is clever. */
struct ButterworthFilter
{
    bool isHighpass = false;
    std::uint32_t numSections = 0;
    bool hasFirstOrderSection = false;
    double sampleRate = 0.0;
    double limitedCutoff = 0.0;
    double prewarped = 0.0;
    double prewarpedSquared = 0.0;
    double poleSine = 0.0;
    double numeratorMiddle = 2.0;
    double sectionGain[8] = {};
    double feedback1[8] = {};
    double feedback2[8] = {};
    double w0Left[8] = {};
    double w0Right[8] = {};
    double w1Right[8] = {};
    double w1Left[8] = {};
    double w2Right[8] = {};
    double w2Left[8] = {};
    double firstOrderForward = 0.0;
    double firstOrderFeedback = 0.0;
    double firstOrderOutputLeft = 0.0;
    double firstOrderOutputRight = 0.0;
    double firstOrderOlderInputLeft = 0.0;
    double firstOrderOlderInputRight = 0.0;
    double firstOrderInputLeft = 0.0;
    double firstOrderInputRight = 0.0;

    void design (unsigned order, bool highpass, double cutoff, double rate);
    void process (double& left, double& right);
};

/** Peaking section of fixed +20 dB gain; untouched frames before the first design. */
struct ResonancePeak
{
    double b0 = 0.0;
    double b1 = 0.0;
    double b2 = 0.0;
    double a0 = 0.0;
    double a1 = 0.0;
    double a2 = 0.0;
    double inputLeft = 0.0;
    double input1Left = 0.0;
    double input2Left = 0.0;
    double output1Left = 0.0;
    double output2Left = 0.0;
    double inputRight = 0.0;
    double input1Right = 0.0;
    double input2Right = 0.0;
    double output1Right = 0.0;
    double output2Right = 0.0;
    double designedRate = -1.0;
    double designedFrequency = -1.0;
    double designedGainDb = -1.0;
    double designedBandwidth = -1.0;
    bool designed = false;

    int designCount = 0; // how often coefficients were computed, for tests

    void design (double rate, double frequency, double bandwidthOctaves);
    void process (double& left, double& right);
};

/** Chain of one-pole stages. The pole of a stage moves with the distance between its input and its output. */
struct GrungeLadder
{
    bool isHighpass = false;
    std::int32_t numStages = 0;
    double sampleRate = 0.0;
    double limitedCutoff = 0.0;
    double prewarped = 0.0;
    double prewarpedSquared = 0.0;
    double scratch = 0.0;
    double numeratorMiddle = 2.0;
    double forwardCoefficient = 0.0;
    double poleCoefficient = 0.0;
    double inputCoefficient = 0.0;
    double grunge = 1.0;
    double stateLeft[8] = {};
    double stateRight[8] = {};
    double input2Left[8] = {};
    double input2Right[8] = {};
    double input1Left[8] = {};
    double input1Right[8] = {};

    void configure (int stages, bool highpass, double cutoff, double resonance, double grungeGain, double rate);
    void process (double& left, double& right);
};

} // namespace reference
