// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gtest/gtest.h>

#include "dsp/MainAudioProcessor.h"
#include "support/SettingsProbe.h"

namespace
{
/** A frame with a bank of three, as a derived plug-in would fill it, and no update pending. */
struct Bank : SettingsProbe
{
    Bank()
    {
        programs = { { "Low", R"(hp_freq="0.1")" },
                     { "Mid", R"(hp_freq="0.5" zebra="1")" },
                     { "High", R"(hp_freq="0.9")" } };
        settle();
    }

    void settle()
    {
        controlUpdatePending = false;
        framesSinceRequest = 77;
    }
};
} // namespace

TEST (FramePrograms, HaveOneDefaultWhenThereIsNoBank)
{
    SettingsProbe probe;

    EXPECT_EQ (probe.getNumPrograms(), 1);
    EXPECT_EQ (probe.getCurrentProgram(), 0);
    EXPECT_EQ (probe.getProgramName (0), "Default");
    ASSERT_EQ (probe.programs.size(), 1u);
    EXPECT_EQ (probe.programs[0].second, "");
}

TEST (FramePrograms, CreateTheDefaultOnTheFirstCallOfAnyKind)
{
    SettingsProbe byName, byRename;

    EXPECT_EQ (byName.getProgramName (0), "Default");
    byRename.changeProgramName (0, "Mine");
    EXPECT_EQ (byRename.programs.size(), 1u);
    EXPECT_EQ (byRename.getProgramName (0), "Default");
}

TEST (FramePrograms, CountAndNameABank)
{
    Bank bank;

    EXPECT_EQ (bank.getNumPrograms(), 3);
    EXPECT_EQ (bank.getProgramName (2), "High");
    bank.changeProgramName (2, "Other");
    EXPECT_EQ (bank.getProgramName (2), "High");
}

TEST (FramePrograms, HaveNoNameOutsideTheBank)
{
    Bank bank;

    EXPECT_EQ (bank.getProgramName (-1), "");
    EXPECT_EQ (bank.getProgramName (3), "");
}

TEST (FramePrograms, LoadTheirAttributesAsSettings)
{
    Bank bank;
    bank.setCurrentProgram (1);

    EXPECT_EQ (bank.set.hpFreq->get(), 0.5f);
    EXPECT_EQ (bank.set.lpFreq->get(), 1.0f);
    EXPECT_EQ (bank.extraAttributes["zebra"], "1");
    EXPECT_EQ (bank.getCurrentProgram(), 1);
    EXPECT_EQ (bank.loadedProgram, 1);
    EXPECT_TRUE (bank.controlUpdatePending);
    EXPECT_EQ (bank.framesSinceRequest, 0);
}

TEST (FramePrograms, OnlyRecordTheIndexWhileAnUpdateIsPending)
{
    Bank bank;
    bank.controlUpdatePending = true;
    bank.setCurrentProgram (2);

    EXPECT_EQ (bank.getCurrentProgram(), 2);
    EXPECT_EQ (bank.loadedProgram, -1);
    EXPECT_EQ (bank.set.hpFreq->get(), 0.0f);
    EXPECT_EQ (bank.framesSinceRequest, 77);

    bank.settle();
    bank.setCurrentProgram (2);
    EXPECT_EQ (bank.set.hpFreq->get(), 0.9f);
}

TEST (FramePrograms, DoNotLoadTheSameOneTwice)
{
    Bank bank;
    bank.setCurrentProgram (0);
    bank.settle();
    bank.set.hpFreq->setValueNotifyingHost (0.75f);
    bank.setCurrentProgram (0);

    EXPECT_EQ (bank.set.hpFreq->get(), 0.75f);
    EXPECT_FALSE (bank.controlUpdatePending);
}

TEST (FramePrograms, LoadNothingWhenThereIsOnlyOne)
{
    SettingsProbe probe;
    probe.programs = { { "Only", R"(hp_freq="0.4")" } };
    probe.controlUpdatePending = false;
    probe.setCurrentProgram (0);

    EXPECT_EQ (probe.set.hpFreq->get(), 0.0f);
    EXPECT_EQ (probe.loadedProgram, -1);
    EXPECT_FALSE (probe.controlUpdatePending);
}

TEST (FramePrograms, SurviveAnIndexOutsideTheBankAndMalformedText)
{
    Bank bank;
    bank.programs.emplace_back ("Broken", "hp_freq=\"0.3");

    for (const auto index : { -1, 4, 1000000, 3 })
    {
        bank.settle();
        bank.setCurrentProgram (index);
        EXPECT_EQ (bank.getCurrentProgram(), index);
        EXPECT_EQ (bank.set.hpFreq->get(), 0.0f);
    }
}

TEST (FramePrograms, SaveAndLoadTheWholeSettingsAsTheirState)
{
    SettingsProbe probe;
    juce::MemoryBlock block;
    probe.set.hpFreq->setValueNotifyingHost (0.25f);
    probe.getCurrentProgramStateInformation (block);

    SettingsProbe other;
    other.setCurrentProgramStateInformation (block.getData(), (int) block.getSize());
    EXPECT_EQ (other.set.hpFreq->get(), 0.25f);
}

TEST (PluginPrograms, AreASingleUnnamedOne)
{
    MainAudioProcessor processor;

    EXPECT_EQ (processor.getNumPrograms(), 1);
    EXPECT_EQ (processor.getCurrentProgram(), 0);

    processor.changeProgramName (0, "Mine");

    for (const auto index : { -1, 0, 1, 1000000 })
        EXPECT_EQ (processor.getProgramName (index), "");
}

TEST (PluginPrograms, OnlyRequestAnUpdateWhenSelected)
{
    MainAudioProcessor processor;
    const auto values = settings::distinctValues();
    settings::setAll (processor, values);

    for (const auto index : { -1, 0, 5 })
    {
        processor.controlUpdatePending = false;
        processor.framesSinceRequest = 77;
        processor.setCurrentProgram (index);

        EXPECT_TRUE (processor.controlUpdatePending);
        EXPECT_EQ (processor.framesSinceRequest, 0);
        EXPECT_EQ (processor.getCurrentProgram(), 0);
        EXPECT_EQ (settings::valuesOf (processor), values);
    }
}
