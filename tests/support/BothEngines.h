// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

#include <gtest/gtest.h>

/** A class of the plug-in and its counterpart in the reference engine, for tests that serve both. */
template <typename PlugIn, typename Reference>
using BothEngines = testing::Types<PlugIn, Reference>;

/** Names the instances of a typed suite over BothEngines: SlewValues/PlugIn. */
struct BothEngineNames
{
    template <typename>
    static std::string GetName (int index)
    {
        return index == 0 ? "PlugIn" : "ReferenceEngine";
    }
};
