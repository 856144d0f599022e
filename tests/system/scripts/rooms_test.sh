#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Who may include whom, read from the include lines of source/ and tools/. A room is a folder, and an include line names it.
# Usage: rooms_test.sh <source folder> <tools folder>
set -euo pipefail

# room | the rooms that it may include besides itself. A room may only name rooms above it: there are no circles.
arrows='
common         |
frame          | common
parameters     |
dsp/simd       |
dsp/math       | dsp/simd
dsp/filters    | dsp/math dsp/simd
dsp/modulation | dsp/math dsp/simd
dsp/engine     | dsp/filters dsp/math dsp/modulation dsp/simd parameters
dsp            | dsp/engine dsp/filters dsp/math dsp/modulation dsp/simd frame parameters
editor         | common dsp dsp/modulation frame parameters
.              | dsp editor
demo           | dsp/math
host           | common
host/play      | common host
host/commands  | demo host host/play
gallery        | demo dsp host
plots          | dsp/filters dsp/modulation
'

failures=0

complain()
{
    printf 'FAILED: %s\n' "$1"
    failures=$((failures + 1))
}

# The rooms that the files of a folder include, each once, with "file includes header" in front.
includesOf()
{
    grep -HoE '^#include "[^"]+' "$1"/*.h "$1"/*.cpp 2>/dev/null | sed -E 's/:#include "/ includes /' || true
}

known=' '
while IFS='|' read -r room allowed
do
    room=$(tr -d ' ' <<<"$room")
    [ -n "$room" ] || continue

    for other in $allowed
    do
        [[ $known == *" $other "* ]] || complain "the list has $room before $other, which it may include"
    done

    known+="$room "

    for root in "$1" "$2"
    do
        [ -d "$root/$room" ] || continue

        while read -r file verb header
        do
            included=$(dirname "$header")
            [ "$included" = "$room" ] || [[ " $allowed " == *" $included "* ]] \
                || complain "$file $verb $header, but $room may not know $included"
        done < <(includesOf "$root/$room")
    done
done <<<"$arrows"

# A folder that the list does not name.
while read -r folder
do
    room=${folder#"$1"/}
    room=${room#"$2"/}
    [ "$room" != "$1" ] || room=.
    [[ $known == *" $room "* ]] || complain "$folder is no room of the list"
done < <(find "$1" "$2" -name '*.cpp' -printf '%h\n' -o -name '*.h' -printf '%h\n' | sort -u)

[ "$failures" = 0 ] && echo 'every room includes only what it may include'
