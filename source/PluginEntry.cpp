// SPDX-License-Identifier: AGPL-3.0-or-later
#include "dsp/MainAudioProcessor.h"
#include "editor/MainAudioProcessorEditor.h"

/** Where JUCE's plug-in client asks for a new instance. */
juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter() { return new MainAudioProcessor(); }

/** The one place that knows the window. */
juce::AudioProcessorEditor* MainAudioProcessor::createEditor() { return new MainAudioProcessorEditor (*this); }
