// SPDX-License-Identifier: AGPL-3.0-or-later
#include "unit/editor/HeadlessWindow.h"

namespace juce::detail
{
// What JUCE's own message loop calls on every platform; no header declares it.
bool dispatchNextMessageOnSystemQueue (bool returnIfNoPendingMessages);
} // namespace juce::detail

class HeadlessWindow::Peer : public juce::ComponentPeer
{
public:
    using juce::ComponentPeer::ComponentPeer;

    void* getNativeHandle() const override { return nullptr; }
    void setVisible (bool) override {}
    void setTitle (const juce::String&) override {}
    juce::Rectangle<int> getBounds() const override { return bounds; }
    juce::Point<float> localToGlobal (juce::Point<float> point) override { return point; }
    juce::Point<float> globalToLocal (juce::Point<float> point) override { return point; }
    using juce::ComponentPeer::globalToLocal;
    using juce::ComponentPeer::localToGlobal;
    void setMinimised (bool) override {}
    bool isMinimised() const override { return false; }
    bool isShowing() const override { return true; }
    void setFullScreen (bool) override {}
    bool isFullScreen() const override { return false; }
    void setIcon (const juce::Image&) override {}
    bool contains (juce::Point<int> position, bool) const override
    {
        return bounds.withZeroOrigin().contains (position);
    }
    OptionalBorderSize getFrameSizeIfPresent() const override { return {}; }
    juce::BorderSize<int> getFrameSize() const override { return {}; }
    bool setAlwaysOnTop (bool) override { return true; }
    void toFront (bool) override {}
    void toBehind (juce::ComponentPeer*) override {}
    bool isFocused() const override { return focused; }
    void repaint (const juce::Rectangle<int>&) override {}
    void performAnyPendingRepaintsNow() override {}
    void setAlpha (float) override {}
    juce::StringArray getAvailableRenderingEngines() override { return { "none" }; }
    void textInputRequired (juce::Point<int>, juce::TextInputTarget&) override {}

    void setBounds (const juce::Rectangle<int>& newBounds, bool) override
    {
        bounds = newBounds;
        handleMovedOrResized();
    }

    void grabFocus() override
    {
        if (! focused)
        {
            focused = true;
            handleFocusGain();
        }
    }

private:
    juce::Rectangle<int> bounds;
    bool focused = false;
};

HeadlessWindow::HeadlessWindow (juce::Component& content)
{
    setSize (content.getWidth(), content.getHeight());
    addAndMakeVisible (content);
    setVisible (true);
    addToDesktop (0);
}

HeadlessWindow::~HeadlessWindow()
{
    juce::ModifierKeys::currentModifiers = {};
    juce::Component::unfocusAllComponents();
    removeFromDesktop();
}

// As a host's window follows the size of the plug-in's.
void HeadlessWindow::childBoundsChanged (juce::Component* content)
{
    setSize (content->getRight(), content->getBottom());
}

juce::ComponentPeer* HeadlessWindow::createNewPeer (int styleFlags, void*) { return new Peer { *this, styleFlags }; }

juce::Point<float> HeadlessWindow::middleOf (const juce::Component& target) const
{
    return getLocalArea (&target, target.getLocalBounds()).getCentre().toFloat();
}

void HeadlessWindow::send (juce::Point<float> position, juce::ModifierKeys modifiers)
{
    now += 20;
    juce::ModifierKeys::currentModifiers = modifiers;
    peer().handleMouseEvent (juce::MouseInputSource::InputSourceType::mouse, position, modifiers, 0.0f, 0.0f, now);
}

void HeadlessWindow::press (juce::Component& target, juce::ModifierKeys keys)
{
    // Far from the last press, in time too: two clicks of a test are no double click unless it asks for one.
    now += 10000;
    send (middleOf (target), keys);
    send (middleOf (target), keys.withFlags (juce::ModifierKeys::leftButtonModifier));
}

void HeadlessWindow::release (juce::Component& target)
{
    send (middleOf (target), {});
    deliverMessages();
}

void HeadlessWindow::drag (juce::Component& target, int dragUp, juce::ModifierKeys keysAtPress,
                           juce::ModifierKeys keysWhileDragging)
{
    constexpr auto button = juce::ModifierKeys::leftButtonModifier;
    const auto start = middleOf (target);
    const auto direction = dragUp < 0 ? -1 : 1;

    press (target, keysAtPress);

    for (auto moved = direction; moved != dragUp + direction; moved += direction)
        send (start.translated (0.0f, (float) -moved), keysWhileDragging.withFlags (button));

    send (start.translated (0.0f, (float) -dragUp), {});
    deliverMessages();
}

void HeadlessWindow::click (juce::Component& target, juce::ModifierKeys keys)
{
    press (target, keys);
    release (target);
}

void HeadlessWindow::doubleClick (juce::Component& target)
{
    click (target);
    send (middleOf (target), juce::ModifierKeys::leftButtonModifier);
    release (target);
}

void HeadlessWindow::wheel (juce::Component& target, float deltaY)
{
    now += 10000;
    send (middleOf (target), {});
    peer().handleMouseWheel (juce::MouseInputSource::InputSourceType::mouse, middleOf (target), now,
                             { 0.0f, deltaY, false, false, false });
    deliverMessages();
}

void HeadlessWindow::type (const juce::String& text)
{
    for (auto character = text.getCharPointer(); ! character.isEmpty(); ++character)
        peer().handleKeyPress ((int) *character, *character);

    deliverMessages();
}

void HeadlessWindow::typeReturn()
{
    peer().handleKeyPress (juce::KeyPress { juce::KeyPress::returnKey });
    deliverMessages();
}

void HeadlessWindow::deliverMessages()
{
    while (juce::detail::dispatchNextMessageOnSystemQueue (true))
    {
    }
}
