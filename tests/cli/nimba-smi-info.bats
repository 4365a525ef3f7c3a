#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# Every field of the summaries, with its unit and its source.

load nimba-smi.bash
load nimba-smi-monitor.bash
load ordinary_user.bash

teardown_file() {
    drop_ordinary_user_copy
}

@test "info shows what the driver's file and nodes tell, on each adapter" {
    run --separate-stderr on three-adapters nimba-smi info
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$stderr" ""
    [ "$(grep -c '^Slot [012]: ' <<<"$output")" = 3 ]
    [ "$(grep -c '^FIELD  ' <<<"$output")" = 3 ]
    [ "$(grep -c '^driver_version .* /proc/gpuinfo_[0-9]*: Driver Version$' <<<"$output")" = 3 ]
}

@test "fields of a known machine are exact" {
    machine 'link_width = 8' '[adapter.board]' 'driver_version = "1.2.a"' \
        'firmware_version = "8.f.0.1c"' 'firmware_name = "K5 board, rev. 2"' \
        'display_types = "HDMI DP"' 'pcie_gen = 4' 'pcie_lanes = 16' 'pixel_fillrate = 57600'
    run --separate-stderr on ./machine.toml nimba-smi info --csv
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "${lines[0]}" slot,bus_id,field,value,unit,source
    for line in 'pcie_lanes,8,lanes,current_link_width' \
        'pcie_generation,4,,/proc/gpuinfo_0: Bus Type' \
        'driver_version,1.2.a,,/proc/gpuinfo_0: Driver Version' \
        'firmware_version,8.f.0.1c,,/proc/gpuinfo_0: Firmware Version' \
        'firmware_name,"K5 board, rev. 2",,/proc/gpuinfo_0: Firmware Name' \
        "pixel_fillrate,57600,driver's,/proc/gpuinfo_0: Pixel Fillrate" \
        'display_types,"HDMI, DP",,/proc/gpuinfo_0: Support Display Type'; do
        grep -qxF "0,0000:01:00.0,$line" <<<"$output" || { echo "$line"; echo "$output"; return 1; }
    done
}

@test "the clocks of info are those of clocks" {
    needs_live_drivers
    run --separate-stderr on steady-adapter sh -c 'nimba-smi info --json |
        jq -c ".adapters[0].fields | [.engine_clock, .video_clock, .memory_clock, .core_clock] | map(.value)"
        nimba-smi clocks --json |
        jq -c ".adapters[0] | [.engine_clock, .video_clock, .memory_clock, .core_clock]"'
    same "$output" '[550,350,1000,600]
[550,350,1000,600]'
}

@test "fields have a value, a unit and a source in the document" {
    run --separate-stderr on two-qv sh -c 'nimba-smi info --json -i 1 | jq -c "[.schema,
        (.adapters | length), .adapters[0].slot, .adapters[0].fields.engine_clock.source,
        .adapters[0].fields.memory_data_rate.unit, (.adapters[0].fields | length),
        (.adapters[0].fields | map(keys_unsorted) | unique)]"'
    same "$output" '["nimba-smi.info.1",1,1,"qv_info/eclk","MT/s",38,[["value","unit","source"]]]'
}

@test "without an adapter info says why" {
    run --separate-stderr on no-gpu nimba-smi info
    [ "$status" = 3 ]
    same "$output" ""
    [[ $stderr == "nimba-smi: no Nimba or QV adapter found"* ]]
    run --separate-stderr on steady-adapter nimba-smi info -i 1
    [ "$status" = 3 ]
    same "$stderr" "nimba-smi: there is no adapter in slot 1; nimba-smi list shows those that are there"
    run --separate-stderr nimba-smi info --csv --json
    [ "$status" = 2 ]
}

@test "a node that blocks costs its adapter alone" {
    needs_live_drivers
    run --separate-stderr on three-adapters sh -c '
        nimba-sim fault block eclk --directory info --adapter 1 --ms 60000
        nimba-smi --timeout 3 info'
    [ "$status" = 7 ] || { echo "$stderr"; return 1; }
    [ "$(grep -o '^Slot [012]' <<<"$output" | tr '\n' ' ')" = "Slot 0 Slot 2 " ]
}

@test "an ordinary user sees the fields that are open" {
    run --separate-stderr as_ordinary_user timeout 60 nimba-sim run --machine default -- \
        nimba-smi info --csv
    grep -q '^0,[0-9a-f:.]*,driver_version,[0-9a-f.]*,,' <<<"$output" || { echo "$output$stderr"; return 1; }
}
