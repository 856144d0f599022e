#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Gives scripts/demo good and bad sounds in a project with a fake build: its host copies the sound and writes down its command
# line.
#
#   demo_test.sh <path of scripts/demo>
set -uo pipefail

script=$(cd "$(dirname "$1")" && pwd)/demo
patch=$(dirname "$script")/../tools/demo/patch.txt
scratch=$(mktemp -d "${TMPDIR:-/tmp}/demo test XXXXXX") # the blanks are part of every test
trap 'rm -rf "$scratch"' EXIT
# shellcheck source=tests/system/scripts/checks.sh
source "$(dirname "$0")/checks.sh"

project="$scratch/a project"
page="$project/build/demo/index.html"
mkdir -p "$project/scripts" "$project/tools/demo" "$project/build/release/tools/"{host,demo} "$scratch/bin"
cp "$script" "$script-options" "$(dirname "$script")/build" "$project/scripts/"
cp "$patch" "$project/tools/demo/"

fake() # path, body on stdin
{
    { printf '#!%s\n' "$(command -v bash)"; cat; } >"$1"
    chmod +x "$1"
}

fake "$project/scripts/setup" <<<'exit 0'
fake "$scratch/bin/cmake" <<<'exit 0'
# shellcheck disable=SC2016 # its own argument is meant
fake "$project/build/release/tools/demo/demo-loop" <<<'sox -n -r 44100 -c 2 "$1" synth 0.2 sine 440 gain -6'
fake "$project/build/release/tools/host/kestrin-host" <<END
printf '%s\n' "\$@" >'$scratch/call'
[ "\$1" = render ] || { echo 'no window here' >&2; exit 2; }
[ ! -e '$scratch/broken' ] || { echo 'the host is broken' >&2; exit 2; }
while [ \$# -gt 0 ]
do
    case \$1 in --in) from=\$2 ;; --out) to=\$2 ;; esac
    shift
done
cp "\$from" "\$to"
cp '$scratch/call' '$scratch/render'
END

run() # sound
{
    PATH="$scratch/bin:$PATH" IN=$1 "$project/scripts/demo" >"$scratch/out" 2>"$scratch/err"
    code=$?
}

outputs=("$scratch/out" "$scratch/err")

succeeds() { [ "$code" = 0 ] && [ -s "$page" ]; }
isOneLine() { [ "$code" != 0 ] && [ "$(grep -c '' "$scratch/err")" = 1 ] && grep -qF "$1" "$scratch/err"; }
holds() { grep -qF -- "$2" "$1"; }

# The pictures are the real ones, so the page must carry two of them, two sounds, and nothing from elsewhere.
run ''
check 'without IN it filters its own loop' succeeds
check 'both sounds are in the page' test "$(grep -o 'src="data:audio/flac' "$page" | wc -l)" = 2
check 'both spectrograms are in the page' test "$(grep -o 'src="data:image/png' "$page" | wc -l)" = 2
check 'the page asks for no other file' never grep -qE '(src|href)="(http|/|[a-z]*\.)' "$page"
check 'the page says how the gallery is made' holds "$page" 'make gallery'
check 'the page is told where it is' holds "$scratch/out" "$page"
check 'every setting of the patch reaches the host' \
    test "$(grep -cx -- --set "$scratch/render")" = "$(grep -c '^set' "$patch")"
check 'every movement of the patch reaches the host' \
    test "$(grep -cx -- --automate "$scratch/render")" = "$(grep -c '^move' "$patch")"
check 'movements end with the sound' grep -qE '@.*,0\.2000=' "$scratch/render"
check 'no picture of the window is no failure' holds "$scratch/out" 'no window here'

mkdir "$project/build/gallery" && touch "$project/build/gallery/index.html"
run ''
check 'a gallery that is there is linked' holds "$page" 'href="../gallery/index.html"'

sox -V1 -n -r 48000 -c 1 "$scratch/song [1] & more.wav" synth 0.1 sine 200
run "$scratch/song [1] & more.wav"
check 'a sound with an odd name is taken' succeeds
check 'its name is on the page, escaped' holds "$page" 'song [1] &amp; more.wav'

(cd "$scratch" && PATH="$scratch/bin:$PATH" IN='song [1] & more.wav' "$project/scripts/demo") >"$scratch/out" 2>"$scratch/err"
code=$?
check 'a relative name is meant from where the command is typed' succeeds

run "$scratch/nothing.wav"
check 'a missing sound is one line' isOneLine 'no such file'

run "$scratch"
check 'a folder is one line' isOneLine 'cannot be read'

echo 'some words' >"$scratch/words.wav"
run "$scratch/words.wav"
check 'a file that is no sound is one line' isOneLine 'no sound file'

sox -V1 -n -r 44100 -c 3 "$scratch/three.wav" synth 0.1 sine 200
run "$scratch/three.wav"
check 'three channels are one line' isOneLine '3 channels'

sox -V1 -n -r 44100 -c 2 "$scratch/empty.wav" trim 0 0
run "$scratch/empty.wav"
check 'an empty sound is one line' isOneLine 'is empty'

touch "$scratch/broken"
run ''
check 'a host that fails makes the demo fail' test "$code" != 0
check 'its reason is shown' holds "$scratch/err" 'the host is broken'

sumUp
