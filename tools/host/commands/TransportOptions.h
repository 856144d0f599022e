// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "host/Transport.h"

namespace CLI
{
class App;
class Option;
} // namespace CLI

/** The song that a command plays. */
struct TransportOptions
{
    double tempo = 120.0;
    double startBeat = 1.0;
    std::string timeSignature = "4/4";

    /** @returns the options, for a command with others that exclude them */
    std::vector<CLI::Option*> add (CLI::App& command);

    /** @throws HostError if a number makes no sense */
    [[nodiscard]] Transport::Settings settings() const;
};
