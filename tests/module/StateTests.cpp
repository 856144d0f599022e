// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gtest/gtest.h>

#include "host/HostError.h"
#include "host/PluginState.h"
#include "module/ModuleUnderTest.h"

namespace
{
/** Four decimals are kept. */
constexpr float savedPrecision = 0.0000501f;

juce::MemoryBlock bytes (const juce::String& text) { return { text.toRawUTF8(), text.getNumBytesAsUTF8() }; }

/** The settings without the time of saving. */
juce::String comparable (ModuleUnderTest& module)
{
    const auto settings = juce::parseXML (pluginState::settingsText (pluginState::read (module.instance())));

    if (settings == nullptr)
        return "no settings";

    settings->removeAttribute ("date_modified");
    return settings->toString (juce::XmlElement::TextFormat().singleLine());
}
} // namespace

TEST (ModuleState, ComesBackInAnotherInstance)
{
    ModuleUnderTest first, second;
    juce::Random random (42);

    for (const auto& parameter : first.parameters().all())
        if (parameter.id != "link")
            parameter.parameter->setValue (random.nextFloat());

    first.set ("link", 1.0f);
    first.set ("byps", 0.0f);
    first.deliverParameters();
    pluginState::apply (second.instance(), pluginState::read (first.instance()));

    for (const auto& parameter : first.parameters().all())
        EXPECT_NEAR (second.get (parameter.id), parameter.parameter->getValue(), savedPrecision) << parameter.id;
}

TEST (ModuleState, IsTheSameTextAfterSaveAndLoadAndSave)
{
    ModuleUnderTest first, second;
    first.set ("lp_freq", 0.123456f);
    first.deliverParameters();
    second.deliverParameters();
    pluginState::apply (second.instance(), pluginState::read (first.instance()));

    EXPECT_EQ (comparable (second), comparable (first));
}

TEST (ModuleState, IsStoredWithTheHostsBypassOutsideTheSettings)
{
    ModuleUnderTest first, second;
    first.set ("byps", 1.0f);
    first.deliverParameters();
    pluginState::apply (second.instance(), pluginState::read (first.instance()));

    EXPECT_EQ (second.get ("byps"), 1.0f);
    EXPECT_FALSE (pluginState::settingsText (pluginState::read (first.instance())).contains ("byps"));
}

TEST (ModuleState, IsHeardFromTheFirstBlock)
{
    ModuleUnderTest loaded, set;
    set.set ("lp_freq", 0.25f);
    set.deliverParameters();
    pluginState::apply (loaded.instance(), pluginState::read (set.instance()));

    auto one = makeNoise (2, 512);
    auto other = one;

    for (auto* module : { &loaded, &set })
        module->prepare (juce::AudioChannelSet::stereo());

    loaded.process (one);
    set.process (other);
    EXPECT_EQ (samplesOf (one, 0), samplesOf (other, 0));
}

TEST (ModuleState, IsUnchangedByDamagedBlocks)
{
    ModuleUnderTest module;
    module.set ("lp_freq", 0.25f);
    module.deliverParameters();
    const auto before = comparable (module);
    auto truncated = pluginState::read (module.instance());
    truncated.setSize (truncated.getSize() / 2);

    for (const auto& block :
         { juce::MemoryBlock(), bytes ("x"), bytes ("VC2!"), bytes ("VC2!\x7f\x7f\x7f\x7f<set"),
           pluginState::fromSettingsText ("<other lp_freq=\"1\"/>"),
           pluginState::fromSettingsText ("<settings lp_freq="), juce::MemoryBlock (100000, true), truncated })
    {
        pluginState::apply (module.instance(), block);
        EXPECT_EQ (comparable (module), before);
    }
}

TEST (ModuleState, LoadsFromABlockFromTextAndFromAPreset)
{
    ModuleUnderTest written;
    written.set ("hp_freq", 0.75f);
    written.deliverParameters();

    for (const auto* ending : { ".state", ".xml", ".vstpreset" })
    {
        const juce::TemporaryFile file (ending);
        const auto content = pluginState::contentForFile (written.instance(), file.getFile());
        ASSERT_TRUE (file.getFile().replaceWithData (content.getData(), content.getSize()));

        ModuleUnderTest read;
        pluginState::loadFile (read.instance(), file.getFile());
        EXPECT_EQ (read.get ("hp_freq"), 0.75f) << ending;
    }
}

TEST (ModuleState, IsRefusedFromAFileWithoutSettings)
{
    ModuleUnderTest module;
    const juce::TemporaryFile file (".state");

    for (const auto* content : { "", "VC2!", "<other/>", "hello", "VST3" })
    {
        ASSERT_TRUE (file.getFile().replaceWithText (content));
        EXPECT_THROW (pluginState::loadFile (module.instance(), file.getFile()), HostError) << content;
    }
}
