// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gtest/gtest.h>

#include "module/ModuleUnderTest.h"

namespace
{
const auto mono = juce::AudioChannelSet::mono();
const auto stereo = juce::AudioChannelSet::stereo();
} // namespace

TEST (ModuleBuses, HaveOneActiveStereoInputAndOutputWithTheirNames)
{
    ModuleUnderTest module;

    for (const auto isInput : { true, false })
    {
        ASSERT_EQ (module.instance().getBusCount (isInput), 1);
        const auto* bus = module.instance().getBus (isInput, 0);

        EXPECT_EQ (bus->getName(), isInput ? "Input" : "Output");
        EXPECT_EQ (bus->getDefaultLayout(), stereo);
        EXPECT_TRUE (bus->isEnabledByDefault());
    }
}

TEST (ModuleBuses, AcceptMonoAndStereoWithEqualSides)
{
    ModuleUnderTest module;

    EXPECT_TRUE (module.supports (mono, mono));
    EXPECT_TRUE (module.supports (stereo, stereo));
}

TEST (ModuleBuses, RefuseUnequalSides)
{
    ModuleUnderTest module;

    EXPECT_FALSE (module.supports (stereo, mono));
    EXPECT_FALSE (module.supports (mono, stereo));
}

TEST (ModuleBuses, RefuseMoreThanStereo)
{
    ModuleUnderTest module;

    for (const auto& channels : { juce::AudioChannelSet::createLCR(), juce::AudioChannelSet::quadraphonic(),
                                  juce::AudioChannelSet::create5point1() })
        EXPECT_FALSE (module.supports (channels, channels)) << channels.getDescription();
}

TEST (ModuleBuses, HaveNoMidi)
{
    ModuleUnderTest module;

    EXPECT_FALSE (module.instance().acceptsMidi());
    EXPECT_FALSE (module.instance().producesMidi());
}

TEST (ModuleTiming, HasNeitherLatencyNorTail)
{
    ModuleUnderTest module;

    for (const auto& channels : { mono, stereo })
    {
        module.prepare (channels);
        EXPECT_EQ (module.instance().getLatencySamples(), 0);
        EXPECT_EQ (module.instance().getTailLengthSeconds(), 0.0);
        module.instance().releaseResources();
    }
}

TEST (ModuleTiming, OffersSinglePrecisionOnly)
{
    ModuleUnderTest module;
    EXPECT_FALSE (module.instance().supportsDoublePrecisionProcessing());
}
