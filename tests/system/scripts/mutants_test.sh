#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Runs scripts/mutants in a project of one line of code, with a fake CMake whose test programs look for that line.
#
#   mutants_test.sh <path of scripts/mutants>
set -uo pipefail

scratch=$(mktemp -d "${TMPDIR:-/tmp}/mutants test XXXXXX") # the blanks are part of every test
trap 'rm -rf "$scratch"' EXIT
# shellcheck source=tests/system/scripts/checks.sh
source "$(dirname "$0")/checks.sh"
outputs=("$scratch/out")

project="$scratch/a project"
code="$project/source/dsp/filters/Filter.cpp"
equal="$project/tests/system/mutants/equal.txt"
mkdir -p "$project/scripts" "$project/source/frame" "$project/source/parameters" "${code%/*}" "${equal%/*}" "$scratch/bin"
cp "$1" "$project/scripts/mutants"
printf '%s\n' '// a < b in a comment' 'bool f (int a, int b) { return a < b && a + b; } // 7' >"$code"
: >"$equal"
git -C "$project" init --quiet

# Builds a program that fails if the line no longer has the words in $noticed, or never ends if it has lost those in $hangs.
cat >"$scratch/bin/cmake" <<'END'
#!/usr/bin/env bash
[ "$1" = --build ] || exit 0
mkdir -p build/release/tests/unit
cat >"build/release/tests/unit/${*: -1}" <<PROGRAM
#!/usr/bin/env bash
line=\$(tail -n 2 source/dsp/filters/Filter.cpp)
[[ \$line == *"$hangs"* ]] || sleep 1000
[[ \$line == *"$noticed"* ]]
PROGRAM
chmod +x "build/release/tests/unit/${*: -1}"
END
chmod +x "$scratch/bin/cmake"

mutants() # what the tests notice, without what they hang, arguments...
{
    noticed=$1 hangs=$2 PATH="$scratch/bin:$PATH" "$project/scripts/mutants" "${@:3}" >"$scratch/out" 2>&1
}

says() { grep -qF -- "$1" "$scratch/out"; }
sum=$(sha256sum "$code")
untouched() { [ "$(sha256sum "$code")" = "$sum" ]; }

case='every fault noticed'
check 'it succeeds' mutants 'a < b && a + b' '' 9
check 'it draws from operators, not from comments' says 'mutants: 3 places'
check 'it counts the killed' says 'mutants: 3 of 3 killed (100.0 %), seed 1'
check 'the sources are untouched' untouched

case='a fault that is not noticed'
check 'it fails' never mutants 'a + b' '' 9
check 'it counts' says 'mutants: 1 of 3 killed (33.3 %)'
check 'it names the survivors' says 'survived: source/dsp/filters/Filter.cpp:2:'
check 'the sources are untouched' untouched

case='a fault that changes nothing'
printf '%s\n' 'source/dsp/filters/Filter.cpp | bool f (int a, int b) { return a <= b && a + b; } // 7 | a reason' \
    'source/dsp/filters/Filter.cpp | bool f (int a, int b) { return a < b || a + b; } // 7 | a reason' >"$equal"
check 'it is not drawn' mutants 'a + b' '' 9
check 'the others are' says 'mutants: 1 of 1 killed'

case='tests that fail by themselves'
check 'it fails' never mutants 'nothing of the kind' '' 9
check 'it says so' says 'dsp_tests fails without any fault'

case='a test that hangs'
: >"$equal"
check 'it counts as killed' mutants 'b && a' '&& a + b' 1 3
check 'the sources are untouched' untouched

echo "$checks checks, $failures failed"
[ "$failures" = 0 ]
