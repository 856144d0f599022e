// SPDX-License-Identifier: AGPL-3.0-or-later
#include "system/play/JackServer.h"

#include <csignal>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace
{
/** How long the server waits for a program that the machine has no time for. */
const char* const clientTimeoutMs = "30000";

/** No other server's, not even of a test that runs beside this one. */
std::string newName()
{
    static int number = 0;
    return "kestrin-" + std::to_string (getpid()) + "-" + std::to_string (++number);
}

/** Waits until no other process has this lock, which goes with its file or with the process. */
int takeLock()
{
    const auto name = "kestrin-jack-server-" + std::to_string (getuid()) + ".lock";
    const auto file = std::filesystem::temp_directory_path() / name;
    const auto lock = open (file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);

    if (lock < 0 || flock (lock, LOCK_EX) != 0)
        throw std::runtime_error ("no lock for jackd");

    return lock;
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
    : lock (takeLock()), serverName (newName()),
      server (silently ({ "jackd", "-r", "-t", clientTimeoutMs, "-n", serverName, "-d", "dummy", "-r",
                          std::to_string (sampleRate), "-p", std::to_string (blockSize) }))
{
    ChildProcess waiting (silently ({ "jack_wait", "-s", serverName, "-w", "-t", "60" }));

    if (waiting.wait().code() != 0 || ! server.isRunning())
        throw std::runtime_error ("jackd does not start: run scripts/setup");
}

JackServer::~JackServer()
{
    stop();
    close (lock);
}

void JackServer::stop()
{
    server.signal (SIGTERM);
    server.wait();
}
