// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

/** One column of a table: which counter it shows, and how. */
struct Column
{
    const char* counter;
    const char* heading;
    int decimals;
};

/** Rows that belong together. A row is a benchmark by the name of "key: row". */
struct Table
{
    const char* key;
    const char* title;
    const char* rowHeading;
    std::vector<Column> columns;
    const char* note;
};

/** Prints rows as they are measured, as tables that can be read on a terminal and are Markdown at the same time. */
class MarkdownReporter : public benchmark::BenchmarkReporter
{
public:
    explicit MarkdownReporter (std::vector<Table> newTables) : tables (std::move (newTables)) {}

    bool ReportContext (const Context& context) override;
    void ReportRuns (const std::vector<Run>& runs) override;

private:
    void begin (const Table& table);
    void printRow (const Table& table, const std::string& name, const Run& run) const;

    std::vector<Table> tables;
    const Table* current = nullptr;
};
