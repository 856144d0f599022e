// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ButterworthFilter.h"
#include "ControlReadings.h"
#include "frame/AudioProcessorKestrin.h"
#include "FrameRun.h"
#include "Frequencer.h"
#include "GrungeLadder.h"
#include "LfoGenerator.h"
#include "parameters/ParameterSet.h"
#include "ResonancePeak.h"
#include "SlewValue.h"

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
    struct Tick;
    struct Motion;
    struct Structure;
    struct TickSeries;
    struct TickRun;

    // A tick up to the slews, and its steps in their order. They are inline for speed's sake: all this is done per frame.
    inline void moveControls (Motion& motion, Tick& tick);
    inline void readTransport (Tick& tick) const;
    inline void readRateAndParametersIfChanged (Motion& motion) const noexcept;
    inline void resetLfosWithoutTransport (const Tick& tick) noexcept;
    inline void setLfoWobbleAndTempoLock (const Motion& motion, const Tick& tick) noexcept;
    inline void advanceAndRouteLfos (const Motion& motion, Tick& tick);
    inline void decideWhetherToStayAwake (const Motion& motion) noexcept;
    void mapSlews (Tick& tick) noexcept;
    void designFilters (const Motion& motion, const Tick& tick) noexcept;

    inline void setWobble (const ControlReadings::Lfo& reading, double rate, std::size_t i) noexcept;
    inline void lockToTempo (const ControlReadings::Lfo& reading, const Tick& tick, std::size_t i) noexcept;
    [[nodiscard]] inline float speedMultiplier (float depthOfOther, const Tick& tick, std::size_t i) noexcept;
    inline void configureLfo (const Motion& motion, const Tick& tick, std::size_t i, float multiplier);
    void lockLfosToBars (const Motion& motion, float barMultiple);

    [[nodiscard]] Motion beginMotion() const noexcept;
    void endMotion (const Motion& motion) noexcept;
    bool watchParameters() noexcept;

    // Frames taken together: what the tick and the frame do, in another order.
    [[nodiscard]] std::size_t processAsleep (SampleRun samples) noexcept;
    [[nodiscard]] std::size_t processAwake (SampleRun samples);
    void gatherTicks (TickSeries& ticks, std::size_t maxTicks);
    void mapSlews (TickSeries& ticks) noexcept;
    void runFilters (SampleRun samples) noexcept;
    void runButterworth (SampleRun samples) noexcept;
    void runLadder (SampleRun samples) noexcept;
    void runFilters (const TickSeries& ticks, FrameRun frames) noexcept;
    void runButterworth (const TickRun& ticks, FrameRun frames) noexcept;
    void runLadder (const TickRun& ticks, FrameRun frames) noexcept;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (MainAudioProcessor)
};
