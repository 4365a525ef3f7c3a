# SPDX-License-Identifier: MIT
# Warnings, hardening and sanitizers, for everything in the tree.
option(NIMBA_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(NIMBA_WERROR)
    add_compile_options(-Werror)
endif()

add_compile_options(
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
    $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>
    -fstack-protector-strong -fstack-clash-protection)
add_link_options(-Wl,-z,relro,-z,now)

if(NIMBA_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
                        -fno-omit-frame-pointer
                        # Lines are enough for what they report, and are compiled and linked faster.
                        -g1)
    add_link_options(-fsanitize=address,undefined)
endif()
