#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Runs scripts/fuzz in a project with fake fuzzers: each writes down how it was called and what it found in its folders. Also
# checks the inputs of the repository.
#
#   fuzz_test.sh <path of scripts/fuzz>
set -uo pipefail
shopt -s nullglob

root=$(cd "$(dirname "$1")/.." && pwd)
scratch=$(mktemp -d "${TMPDIR:-/tmp}/fuzz test XXXXXX") # the blanks are part of every test
trap 'rm -rf "$scratch"' EXIT
# shellcheck source=tests/system/scripts/checks.sh
source "$(dirname "$0")/checks.sh"
outputs=("$scratch/out")

#---- the inputs of the repository

for program in "$root"/tests/system/fuzz/*Fuzzer.cpp
do
    fuzzer=$(basename "$program" .cpp)
    seeds=("$root/tests/system/fuzz/seeds/$fuzzer"/*)
    check "$fuzzer has named seeds" test "${#seeds[@]}" -ge 5
    check "scripts/fuzz runs $fuzzer" grep -q "^fuzzers=(.*\b$fuzzer\b" "$1"
    check "the archive of $fuzzer can be read" tar -tzf "$root/tests/system/fuzz/corpus/$fuzzer.tar.gz" >"$scratch/list"
    check "the archive of $fuzzer holds files without folders" never grep -q / "$scratch/list"
    check "the archive of $fuzzer is not empty" test -s "$scratch/list"
done

#---- a project with fake fuzzers

project="$scratch/a project"
built="$project/build/fuzz/tests/system/fuzz"
inputs="$project/tests/system/fuzz"
mkdir -p "$project/scripts" "$built" "$inputs"/{corpus,seeds/SettingsFuzzer,found/SettingsFuzzer}
cp "$1" "$project/scripts/fuzz"
touch "$inputs/SettingsFuzzer.dict" "$inputs/seeds/SettingsFuzzer/a seed" "$inputs/found/SettingsFuzzer/a finding"

for script in setup build
do
    printf '#!%s\nexit 0\n' "$(command -v bash)" >"$project/scripts/$script"
    chmod +x "$project/scripts/$script"
done

mkdir "$scratch/learnt"
echo 'of an earlier run' >"$scratch/learnt/0123"

for fuzzer in SettingsFuzzer HostScriptFuzzer PresetFuzzer SoundFileFuzzer
do
    tar -czf "$inputs/corpus/$fuzzer.tar.gz" -C "$scratch/learnt" 0123
    mkdir -p "$inputs/seeds/$fuzzer"
    touch "$inputs/seeds/$fuzzer/another seed"
    cat >"$built/$fuzzer" <<'END'
#!/usr/bin/env bash
name=$(basename "$0")
printf '%s\n' "$@" >"$SCRATCH/$name.call"
folders=()
for argument; do [[ $argument == -* ]] || folders+=("$argument"); done
[ ! -e "$SCRATCH/$name.breaks" ] || { echo 'does not hold'; exit 77; }

if [[ " $* " == *' -merge=1 '* ]]
then
    ls "${folders[0]}" >"$SCRATCH/$name.first"
    # Only what an earlier run has left and what this one has learnt is worth keeping.
    cp "${folders[1]}"/0123 "${folders[1]}"/4567 "${folders[0]}/"
    [ ! -e "$SCRATCH/$name.stumbles" ] || echo 'Test unit written to build/fuzz/found'
    exit
fi

find "${folders[@]}" -type f | sort >"$SCRATCH/$name.inputs"
echo learnt >"${folders[0]}/4567"
echo 'stat::number_of_executed_units: 42'
END
    chmod +x "$built/$fuzzer"
done

run()
{
    (cd / && SCRATCH=$scratch JOBS=2 "$project/scripts/fuzz" "$@") >"$scratch/out" 2>&1
    code=$?
}

says() { grep -qF -- "$1" "$scratch/out"; }
calledWith() { grep -qxF -- "$2" "$scratch/$1.call"; }
begins() { grep -qF -- "/$2" "$scratch/$1.inputs" || grep -qxF -- "$2" "$scratch/$1.inputs"; }
archiveHolds() { [ "$(tar -tzf "$inputs/corpus/$1.tar.gz" | tr '\n' ' ')" = "$2" ]; }

run 7 3
check 'a run succeeds' test "$code" = 0
check 'it says how much each fuzzer has tried' test "$(grep -c ': 42 executions, nothing found' "$scratch/out")" = 4
check 'it takes its time' calledWith HostScriptFuzzer -max_total_time=7
check 'it takes its seed' calledWith HostScriptFuzzer -seed=3
check 'a fuzzer with a dictionary gets it' calledWith SettingsFuzzer -dict=tests/system/fuzz/SettingsFuzzer.dict
check 'a fuzzer without a dictionary gets none' never grep -q '^-dict' "$scratch/PresetFuzzer.call"
check 'a run begins with the archive' begins SettingsFuzzer corpus/SettingsFuzzer/0123
check 'a run begins with the seeds' begins SettingsFuzzer 'seeds/SettingsFuzzer/a seed'
check 'a run begins with what was found' begins SettingsFuzzer 'found/SettingsFuzzer/a finding'
check 'a run learns in the build folder' test -f "$project/build/fuzz/corpus/SettingsFuzzer/4567"
check 'a run leaves the archive as it is' archiveHolds SettingsFuzzer '0123 '

run
check 'a run without a number takes a minute' calledWith SoundFileFuzzer -max_total_time=60
check 'a run begins with what the last one has learnt' begins SettingsFuzzer corpus/SettingsFuzzer/4567

touch "$scratch/PresetFuzzer.breaks"
run 7
check 'what is found makes the run fail' test "$code" != 0
check 'it says who has found it' says 'PresetFuzzer has found something'
check 'the others go on' says 'SoundFileFuzzer: 42 executions'
run merge
check 'a merge that fails is an error' test "$code" != 0
check 'the archive of a failed merge stays' archiveHolds PresetFuzzer '0123 '
rm "$scratch/PresetFuzzer.breaks"
touch "$scratch/PresetFuzzer.stumbles"
run merge
check 'a merge that meets a finding is an error' test "$code" != 0
check 'its archive stays, too' archiveHolds PresetFuzzer '0123 '
rm "$scratch/PresetFuzzer.stumbles"

run merge
check 'a merge succeeds' test "$code" = 0
check 'a merge measures against the seeds and the findings' \
    test "$(tr '\n' ' ' <"$scratch/SettingsFuzzer.first")" = 'a finding a seed another seed '
check 'the archive takes what was learnt, without the seeds' archiveHolds SettingsFuzzer '0123 4567 '
check 'it says how much an archive holds' says 'SettingsFuzzer: 2 inputs in its archive'
before=$(sha256sum "$inputs"/corpus/*)
touch "$project"/build/fuzz/corpus/*/*
run merge
check 'the same inputs make the same archives' test "$(sha256sum "$inputs"/corpus/*)" = "$before"

#---- the command line

run soon
check 'a time that is not a number is refused' test "$code" = 2
check 'the refusal names it' says "'soon' is not a number of seconds"
run 7 never
check 'a seed that is not a number is refused' test "$code" = 2
run merge now
check 'a merge with another argument is refused' test "$code" = 2
run --help
check 'it explains itself' says 'Usage: scripts/fuzz'

sumUp
