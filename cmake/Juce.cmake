# SPDX-License-Identifier: AGPL-3.0-or-later
# Where JUCE comes from: the parent project's own, a tree that the user names, the tree that scripts/setup has fetched, or
# upstream's tag, in this order. The version is pinned because each JUCE carries its own VST3 SDK, whose version a host can read.

set (kestrinJuceVersion 8.0.6)
set (KESTRIN_JUCE_DIR "" CACHE PATH "A tree of JUCE ${kestrinJuceVersion}; the environment variable of this name serves too")

# The version that a tree of JUCE states in its first CMake file; empty if this is no tree of JUCE.
function (kestrin_juce_version_of tree result)
    set (version "")

    if (EXISTS "${tree}/CMakeLists.txt")
        file (STRINGS "${tree}/CMakeLists.txt" line REGEX "project *\\( *JUCE +VERSION" LIMIT_COUNT 1)
        string (REGEX MATCH "[0-9]+(\\.[0-9]+)+" version "${line}")
    endif()

    set (${result} "${version}" PARENT_SCOPE)
endfunction()

# The tree to use, and in kestrinJuceChoice how it was chosen, so that an error can say what to change.
function (kestrin_choose_juce_tree)
    set (fetched "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../external/juce-${kestrinJuceVersion}")

    if (KESTRIN_JUCE_DIR)
        set (tree "${KESTRIN_JUCE_DIR}")
        set (choice "KESTRIN_JUCE_DIR")
    elseif (NOT "$ENV{KESTRIN_JUCE_DIR}" STREQUAL "")
        set (tree "$ENV{KESTRIN_JUCE_DIR}")
        set (choice "the environment variable KESTRIN_JUCE_DIR")
    elseif (FETCHCONTENT_SOURCE_DIR_JUCE)
        set (tree "${FETCHCONTENT_SOURCE_DIR_JUCE}")
        set (choice "FETCHCONTENT_SOURCE_DIR_JUCE")
    elseif (EXISTS "${fetched}")
        set (tree "${fetched}")
        set (choice "scripts/setup")
    else()
        include (FetchContent)
        message (STATUS "Fetching JUCE ${kestrinJuceVersion} from upstream (with no way there, run scripts/setup or set KESTRIN_JUCE_DIR)")

        # A SOURCE_SUBDIR that does not exist: only fetch. Added below by hand, the tree stays out of "all" and "install".
        FetchContent_Declare (JUCE
            GIT_REPOSITORY https://github.com/juce-framework/JUCE.git
            GIT_TAG ${kestrinJuceVersion}
            GIT_SHALLOW TRUE
            SOURCE_SUBDIR only-fetch)
        FetchContent_MakeAvailable (JUCE)
        set (tree "${juce_SOURCE_DIR}")
        set (choice "upstream's tag")
    endif()

    get_filename_component (tree "${tree}" ABSOLUTE BASE_DIR "${CMAKE_SOURCE_DIR}")
    set (kestrinJuceTree "${tree}" PARENT_SCOPE)
    set (kestrinJuceChoice "${choice}" PARENT_SCOPE)
endfunction()

if (COMMAND juce_add_plugin)
    # An installed JUCE states its version in a variable, one added as a folder in its own CMake file.
    if (DEFINED JUCE_VERSION)
        set (kestrinJuceFound "${JUCE_VERSION}")
    else()
        kestrin_juce_version_of ("${JUCE_SOURCE_DIR}" kestrinJuceFound)
    endif()

    if (NOT kestrinJuceFound VERSION_EQUAL kestrinJuceVersion)
        message (FATAL_ERROR "The enclosing project brings JUCE ${kestrinJuceFound}, and Kestrin Tamsile Filter needs "
            "${kestrinJuceVersion}: give the enclosing project JUCE ${kestrinJuceVersion}.")
    endif()
