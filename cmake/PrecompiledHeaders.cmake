# SPDX-License-Identifier: MIT
# NIMBA_PRECOMPILE makes a whole build faster. It hides includes that a file forgot: a build for the
# lint, or a developer's, does without.
option(NIMBA_PRECOMPILE "Compile common headers of tests, with clang also of tools, once per target" OFF)

# nimba_precompile(TARGET HEADER...): the common headers and these, once for the target, if it has
# enough sources to be worth it.
function(nimba_precompile target)
    get_target_property(sources ${target} SOURCES)
    list(LENGTH sources count)
    if(NOT NIMBA_PRECOMPILE OR count LESS 4)
        return()
    endif()
    foreach(header algorithm array chrono cstdint cstring filesystem functional iterator map memory
            optional string string_view utility vector fmt/core.h ${ARGN})
        target_precompile_headers(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:<${header}$<ANGLE-R>>")
    endforeach()
endfunction()
