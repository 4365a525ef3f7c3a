# SPDX-License-Identifier: MIT
# Run by cpack between installing the components into a directory and packing them: what Debian wants
# otherwise than an installation somewhere else does.
cmake_minimum_required(VERSION 3.25)
set(roots ${CPACK_TEMPORARY_INSTALL_DIRECTORY})

# The loader looks where the library is; another path would outlive a change of that place.
file(GLOB programs ${roots}/*/usr/bin/*)
foreach(program IN LISTS programs)
    file(RPATH_REMOVE FILE ${program})
endforeach()

file(GLOB pages ${roots}/*/usr/share/man/man*/*.[1-9])
if(pages)
    execute_process(COMMAND gzip -9n ${pages} COMMAND_ERROR_IS_FATAL ANY)
endif()
