// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "reference/ReferenceEngine.h"

namespace scenario
{

/** A knob that the host turns. */
struct ParameterMove
{
    int index = 0; // in host order
    float position = 0.0f;
};

/** What the host does before a block, and the block. The transport does not move within it. */
struct Block
{
    int numFrames = 0;
    double hostRate = 48000.0; // 0 for a host that tells none
    bool prepare = false;      // calls prepareToPlay first
    reference::Transport transport;
    std::vector<ParameterMove> moves;
};

/** A session with the effect: a patch, a host with its transport, rate and blocks, knobs that move, and a sound. Any engine
    can play it. */
struct Scenario
{
    std::uint32_t seed = 0;
    std::string theme;
    std::string transport;
    std::string sound;
    bool stereo = true;
    std::array<std::uint32_t, 2> lfoSeeds {};
    std::array<float, reference::Index::count> positions {};
    std::vector<Block> blocks;
    std::vector<float> left;
    std::vector<float> right; // empty in mono
};

/** What a random scenario may contain. */
struct Options
{
    int numFrames = 8000;
    bool strangeSamples = false;   // NaN and infinity in the sound
    bool strangeTransport = false; // NaN, infinity and time signatures over 0
    bool brownian = true;          // the one shape whose walk has to be seeded
};

/** The scenario of a seed: the same with every compiler and standard library. */
[[nodiscard]] Scenario makeScenario (std::uint32_t seed, const Options& options = {});

/** The same scenario with each block cut into several. It must sound the same. */
[[nodiscard]] Scenario splitFurther (const Scenario& scenario, std::uint32_t seed);

/** One line for the message of a failed comparison. */
[[nodiscard]] std::string describe (const Scenario& scenario);

} // namespace scenario
