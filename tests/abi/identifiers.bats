#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# Choosing the PCI identifiers when the library is configured. NIMBA_SOURCE_DIR is the source tree.

configure() {
    run cmake -S "$NIMBA_SOURCE_DIR" -B "$BATS_TEST_TMPDIR/build" \
        -DNIMBA_BUILD_TOOLS=OFF -DNIMBA_BUILD_TESTS=OFF "$@"
}

# The generated file `name` below the scratch build tree.
generated() {
    find "$BATS_TEST_TMPDIR/build" -name "$1" -not -path '*/CMakeFiles/*'
}

# Both -DNAME=VALUE must be refused, at configure time or by the compiler, with a line that holds
# every further argument.
refuses_to_build() {
    configure "$1" "$2"
    if [ "$status" -eq 0 ]; then
        run cmake --build "$BATS_TEST_TMPDIR/build" --target nimba_objects
    fi
    [ "$status" -ne 0 ]
    shift 2
    local found=$output
    for word in "$@"; do
        found=$(grep -F -- "$word" <<< "$found")
    done
}

@test "the chosen identifiers stand in the generated header and the others stay" {
    configure -DNIMBA_VENDOR_ID=0x1234 -DDEVICE_ID_NIMBA_K1=0x4321
    [ "$status" -eq 0 ]
    run grep -E '^#define (NIMBA|QV)_VENDOR_ID|^#define DEVICE_ID_' \
        "$(generated nimba_mgmt_interface.h)"
    [ "$output" = "#define NIMBA_VENDOR_ID 0x1234
#define QV_VENDOR_ID 0x5156
#define DEVICE_ID_NIMBA_K1 0x4321
#define DEVICE_ID_NIMBA_K2 0x1002
#define DEVICE_ID_NIMBA_K3 0x1003
#define DEVICE_ID_NIMBA_K3T 0x1013
#define DEVICE_ID_NIMBA_K5 0x1005
#define DEVICE_ID_NIMBA_K6 0x1006
#define DEVICE_ID_QV_M20 0x2020
#define DEVICE_ID_QV_M30 0x2030
#define DEVICE_ID_QV_M40 0x2040" ]
}

@test "the generated header differs from the source in the chosen identifiers alone" {
    configure -DNIMBA_VENDOR_ID=0x1234 -DDEVICE_ID_NIMBA_K1=0x4321
    [ "$status" -eq 0 ]
    run diff "$NIMBA_SOURCE_DIR/include/nimba_mgmt_interface.h" \
        "$(generated nimba_mgmt_interface.h)"
    [ "$(grep '^>' <<< "$output")" = "> #define NIMBA_VENDOR_ID 0x1234
> #define DEVICE_ID_NIMBA_K1 0x4321" ]
}

@test "without a choice the header is the source's" {
    configure
    [ "$status" -eq 0 ]
    cmp "$NIMBA_SOURCE_DIR/include/nimba_mgmt_interface.h" "$(generated nimba_mgmt_interface.h)"
}

@test "pkg-config tells the chosen identifiers" {
    configure -DNIMBA_VENDOR_ID=0x1234 -DDEVICE_ID_NIMBA_K1=0x4321
    [ "$status" -eq 0 ]
    export PKG_CONFIG_PATH
    PKG_CONFIG_PATH=$(dirname "$(generated nimba_mgmt_interface.pc)")
    [ "$(pkg-config --variable=NIMBA_VENDOR_ID nimba_mgmt_interface)" = 0x1234 ]
    [ "$(pkg-config --variable=DEVICE_ID_NIMBA_K1 nimba_mgmt_interface)" = 0x4321 ]
    [ "$(pkg-config --variable=QV_VENDOR_ID nimba_mgmt_interface)" = 0x5156 ]
}

@test "the CMake package tells the chosen identifiers" {
    configure -DNIMBA_VENDOR_ID=0x1234 -DDEVICE_ID_NIMBA_K1=0x4321
    [ "$status" -eq 0 ]
    run grep 'set(nimba_mgmt_interface_' "$(generated nimba_mgmt_interface-config.cmake)"
    [ "${lines[0]}" = "set(nimba_mgmt_interface_NIMBA_VENDOR_ID 0x1234)" ]
    [ "${lines[1]}" = "set(nimba_mgmt_interface_QV_VENDOR_ID 0x5156)" ]
    [ "${lines[2]}" = "set(nimba_mgmt_interface_DEVICE_ID_NIMBA_K1 0x4321)" ]
    [ "${#lines[@]}" -eq 11 ]
}

@test "lower-case digits are accepted" {
    configure -DNIMBA_VENDOR_ID=0xabcd
    [ "$status" -eq 0 ]
    grep -x '#define NIMBA_VENDOR_ID 0xabcd' "$(generated nimba_mgmt_interface.h)"
}

@test "a chosen identifier can be changed in the same build tree" {
    configure -DNIMBA_VENDOR_ID=0x1234
    configure -DNIMBA_VENDOR_ID=0x5678
    [ "$status" -eq 0 ]
    grep -x '#define NIMBA_VENDOR_ID 0x5678' "$(generated nimba_mgmt_interface.h)"
}

@test "a value that is no PCI identifier is refused by name" {
    for value in 1234 4660 0x123 0x12345 0x12G4 0X1234 ' 0x1234' '0x1234;0x5678' ''; do
        configure "-DDEVICE_ID_QV_M20=$value"
        echo "value: '$value', status: $status" >&2
        [ "$status" -ne 0 ]
        grep -F 'DEVICE_ID_QV_M20' <<< "$output" | grep -F 'a PCI identifier looks like 0x1234'
    done
}

@test "two chips of one vendor cannot share an identifier" {
    refuses_to_build -DDEVICE_ID_NIMBA_K1=0x4321 -DDEVICE_ID_NIMBA_K2=0x4321 'two chips' same
}

@test "two chips of different vendors cannot share an identifier" {
    refuses_to_build -DDEVICE_ID_NIMBA_K6=0xabcd -DDEVICE_ID_QV_M40=0xABCD 'two chips' same
}

@test "the two vendors cannot share an identifier" {
    refuses_to_build -DNIMBA_VENDOR_ID=0x1234 -DQV_VENDOR_ID=0x1234 vendors same
}
