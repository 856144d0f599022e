// SPDX-License-Identifier: AGPL-3.0-or-later
#include "JuceCascade.h"

#include <cmath>

namespace
{
using Design = juce::dsp::IIR::ArrayCoefficients<double>;

constexpr double hostRate = 48000.0;
constexpr juce::uint32 largestBlock = 4096;

void widen (juce::AudioBuffer<double>& buffer, const Noise::Block& block)
{
    buffer.setSize (2, (int) block.left.size(), false, false, true);

    for (int n = 0; n < buffer.getNumSamples(); ++n)
    {
        buffer.setSample (0, n, (double) block.left[(std::size_t) n]);
        buffer.setSample (1, n, (double) block.right[(std::size_t) n]);
    }
}
} // namespace

JuceCascade::JuceCascade (int order, double newRate, Sharing sharing)
    : rate (newRate), highpass ((std::size_t) order / 2), lowpass ((std::size_t) order / 2)
{
    for (auto* cascade : { &highpass, &lowpass })
        for (std::size_t i = 0; i < cascade->size(); ++i)
        {
            auto& section = (*cascade)[i];
            const auto poleAngle = juce::MathConstants<double>::pi * (2.0 * (double) i + 1.0) / (2.0 * order);
            section.q = 0.5 / std::sin (poleAngle);
            for (auto& channel : section.channels)
            {
                if (section.coefficients.empty() || sharing == Sharing::oneForEach)
                    section.coefficients.emplace_back (
                        new juce::dsp::IIR::Coefficients<double> (Design::makeLowPass (rate, 1000.0, 1.0)));

                channel.coefficients = section.coefficients.back();
                channel.prepare ({ rate, largestBlock, 1 });
            }
        }

    setCutoffs (300.0, 2400.0);
}

void JuceCascade::setCutoffs (double highpassHz, double lowpassHz)
{
    const auto set = [] (const Section& section, const std::array<double, 6>& design)
    {
        for (const auto& coefficients : section.coefficients)
            *coefficients = design;
    };

    for (const auto& section : highpass)
        set (section, Design::makeHighPass (rate, highpassHz, section.q));

    for (const auto& section : lowpass)
        set (section, Design::makeLowPass (rate, lowpassHz, section.q));
}

void JuceCascade::process (juce::dsp::AudioBlock<double> block)
{
    for (auto* cascade : { &highpass, &lowpass })
        for (auto& section : *cascade)
            for (std::size_t channel = 0; channel < 2; ++channel)
            {
                auto single = block.getSingleChannelBlock (channel);
                section.channels[channel].process (juce::dsp::ProcessContextReplacing<double> (single));
            }
}

void JuceCascade::processFrame (double& left, double& right) noexcept
{
    for (auto* cascade : { &highpass, &lowpass })
        for (auto& section : *cascade)
        {
            left = section.channels[0].processSample (left);
            right = section.channels[1].processSample (right);
        }
}

//======================================================================================================================
StaticJuceContestant::StaticJuceContestant (int order)
    : cascade (order, hostRate, JuceCascade::Sharing::oneForBothChannels)
{
}

void StaticJuceContestant::take (const Noise::Block& block) { widen (buffer, block); }

void StaticJuceContestant::run()
{
    const juce::ScopedNoDenormals noDenormals;
    cascade.process (juce::dsp::AudioBlock<double> (buffer));
}

//======================================================================================================================
RedesignedJuceContestant::RedesignedJuceContestant (int order, JuceCascade::Sharing sharing)
    : cascade (order, hostRate, sharing)
{
}

void RedesignedJuceContestant::take (const Noise::Block& block) { widen (buffer, block); }

void RedesignedJuceContestant::run()
{
    const juce::ScopedNoDenormals noDenormals;
    auto* const left = buffer.getWritePointer (0);
    auto* const right = buffer.getWritePointer (1);

    for (int n = 0; n < buffer.getNumSamples(); ++n)
    {
        hertz = hertz > 600.0 ? 300.0 : hertz * 1.0001;
        cascade.setCutoffs (hertz, hertz * 8.0);
        cascade.processFrame (left[n], right[n]);
    }
}
