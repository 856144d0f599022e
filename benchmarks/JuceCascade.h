// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <vector>

#include <juce_dsp/juce_dsp.h>

#include "Contest.h"

/** What one would write with JUCE's own filters: a Butterworth highpass and lowpass of order 2, 4 or 8 out of
    juce::dsp::IIR::Filter<double>, for two channels. Each section is designed once for both; the coefficients are one object
    for both channels' filters, or one for each.

    It is given every advantage: its sound arrives in double precision, static filters run a whole block at a time, and
    redesigned ones take the new coefficients in place, without an allocation. */
class JuceCascade
{
public:
    enum class Sharing
    {
        oneForBothChannels,
        oneForEach
    };

    JuceCascade (int order, double newRate, Sharing sharing);

    void setCutoffs (double highpassHz, double lowpassHz);

    /** A whole block with the coefficients that stand. */
    void process (juce::dsp::AudioBlock<double> block);

    void processFrame (double& left, double& right) noexcept;

private:
    struct Section
    {
        /** One or two objects. */
        std::vector<juce::dsp::IIR::Coefficients<double>::Ptr> coefficients;
        double q = 0.0;
        std::array<juce::dsp::IIR::Filter<double>, 2> channels;
    };

    double rate;
    std::vector<Section> highpass, lowpass;
};

class StaticJuceContestant : public Contestant
{
public:
    explicit StaticJuceContestant (int order);

    void take (const Noise::Block& block) override;
    void run() override;

private:
    JuceCascade cascade;
    juce::AudioBuffer<double> buffer;
};

/** Redesigned before every frame, with both cutoffs on the way. */
class RedesignedJuceContestant : public Contestant
{
public:
    RedesignedJuceContestant (int order, JuceCascade::Sharing sharing);

    void take (const Noise::Block& block) override;
    void run() override;

private:
    JuceCascade cascade;
    juce::AudioBuffer<double> buffer;
    double hertz = 300.0;
};
