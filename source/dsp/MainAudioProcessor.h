// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "dsp/engine/FilterChain.h"
#include "dsp/engine/LfoBank.h"
#include "dsp/engine/ParameterSnapshot.h"
#include "dsp/engine/SlewBank.h"
#include "dsp/engine/TickBatch.h"
#include "dsp/filters/ButterworthFilter.h"
#include "dsp/filters/GrungeLadder.h"
#include "dsp/filters/ResonancePeak.h"
#include "dsp/modulation/LfoGenerator.h"
#include "dsp/modulation/SlewValue.h"
#include "frame/AudioProcessorKestrin.h"
#include "parameters/ParameterSet.h"

/** The plug-in: a highpass and a lowpass in series, in two families, moved by two LFOs and the Frequencer.

    The control side reads transport and parameters and designs the filters: updateControlRate, which is a tick. The audio side
    only runs the filters: FilterChain::process. While anything moves there is one tick per frame, and one per 65536 frames
    otherwise. Frames come through processFrames. Awake, the ticks of up to 64 frames are computed as a batch, step by step,
    and then the frames run through the filters, each with the coefficients of its own tick; asleep, up to 512 frames run
    through filters that stand. The virtual operations updateControlRate and processFrame do the same to one frame.

    The public fields are what the window shows and what the tests look at; they are written on the audio thread. */
class MainAudioProcessor : public juce::AudioProcessorKestrin
{
public:
    MainAudioProcessor();
    ~MainAudioProcessor() override;

    const juce::String getName() const override;
    void prepareToPlay (double sampleRate, int maximumExpectedSamplesPerBlock) override;
    void releaseResources() override {}
    double getTailLengthSeconds() const override { return 0.0; }
    bool acceptsMidi() const override { return false; }
    bool producesMidi() const override { return false; }
    bool isMidiEffect() const override { return false; }
    juce::AudioProcessorEditor* createEditor() override;
    bool hasEditor() const override { return true; }

    // One unnamed program: the plug-in has no preset bank.
    int getNumPrograms() override { return 1; }
    int getCurrentProgram() override { return 0; }
    void setCurrentProgram (int index) override;
    const juce::String getProgramName (int index) override;
    void changeProgramName (int, const juce::String&) override {}

    bool isBusesLayoutSupported (const BusesLayout& layouts) const override;
    void updateControlRate() override;
    std::pair<float, float> processFrame (float left, float right) override;

    std::array<LfoGenerator, ParameterSet::numLfos> lfo;

    /** One LFO cycle in beats, and its words, in step with the choice of lfo1_mode and lfo2_mode. */
    std::vector<float> barLengths;
    std::vector<std::string> barLabels;

    /** Difference of the two frequency knobs while they are linked; at or below -90 it has not been captured yet. The
        window alone reads and writes it, on the message thread; it lives here to outlast the window. */
    float freqLinkOffset = -100.0f;

    std::array<bool, ParameterSet::numSteps> stepLit {};

    SlewValue hpFreqSlew, lpFreqSlew, hpResoSlew, lpResoSlew;
    std::int32_t hpPoles = 0;
    std::int32_t lpPoles = 0;
    float hpPeakBandwidth = 1.0f;
    float lpPeakBandwidth = 1.0f;
    std::array<float, ParameterSet::numLfos> wobblePhase {};
    std::array<float, ParameterSet::numLfos> wobbleStep {};
    std::array<float, ParameterSet::numLfos> wobbleDepth {};

    /** 0 to 10: ten times the sixth power of the slewed resonance. */
    float hpResonance = 0.0f;
    float lpResonance = 0.0f;

    std::unique_ptr<ButterworthFilter> hpFilter, lpFilter;
    std::unique_ptr<GrungeLadder> hpLadder, lpLadder;
    std::unique_ptr<ResonancePeak> hpResonator, lpResonator;

    ParameterSet parameters;

protected:
    void processFrames (float* left, float* right, int numFrames) override;

private:
    // The tick, step by step.
    void updateControlRate (TickBatch& ticks);
    void collectTicks (TickBatch& ticks);
    [[nodiscard]] bool collect (TickBatch& ticks, SongPosition position);
    [[nodiscard]] SongPosition queryTransport();
    void takeSlopes (const TickBatch& ticks) noexcept;
    void addFrequencer (TickBatch& ticks) noexcept;
    void takeSlews (const SlewBank& slews, const TickBatch& ticks) noexcept;
    void stayAwake (const SlewBank& slews) noexcept;

    // The frames, asleep and awake.
    [[nodiscard]] std::size_t processAsleep (SampleBlock samples) noexcept;
    [[nodiscard]] std::size_t processAwake (SampleBlock samples);
    [[nodiscard]] bool goesOn (const TickBatch& ticks) noexcept;
    void processAsDesigned (SampleBlock samples) noexcept;
    bool watchParameters() noexcept;

    ParameterSnapshot snapshot;

    /** The count of changes at which the watch has last found nothing. */
    std::optional<std::uint32_t> unchangedSince;

    /** A tick that has asked the transport, and goes by a newer snapshot than the batch before it. */
    std::optional<SongPosition> begunTick;

    LfoBank lfos;
    FilterChain filters;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (MainAudioProcessor)
};
