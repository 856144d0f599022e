// SPDX-License-Identifier: AGPL-3.0-or-later
#include "unit/editor/EditorFixture.h"

ParameterSlider* knobOf (juce::Component& parent, const juce::AudioProcessorParameter* parameter)
{
    for (auto* knob : allOf<ParameterSlider> (parent))
        if (knob->parameter == parameter)
            return knob;

    return nullptr;
}

juce::Image picture (juce::Component& component, float scale)
{
    return component.createComponentSnapshot (component.getLocalBounds(), true, scale);
}

void keepPicture (const juce::Image& image, const juce::String& name)
{
    const auto file = juce::File { KESTRIN_TEST_PICTURES }.getChildFile (name);
    file.getParentDirectory().createDirectory();
    file.deleteFile();

    juce::FileOutputStream stream { file };
    juce::PNGImageFormat {}.writeImageToStream (image, stream);
}
