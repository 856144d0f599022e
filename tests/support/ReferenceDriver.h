// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "support/EngineDriver.h"

/** The reference engine. */
class ReferenceDriver : public EngineDriver
{
public:
    ReferenceDriver();

    void setSampleRate (double hostRate) override { engine.setSampleRate (hostRate); }
    void set (std::string_view id, float position) override;
    [[nodiscard]] float get (std::string_view id) const override;
    [[nodiscard]] float lastSeenValueOf (std::string_view id) const override;
    [[nodiscard]] std::int64_t numQueries() const override { return engine.queryCount; }
    void requestUpdate() override { engine.requestUpdate(); }
    [[nodiscard]] bool isUpdatePending() const override { return engine.controlUpdatePending; }
    void clearPendingUpdate() override { engine.controlUpdatePending = false; }
    [[nodiscard]] std::int32_t framesSinceRequest() const override { return engine.framesSinceRequest; }

    [[nodiscard]] reference::ButterworthFilter& hpFilter() { return engine.hpFilter; }
    [[nodiscard]] reference::ButterworthFilter& lpFilter() { return engine.lpFilter; }
    [[nodiscard]] reference::GrungeLadder& hpLadder() { return engine.hpLadder; }
    [[nodiscard]] reference::GrungeLadder& lpLadder() { return engine.lpLadder; }
    [[nodiscard]] reference::ResonancePeak& hpResonator() { return engine.hpResonator; }
    [[nodiscard]] reference::ResonancePeak& lpResonator() { return engine.lpResonator; }

    reference::Engine engine;

protected:
    void applyTransport (const reference::Transport& newTransport) override { transport = newTransport; }
    void process (float* left, float* right, int numFrames) override { engine.process (left, right, numFrames); }

private:
    reference::Transport transport;
};
