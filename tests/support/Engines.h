// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "support/PluginDriver.h"
#include "support/ReferenceDriver.h"

/** The plug-in, one tick and one frame at a time. */
class PluginFrameByFrame : public PluginDriver
{
public:
    static constexpr const char* name = "PluginFrameByFrame";

    PluginFrameByFrame() : PluginDriver (Loop::frameByFrame) {}
};

/** The plug-in as a host runs it. */
class PluginInBlocks : public PluginDriver
{
public:
    static constexpr const char* name = "PluginInBlocks";

    PluginInBlocks() : PluginDriver (Loop::inBlocks) {}
};

/** What every behaviour of the engine is tested on. */
using Engines = testing::Types<PluginFrameByFrame, PluginInBlocks, ReferenceDriver>;

/** Names the instances of a typed suite: LfoRouting/PluginInBlocks. */
struct EngineNames
{
    template <typename Engine>
    static std::string GetName (int)
    {
        return Engine::name;
    }
};
