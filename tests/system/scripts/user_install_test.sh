#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Installs a make-believe module and presets into a folder of its own and takes them out again.
#
#   user_install_test.sh <path of scripts/user-install>
set -uo pipefail

script=$1
scratch=$(mktemp -d "${TMPDIR:-/tmp}/install test XXXXXX") # the blanks are part of every test
trap 'rm -rf "$scratch"' EXIT
# shellcheck source=tests/system/scripts/checks.sh
source "$(dirname "$0")/checks.sh"
bundle='Kestrin Tamsile Filter.vst3'

newHome()
{
    home=$(mktemp -d "$scratch/home XXXXXX")
    vst3="$home/.vst3"
    presets="$vst3/presets/Kestrin/Kestrin Tamsile Filter"
    build="$home/a build"
    outputs=("$home/out")
    mkdir -p "$build/source/x_artefacts/Release/VST3/$bundle/Contents" "$build/presets/Basic sounds"
    echo module >"$build/source/x_artefacts/Release/VST3/$bundle/Contents/module.so"
    echo one >"$build/presets/Slow sweep.vstpreset"
    echo two >"$build/presets/Basic sounds/Two.vstpreset"
}

run()
{
    HOME=$home VST3_DIR='' "$script" "$@" >"$home/out" 2>&1
    code=$?
}

holds() { [ "$(cat "$2" 2>/dev/null)" = "$1" ]; }

newHome
run install "$build"
check 'installing succeeds' test "$code" = 0
check 'the module is in the folder of VST3' holds module "$vst3/$bundle/Contents/module.so"
check 'a preset is where hosts look' holds one "$presets/Slow sweep.vstpreset"
check 'presets in folders come along' holds two "$presets/Two.vstpreset"
check 'nothing half-done is left' test -z "$(find "$vst3" -name '.kestrin-*' -o -name '.installed-*')"

echo other >"$vst3/somebody else.vst3"
echo mine >"$presets/My own.vstpreset"
echo changed >"$presets/Two.vstpreset"
rm "$build/presets/Slow sweep.vstpreset"
echo three >"$build/presets/Three.vstpreset"
touch "$vst3/$bundle/Contents/of an older module"
run install "$build"
check 'installing again succeeds' test "$code" = 0
check 'the older module is gone altogether' never test -e "$vst3/$bundle/Contents/of an older module"
check 'a preset that is no longer delivered goes' never test -e "$presets/Slow sweep.vstpreset"
check 'a new preset comes' holds three "$presets/Three.vstpreset"
check "the user's version of a preset stays" holds changed "$presets/Two.vstpreset"

run uninstall
check 'uninstalling succeeds' test "$code" = 0
check 'the module is gone' never test -e "$vst3/$bundle"
check 'the presets are gone' never test -e "$presets/Three.vstpreset"
check "the user's own presets stay" holds mine "$presets/My own.vstpreset"
check "the user's version of a preset stays at the end" holds changed "$presets/Two.vstpreset"
check 'modules of others stay' holds other "$vst3/somebody else.vst3"

run uninstall
check 'uninstalling what is not there succeeds' test "$code" = 0

newHome
run install "$build"
run uninstall
check 'a plain installation leaves nothing behind' test -z "$(ls -A "$vst3")"

newHome
rm -r "$build/presets"
run install "$build"
check 'a build without presets installs' holds module "$vst3/$bundle/Contents/module.so"

newHome
rm -r "$build/source"
run install "$build"
check 'a build without a module is an error' test "$code" != 0
check 'the error is one line' test "$(grep -c '' "$home/out")" = 1

newHome
echo 'a file' >"$vst3"
run install "$build"
check 'a place that cannot be written to is an error' test "$code" != 0
check 'that error is one line, too' test "$(grep -c '' "$home/out")" = 1

sumUp
