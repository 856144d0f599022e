# SPDX-License-Identifier: AGPL-3.0-or-later
# Read by cpack once for each kind of package: chooses the component that goes into it, and where.

if (CPACK_GENERATOR STREQUAL "DEB")
    set (component system)
    set (CPACK_PACKAGING_INSTALL_PREFIX /usr)
else()
    set (component portable)
endif()

list (GET CPACK_INSTALL_CMAKE_PROJECTS 0 1 buildFolderAndProject)
set (CPACK_INSTALL_CMAKE_PROJECTS ${buildFolderAndProject} ${component} /)