else()
    kestrin_choose_juce_tree()
    kestrin_juce_version_of ("${kestrinJuceTree}" kestrinJuceFound)

    if (kestrinJuceFound STREQUAL "")
        message (FATAL_ERROR "${kestrinJuceTree} (from ${kestrinJuceChoice}) is no tree of JUCE: "
            "set KESTRIN_JUCE_DIR to a tree of JUCE ${kestrinJuceVersion}, or unset it and run scripts/setup.")
    elseif (NOT kestrinJuceFound VERSION_EQUAL kestrinJuceVersion)
        message (FATAL_ERROR "${kestrinJuceTree} (from ${kestrinJuceChoice}) is JUCE ${kestrinJuceFound}: "
            "set KESTRIN_JUCE_DIR to a tree of JUCE ${kestrinJuceVersion}, or unset it and run scripts/setup.")
    endif()

    # JUCE builds its helper tools inside its build folder, and CMake refuses to build them there from another tree.
    if (DEFINED CACHE{KESTRIN_JUCE_TREE_IN_USE} AND NOT KESTRIN_JUCE_TREE_IN_USE STREQUAL kestrinJuceTree)
        file (REMOVE_RECURSE "${CMAKE_BINARY_DIR}/juce")
    endif()

    set (KESTRIN_JUCE_TREE_IN_USE "${kestrinJuceTree}" CACHE INTERNAL "The tree of JUCE of this build folder")
    message (STATUS "JUCE ${kestrinJuceFound} in ${kestrinJuceTree} (from ${kestrinJuceChoice})")
    add_subdirectory ("${kestrinJuceTree}" "${CMAKE_BINARY_DIR}/juce" EXCLUDE_FROM_ALL)
endif()

# Warnings in JUCE's headers are not shown: a target that links a module finds them as system headers. A target that takes its
# view of JUCE from another target's properties adds SYSTEM ${kestrinJuceIncludes} itself.
set (kestrinJuceIncludes "")

foreach (target IN ITEMS juce_core juce_vst3_headers)
    if (TARGET ${target})
        get_target_property (directories ${target} INTERFACE_INCLUDE_DIRECTORIES)
        set_property (TARGET ${target} APPEND PROPERTY INTERFACE_SYSTEM_INCLUDE_DIRECTORIES ${directories})
        list (APPEND kestrinJuceIncludes ${directories})
    endif()
endforeach()

# Upstream's tree bundles these libraries, and Debian's leaves them out: the system's are used instead.
set (kestrinJuceLibraries "")
get_target_property (kestrinJuceModules juce_core INTERFACE_INCLUDE_DIRECTORIES)
list (GET kestrinJuceModules 0 kestrinJuceModules)

kestrin_map_paths (${kestrinJuceModules} juce)

if (NOT EXISTS "${kestrinJuceModules}/juce_core/zip/zlib")
    find_package (ZLIB REQUIRED)
    find_package (PNG REQUIRED)
    find_package (JPEG REQUIRED)
    set (kestrinJuceLibraries ZLIB::ZLIB PNG::PNG JPEG::JPEG)

    # libjpeg has another name on each distribution, and a module that asks for one of them loads on those alone: the static
    # library is linked where there is one. libpng and zlib have one name everywhere.
    if (CMAKE_SYSTEM_NAME STREQUAL "Linux")
        find_library (KESTRIN_STATIC_JPEG libjpeg.a)
        mark_as_advanced (KESTRIN_STATIC_JPEG)

        if (KESTRIN_STATIC_JPEG)
            set_target_properties (JPEG::JPEG PROPERTIES
                IMPORTED_LOCATION ${KESTRIN_STATIC_JPEG}
                IMPORTED_LOCATION_RELEASE ${KESTRIN_STATIC_JPEG})

            # Debian's tree names the shared one besides.
            if (TARGET pkgconfig_JUCE_IMG_LINUX_DEPS)
                get_target_property (libraries pkgconfig_JUCE_IMG_LINUX_DEPS INTERFACE_LINK_LIBRARIES)
                list (FILTER libraries EXCLUDE REGEX "libjpeg")
                set_target_properties (pkgconfig_JUCE_IMG_LINUX_DEPS PROPERTIES INTERFACE_LINK_LIBRARIES "${libraries}")
            endif()
        endif()
    endif()

    # A parent project links them through the plug-in's library, and must see them for that.
    set_target_properties (${kestrinJuceLibraries} PROPERTIES IMPORTED_GLOBAL TRUE)
endif()

set (kestrinJuceDefinitions
    JUCE_WEB_BROWSER=0
    JUCE_USE_CURL=0
    JUCE_USE_FLAC=0
    JUCE_USE_OGGVORBIS=0
    JUCE_STRICT_REFCOUNTEDPOINTER=1
    JUCE_MODAL_LOOPS_PERMITTED=0)
