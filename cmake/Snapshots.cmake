# SPDX-License-Identifier: AGPL-3.0-or-later
# Pictures of the window inside the module, at one and at two pixels per point, which hosts show in their lists. The module
# draws them itself, so they come after it; a build without a screen server goes on without them.

# The module's description lists them, and was written when there were none yet.
if (TARGET juce_vst3_helper)
    set (describeModule COMMAND juce_vst3_helper -create -version ${PROJECT_VERSION} -path ${kestrinModule}
                                -output ${kestrinModule}/Contents/Resources/moduleinfo.json)
endif()

add_custom_command (OUTPUT ${PROJECT_BINARY_DIR}/snapshots.stamp
    COMMAND ${CMAKE_COMMAND} -DHOST=$<TARGET_FILE:kestrin-host> -DMODULE=${kestrinModule}
            -P ${PROJECT_SOURCE_DIR}/cmake/DrawSnapshots.cmake
    ${describeModule}
    COMMAND ${CMAKE_COMMAND} -E touch ${PROJECT_BINARY_DIR}/snapshots.stamp
    DEPENDS ${PROJECT_SOURCE_DIR}/cmake/DrawSnapshots.cmake kestrin-host KestrinTamsileFilter_VST3
    COMMENT "Drawing the module's snapshots"
    VERBATIM)
add_custom_target (snapshots ALL DEPENDS ${PROJECT_BINARY_DIR}/snapshots.stamp)
