// SPDX-License-Identifier: AGPL-3.0-or-later
#include <gtest/gtest.h>
#include <juce_gui_basics/juce_gui_basics.h>

int main (int argc, char** argv)
{
    // The main thread is the message thread, as in a host.
    const juce::ScopedJuceInitialiser_GUI juceIsUp;

    testing::InitGoogleTest (&argc, argv);
    return RUN_ALL_TESTS();
}
