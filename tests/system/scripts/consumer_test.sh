#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Builds and runs a project that takes this one in by add_subdirectory and does nothing else for it, and then asks for its
# tests as well, without kestrin-host. Compiles all of JUCE, so it is no part of the ordinary tests.
#
#   consumer_test.sh <this repository>
set -euo pipefail

repository=$(cd "$1" && pwd)
scratch=$(mktemp -d "${TMPDIR:-/tmp}/consumer test XXXXXX") # the blanks are part of the test
trap 'rm -rf "$scratch"' EXIT
ln -s "$repository" "$scratch/filter"

cat >"$scratch/CMakeLists.txt" <<'END'
cmake_minimum_required (VERSION 3.22)
project (Consumer LANGUAGES C CXX)
add_subdirectory (filter)
add_executable (consumer main.cpp)
target_link_libraries (consumer PRIVATE KestrinTamsileFilter)
END

# The short and the long way to the header mean the same one.
cat >"$scratch/main.cpp" <<'END'
#include "MainAudioProcessor.h"
#include "dsp/MainAudioProcessor.h"

#include <iostream>

int main()
{
    const juce::ScopedJuceInitialiser_GUI juceIsUp;
    MainAudioProcessor processor;
    processor.setRateAndBufferSizeDetails (48000.0, 64);
    processor.prepareToPlay (48000.0, 64);

    juce::AudioBuffer<float> buffer (2, 64);
    juce::MidiBuffer noMessages;
    buffer.clear();
    buffer.setSample (0, 0, 0.5f);
    processor.processBlock (buffer, noMessages);

    std::cout << processor.getName() << ": " << processor.getParameters().size() << " parameters\n";
    return buffer.getMagnitude (0, 64) > 0.0f ? 0 : 1;
}
END

build()
{
    cmake -G Ninja -S "$scratch" -B "$scratch/build" -DCMAKE_BUILD_TYPE=Release || return
    cmake --build "$scratch/build" --target consumer --parallel "${JOBS:-$(nproc)}"
}

if ! build >"$scratch/log" 2>&1
then
    tail -n 40 "$scratch/log" >&2
    echo 'FAILED: the project does not build' >&2
    exit 1
fi

said=$("$scratch/build/consumer")
printf '%s\n' "$said"
[ "$said" = 'Kestrin Tamsile Filter: 55 parameters' ] || { echo 'FAILED: other words were expected' >&2; exit 1; }

if ! cmake -S "$scratch" -B "$scratch/build" -DKESTRIN_BUILD_TESTS=ON >"$scratch/log" 2>&1
then
    tail -n 40 "$scratch/log" >&2
    echo 'FAILED: there are no tests without kestrin-host' >&2
    exit 1
fi
