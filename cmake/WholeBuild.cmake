# SPDX-License-Identifier: MIT
# What makes a whole build faster, for those who build all of it.
#
# NIMBA_PRECOMPILE hides includes that a file forgot: a developer's build does without.
option(NIMBA_PRECOMPILE "Compile common headers once per target, and sources of one directory as one" OFF)

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

# nimba_unite(TARGET [APART SOURCE...] [TOGETHER SOURCE...]): compiles the sources of each directory as
# few. A name that two of them have for different things, each for itself, keeps one of them APART.
# Those that are TOGETHER, wherever they are, have in common what takes the most to compile.
function(nimba_unite target)
    if(NOT NIMBA_PRECOMPILE)
        return()
    endif()
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "APART;TOGETHER")
    get_target_property(sources ${target} SOURCES)
    list(REMOVE_ITEM sources ${arg_APART})
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    foreach(source ${sources})
        get_filename_component(directory ${source} DIRECTORY)
        if(source IN_LIST arg_TOGETHER)
            set(directory together)
        endif()
        # Small enough that all processors have something to do.
        math(EXPR part "0${taken_${directory}}")
        math(EXPR number "${part} / 8")
        math(EXPR taken_${directory} "${part} + 1")
        string(REPLACE / _ name "${directory}")
        set_source_files_properties(${source} TARGET_DIRECTORY ${target}
                                    PROPERTIES UNITY_GROUP "${name}_${number}")
    endforeach()
endfunction()
