// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include "support/PluginDriver.h"
#include "support/ReferenceDriver.h"

/** The plug-in, one tick and one frame at a time. */
class PluginFrameByFrame : public PluginDriver
{
public:
    PluginFrameByFrame() : PluginDriver (Loop::frameByFrame) {}
};

/** The plug-in as a host runs it. */
class PluginInBlocks : public PluginDriver
{
public:
    PluginInBlocks() : PluginDriver (Loop::inBlocks) {}
};

/** What every behaviour of the engine is tested on. */
using Engines = testing::Types<PluginFrameByFrame, PluginInBlocks, ReferenceDriver>;
