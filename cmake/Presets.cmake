# SPDX-License-Identifier: AGPL-3.0-or-later
# The factory presets: every text in presets/ becomes a .vstpreset beside the module, never inside it.

set (kestrinPresetFolder ${PROJECT_BINARY_DIR}/presets)
file (GLOB writtenPresets CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/presets/*.txt)

# The name of each file is inside its text, so a stamp says when they were made. The folder is made from scratch each time, so
# that a preset disappears with its text.
add_custom_command (OUTPUT ${PROJECT_BINARY_DIR}/presets.stamp
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${kestrinPresetFolder}
    COMMAND kestrin-host preset --plugin ${kestrinModule} --out-dir ${kestrinPresetFolder} ${writtenPresets}
    COMMAND ${CMAKE_COMMAND} -E touch ${PROJECT_BINARY_DIR}/presets.stamp
    DEPENDS ${writtenPresets} kestrin-host KestrinTamsileFilter_VST3
    COMMENT "Making the presets"
    VERBATIM)
add_custom_target (presets ALL DEPENDS ${PROJECT_BINARY_DIR}/presets.stamp)
