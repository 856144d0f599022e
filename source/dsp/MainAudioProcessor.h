// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "dsp/engine/ControlReadings.h"
#include "dsp/filters/ButterworthFilter.h"
#include "dsp/filters/GrungeLadder.h"
#include "dsp/filters/ResonancePeak.h"
#include "dsp/modulation/Frequencer.h"
#include "dsp/modulation/LfoGenerator.h"
#include "dsp/modulation/SlewValue.h"
#include "dsp/simd/FrameRun.h"
#include "frame/AudioProcessorKestrin.h"
#include "parameters/ParameterSet.h"

/** The plug-in: a highpass and a lowpass in series, in two families, moved by two LFOs and the Frequencer.

    The control side (updateControlRate, one call of which is a tick) reads transport and parameters and designs the
    filters; the audio side (processFrame) only runs them. While anything moves there is one tick per frame, and one per
    65536 frames otherwise. The public fields are what the window shows and what the tests look at; they are written on
    the audio thread. */
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
    struct Slews;
    struct Motion;
    struct TickSeries;
    struct TickRun;

    bool watchParameters() noexcept;

    // The ticks in rows, up to the slews. What every tick goes through by itself is inline for speed's sake.
    [[nodiscard]] Motion beginMotion() const noexcept;
    void endMotion (const Motion& motion, const TickSeries& ticks) noexcept;
    void gatherTicks (Motion& motion, TickSeries& ticks, std::size_t maxTicks);
    inline void nextTick (Motion& motion, TickSeries& ticks);
    inline void askHost (Motion& motion, TickSeries& ticks);
    void readAgain (Motion& motion, TickSeries& ticks);
    void moveControls (Motion& motion, TickSeries& ticks);
    inline void moveLfos (const Motion& motion, TickSeries& ticks);
    void moveSteadyLfo (const Motion& motion, TickSeries& ticks, std::size_t firstTick, std::size_t i) noexcept;
    void setFrequencies (const Motion& motion, const TickSeries& ticks, std::size_t firstTick, std::size_t i,
                         std::span<float> frequencies) noexcept;
    inline void moveLfosOnce (const Motion& motion, TickSeries& ticks, std::size_t tick);
    inline void moveWobble (const ControlReadings::Lfo& reading, double rate, std::size_t i) noexcept;
    inline void configureLfo (const Motion& motion, std::size_t i, float frequency);
    void lockLfosToBars (const Motion& motion, float barMultiple);

    void designFilters (const TickSeries& ticks) noexcept;

    // Frames taken together: what the tick and the frame do, in another order.
    [[nodiscard]] std::size_t processAsleep (SampleRun samples) noexcept;
    [[nodiscard]] std::size_t processAwake (SampleRun samples);
    void runFilters (SampleRun samples) noexcept;
    void runButterworth (SampleRun samples) noexcept;
    void runLadder (SampleRun samples) noexcept;
    void runFilters (const TickSeries& ticks, FrameRun frames) noexcept;
    void runButterworth (const TickRun& ticks, FrameRun frames) noexcept;
    void runLadder (const TickRun& ticks, FrameRun frames) noexcept;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (MainAudioProcessor)
};
