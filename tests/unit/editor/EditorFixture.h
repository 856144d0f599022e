// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "editor/MainAudioProcessorEditor.h"

/** A processor with its window, which is not on any screen. */
class EditorFixture : public testing::Test
{
protected:
    MainAudioProcessor processor;
    ParameterSet& parameters { processor.parameters };

    /** Made at first use, after the test has set its parameters. */
    MainAudioProcessorEditor& editor()
    {
        if (madeEditor == nullptr)
            madeEditor = std::make_unique<MainAudioProcessorEditor> (processor);

        return *madeEditor;
    }

    void closeEditor() { madeEditor.reset(); }

    /** As a host sets it. */
    static void set (juce::AudioProcessorParameter* parameter, float value) { parameter->setValue (value); }

private:
    std::unique_ptr<MainAudioProcessorEditor> madeEditor;
};

/** The knob of a parameter within a component, however deep; null if there is none. */
[[nodiscard]] ParameterSlider* knobOf (juce::Component& parent, const juce::AudioProcessorParameter* parameter);

/** All components of one class within another, in the order in which they are painted. */
template <typename Type>
[[nodiscard]] std::vector<Type*> allOf (juce::Component& parent)
{
    std::vector<Type*> found;

    for (auto* child : parent.getChildren())
    {
        if (auto* match = dynamic_cast<Type*> (child))
            found.push_back (match);

        for (auto* deeper : allOf<Type> (*child))
            found.push_back (deeper);
    }

    return found;
}

/** The component as it paints itself. */
[[nodiscard]] juce::Image picture (juce::Component& component, float scale = 1.0f);

/** Writes the picture beside the build, for people to look at. */
void keepPicture (const juce::Image& image, const juce::String& name);

/** What one listener of a parameter hears. */
class HeardValues : private juce::AudioProcessorParameter::Listener
{
public:
    explicit HeardValues (juce::AudioProcessorParameter& parameterToHear) : parameter (parameterToHear)
    {
        parameter.addListener (this);
    }

    ~HeardValues() override { parameter.removeListener (this); }

    std::vector<float> values;
    int gestures = 0;

private:
    void parameterValueChanged (int, float value) override { values.push_back (value); }
    void parameterGestureChanged (int, bool) override { ++gestures; }

    juce::AudioProcessorParameter& parameter;
};
