// SPDX-License-Identifier: AGPL-3.0-or-later
// Where kestrin-host asks for a module, the fuzzers give it the plug-in itself, with no library and no factory between:
// a fuzzer can only learn from code that is built with its instrumentation.
#include "dsp/MainAudioProcessor.h"
#include "host/ModuleLoader.h"

juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter();

namespace
{
/** The id of a parameter as VST3 hosts see it: a hash of its letters. */
[[nodiscard]] juce::String numberOf (const juce::String& word)
{
    return juce::String ((juce::uint32) word.hashCode() & 0x7fffffff);
}

class HostedView : public juce::HostedAudioProcessorParameter
{
public:
    explicit HostedView (juce::AudioProcessorParameter& parameter) : inner (parameter) {}

    float getValue() const override { return inner.getValue(); }
    void setValue (float position) override { inner.setValue (position); }
    float getDefaultValue() const override { return inner.getDefaultValue(); }
    juce::String getName (int length) const override { return inner.getName (length); }
    juce::String getLabel() const override { return inner.getLabel(); }
    juce::String getText (float position, int length) const override { return inner.getText (position, length); }
    float getValueForText (const juce::String& text) const override { return inner.getValueForText (text); }
    juce::String getParameterID() const override
    {
        return numberOf (dynamic_cast<juce::AudioProcessorParameterWithID&> (inner).paramID);
    }

private:
    juce::AudioProcessorParameter& inner;
};

class InProcessInstance : public juce::AudioPluginInstance
{
public:
    InProcessInstance() : inner (createPluginFilter())
    {
        for (auto* const parameter : inner->getParameters())
            addHostedParameter (std::make_unique<HostedView> (*parameter));
    }

    void fillInPluginDescription (juce::PluginDescription&) const override {}
    const juce::String getName() const override { return inner->getName(); }
    void prepareToPlay (double rate, int size) override { inner->prepareToPlay (rate, size); }
    void releaseResources() override { inner->releaseResources(); }
    void processBlock (juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi) override
    {
        inner->processBlock (buffer, midi);
    }
    double getTailLengthSeconds() const override { return 0.0; }
    bool acceptsMidi() const override { return false; }
    bool producesMidi() const override { return false; }
    juce::AudioProcessorEditor* createEditor() override { return nullptr; }
    bool hasEditor() const override { return false; }
    int getNumPrograms() override { return 1; }
    int getCurrentProgram() override { return 0; }
    void setCurrentProgram (int) override {}
    const juce::String getProgramName (int) override { return {}; }
    void changeProgramName (int, const juce::String&) override {}

    // JUCE's hosting side wraps the blocks of component and controller in XML.
    void getStateInformation (juce::MemoryBlock& wrapped) override
    {
        juce::MemoryBlock block;
        inner->getStateInformation (block);
        juce::XmlElement wrapper ("VST3PluginState");
        wrapper.createNewChildElement ("IComponent")->addTextElement (block.toBase64Encoding());
        copyXmlToBinary (wrapper, wrapped);
    }

    void setStateInformation (const void* data, int size) override
    {
        juce::MemoryBlock block;

        if (const auto wrapper = getXmlFromBinary (data, size))
            if (const auto* component = wrapper->getChildByName ("IComponent"))
                if (block.fromBase64Encoding (component->getAllSubText()))
                    inner->setStateInformation (block.getData(), (int) block.getSize());
    }

private:
    std::unique_ptr<juce::AudioProcessor> inner;
};
} // namespace

std::unique_ptr<juce::AudioPluginInstance> moduleLoader::load (const juce::File&)
{
    return std::make_unique<InProcessInstance>();
}
