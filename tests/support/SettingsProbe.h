// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "frame/AudioProcessorKestrin.h"
#include "parameters/ParameterSet.h"

/** The frame with the 55 parameters and no engine. Its programs and extra attributes are open to tests. */
class SettingsProbe : public juce::AudioProcessorKestrin
{
public:
    SettingsProbe() : AudioProcessorKestrin (BusesProperties()), set (*this) {}

    const juce::String getName() const override { return "Probe"; }
    double getTailLengthSeconds() const override { return 0.0; }
    bool acceptsMidi() const override { return false; }
    bool producesMidi() const override { return false; }
    juce::AudioProcessorEditor* createEditor() override { return nullptr; }
    bool hasEditor() const override { return false; }
    void updateControlRate() override {}
    std::pair<float, float> processFrame (float left, float right) override { return { left, right }; }

    using AudioProcessorKestrin::currentProgram;
    using AudioProcessorKestrin::extraAttributes;
    using AudioProcessorKestrin::loadedProgram;
    using AudioProcessorKestrin::programs;

    ParameterSet set;
};

/** Settings blocks and their texts. */
namespace settings
{
inline std::string blockOf (const std::string& text, std::uint32_t length, std::uint32_t magic = 0x21324356)
{
    std::string block;

    for (const auto word : { magic, length })
        for (int shift = 0; shift < 32; shift += 8)
            block += (char) (std::uint8_t) (word >> shift);

    return block + text + '\0';
}

inline std::string blockOf (const std::string& text) { return blockOf (text, (std::uint32_t) text.size()); }

/** A settings element around the attributes. */
inline std::string element (const std::string& attributes)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?> <settings )" + attributes + "/>";
}

inline void loadBlock (juce::AudioProcessor& processor, const std::string& block)
{
    // A copy of exactly its size, so that a sanitizer sees a read beyond it.
    const std::vector<char> bytes (block.begin(), block.end());
    processor.setStateInformation (bytes.data(), (int) bytes.size());
}

inline void loadText (juce::AudioProcessor& processor, const std::string& text)
{
    loadBlock (processor, blockOf (text));
}

inline std::string savedBlock (juce::AudioProcessor& processor)
{
    juce::MemoryBlock block;
    processor.getStateInformation (block);
    return { block.begin(), block.end() };
}

/** The text in the block that the processor saves. */
inline std::string savedText (juce::AudioProcessor& processor)
{
    const auto block = savedBlock (processor);
    return block.substr (8, block.size() - 9);
}

/** The value of an attribute in a saved text, still escaped. */
inline std::string attribute (const std::string& text, const std::string& name)
{
    const auto start = " " + name + "=\"";
    const auto place = text.find (start);

    if (place == std::string::npos)
        return "(none)";

    const auto value = place + start.size();
    return text.substr (value, text.find ('"', value) - value);
}

/** The same text with a fixed value for an attribute that differs from save to save. */
inline std::string pinned (std::string text, const std::string& name, const std::string& value)
{
    const auto start = " " + name + "=\"";
    const auto place = text.find (start);

    if (place != std::string::npos)
        text.replace (place + start.size(), attribute (text, name).size(), value);

    return text;
}

/** The text as many times in a row. */
inline std::string repeated (const std::string& text, std::size_t times)
{
    std::string result;
    result.reserve (text.size() * times);

    for (std::size_t time = 0; time < times; ++time)
        result += text;

    return result;
}

inline std::vector<float> valuesOf (const juce::AudioProcessor& processor)
{
    std::vector<float> values;

    for (const auto* parameter : processor.getParameters())
        values.push_back (parameter->getValue());

    return values;
}

inline void setAll (juce::AudioProcessor& processor, const std::vector<float>& values)
{
    for (std::size_t index = 0; index < values.size(); ++index)
        processor.getParameters()[(int) index]->setValue (values[index]);
}

/** A different value for each parameter: steps of 1/56, and the switch on. */
inline std::vector<float> distinctValues()
{
    std::vector<float> values;

    for (int index = 0; index < 55; ++index)
        values.push_back (index == 6 ? 1.0f : (float) (index + 1) / 56.0f);

    return values;
}
} // namespace settings
