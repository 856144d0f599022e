# shellcheck shell=bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# What the tests of the scripts share: counted checks, each with its sentence. To be sourced.

checks=0
failures=0

# What a failed check shows: the files that the command under test has written. And where it happened, if that is named.
outputs=()
case=''

check() # sentence, command...
{
    local sentence=$1 output
    shift
    checks=$((checks + 1))
    "$@" && return

    failures=$((failures + 1))
    printf 'FAILED%s: %s\n' "${case:+ in \"$case\"}" "$sentence"

    for output in "${outputs[@]}"
    do
        [ ! -e "$output" ] || sed "s/^/    $(basename "$output"): /" "$output"
    done
}

never() { ! "$@"; }

# Every test of GoogleTest below a folder, as "Suite.Name".
testNames() # folder
{
    find "$1" \( -name '*.cpp' -o -name '*.h' \) -exec cat {} + | tr '\n' ' ' \
        | grep -oE '\bT(EST|EST_F|EST_P|YPED_TEST|YPED_TEST_P) *\( *[A-Za-z0-9]+ *, *[A-Za-z0-9]+ *\)' \
        | sed -E 's/^[A-Z_]* *\( *//; s/ *, */./; s/ *\)$//'
}

# The last line of a test; its exit code is that of the test.
sumUp()
{
    echo "$checks checks, $failures failed"
    [ "$failures" = 0 ]
}
