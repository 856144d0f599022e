// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "MarkdownReporter.h"

/** Each adds the rows of its tables to Google Benchmark, and gives the tables. */
[[nodiscard]] std::vector<Table> registerEngineBenchmarks();
[[nodiscard]] std::vector<Table> registerGrowthBenchmarks();
[[nodiscard]] std::vector<Table> registerKernelBenchmarks();

/** Adds one row to a table.
    @param row  a function of benchmark::State& that runs a Contest */
template <typename Row>
void registerRow (const char* table, const std::string& name, Row row)
{
    constexpr double secondsOfRounds = 0.5;

    // The rounds time themselves, since only a part of each counts.
    benchmark::RegisterBenchmark ((std::string (table) + ": " + name).c_str(), row)
        ->UseManualTime()
        ->MinTime (secondsOfRounds);
}
