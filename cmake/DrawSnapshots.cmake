# SPDX-License-Identifier: AGPL-3.0-or-later
# Draws the snapshots of a module into its bundle:
#
#   cmake -DHOST=<kestrin-host> -DMODULE=<bundle> -P DrawSnapshots.cmake
#
# Never fails: a module without snapshots is as good. An older picture is removed, as it may show another window.

set (secondsPerPicture 60)
set (problem "")

# The id of the audio module class, as the module's factory gives it.
function (kestrin_audio_class_id result)
    set (${result} "" PARENT_SCOPE)
    execute_process (COMMAND ${HOST} identity --json --plugin ${MODULE}
        OUTPUT_VARIABLE identity ERROR_QUIET RESULT_VARIABLE failed TIMEOUT ${secondsPerPicture})

    if (failed)
        return()
    endif()

    string (JSON count LENGTH "${identity}" classes)
    math (EXPR last "${count} - 1")

    foreach (index RANGE ${last})
        string (JSON category GET "${identity}" classes ${index} category)

        if (category STREQUAL "Audio Module Class")
            string (JSON id GET "${identity}" classes ${index} id)
            set (${result} ${id} PARENT_SCOPE)
        endif()
    endforeach()
endfunction()

# A private display: on the screen of the developer the window would be in the way, and other windows in the picture.
function (kestrin_draw_snapshot scale file)
    execute_process (
        COMMAND ${CMAKE_COMMAND} -E env --unset=DISPLAY
                ${HOST} window --plugin ${MODULE} --show lfos --scale ${scale} --out ${file}
        ERROR_VARIABLE words OUTPUT_QUIET RESULT_VARIABLE failed TIMEOUT ${secondsPerPicture})

    if (failed)
        string (STRIP "${words}" words)
        string (REGEX REPLACE "\n.*" "" words "${words}")
        string (REGEX REPLACE "^kestrin-host: " "" words "${words}")
        set (problem "${words} (${failed})" PARENT_SCOPE)
    endif()
endfunction()

kestrin_audio_class_id (classId)
set (folder "${MODULE}/Contents/Resources/Snapshots")

if (classId STREQUAL "")
    set (problem "its factory gives no class id")
else()
    file (REMOVE_RECURSE "${folder}")
    file (MAKE_DIRECTORY "${folder}")
    kestrin_draw_snapshot (1 "${folder}/${classId}_snapshot.png")
    kestrin_draw_snapshot (2 "${folder}/${classId}_snapshot_2.0x.png")
endif()

if (NOT problem STREQUAL "")
    file (REMOVE_RECURSE "${folder}")
    message (STATUS "The module goes without its snapshots: ${problem}")
endif()
