// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>

#include "support/ChildProcess.h"

/** A JACK server of the test's own, without hardware: it takes blocks in real time and throws them away. One at a time on this
    machine, as all servers of a user share files. */
class JackServer
{
public:
    static constexpr int sampleRate = 44100;
    static constexpr int blockSize = 256;

    /** Comes back when it takes clients.
        @throws std::runtime_error if there is no jackd, or if it does not start */
    JackServer();
    ~JackServer();

    JackServer (const JackServer&) = delete;
    JackServer& operator= (const JackServer&) = delete;

    /** What a client finds it by, in JACK_DEFAULT_SERVER. */
    [[nodiscard]] const std::string& name() const noexcept { return serverName; }

    /** Ends it. It removes what it keeps in shared memory, which it cannot if it is killed. */
    void stop();

private:
    const int lock;
    std::string serverName;
    ChildProcess server;
};
