// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <cstdint>

#include "reference/ReferenceEngine.h"

namespace scenario
{

/** The reference engine with the operations that play asks for. */
class ReferencePlayer
{
public:
    ReferencePlayer();
    ReferencePlayer (const ReferencePlayer&) = delete;
    ReferencePlayer& operator= (const ReferencePlayer&) = delete;

    void seedLfo (int lfo, std::uint32_t seed);
    void setParameter (int index, float position);
    void setSampleRate (double hostRate);
    void prepareToPlay();
    void setTransport (const reference::Transport& newTransport);
    void process (float* left, float* rightOrNull, int numFrames);
    void blockDone (int) {}

    reference::Engine engine;

private:
    reference::Transport transport;
};

} // namespace scenario
