#!/usr/bin/env bash
# SPDX-License-Identifier: AGPL-3.0-or-later
# Runs scripts/setup on fake machines: each is a PATH with fake package tools, which write down how they were called. Nothing
# is installed and no network is used.
#
#   setup_test.sh <path of scripts/setup>
set -uo pipefail

setup=$1
scratch=$(mktemp -d "${TMPDIR:-/tmp}/setup test XXXXXX") # the blanks are part of every test
trap 'rm -rf "$scratch"' EXIT
# shellcheck source=tests/system/scripts/checks.sh
source "$(dirname "$0")/checks.sh"

#---- a machine ------------------------------------------------------------------------------------------------------

# A fresh project and a PATH that holds the everyday tools and nothing else.
newMachine()
{
    machine=$(mktemp -d "$scratch/machine XXXXXX")
    bin="$machine/bin"
    project="$machine/a project"
    calls="$machine/calls"
    outputs=("$machine/out" "$machine/err")
    mkdir -p "$bin" "$project/scripts" "$machine/etc/parts"
    : >"$calls"
    cp "$setup" "${setup%/*}/debian-archive" "$project/scripts/"

    local tool
    for tool in awk bash cat cp cut dirname env find grep mkdir mktemp mv rm sed sleep timeout tr
    do
        ln -s "$(command -v "$tool")" "$bin/$tool"
    done

    user 0
}

fake() # name, body on stdin
{
    { printf '#!%s\n' "$(command -v bash)"; cat; } >"$bin/$1"
    chmod +x "$bin/$1"
}

user() # number
{
    fake id <<<"case \$1 in -u) echo $1 ;; -un) echo somebody ;; esac"
}

# dpkg knows all packages that setup may ask for, but those named.
dpkgKnowsAllBut()
{
    fake dpkg-query <<END
shift 3
for package
do
    case " $* " in *" \$package "*) ;; *) echo "\$package:installed" ;; esac
done
END
}

