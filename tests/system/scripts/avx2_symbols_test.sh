#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# What is compiled for AVX2 shares no function with the rest. Of a function that two objects have the linker keeps one, and an older
# processor would run into that. Read from the symbols that the objects define.
# Usage: avx2_symbols_test.sh <object>...
set -euo pipefail

[ $# -gt 0 ] || { echo 'FAILED: no objects to read'; exit 1; }

functions=$(nm --demangle --defined-only "$@" | grep -E '^[0-9a-f]+ [TWi] ')
grep -q ' avx2::' <<<"$functions" || { echo 'FAILED: these objects have no function of avx2, so they are others'; exit 1; }

if shared=$(grep -vE ' avx2::|DoubleQuad' <<<"$functions")
then
    printf '%s\n' "$shared"
    echo 'FAILED: the functions above are compiled for AVX2, and other objects may have them too'
    exit 1
fi

# Such a function would run while the module is loaded, on every processor.
if nm "$@" | grep '_GLOBAL__sub_I'
then
    echo 'FAILED: the objects above have variables that are initialised when the module is loaded'
    exit 1
fi

echo "no shared function in $# objects"
