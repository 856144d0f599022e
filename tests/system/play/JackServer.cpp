// SPDX-License-Identifier: AGPL-3.0-or-later
#include "system/play/JackServer.h"

#include <csignal>
#include <stdexcept>

#include <unistd.h>

namespace
{
/** No other server's, not even of a test that runs beside this one. */
std::string newName()
{
    static int number = 0;
    return "kestrin-" + std::to_string (getpid()) + "-" + std::to_string (++number);
}

ChildProcess::Options silently (const std::vector<std::string>& words)
{
    return { .words = words,
             .variables = { { "JACK_NO_AUDIO_RESERVATION", "1" } },
             .outputFile = "/dev/null",
             .errorsFile = "/dev/null" };
}
} // namespace

JackServer::JackServer()
    : serverName (newName()), server (silently ({ "jackd", "-r", "-n", serverName, "-d", "dummy", "-r",
                                                  std::to_string (sampleRate), "-p", std::to_string (blockSize) }))
{
    ChildProcess waiting (silently ({ "jack_wait", "-s", serverName, "-w", "-t", "60" }));

    if (waiting.wait().code() != 0 || ! server.isRunning())
        throw std::runtime_error ("jackd does not start: run scripts/setup");
}

JackServer::~JackServer() { stop(); }

void JackServer::stop()
{
    server.signal (SIGTERM);
    server.wait();
}
