#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# Every figure of the management library's interface is in a JSON document of nimba-smi.

load nimba-smi.bash

TABLE=$BATS_TEST_DIRNAME/figures.txt
HEADER=$BATS_TEST_DIRNAME/../../include/nimba_mgmt_interface.h

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
    export HOME=$BATS_TEST_TMPDIR
    mkdir -p "$HOME/.local/share"
}

# What the check finds wrong with the table and the header.
faults() {
    "$BATS_TEST_DIRNAME/figures-check" "$@" 2>&1
}

@test "every figure of the interface is in a document, or there is a reason" {
    needs_live_drivers
    run faults "$TABLE" "$HEADER" --run
    same "$output" ""
    [ "$status" = 0 ]
}

@test "a figure that is nowhere is noticed" {
    sed '/^INFO_NODE_POWER_CASE /d; /^FpsInfo.blits /d' "$TABLE" >table
    run faults table "$HEADER"
    [ "$status" = 1 ]
    same "$(sort <<<"$output")" "FpsInfo.blits is not in the table
INFO_NODE_POWER_CASE is not in the table"
    sed 's/uint32_t engine_clock;/uint32_t engine_clock; uint32_t new_clock;/' "$HEADER" >header.h
    run faults "$TABLE" header.h
    same "$output" "DvfsClockInfo.new_clock is not in the table"
}

@test "a place that is not there is noticed" {
    printf '%s\n' '[default: list]' 'gpu_infos.busid  .adapters[0].bus' \
        'gpu_infos.vendor_id  .adapters[0].bus_id, .foreign_gpu.bus_id.none' >table
    run faults table "$HEADER" --run
    [ "$status" = 1 ]
    same "$(grep -v 'is not in the table$' <<<"$output")" \
        "gpu_infos.busid: there is no .adapters[0].bus in list on default
gpu_infos.vendor_id: there is no .adapters[0].bus_id, .foreign_gpu.bus_id.none in list on default"
}
