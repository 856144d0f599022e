# SPDX-License-Identifier: AGPL-3.0-or-later
# Where JUCE 8.0.6 comes from.

set (KESTRIN_JUCE_DIR "$ENV{KESTRIN_JUCE_DIR}" CACHE PATH "A tree of JUCE 8.0.6")

if (NOT COMMAND juce_add_plugin)
    if (KESTRIN_JUCE_DIR)
        set (kestrinJuceTree "${KESTRIN_JUCE_DIR}")
    else()
        set (kestrinJuceTree "${CMAKE_CURRENT_LIST_DIR}/../external/juce-8.0.6")
    endif()

    add_subdirectory ("${kestrinJuceTree}" "${CMAKE_BINARY_DIR}/juce" EXCLUDE_FROM_ALL)
endif()

# Debian's tree leaves these out; upstream's bundles them, and linking the system's as well does no harm.
find_package (ZLIB REQUIRED)
find_package (PNG REQUIRED)
find_package (JPEG REQUIRED)

set (kestrinJuceLibraries ZLIB::ZLIB PNG::PNG JPEG::JPEG)
set (kestrinJuceDefinitions
    JUCE_WEB_BROWSER=0
    JUCE_USE_CURL=0
    JUCE_USE_FLAC=0
    JUCE_USE_OGGVORBIS=0
    JUCE_STRICT_REFCOUNTEDPOINTER=1
    JUCE_DISPLAY_SPLASH_SCREEN=0
    JUCE_MODAL_LOOPS_PERMITTED=0)
