# SPDX-License-Identifier: AGPL-3.0-or-later
# Short names for what the scripts and CMake's presets do; nothing is built by rules of this file. A target is described by
# the words behind its ##, which 'make' alone prints; a new one needs no more than a script of its name, those words and a
# place in .PHONY.

# The user's folder of VST3 modules; the presets go into presets/ within it.
VST3_DIR ?= $(HOME)/.vst3

# How long each fuzzer runs.
SECONDS_EACH ?= 60

# What the fuzzers' chance begins with; with 0 every run tries something else.
FUZZ_SEED ?= 0

# How many things are done at once.
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

# How far 'make bits' goes, and where its random sessions begin.
MILLION ?= 50
SEED ?= 1000000

# A compiler cache is used if there is one.
CCACHE := $(shell command -v ccache 2>/dev/null)
ifneq ($(CCACHE),)
export CMAKE_C_COMPILER_LAUNCHER ?= $(CCACHE)
export CMAKE_CXX_COMPILER_LAUNCHER ?= $(CCACHE)
endif

export IN VST3_DIR JOBS

.DEFAULT_GOAL := help
.PHONY: help test-window test-daw setup build demo test bits bench bench-document docs install uninstall format lint clean test-consumer package sanitize fuzz soak

help:
	@echo "Kestrin Tamsile Filter. Every target sets up what it needs by itself."
	@echo
	@sed -n 's/^\([a-z-]*\):.*## \(.*\)/  make \1|\2/p' Makefile | awk -F '|' '{ printf "%-18s %s\n", $$1, $$2 }'
	@echo
	@echo "Variables: IN=song.wav (demo), VST3_DIR=folder (install, uninstall; ~/.vst3), JOBS=number,"
	@echo "MILLION=number and SEED=number (bits), SECONDS_EACH=number and FUZZ_SEED=number (fuzz),"
	@echo "KESTRIN_JUCE_DIR=folder (a tree of JUCE 8.0.6 of your own)."

setup: ## install what is missing and fetch JUCE; all other targets begin with this
	@scripts/setup

build: setup ## build the plug-in and everything else, in build/release
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS)

demo: ## filter a sound with the built plug-in and make a page of it; IN=song.wav takes yours
	@scripts/demo

test: build ## build and run all tests
	ctest --preset release --parallel $(JOBS)

test-window: build ## of the tests, only those of the window on a private desktop; leaves pictures in build/test-pictures
	@build/release/tests/system/window/window_tests

test-daw: build ## try the built module in a real workstation, Ardour, on a private desktop
	@scripts/setup daw
	@build/release/tests/system/daw/daw_tests

test-consumer: setup ## build a small project that takes this one in by add_subdirectory (some minutes)
	@tests/system/scripts/consumer_test.sh .

bits: build ## play MILLION (50) million frames of random sessions into plug-in and literal engine, and compare every bit
	build/release/tests/bitexact/bit_soak --million $(MILLION) --seed $(SEED)

bench: setup ## measure speed, load times and memory, and print the tables
	@scripts/bench

bench-document: setup ## the same, and put the tables into docs/performance.md
	@scripts/bench --document

docs: ## draw the pictures and plots of docs/, and write the class pages into build/docs/html
	@scripts/docs

install: build ## put the plug-in and its presets into ~/.vst3
	@scripts/user-install install build/release

uninstall: ## take out of ~/.vst3 what 'make install' put there
	@scripts/user-install uninstall

package: build ## make the Debian package and the archive, in build/package
	@scripts/setup package
	@scripts/package build/release build/package

sanitize: ## run the tests under the sanitizers and valgrind; takes more than an hour the first time
	@scripts/sanitize

fuzz: ## run each fuzzer for a minute; SECONDS_EACH=n for another time
	@scripts/fuzz $(SECONDS_EACH) $(FUZZ_SEED)

soak: ## run a day asleep and an hour awake, as fast as the machine goes
	@scripts/soak

format: ## lay out all C++ files as .clang-format says
	@scripts/setup format
	@scripts/format

lint: ## check the layout and look for common mistakes
	@scripts/setup format
	@scripts/format --check
	@scripts/lint

clean: ## remove build/; what was fetched stays
	rm -rf build
