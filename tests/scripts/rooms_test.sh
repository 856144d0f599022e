#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Who may include whom in source/, read from the include lines: the frame is the base, the classes of the sound know none of the
# other rooms (JUCE is not even on their path), and nothing knows the window but the plug-in's entry.
# Usage: rooms_test.sh <source folder>
set -euo pipefail
cd "$1"

failures=0

# Each include of the files, as "file:included", by the name of the file alone.
includesOf() { grep -HoE '^#include [<"][^">]+' "$@" | sed -E 's/#include [<"](.*\/)?/ /'; }

headersOf() { for header in "$1"/*.h; do basename "$header"; done; }

# sentence, the files that must not include, the headers that they must not include
forbid()
{
    local sentence=$1 found
    shift
    found=$(includesOf "${files[@]}" | grep -wFf <(printf '%s\n' "$@") || true)

    if [ -n "$found" ]
    then
        printf 'FAILED: %s\n%s\n' "$sentence" "$found"
        failures=$((failures + 1))
    fi
}

shopt -s extglob
mapfile -t frameHeaders < <(headersOf frame)
mapfile -t parameterHeaders < <(headersOf parameters)
mapfile -t soundHeaders < <(headersOf dsp)
mapfile -t windowHeaders < <(headersOf editor)

files=(frame/!(PluginEntry).@(h|cpp))
forbid 'the frame knows nothing of parameters, sound or window' \
    "${parameterHeaders[@]}" "${soundHeaders[@]}" "${windowHeaders[@]}"

files=(parameters/*.@(h|cpp))
forbid 'the parameters know nothing of the sound or the window' "${soundHeaders[@]}" "${windowHeaders[@]}"

# What brings parameters and sound together is the processor and its reading of the parameters.
files=(dsp/!(MainAudioProcessor*|ControlReadings*).@(h|cpp))
forbid 'the classes of the sound know neither frame nor parameters nor window' \
    "${frameHeaders[@]}" "${parameterHeaders[@]}" "${windowHeaders[@]}"

files=(dsp/*.@(h|cpp))
forbid 'the sound does not know the window' "${windowHeaders[@]}"

[ "$failures" = 0 ] && echo 'every room knows only whom it may know'
