# SPDX-License-Identifier: MIT
# `check-format` and `lint`: what CI holds the tree against. `format` rewrites the files.
file(GLOB_RECURSE nimba_sources RELATIVE ${CMAKE_SOURCE_DIR} CONFIGURE_DEPENDS
     include/*.h alloc/*.[ch]pp core/*.[ch]pp config/*.[ch]pp pagetable/*.[ch]pp power/*.[ch]pp tools/*.[ch]pp tools/*.c tests/*.[ch]pp tests/*.[ch]
     bench/*.[ch]pp)

add_custom_target(check-format
    COMMAND clang-format --dry-run --Werror ${nimba_sources}
    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} VERBATIM)
add_custom_target(format
    COMMAND clang-format -i ${nimba_sources}
    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} VERBATIM)
add_custom_target(lint
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/lint ${CMAKE_BINARY_DIR}
    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} USES_TERMINAL VERBATIM)
