// SPDX-License-Identifier: AGPL-3.0-or-later
#include "support/scenario/ReferencePlayer.h"

namespace scenario
{

ReferencePlayer::ReferencePlayer()
{
    engine.transport = [this] { return transport; };
}

void ReferencePlayer::seedLfo (int lfo, std::uint32_t seed) { engine.seedLfo (lfo, seed); }

void ReferencePlayer::setParameter (int index, float position) { engine.setParameter (index, position); }

void ReferencePlayer::setSampleRate (double hostRate) { engine.setSampleRate (hostRate); }

void ReferencePlayer::prepareToPlay() { engine.prepareToPlay(); }

void ReferencePlayer::setTransport (const reference::Transport& newTransport) { transport = newTransport; }

void ReferencePlayer::process (float* left, float* rightOrNull, int numFrames)
{
    engine.process (left, rightOrNull, numFrames);
}

} // namespace scenario
