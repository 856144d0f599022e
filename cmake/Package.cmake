# SPDX-License-Identifier: AGPL-3.0-or-later
# What cpack makes: a Debian package for a whole machine and an archive for one user. Each is a component of its own, as the
# files lie in other places; "cmake --install" puts down the former.

# The note in the archive begins with the version, underlined.
set (kestrinNoteTitle "Kestrin Tamsile Filter ${PROJECT_VERSION}")
string (REGEX REPLACE "." "=" kestrinNoteUnderline "${kestrinNoteTitle}")
configure_file (${PROJECT_SOURCE_DIR}/packaging/INSTALL.in ${PROJECT_BINARY_DIR}/packaging/INSTALL @ONLY)

set (presetFolder "presets/Kestrin/Kestrin Tamsile Filter")

install (DIRECTORY "${kestrinModule}" DESTINATION lib/vst3 COMPONENT system)
install (DIRECTORY ${kestrinPresetFolder}/ DESTINATION "share/vst3/${presetFolder}" COMPONENT system)
install (FILES ${PROJECT_SOURCE_DIR}/packaging/copyright DESTINATION share/doc/kestrin-tamsile-filter COMPONENT system)

install (DIRECTORY "${kestrinModule}" DESTINATION . COMPONENT portable EXCLUDE_FROM_ALL)
install (DIRECTORY ${kestrinPresetFolder}/ DESTINATION "${presetFolder}" COMPONENT portable EXCLUDE_FROM_ALL)
install (FILES ${PROJECT_BINARY_DIR}/packaging/INSTALL ${PROJECT_SOURCE_DIR}/packaging/copyright
    DESTINATION . COMPONENT portable EXCLUDE_FROM_ALL)

set (CPACK_GENERATOR DEB TGZ)
set (CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/PackageComponents.cmake)
set (CPACK_PACKAGE_NAME kestrin-tamsile-filter)
set (CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set (CPACK_PACKAGE_VENDOR Kestrin)
set (CPACK_PACKAGE_CONTACT "Kestrin (https://kestrin.example)")
set (CPACK_PACKAGE_HOMEPAGE_URL https://kestrin.example)
set (CPACK_PACKAGE_DESCRIPTION_SUMMARY "filter for music with LFOs and a step sequencer (VST3)")
set (CPACK_PACKAGE_DESCRIPTION "A highpass and a lowpass in series, each with a resonance, in a clean\n\
family and a dirty one. Two LFOs and ten overlapping steps move their\n\
cutoffs and resonances. For any host of VST3 effects.")
set (CPACK_PACKAGE_FILE_NAME kestrin-tamsile-filter-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
set (CPACK_PACKAGE_CHECKSUM SHA256)
set (CPACK_VERBATIM_VARIABLES ON)

# The permissions do not depend on the umask of the build.
set (CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set (CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set (CPACK_DEBIAN_PACKAGE_SECTION sound)
set (CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

# The window's libraries are opened by name when it is: no scan of the module finds them. Its texts need a typeface.
set (CPACK_DEBIAN_PACKAGE_DEPENDS "libx11-6, libxext6, libxinerama1, libxrandr2, libxcursor1, libxrender1")
set (CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-liberation | fonts-dejavu-core")

include (CPack)
