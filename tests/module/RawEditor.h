// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "host/PrivateDisplay.h"
#include "module/RawHost.h"
#include "module/RawWindow.h"

namespace rawHost
{
/** Loads a module that will find a display. There is one for all tests of the process, because a module may keep its connection
    until it is unloaded. */
[[nodiscard]] inline Module loadWithDisplay (const std::string& library)
{
    static const PrivateDisplay display;
    return Module (library);
}

/** The module's editor in a window of its own, from its opening to its closing. Message thread only. */
class Editor
{
public:
    Editor (Instance& instance, Context& contextToUse) : context (contextToUse)
    {
        view = IPtr<Steinberg::IPlugView> (instance.controller->createView (vst::ViewType::kEditor), false);
        view->setFrame (&context);
        isOpen = view->attached (window.handle(), Steinberg::kPlatformTypeX11EmbedWindowID) == Steinberg::kResultOk;
        context.runMessages (20);
    }

    ~Editor()
    {
        view->removed();
        view->setFrame (nullptr);
    }

    Editor (const Editor&) = delete;
    Editor& operator= (const Editor&) = delete;

    void resize (int width, int height)
    {
        Steinberg::ViewRect size (0, 0, width, height);
        view->checkSizeConstraint (&size);
        window.resize (size.getWidth(), size.getHeight());
        view->onSize (&size);
        context.runMessages (5);
    }

    /** A click of the first mouse button. */
    void click (int x, int y) const { window.click (x, y); }

    [[nodiscard]] int width() const
    {
        Steinberg::ViewRect size;
        view->getSize (&size);
        return size.getWidth();
    }

    bool isOpen = false;

private:
    RawWindow window { 600, 600 };
    Context& context;
    IPtr<Steinberg::IPlugView> view;
};
} // namespace rawHost
