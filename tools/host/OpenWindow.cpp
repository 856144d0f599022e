// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/OpenWindow.h"

#include <array>
#include <iostream>
#include <optional>

#include <juce_gui_basics/juce_gui_basics.h>
#include <poll.h>
#include <unistd.h>

#include "common/PendingX11Events.h"
#include "host/HostError.h"
#include "host/Interrupt.h"
#include "host/ModuleFrame.h"
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

/** Prints the size of the window whenever it has changed since the last time. */
class SizeReporter
{
public:
    explicit SizeReporter (const ModuleFrame& toWatch) : frame (toWatch) {}

    void look()
    {
        const auto size = frame.moduleSize();

        if (size != reported)
            report ("size " + juce::String (size.getWidth()) + " " + juce::String (size.getHeight()));

        reported = size;
    }

private:
    const ModuleFrame& frame;
    juce::Rectangle<int> reported {};
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
    std::optional<ParameterReporter> parameterReporter;

    if (job.reportChanges)
        parameterReporter.emplace (module.parameters());

    const ModuleFrame frame (module.instance(), job.scale);
    std::optional<SizeReporter> sizeReporter;

    if (job.reportChanges)
    {
        report ("window " + juce::String ((juce::int64) frame.id()));
        sizeReporter.emplace (frame);
    }

    while (! frame.isClosed() && ! inputHasEnded())
    {
        interrupt::throwIfRequested();
        juce::MessageManager::getInstance()->runDispatchLoopUntil (sliceMs);
        pendingX11Events::handle();

        if (sizeReporter.has_value())
            sizeReporter->look();
    }
}
} // namespace openWindow
