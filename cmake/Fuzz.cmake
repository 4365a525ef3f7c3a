# SPDX-License-Identifier: MIT
# NIMBA_FUZZ: a libFuzzer program for each text that comes from outside. scripts/fuzz builds and runs
# them.
option(NIMBA_FUZZ "Build the fuzzers (clang alone has what they need)" OFF)

if(NIMBA_FUZZ)
    add_subdirectory(tests/fuzz)
endif()
