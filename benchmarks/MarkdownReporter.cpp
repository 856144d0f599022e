// SPDX-License-Identifier: AGPL-3.0-or-later
#include "MarkdownReporter.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace
{
constexpr int widthOfNames = 56;

std::string processorName()
{
    std::ifstream information ("/proc/cpuinfo");

    for (std::string line; std::getline (information, line);)
        if (line.rfind ("model name", 0) == 0 && line.find (": ") != std::string::npos)
            return line.substr (line.find (": ") + 2);

    return "a processor that does not tell its name";
}

std::string dashes (std::size_t count) { return std::string (count, '-'); }
} // namespace

bool MarkdownReporter::ReportContext (const Context& context)
{
    std::printf ("Measured on %s, %d cores at %.1f GHz, with %s, %s build.\n", processorName().c_str(),
                 context.cpu_info.num_cpus, context.cpu_info.cycles_per_second * 1e-9, KESTRIN_COMPILER,
                 KESTRIN_BUILD_TYPE);
    return true;
}

void MarkdownReporter::begin (const Table& table)
{
    current = &table;
    std::printf ("\n### %s\n\n%s\n\n| %-*s |", table.title, table.note, widthOfNames, table.rowHeading);

    for (const auto& column : table.columns)
        std::printf (" %s |", column.heading);

    std::printf ("\n|:%s|", dashes (widthOfNames + 1).c_str());

    for (const auto& column : table.columns)
        std::printf ("%s:|", dashes (std::strlen (column.heading) + 1).c_str());

    std::printf ("\n");
}

void MarkdownReporter::ReportRuns (const std::vector<Run>& runs)
{
    for (const auto& run : runs)
    {
        const auto& name = run.run_name.function_name;
        const auto colon = name.find (": ");
        const auto table = std::find_if (tables.begin(), tables.end(),
                                         [&] (const Table& t) { return name.compare (0, colon, t.key) == 0; });

        if (table == tables.end())
            continue;

        if (current != &*table)
            begin (*table);

        printRow (*table, name.substr (colon + 2), run);
    }
}

void MarkdownReporter::printRow (const Table& table, const std::string& name, const Run& run) const
{
    std::printf ("| %-*s |", widthOfNames, name.c_str());

    for (const auto& column : table.columns)
    {
        const auto counter = run.counters.find (column.counter);
        const auto width = (int) std::strlen (column.heading);

        if (counter == run.counters.end())
            std::printf (" %*s |", width, "");
        else
            std::printf (" %*.*f |", width, column.decimals, counter->second.value);
    }

    std::printf ("\n");
    std::fflush (stdout);
}
