#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# What `cmake --install` leaves, and what a user makes of it.

load installed_tree.bash

setup_file() {
    install_tree
}

# The value of a dynamic section's entry, such as SONAME.
dynamic_entries() {
    objdump -p "$libdir/libnimba_mgmt_interface.so" | awk -v entry="$1" '$1 == entry { print $2 }'
}

@test "the library's names are links to the versioned file" {
    [ "$(readlink "$libdir/libnimba_mgmt_interface.so")" = libnimba_mgmt_interface.so.0 ]
    [ "$(readlink "$libdir/libnimba_mgmt_interface.so.0")" = libnimba_mgmt_interface.so.0.1.0 ]
    [ -f "$libdir/libnimba_mgmt_interface.so.0.1.0" ]
    [ ! -L "$libdir/libnimba_mgmt_interface.so.0.1.0" ]
}

@test "the library's SONAME carries the major version" {
    [ "$(dynamic_entries SONAME)" = libnimba_mgmt_interface.so.0 ]
}

@test "the library needs neither libdrm nor a run path" {
    run dynamic_entries NEEDED
    [ -n "$output" ]
    [[ "$output" != *libdrm* ]]
    [ -z "$(dynamic_entries RUNPATH)$(dynamic_entries RPATH)" ]
}

@test "the public header is the only one installed" {
    [ "$(ls "$prefix/include")" = nimba_mgmt_interface.h ]
}

@test "no installed text names the build tree or the scratch prefix" {
    run grep -rIl -e "$NIMBA_BINARY_DIR" -e "$prefix" "$prefix"
    [ "$status" -eq 1 ]
    [ -z "$output" ]
}

@test "pkg-config tells version, prefix and identifiers" {
    [ "$(pkg-config --modversion nimba_mgmt_interface)" = 0.1.0 ]
    [ "$(realpath "$(pkg-config --variable=includedir nimba_mgmt_interface)")" = \
        "$prefix/include" ]
    [ "$(realpath "$(pkg-config --variable=libdir nimba_mgmt_interface)")" = "$libdir" ]
    chosen=$(awk '$2 == "DEVICE_ID_NIMBA_K1" { print $3 }' "$prefix/include/nimba_mgmt_interface.h")
    [ "$(pkg-config --variable=DEVICE_ID_NIMBA_K1 nimba_mgmt_interface)" = "$chosen" ]
}

@test "a C program is compiled with pkg-config and runs" {
    compile_host "$BATS_TEST_TMPDIR/host"
    run "$BATS_TEST_TMPDIR/host"
    [ "$status" -eq 0 ]
    [ "${lines[0]}" = "init_100_priority, init print callback." ]
    [ "${lines[1]}" = "interface version 22" ]
    [ "${lines[-1]}" = "uninit_100_priority." ]
}

@test "a C program is compiled against an installed tree that was moved" {
    cp -a "$prefix" "$BATS_TEST_TMPDIR/moved"
    export PKG_CONFIG_PATH="$BATS_TEST_TMPDIR/moved/$NIMBA_LIBDIR/pkgconfig"
    run pkg-config --cflags --libs nimba_mgmt_interface
    [[ "$output" == *"$BATS_TEST_TMPDIR/moved/"* ]]
    [[ "$output" != *"$prefix"* ]]
    compile_host "$BATS_TEST_TMPDIR/host"
}

@test "a CMake project finds the package, links its target and runs" {
    run cmake -S "$BATS_TEST_DIRNAME/consumer" -B "$BATS_TEST_TMPDIR/build" \
        -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_FLAGS="${CFLAGS:-}"
    [ "$status" -eq 0 ]
    [[ "$output" == *"-- vendors $(pkg-config --variable=NIMBA_VENDOR_ID nimba_mgmt_interface) $(
        pkg-config --variable=QV_VENDOR_ID nimba_mgmt_interface)"* ]]
    cmake --build "$BATS_TEST_TMPDIR/build"
    run env -u LD_LIBRARY_PATH "$BATS_TEST_TMPDIR/build/host"
    [ "$status" -eq 0 ]
    [ "${lines[1]}" = "interface version 22" ]
}

@test "a CMake project that asks for another minor version is refused" {
    sed 's/nimba_mgmt_interface 0.1 /nimba_mgmt_interface 0.2 /' \
        "$BATS_TEST_DIRNAME/consumer/CMakeLists.txt" > "$BATS_TEST_TMPDIR/CMakeLists.txt"
    run cmake -S "$BATS_TEST_TMPDIR" -B "$BATS_TEST_TMPDIR/build" -DCMAKE_PREFIX_PATH="$prefix"
    [ "$status" -ne 0 ]
    [[ "$output" == *0.2* ]]
    [[ "$output" == *"version: 0.1.0"* ]]
}
