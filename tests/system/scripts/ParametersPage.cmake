# SPDX-License-Identifier: AGPL-3.0-or-later
# Fails if the page of all parameters is not what kestrin-host says of the module:
#
#   cmake -DHOST=<kestrin-host> -DMODULE=<bundle> -DPAGE=<parameters.md> -P ParametersPage.cmake

execute_process (COMMAND ${HOST} parameters --markdown --plugin ${MODULE}
    OUTPUT_VARIABLE made ERROR_VARIABLE words RESULT_VARIABLE failed)

if (failed)
    message (FATAL_ERROR "kestrin-host gives no page: ${words}")
endif()

if (NOT EXISTS "${PAGE}")
    message (FATAL_ERROR "${PAGE} is missing")
endif()

file (READ "${PAGE}" page)

if (NOT made STREQUAL page)
    message (FATAL_ERROR "${PAGE} is stale. Make it again, and see that the difference is meant:\n"
        "  ${HOST} parameters --markdown > docs/parameters.md")
endif()
