# SPDX-License-Identifier: AGPL-3.0-or-later
# A locale with a decimal comma for the tests, so that the building machine needs none.

find_program (KESTRIN_LOCALEDEF localedef REQUIRED)

set (kestrinTestLocales ${CMAKE_CURRENT_BINARY_DIR}/locales)
add_custom_command (
    OUTPUT ${kestrinTestLocales}/de_DE.UTF-8/LC_NUMERIC
    COMMAND ${CMAKE_COMMAND} -E make_directory ${kestrinTestLocales}
    COMMAND ${KESTRIN_LOCALEDEF} --no-archive -i de_DE -f UTF-8 ${kestrinTestLocales}/de_DE.UTF-8
    COMMENT "Making a locale with a decimal comma"
    VERBATIM)
add_custom_target (kestrin_test_locales DEPENDS ${kestrinTestLocales}/de_DE.UTF-8/LC_NUMERIC)

add_dependencies (plugin_tests kestrin_test_locales)
target_compile_definitions (plugin_tests PRIVATE KESTRIN_TEST_LOCALES="${kestrinTestLocales}")
