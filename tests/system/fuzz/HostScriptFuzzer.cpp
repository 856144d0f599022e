// SPDX-License-Identifier: AGPL-3.0-or-later
// A host that does what the bytes say: each call is a byte, and takes its arguments from the bytes after it. Missing bytes
// count as 0.
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "support/FakePlayHead.h"
#include "system/fuzz/FuzzedProcessor.h"

namespace
{
class Script
{
public:
    explicit Script (std::span<const std::uint8_t> content) : bytes (content) {}

    [[nodiscard]] bool isAtEnd() const noexcept { return bytes.empty(); }

    [[nodiscard]] int byte() noexcept
    {
        if (bytes.empty())
            return 0;

        const auto first = bytes.front();
        bytes = bytes.subspan (1);
        return first;
    }

    [[nodiscard]] int word() noexcept
    {
        const auto low = byte();
        return low + 256 * byte();
    }

    /** Any finite number that four bytes can hold; infinity and NaN become 0. */
    [[nodiscard]] float finite() noexcept
    {
        const auto low = (std::uint32_t) word();
        const auto number = std::bit_cast<float> (low + 65536u * (std::uint32_t) word());
        return std::isfinite (number) ? number : 0.0f;
    }

    [[nodiscard]] float unit() noexcept { return (float) word() / 65535.0f; }

private:
    std::span<const std::uint8_t> bytes;
};

class FuzzedHost
{
public:
    FuzzedHost() { processor.setRateAndBufferSizeDetails (48000.0, 512); }

    void obey (Script& script)
    {
        switch (script.byte() % 13)
        {
            case 0:
            case 1:
                processNoise (script);
                break;
            case 2:
                processSilence (script);
                break;
            case 3:
                processNumbers (script);
                break;
            case 4:
            case 5:
                setParameter (script);
                break;
            case 6:
                setAllParameters (script);
                break;
            case 7:
                setSampleRate (script);
                break;
            case 8:
                setTransport (script);
                break;
            case 9:
                setLayout (script);
                break;
            case 10:
                saveAndLoad (script);
                break;
            case 11:
                editorAsks (script);
                break;
            default:
                sleepForADay (script);
                break;
        }

        fuzzedProcessor::requireValuesInRange (processor);
        require (processor.framesSinceRequest >= 0, "the count of frames does not overflow");
    }

    void end() { fuzzedProcessor::requireStableRoundTrip (processor); }

private:
    void process (juce::AudioBuffer<float>& buffer)
    {
        juce::MidiBuffer noMessages;
        processor.processBlock (buffer, noMessages);

        for (int channel = 0; channel < buffer.getNumChannels(); ++channel)
            for (int frame = 0; frame < buffer.getNumSamples(); ++frame)
            {
                const auto sample = buffer.getSample (channel, frame);
                require (std::isfinite (sample), "what comes out of finite input is finite");
                require (std::fpclassify (sample) != FP_SUBNORMAL, "no subnormal number comes out");
            }
    }

    [[nodiscard]] int numChannels() const { return processor.getTotalNumInputChannels(); }

    void processNoise (Script& script)
    {
        juce::AudioBuffer<float> buffer (numChannels(), script.byte());
        juce::Random random (script.byte());
        const auto amplitude = (float) script.byte();

        for (int channel = 0; channel < buffer.getNumChannels(); ++channel)
            for (int frame = 0; frame < buffer.getNumSamples(); ++frame)
                buffer.setSample (channel, frame, amplitude * (random.nextFloat() - 0.5f));

        process (buffer);
    }

    /** Long enough for the engine to fall asleep, and for its clock to wrap. */
    void processSilence (Script& script)
    {
        juce::AudioBuffer<float> buffer (numChannels(), script.word() % 4096);
        buffer.clear();
        process (buffer);
    }

    void processNumbers (Script& script)
    {
        juce::AudioBuffer<float> buffer (numChannels(), script.byte() % 32);

        for (int channel = 0; channel < buffer.getNumChannels(); ++channel)
            for (int frame = 0; frame < buffer.getNumSamples(); ++frame)
                buffer.setSample (channel, frame, script.finite());

        process (buffer);
    }

    void setParameter (Script& script)
    {
        const auto& parameters = processor.getParameters();
        auto& parameter = *parameters[script.byte() % parameters.size()];
        parameter.setValueNotifyingHost (script.unit());
    }

    /** A patch that the bytes only number: one parameter at a time hardly ever gets to the ladder, or to a locked LFO. */
    void setAllParameters (Script& script)
    {
        juce::Random random (script.word());

        for (auto* const parameter : processor.getParameters())
            parameter->setValueNotifyingHost (random.nextInt (3) == 0 ? random.nextFloat()
                                                                      : parameter->getDefaultValue());
    }

    void setSampleRate (Script& script)
    {
        constexpr std::array rates { 1234.5678, 8000.0, 44100.0, 48000.0, 96000.0, 192000.0, 1234567.8, 0.0 };
        const auto rate = rates[(std::size_t) script.byte() % rates.size()];
        processor.setRateAndBufferSizeDetails (rate, 512);
        processor.prepareToPlay (rate, script.word());
    }

    void setTransport (Script& script)
    {
        const auto kind = script.byte();

        if (kind % 3 == 0)
            return processor.setPlayHead (nullptr);

        if (kind % 3 == 1)
            transport.position = juce::nullopt;
        else
            moveTransport (script);

        processor.setPlayHead (&transport);
    }

    void moveTransport (Script& script)
    {
        const auto beats = (double) script.finite();
        const auto tempo = (double) script.finite();
        const auto numerator = script.byte() % 33;
        const auto denominator = script.byte() % 33;
        transport.moveTo (beats, tempo, { numerator, denominator });
    }

    void setLayout (Script& script)
    {
        const auto channels = script.byte() % 2 == 0 ? juce::AudioChannelSet::stereo() : juce::AudioChannelSet::mono();
        juce::AudioProcessor::BusesLayout layout;
        layout.inputBuses.add (channels);
        layout.outputBuses.add (channels);
        require (processor.setBusesLayout (layout), "mono and stereo are possible");
    }

    void saveAndLoad (Script& script)
    {
        if (script.byte() % 2 == 0)
            processor.getStateInformation (saved);
        else
            processor.setStateInformation (saved.getData(), (int) saved.getSize());
    }

    /** What the window does to the engine. */
    void editorAsks (Script& script)
    {
        processor.requestControlUpdate();
        juce::ignoreUnused (processor.lfo[(std::size_t) script.byte() % 2].render());
    }

    /** The count of frames just before its limit. */
    void sleepForADay (Script& script)
    {
        processor.framesSinceRequest = std::numeric_limits<std::int32_t>::max() - script.word();
    }

    // The processor keeps a pointer to the transport.
    FakePlayHead transport;
    MainAudioProcessor processor;
    juce::MemoryBlock saved;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    static const juce::ScopedJuceInitialiser_GUI juceIsUp;
    constexpr int mostCalls = 64;

    FuzzedHost host;
    Script script (std::span<const std::uint8_t> (data, size));

    for (int call = 0; call < mostCalls && ! script.isAtEnd(); ++call)
        host.obey (script);

    host.end();
    return 0;
}
