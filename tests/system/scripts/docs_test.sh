#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Checks that the documents are complete: what they point at exists, and every preset, picture and parameter is in them.
#
#   docs_test.sh <path of scripts/docs>
set -uo pipefail
shopt -s nullglob

root=$(cd "$(dirname "$1")/.." && pwd)
# shellcheck source=tests/system/scripts/checks.sh
source "$(dirname "$0")/checks.sh"

tests=$(mktemp)
trap 'rm -f "$tests"' EXIT

refuses() { ! "$@" >/dev/null 2>&1; }

# A heading as a link within a page names it.
hasHeading() # page, name
{
    sed -n 's/^#\+ //p' "$1" | tr '[:upper:]' '[:lower:]' | tr -cd 'a-z0-9 \n-' | tr ' ' '-' | grep -qxF -- "$2"
}

cd "$root" || exit 1

for page in ./*.md docs/*.md presets/*.md
do
    # Every link and every picture, one per line. Links out of the repository are not checked.
    while IFS= read -r link
    do
        target=${link%%#*}

        case $link in
            http*)  ;;
            '#'*)   check "$page points at its heading $link" hasHeading "$page" "${link#\#}" ;;
            *)      check "$page points at $target" [ -e "$(dirname "$page")/$target" ] ;;
        esac
    done < <(grep -o '](\([^) ]*\))' "$page" | sed 's/^](//; s/)$//')
done

for picture in docs/pictures/*.png
do
    check "${picture##*/} is shown in some page" grep -qF "pictures/${picture##*/}" ./*.md docs/*.md
done

tableOfPresets() { sed -n '/^<!-- presets: begin -->$/,/^<!-- presets: end -->$/p' docs/manual.md | sed '1d; $d'; }
check "the manual's table is that of the presets' texts ('scripts/docs presets' writes it)" \
    diff <(tableOfPresets) <(tools/gallery/presets.py)

while IFS='|' read -r _ id name _
do
    id=${id// /}
    check "docs/parameters.md has $id" grep -q "| \`$id\` |$name|" docs/parameters.md
done <tests/golden/parameters.txt

for class in ButterworthFilter ResonancePeak GrungeLadder LfoGenerator frequencer SlewValue
do
    check "docs/dsp.md has a measured error of $class" grep -q "^| \`$class\` |.*[0-9]" docs/dsp.md
done

# A * matches any letters; a suite by itself is written as "Suite*".
testNames tests >"$tests"

# shellcheck disable=SC2016 # the backticks are the page's
while IFS='|' read -r page name
do
    pattern=${name//./\\.}
    check "$page names a test that is there: $name" grep -qE "^${pattern//\*/.*}$" "$tests"
done < <(grep -oE '`[A-Z][A-Za-z]+(\*|\*?\.[A-Z][A-Za-z]*\*?|\.\*)`' ./*.md docs/*.md | sed 's/:`/|/; s/`$//')

check 'scripts/docs refuses a part that it does not know' refuses scripts/docs windws
check 'scripts/docs explains itself' grep -q '^Usage' <(scripts/docs --help)

sumUp
