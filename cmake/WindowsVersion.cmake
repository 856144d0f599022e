# SPDX-License-Identifier: AGPL-3.0-or-later
# The name and the version resource of the module on Windows. Untried: written by the documents, never built.

if (NOT WIN32)
    return()
endif()

# The build number's one home is PluginIdentity.h. The resource puts it behind a number that nothing else shows.
file (STRINGS ${PROJECT_SOURCE_DIR}/source/frame/PluginIdentity.h buildNumberLine REGEX "int buildNumber = [0-9]+;")
string (REGEX MATCH "[0-9]+" kestrinBuildNumber "${buildNumberLine}")

if (kestrinBuildNumber STREQUAL "")
    message (FATAL_ERROR "PluginIdentity.h states no build number")
endif()

set (kestrinWindowsModule "Kestrin Tamsile Filter.vst3")

# The 32-bit module is a plain file of its own name, not a bundle.
if (CMAKE_SIZEOF_VOID_P EQUAL 4)
    set (kestrinWindowsModule "Kestrin Tamsile Filter 32bit.dll")
    set_target_properties (KestrinTamsileFilter_VST3 PROPERTIES
        OUTPUT_NAME "Kestrin Tamsile Filter 32bit"
        SUFFIX .dll
        LIBRARY_OUTPUT_DIRECTORY "$<GENEX_EVAL:$<TARGET_PROPERTY:KestrinTamsileFilter,LIBRARY_OUTPUT_DIRECTORY>>/VST3")
endif()

# JUCE's own resource would carry the version of the class information. This definition names another one in its place.
configure_file (${CMAKE_CURRENT_LIST_DIR}/WindowsVersion.rc.in ${PROJECT_BINARY_DIR}/windows/KestrinVersion.rc @ONLY)
target_compile_definitions (KestrinTamsileFilter PRIVATE JUCE_USER_DEFINED_RC_FILE="KestrinVersion.rc")
target_include_directories (KestrinTamsileFilter PRIVATE ${PROJECT_BINARY_DIR}/windows)
