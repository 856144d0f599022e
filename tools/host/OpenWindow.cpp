// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/OpenWindow.h"

#include <array>
#include <iostream>
#include <memory>
#include <optional>

#include <juce_gui_basics/juce_gui_basics.h>
#include <poll.h>
#include <unistd.h>

#include "common/PendingX11Events.h"
#include "host/HostError.h"
#include "host/Interrupt.h"
#include "host/XDisplay.h"

namespace openWindow
{
namespace
{
/** The longest time until a signal or the end of standard input is noticed. */
constexpr int sliceMs = 20;

/** The reader waits for each line, so it is sent at once. */
void report (const juce::String& line) { std::cout << (line + "\n") << std::flush; }

/** Prints what the module tells its host about its parameters. */
class ParameterReporter : private juce::AudioProcessorParameter::Listener
{
public:
    explicit ParameterReporter (const ParameterList& toWatch) : list (toWatch)
    {
        for (const auto& each : list.all())
            each.parameter->addListener (this);
    }

    ~ParameterReporter() override
    {
        for (const auto& each : list.all())
            each.parameter->removeListener (this);
    }

    JUCE_DECLARE_NON_COPYABLE (ParameterReporter)

private:
    void parameterValueChanged (int index, float position) override
    {
        constexpr int digits = 6;

        for (const auto& each : list.all())
            if (each.parameter->getParameterIndex() == index)
                report (each.id + " " + juce::String (position, digits));
    }

    void parameterGestureChanged (int, bool) override {}

    const ParameterList& list;
};

/** The desktop's frame around the module's window: as large as the module wishes, under its name. */
class Frame : public juce::DocumentWindow
{
public:
    Frame (juce::AudioPluginInstance& instance, const Job& job)
        : juce::DocumentWindow (instance.getName(), juce::Colours::black, closeButton, isOnDesktopAtOnce),
          reportsSize (job.reportChanges), editor (instance.createEditorIfNeeded())
    {
        if (editor == nullptr)
            throw HostError ("the module has no window");

        // The frame gets its size before the window manager sees it. A window manager that takes it over while it grows may
        // answer with the old size, and the frame would keep that.
        editor->setScaleFactor ((float) job.scale);
        setUsingNativeTitleBar (true);
        setContentNonOwned (editor.get(), true);
        centreWithSize (getWidth(), getHeight());
        addToDesktop();
        setVisible (true);

        if (reportsSize)
            report ("window "
                    + juce::String (
                        (juce::int64) reinterpret_cast<juce::pointer_sized_int> (getPeer()->getNativeHandle())));
    }

    ~Frame() override { clearContentComponent(); }

    [[nodiscard]] bool isClosed() const noexcept { return closed; }

    /** Prints the size of the window if it has changed since the last time. */
    void reportSize()
    {
        const auto size = editor->getLocalBounds();

        if (! reportsSize || size == reportedSize)
            return;

        report ("size " + juce::String (size.getWidth()) + " " + juce::String (size.getHeight()));
        reportedSize = size;
    }

private:
    static constexpr bool isOnDesktopAtOnce = false;

    void closeButtonPressed() override { closed = true; }

    bool reportsSize;
    std::unique_ptr<juce::AudioProcessorEditor> editor;
    juce::Rectangle<int> reportedSize {};
    bool closed = false;
};

/** Typed text is dropped: only the end of the input counts. */
bool inputHasEnded()
{
    std::array<char, 256> dropped {};
    pollfd input { STDIN_FILENO, POLLIN, 0 };

    return poll (&input, 1, 0) == 1 && read (STDIN_FILENO, dropped.data(), dropped.size()) <= 0;
}
} // namespace

void show (HostedModule& module, const Job& job)
{
    // It also keeps errors of the X protocol from ending the program while it exists.
    const XDisplay display;

    if (! display.connected())
        throw HostError ("window: there is no display to open it on (DISPLAY is \""
                         + juce::SystemStats::getEnvironmentVariable ("DISPLAY", {}) + "\")");

    module.deliverParameters();
    std::optional<ParameterReporter> reporter;

    if (job.reportChanges)
        reporter.emplace (module.parameters());

    Frame frame (module.instance(), job);

    while (! frame.isClosed() && ! inputHasEnded())
    {
        interrupt::throwIfRequested();
        juce::MessageManager::getInstance()->runDispatchLoopUntil (sliceMs);
        pendingX11Events::handle();
        frame.reportSize();
    }
}
} // namespace openWindow
