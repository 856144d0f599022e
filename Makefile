# SPDX-License-Identifier: AGPL-3.0-or-later
# Short names for what the scripts and CMake's presets do; nothing is built by rules of this file. A target is described by
# the words behind its ##, which 'make' alone prints. What is rarely called has no target: CONTRIBUTING.md names it.

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

# How many faults 'make mutants' makes, and which ones chance draws.
COUNT ?= 100
MUTANT_SEED ?= 1

# More options of 'kestrin-host play'.
PLAY ?=

export IN VST3_DIR JOBS

.DEFAULT_GOAL := help
.PHONY: help demo play gallery test test-arm64 install uninstall bits bench sanitize fuzz coverage mutants docs package format lint clean

help:
	@echo "Kestrin Tamsile Filter. Every target sets up what it needs by itself."
	@echo
	@sed -n 's/^\([a-z0-9-]*\):.*## \(.*\)/  make \1|\2/p' Makefile | awk -F '|' '{ printf "%-18s %s\n", $$1, $$2 }'
	@echo
	@echo "Variables: IN=song.wav (demo, play), PLAY='options' (play; see 'kestrin-host play --help'),"
	@echo "VST3_DIR=folder (install, uninstall; ~/.vst3), JOBS=number,"
	@echo "MILLION=number and SEED=number (bits), SECONDS_EACH=number and FUZZ_SEED=number (fuzz),"
	@echo "COUNT=number and MUTANT_SEED=number (mutants),"
	@echo "KESTRIN_JUCE_DIR=folder (a tree of JUCE 8.0.6 of your own)."

demo: ## filter a sound with the built plug-in and make a page of it; IN=song.wav takes yours
	@scripts/demo

play: ## open the window and play a loop through the plug-in to the sound card; IN=song.wav takes yours
	@scripts/build KestrinTamsileFilter_VST3 kestrin-host presets
	@build/release/tools/host/kestrin-host play $(if $(IN),--in "$(IN)") $(PLAY)

gallery: ## make a page on which every factory preset can be heard and seen, in build/gallery
	@scripts/gallery

test: ## build and run all tests
	@scripts/build
	ctest --preset release --parallel $(JOBS)

install: ## put the plug-in and its presets into ~/.vst3
	@scripts/build
	@scripts/user-install install build/release

uninstall: ## take out of ~/.vst3 what 'make install' put there
	@scripts/user-install uninstall

bits: ## play MILLION (50) million frames of random sessions into plug-in and reference engine, and compare every bit
	@scripts/build
	build/release/tests/bitexact/bit_soak --million $(MILLION) --seed $(SEED)

bench: ## measure speed, load times and memory, and print the tables
	@scripts/bench

test-arm64: ## cross-compile for 64-bit ARM, and run the tests and the demo under qemu; as root
	@scripts/test-arm64

sanitize: ## run the tests under the sanitizers and valgrind; takes more than an hour the first time
	@scripts/sanitize

fuzz: ## run each fuzzer for a minute; SECONDS_EACH=number for another time
	@scripts/fuzz $(SECONDS_EACH) $(FUZZ_SEED)

coverage: ## run the tests with every line and branch counted, and make a page of it in build/coverage/page
	@scripts/coverage

mutants: ## make COUNT (100) small faults in a copy of the sources, one at a time, and see whether a test notices
	@scripts/setup
	@scripts/mutants $(COUNT) $(MUTANT_SEED)

docs: ## draw the pictures and plots of docs/, and make the manual and the class pages in build/docs
	@scripts/docs

package: ## make the Debian packages and the archive, in build/package
	@scripts/build
	@scripts/setup package
	@scripts/package build/release build/package
	@scripts/check-packages build/package

format: ## lay out all C++ files as .clang-format says
	@scripts/setup format
	@scripts/format

lint: ## check the layout and look for common mistakes
	@scripts/setup format
	@scripts/format --check
	@scripts/lint

clean: ## remove build/; what was fetched stays
	rm -rf build