# apt-get whose update and install work, or not, and whose 'source' runs the body on stdin in the current folder.
aptWorks()
{
    local source
    source=$(cat)
    fake apt-config <<<"printf \"list='%s'\nparts='%s'\n\" '$machine/etc/sources.list' '$machine/etc/parts'"
    fake dpkg-source <<<'exit 0'
    fake apt-get <<END
echo "apt-get frontend=\${DEBIAN_FRONTEND:-} \$*" >>'$calls'
for argument
do
    case \$argument in
        Dir::Etc::sourceparts=*) cat "\${argument#*=}"/*.sources >>'$machine/entries' ;;
    esac
done
case " \$* " in
    *' update '*) ${update:-exit 0} ;;
    *' install '*) ${install:-exit 0} ;;
    *' source '*) $source ;;
esac
END
}

gitAnswers() { fake git <<<'exit 0'; }
gitIsSilent() { fake git <<<'echo "fatal: unable to access" >&2; exit 128'; }

treeOfJuce() # folder version
{
    mkdir -p "$1"
    echo "project(JUCE VERSION $2 LANGUAGES C CXX)" >"$1/CMakeLists.txt"
}

debianArchive()
{
    cat >"$machine/etc/parts/debian.sources" <<'END'
Types: deb
URIs: http://archive.example/debian
Suites: bookworm bookworm-updates
Components: main
Signed-By: /usr/share/keyrings/some.gpg
END
}

run() # arguments of setup; KESTRIN_JUCE_DIR from $juceDir
{
    env -i PATH="$bin" HOME="$machine" ${juceDir:+"KESTRIN_JUCE_DIR=$juceDir"} \
        "$project/scripts/setup" "$@" >"$machine/out" 2>"$machine/err" </dev/null
    code=$?
}

#---- checks of the output -------------------------------------------------------------------------------------------

succeeds() { [ "$code" = 0 ] && [ ! -s "$machine/err" ]; }
failsWithOneLine() { [ "$code" != 0 ] && [ "$(grep -c '' "$machine/err")" = 1 ]; }
errorNames() { local word; for word; do grep -qF -- "$word" "$machine/err" || return 1; done; }
says() { grep -qF -- "$1" "$machine/out"; }
called() { grep -q -- "$1" "$calls"; }
leavesNothingHalfFetched() { [ -z "$(find "$project/external" -mindepth 1 ! -path "$project/external/juce-8.0.6*" 2>/dev/null)" ]; }
hasNoTree() { [ ! -e "$project/external/juce-8.0.6" ]; }
entriesAre() { diff "$machine/entries" - ; }

#---- packages -------------------------------------------------------------------------------------------------------

case='nothing is missing'
newMachine; dpkgKnowsAllBut; aptWorks <<<'exit 0'; treeOfJuce "$project/external/juce-8.0.6" 8.0.6
run
check 'it succeeds' succeeds
check 'apt is not touched' never called apt-get
check 'nothing is written' test ! -e "$project/build"

case='packages are missing and root runs it'
newMachine; dpkgKnowsAllBut sox cmake; aptWorks <<<'exit 0'; treeOfJuce "$project/external/juce-8.0.6" 8.0.6
run
check 'it succeeds' succeeds
check 'exactly the missing ones are installed, and apt asks nothing' \
    called 'frontend=noninteractive .* install --no-install-recommends cmake sox$'

case='a tool is installed by hand'
newMachine; dpkgKnowsAllBut cmake; fake cmake <<<''; aptWorks <<<'exit 0'; treeOfJuce "$project/external/juce-8.0.6" 8.0.6
run
check 'it succeeds' succeeds
check 'it is not installed a second time' never called apt-get

case='sudo is there'
newMachine; user 1000; dpkgKnowsAllBut sox; aptWorks <<<'exit 0'; treeOfJuce "$project/external/juce-8.0.6" 8.0.6
fake sudo <<<"echo \"sudo \$*\" >>'$calls'; [ \"\$1\" != -n ] || shift; exec \"\$@\""
fake true <<<'exit 0'
run
check 'it succeeds' succeeds
check 'sudo installs' called '^sudo env DEBIAN_FRONTEND=noninteractive apt-get .*install .*sox$'

case='no root and no sudo'
newMachine; user 1000; dpkgKnowsAllBut sox; aptWorks <<<'exit 0'
run
check 'it fails with one line' failsWithOneLine
check 'the line names the package and the command' errorNames sox 'no sudo' 'apt-get install sox'
check 'apt is not touched' never called apt-get

case='sudo wants a password and there is no terminal'
newMachine; user 1000; dpkgKnowsAllBut sox; aptWorks <<<'exit 0'; fake sudo <<<'exit 1'
run
check 'it fails with one line' failsWithOneLine
check 'the line says what to type' errorNames 'asks for a password' 'sudo apt-get install sox'

case='the archive does not answer'
newMachine; dpkgKnowsAllBut sox; update='exit 100' install='echo "E: no address" >&2; exit 100' aptWorks <<<'exit 100'
run
check 'it fails with one line' failsWithOneLine
check 'the line names the package and where to read more' errorNames sox build/setup.log
check 'the log holds what apt said' grep -q 'no address' "$project/build/setup.log"

case='a system without apt where tools are missing'
newMachine
run
check 'it fails with one line' failsWithOneLine
check 'the line names the needed things' errorNames 'no apt' 'g++' 'libfreetype-dev' 'libgtest-dev'

case='a system without apt where everything is found'
newMachine; gitAnswers; treeOfJuce "$machine/my juce" 8.0.6
for tool in g++ cmake ninja dpkg-source sox Xvfb openbox python3 xdotool gnuplot chromium jackd pkg-config file fakeroot dh lowdown weasyprint man; do fake $tool <<<'exit 0'; done
juceDir="$machine/my juce" run
check 'it succeeds' succeeds

#---- JUCE -----------------------------------------------------------------------------------------------------------

case='the user names a tree'
newMachine; dpkgKnowsAllBut; aptWorks <<<'exit 0'; treeOfJuce "$machine/my juce" 8.0.6
juceDir="$machine/my juce" run
check 'it succeeds' succeeds
check 'nothing is fetched' never called apt-get

case='the user names a tree of another version'
newMachine; dpkgKnowsAllBut; treeOfJuce "$machine/my juce" 8.0.7
juceDir="$machine/my juce" run
check 'it fails with one line' failsWithOneLine
check 'the line names both versions and the variable' errorNames KESTRIN_JUCE_DIR 8.0.7 8.0.6

case='the user names a folder that is no tree of JUCE'
newMachine; dpkgKnowsAllBut
juceDir="$machine/nowhere" run
check 'it fails with one line' failsWithOneLine
check 'the line names the folder' errorNames "$machine/nowhere" 'no tree of JUCE'

case='the fetched tree is of another version'
newMachine; dpkgKnowsAllBut; treeOfJuce "$project/external/juce-8.0.6" 8.0.4
run
check 'it fails with one line' failsWithOneLine
check 'the line says to remove the folder' errorNames external/juce-8.0.6 8.0.4 'remove that folder'

case='the source package is fetched'
newMachine; dpkgKnowsAllBut; debianArchive
aptWorks <<<'mkdir juce-8.0.6+ds; echo "project(JUCE VERSION 8.0.6 LANGUAGES C CXX)" >juce-8.0.6+ds/CMakeLists.txt'
run
check 'it succeeds' succeeds
check 'the tree is in place' grep -q 8.0.6 "$project/external/juce-8.0.6/CMakeLists.txt"
check 'nothing else is left' leavesNothingHalfFetched
check "apt's own folders stay as they are" called 'sourcelist=/dev/null .*Dir::State::Lists=.*Dir::Cache=.* update'
: >"$calls"
run
check 'the second run succeeds' succeeds
check 'the second run fetches nothing' never called apt-get

case='the fetch breaks half-way and upstream answers'
newMachine; dpkgKnowsAllBut; debianArchive; gitAnswers
aptWorks <<<'mkdir juce-8.0.6+ds; exit 100'
run
check 'it succeeds' succeeds
check 'it says that CMake will fetch' says 'CMake will fetch JUCE 8.0.6 from upstream'
check 'there is no tree' hasNoTree
check 'nothing half-fetched is left' leavesNothingHalfFetched

case='the archive holds another version'
newMachine; dpkgKnowsAllBut; debianArchive; gitAnswers
aptWorks <<<'mkdir juce-8.0.9; echo "project(JUCE VERSION 8.0.9 LANGUAGES C CXX)" >juce-8.0.9/CMakeLists.txt'
run
check 'it succeeds' succeeds
check 'it says that CMake will fetch' says 'CMake will fetch JUCE 8.0.6 from upstream'
check 'the other version is not kept' hasNoTree

case='no network at all'
newMachine; dpkgKnowsAllBut; debianArchive; gitIsSilent; update='exit 100' aptWorks <<<'exit 100'
run
check 'it fails with one line' failsWithOneLine
check 'the line says what to do' errorNames network KESTRIN_JUCE_DIR
check 'nothing half-fetched is left' leavesNothingHalfFetched
check 'there is no tree' hasNoTree

case='upstream was fetched by an earlier configure'
newMachine; dpkgKnowsAllBut; gitIsSilent; aptWorks <<<'exit 100'; treeOfJuce "$project/build/release/_deps/juce-src" 8.0.6
run
check 'it succeeds without a network' succeeds

#---- the entry of the archive ---------------------------------------------------------------------------------------

case='entries in the new format'
newMachine; dpkgKnowsAllBut; gitAnswers; aptWorks <<<'exit 100'
cat >"$machine/etc/parts/a.sources" <<'END'
# a comment
Types: deb
URIs: http://off.example/debian
Suites: bookworm
Components: main
Enabled: no

Types: deb
URIs: http://tools.example/linux
Suites: nodistro
Components: main

Types: deb deb-src
URIs: http://archive.example/debian
Suites: bookworm bookworm-updates
Components: main contrib
Architectures: amd64
Signed-By:
 -----BEGIN PGP PUBLIC KEY BLOCK-----
 .
 abc
 -----END PGP PUBLIC KEY BLOCK-----
Check-Valid-Until: no
END
cat >"$machine/etc/parts/b.sources" <<'END'
Types: deb
URIs: http://security.example/debian-security
Suites: bookworm-security
Components: main
END
run
check 'only the main archive of Debian is asked, checked by the same key' entriesAre <<'END'
Types: deb-src
Suites: trixie
Components: main
URIs: http://archive.example/debian
Signed-By:
 -----BEGIN PGP PUBLIC KEY BLOCK-----
 .
 abc
 -----END PGP PUBLIC KEY BLOCK-----
Check-Valid-Until: no
Types: deb-src
Suites: trixie
Components: main
URIs: http://archive.example/debian
Signed-By:
 -----BEGIN PGP PUBLIC KEY BLOCK-----
 .
 abc
 -----END PGP PUBLIC KEY BLOCK-----
Check-Valid-Until: no
END

case='entries in the old format'
newMachine; dpkgKnowsAllBut; gitAnswers; update='exit 100' aptWorks <<<'exit 100'
cat >"$machine/etc/sources.list" <<'END'
# deb http://off.example/debian bookworm main
deb-src http://sources.example/debian bookworm main
deb http://ubuntu.example/ubuntu noble main
deb [arch=amd64 signed-by=/usr/share/keyrings/some.gpg] http://archive.example/debian bookworm main contrib # words
END
cat >"$machine/etc/parts/more.list" <<'END'
deb http://second.example/debian stable main
END
run
check 'each Debian archive is asked in turn, checked by the same key' entriesAre <<'END'
Types: deb-src
URIs: http://archive.example/debian
Suites: trixie
Components: main
signed-by: /usr/share/keyrings/some.gpg
Types: deb-src
URIs: http://second.example/debian
Suites: trixie
Components: main
END

#---- the command line -----------------------------------------------------------------------------------------------

case='groups'
newMachine; dpkgKnowsAllBut doxygen sox; aptWorks <<<'exit 0'
run docs
check 'it succeeds' succeeds
check 'only the packages of the group are installed' called 'install --no-install-recommends doxygen$'
run daw package --list
check 'a list is only printed' says ardour
check 'each package stands alone' test "$(sort "$machine/out" | uniq -d | wc -l)" = 0
run nonsense
check 'an unknown group fails with one line' failsWithOneLine
check 'the line names the word' errorNames nonsense
run --help
check 'help succeeds' succeeds
check 'help names the variable' says KESTRIN_JUCE_DIR

sumUp
