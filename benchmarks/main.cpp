// SPDX-License-Identifier: AGPL-3.0-or-later
// benchmarks: what the engine costs. The usual options of Google Benchmark work: --benchmark_filter='^plug-in',
// --benchmark_repetitions=3, --benchmark_out=file.json.
#include <benchmark/benchmark.h>
#include <juce_gui_basics/juce_gui_basics.h>

#include "MarkdownReporter.h"
#include "Registration.h"

int main (int argc, char** argv)
{
    const juce::ScopedJuceInitialiser_GUI juceIsUp;
    benchmark::Initialize (&argc, argv);

    if (benchmark::ReportUnrecognizedArguments (argc, argv))
        return 2;

    std::vector<Table> tables;

    // In this order they are run and printed.
    for (const auto& group : { registerEngineBenchmarks(), registerGrowthBenchmarks(), registerKernelBenchmarks() })
        tables.insert (tables.end(), group.begin(), group.end());

    MarkdownReporter reporter (tables);
    benchmark::RunSpecifiedBenchmarks (&reporter);
    benchmark::Shutdown();
    return 0;
}
