// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/commands/ParametersCommand.h"

#include <iostream>

#include <CLI/CLI.hpp>

#include "host/ParameterReport.h"

ParametersCommand::ParametersCommand (CLI::App& program)
    : Command (program, "parameters", "List the module's parameters")
{
    module.addPlugin (options);
    module.addSettings (options);
    auto* asMarkdown = options.add_flag ("--markdown", markdown, "As a page of documentation");
    options.add_flag ("--json", json, "For programs")->excludes (asMarkdown);
}

void ParametersCommand::run()
{
    const auto loaded = module.load();
    const auto& list = loaded->parameters();
    std::cout << (json       ? parameterReport::asJson (list)
                  : markdown ? parameterReport::asMarkdown (list)
                             : parameterReport::asTable (list));
}
