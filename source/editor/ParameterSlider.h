// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include "parameters/AudioParameterFloatKestrin.h"

/** A rotary knob over the normalised value of one parameter. It knows the parameter's texts, its default and the
    positions it can rest on, but moves nothing: the window writes a turned knob to its parameter and polls the other
    way. Message thread only. */
class ParameterSlider : public juce::Slider
{
public:
    ParameterSlider();
    ~ParameterSlider() override = default;

    /** Takes over the parameter's range, texts and default. Once, after construction.
        @param newParameter  never null; outlives the knob */
    void bindToParameter (juce::AudioParameterFloatKestrin* newParameter);

    /** Null until the knob is bound. */
    juce::AudioParameterFloatKestrin* parameter = nullptr;

private:
    void setRangeOfParameter();

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (ParameterSlider)
};
