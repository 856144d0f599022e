#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Checks that every name by which the sanitizers pick tests exists: otherwise a renamed test would silently no longer run under
# them.
#
#   sanitize_test.sh <path of scripts/sanitize>
set -uo pipefail

script=$1
root=$(cd "$(dirname "$1")/.." && pwd)
# shellcheck source=tests/system/scripts/checks.sh
source "$(dirname "$0")/checks.sh"
tests=$(mktemp)
trap 'rm -f "$tests"' EXIT
testNames "$root/tests" >"$tests"

# The presets: alternatives, none of them in brackets.
while IFS= read -r pattern
do
    check "a preset picks a test that is there: $pattern" grep -qE -- "$pattern" "$tests"
done < <(sed -n 's/.*"filter": .*"name": "\([^"]*\)".*/\1/p' "$root/CMakePresets.json" | tr '|' '\n')

# The run under valgrind: patterns of GoogleTest. Those behind the "-" are left out.
while IFS= read -r pattern
do
    pattern=${pattern//./\\.}
    check "the run under valgrind knows a test that is there: $pattern" grep -qE -- "^${pattern//\*/.*}$" "$tests"
done < <(sed -n "s/.*--gtest_filter='\([^']*\)'.*/\1/p" "$script" | tr ':-' '\n')

while IFS= read -r name
do
    check "thread.supp names a function that is there: $name" grep -rqE "\b$name ?\(" "$root/source"
done < <(sed -n 's/^race://p' "$root/tests/system/sanitizers/thread.supp")

check 'all three lists have been read' test "$checks" -ge 9

refuses() { ! "$@" >/dev/null 2>&1; }
check 'scripts/sanitize refuses a part that it does not know' refuses "$script" nonsense

sumUp
