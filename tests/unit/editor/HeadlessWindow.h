// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

/** A window without a screen: puts a component on JUCE's desktop by a peer that draws nowhere, so that a test has
    keyboard focus, pointer and keys. JUCE delivers them as in any window. */
class HeadlessWindow : public juce::Component
{
public:
    explicit HeadlessWindow (juce::Component& content);
    ~HeadlessWindow() override;

    /** Press, the moves and the release, all in the middle of a component.
        @param dragUp  pixels */
    void drag (juce::Component& target, int dragUp, juce::ModifierKeys keysAtPress = {},
               juce::ModifierKeys keysWhileDragging = {});
    void click (juce::Component& target, juce::ModifierKeys keys = {});
    void doubleClick (juce::Component& target);
    void wheel (juce::Component& target, float deltaY);

    void press (juce::Component& target, juce::ModifierKeys keys = {});
    void release (juce::Component& target);

    /** Types into the component with the focus. */
    void type (const juce::String& text);
    void typeReturn();

    /** Runs JUCE's queue until it is empty: keys and clicks travel through it. */
    static void deliverMessages();

private:
    class Peer;

    void childBoundsChanged (juce::Component* content) override;
    juce::ComponentPeer* createNewPeer (int styleFlags, void*) override;
    void send (juce::Point<float> position, juce::ModifierKeys modifiers);
    [[nodiscard]] juce::Point<float> middleOf (const juce::Component& target) const;
    [[nodiscard]] juce::ComponentPeer& peer() const { return *getPeer(); }

    /** The pointer's clock, in milliseconds: double clicks are a matter of time. */
    juce::int64 now = 1000000;
};
